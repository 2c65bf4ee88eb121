// Return, ordered lists and deletion inside them. The formatting commands are
// in ORVMDTextCommandsFormat.cpp, indentation and inserts in
// ORVMDTextCommandsIndent.cpp.
#include "editor/ORVMDTextCommands.h"

#include "editor/textLines.h"

#include <QHash>

using namespace orvtext;

namespace {

// The number of an ordered marker ("12. "), saturating rather than
// overflowing on an absurd run of digits.
qint64 markerNumber(QStringView marker)
{
    qint64 n = 0;
    for (const QChar c : marker) {
        const int d = c.digitValue();
        if (d < 0)
            break;
        n = n > (std::numeric_limits<qint64>::max() - d) / 10 ? std::numeric_limits<qint64>::max() : n * 10 + d;
    }
    return n;
}

bool hasOrderedMarker(QStringView line)
{
    const QRegularExpressionMatch m = ORVMDTextCommands::listLinePattern().match(line);
    return m.hasMatch() && m.capturedLength(3) > 0;
}

} // namespace

ORVMDTextCommands::ORVMDTextCommands(ORVTextBuffer &buffer, ORVEditingOptions options)
    : m_buffer(buffer), m_options(options)
{
}

const QRegularExpression &ORVMDTextCommands::listLinePattern()
{
    static const QRegularExpression re(QStringLiteral("^(\\s*)((?:(?:\\*|\\+|-|)\\s+)?)((?:\\d+\\.\\s+)?)(\\S)?"),
                                       QRegularExpression::MultilineOption);
    return re;
}

const QRegularExpression &ORVMDTextCommands::blockquoteLinePattern()
{
    static const QRegularExpression re(QStringLiteral("^((?:\\> ?)+).*$"), QRegularExpression::MultilineOption);
    return re;
}

// ---- Primitives

void ORVMDTextCommands::insertNewline() { m_buffer.replaceCharactersInRange(m_buffer.selectedRange(), QStringLiteral("\n")); }

void ORVMDTextCommands::insertTextReplacementRange(const QString &text, ORVEditRange range)
{
    m_buffer.replaceCharactersInRange(range, text);
}

void ORVMDTextCommands::orv_insertTextToCurrentSelectRange(const QString &text)
{
    m_buffer.replaceCharactersInRange(m_buffer.selectedRange(), text);
}

// ---- Return

void ORVMDTextCommands::insertNewlineContinuingStructure()
{
    ORVUndoGroup group(m_buffer);
    if (completeNextListItem(true) || completeNextBlockquoteLine() || completeNextIndentedLine())
        return;
    insertNewline();
}

int ORVMDTextCommands::currentLineListItemTypeWithRange(ORVEditRange range) const
{
    const QString &text = m_buffer.string();
    if (!range.isValid() || range.end() > text.size())
        return NoListItem;
    const ORVEditRange lines = lineRangeForRange(text, range);
    const QRegularExpressionMatch m = listLinePattern().match(QStringView(text).mid(lines.location, lines.length));
    if (!m.hasMatch())
        return NoListItem;
    if (m.capturedLength(2) == 0 && m.capturedLength(3) == 0)
        return NoListItem;
    return m.capturedLength(3) > 0 ? OrderedListItem : BulletListItem;
}

bool ORVMDTextCommands::completeNextListItem(bool increaseNumber)
{
    const ORVEditRange sel = m_buffer.selectedRange();
    if (!sel.isEmpty() || m_buffer.string().isEmpty())
        return false;
    const qsizetype cursor = sel.location;
    const QString &text = m_buffer.string();
    const qsizetype lineStart = locationOfFirstNewlineBefore(text, cursor) + 1;
    // Return with nothing but white space before the caret is a plain line end.
    if (locationOfFirstNonWhitespaceCharacterInLineBefore(text, cursor) == ORVEditRange::kNotFound)
        return false;

    const QString line = text.mid(lineStart, cursor - lineStart);
    const QRegularExpressionMatch m = listLinePattern().match(line);
    if (!m.hasMatch())
        return false;
    const QString indent = m.captured(1);
    const QString bullet = m.captured(2);
    const QString ordered = m.captured(3);
    const qsizetype g = m.capturedStart(4);
    const bool emptyTask = g >= 0 && line.size() == g + 4 && QStringView(line).mid(g, 4) == u"[ ] ";
    const bool emptyItem = g < 0;

    QString marker;
    bool isTask = false;
    if (!emptyTask && !emptyItem) {
        if (bullet.isEmpty()) {
            if (ordered.isEmpty())
                return false;
            const qint64 n = markerNumber(ordered);
            marker = QStringLiteral("%1.").arg(increaseNumber && n < std::numeric_limits<qint64>::max() ? n + 1 : n);
        } else {
            marker = bullet.chopped(1);
            const QStringView box = QStringView(line).mid(m.capturedEnd(2), 3);
            isTask = box == u"[ ]" || box == u"[x]";
        }
    }

    ORVUndoGroup group(m_buffer);
    if (emptyTask || emptyItem) {
        // Return on an empty item ends the list: the marker goes, a blank
        // line stays.
        const QString &chosen = bullet.isEmpty() ? ordered : bullet;
        if (!chosen.isEmpty())
            m_buffer.replaceCharactersInRange({lineStart, cursor - lineStart}, QString());
    }

    insertNewline();
    const qsizetype at = m_buffer.selectedRange().location;
    const QStringView rest = QStringView(m_buffer.string()).mid(at);
    if (rest.startsWith(marker)) {
        if (!indent.isEmpty())
            orv_insertTextToCurrentSelectRange(indent);
    } else {
        QString prefix = indent + marker;
        if (isTask)
            prefix += QStringLiteral(" [ ]");
        if (!rest.startsWith(prefix)) {
            if (!marker.isEmpty())
                prefix += QLatin1Char(' ');
            insertTextReplacementRange(prefix, m_buffer.selectedRange());
        }
    }
    if (!ordered.isEmpty())
        processOrderListItem();
    return true;
}

bool ORVMDTextCommands::completeNextBlockquoteLine()
{
    const ORVEditRange sel = m_buffer.selectedRange();
    const QString &text = m_buffer.string();
    if (!sel.isEmpty() || text.isEmpty())
        return false;
    const qsizetype start = lineStartBefore(text, sel.location);
    const qsizetype end = lineEndAfter(text, sel.location);
    const QRegularExpressionMatch m = blockquoteLinePattern().match(QStringView(text).mid(start, end - start));
    if (!m.hasMatch())
        return false;
    const QString mark = m.captured(1);
    ORVUndoGroup group(m_buffer);
    insertNewline();
    const qsizetype at = m_buffer.selectedRange().location;
    if (!QStringView(m_buffer.string()).mid(at).startsWith(mark))
        orv_insertTextToCurrentSelectRange(mark);
    return true;
}

bool ORVMDTextCommands::completeNextIndentedLine()
{
    const ORVEditRange sel = m_buffer.selectedRange();
    if (!sel.isEmpty())
        return false;
    const QString &text = m_buffer.string();
    const qsizetype start = lineStartBefore(text, sel.location);
    const qsizetype firstNonWhite = locationOfFirstNonWhitespaceCharacterInLineBefore(text, sel.location);
    const qsizetype wsEnd = firstNonWhite == ORVEditRange::kNotFound ? sel.location : firstNonWhite;
    const QString whitespace = text.mid(start, wsEnd - start);
    if (whitespace.isEmpty())
        return false;
    ORVUndoGroup group(m_buffer);
    insertNewline();
    orv_insertTextToCurrentSelectRange(whitespace);
    return true;
}

// ---- Ordered lists

void ORVMDTextCommands::processOrderListItem()
{
    if (m_options.isDisableAutoCorrectOrderListNumber)
        return;
    const ORVEditRange sel = m_buffer.selectedRange();
    QString text = m_buffer.string();
    const qsizetype selLineStart = lineStartBefore(text, sel.location);
    const qsizetype selLineEnd = lineEndAfter(text, sel.location);
    if (!hasOrderedMarker(QStringView(text).mid(selLineStart, selLineEnd - selLineStart)))
        return;

    // The first line: back over ordered lines, and over blank or indented
    // lines (loose items, continued paragraphs, code inside an item) as long
    // as another ordered line turns up before them.
    qsizetype first = selLineStart;
    for (qsizetype cur = selLineStart; cur > 0;) {
        const qsizetype prevEnd = cur - 1;
        const qsizetype prevStart = lineStartBefore(text, prevEnd);
        const QStringView prev = QStringView(text).mid(prevStart, prevEnd - prevStart);
        if (hasOrderedMarker(prev))
            first = prevStart;
        else if (!isBlankLine(prev) && !prev.startsWith(QLatin1Char('\t')) && !prev.startsWith(u"    "))
            break;
        cur = prevStart;
    }
    // The last line: forward while lines are ordered items.
    qsizetype last = selLineEnd;
    while (last < text.size()) {
        const qsizetype nextStart = last + 1;
        const qsizetype nextEnd = lineEndAfter(text, nextStart);
        if (!hasOrderedMarker(QStringView(text).mid(nextStart, nextEnd - nextStart)))
            break;
        last = nextEnd;
    }

    ORVUndoGroup group(m_buffer);
    QHash<qsizetype, qint64> numberAtColumn;
    qsizetype previousColumn = -1;
    qsizetype shift = 0;
    qsizetype selectionShift = 0;
    qsizetype lineStart = first;
    while (lineStart <= last) {
        const qsizetype lineEnd = lineEndAfter(text, lineStart);
        const QRegularExpressionMatch m = listLinePattern().match(QStringView(text).mid(lineStart, lineEnd - lineStart));
        if (m.hasMatch() && m.capturedLength(3) > 0) {
            const qsizetype column = m.capturedStart(3);
            numberAtColumn.insert(column, numberAtColumn.value(column, 0));
            // Leaving a sublist: its numbering starts again next time.
            if (previousColumn >= 0 && column < previousColumn) {
                for (auto it = numberAtColumn.begin(); it != numberAtColumn.end(); ++it) {
                    if (it.key() > column)
                        it.value() = 0;
                }
            }
            previousColumn = column;
            const qint64 n = ++numberAtColumn[column];
            const QString wanted = QStringLiteral("%1. ").arg(n);
            if (m.capturedView(3) != wanted) {
                const qsizetype delta = wanted.size() - m.capturedLength(3);
                insertTextReplacementRange(wanted, {lineStart + column + shift, m.capturedLength(3)});
                shift += delta;
                // The selection moves with the text before it.
                if (lineStart + m.capturedEnd(3) <= sel.location)
                    selectionShift += delta;
            }
        }
        lineStart = lineEnd + 1;
    }
    m_buffer.setSelectedRange({qMax<qsizetype>(0, sel.location + selectionShift), sel.length});
}

bool ORVMDTextCommands::checkIsDeleteCharactsInOrderListAndIsDoDelelte(bool doDelete)
{
    if (m_buffer.selectedRanges().size() > 1)
        return false;
    const QString &text = m_buffer.string();
    ORVEditRange r = m_buffer.selectedRange();
    if (r.isEmpty()) {
        if (r.location == 0)
            return false;
        // The character before the caret; a surrogate pair is one character.
        r = {r.location - 1, 1};
        if (r.location > 0 && text.at(r.location).isLowSurrogate() && text.at(r.location - 1).isHighSurrogate())
            r = {r.location - 1, 2};
    }
    const ORVEditRange lines = lineRangeForRange(text, r);
    const bool ordered = hasOrderedMarker(QStringView(text).mid(lines.location, lines.length)) ||
                         (r.length > 1 && hasOrderedMarker(QStringView(text).mid(r.location, r.length)));
    if (!ordered)
        return false;
    ORVUndoGroup group(m_buffer);
    if (doDelete)
        m_buffer.replaceCharactersInRange(r, QString());
    processOrderListItem();
    return true;
}
