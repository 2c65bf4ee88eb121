// Formatting toggles, headings and block toggles.
#include "editor/ORVMDTextCommands.h"

#include "editor/textLines.h"

#include <QStringList>

using namespace orvtext;

namespace {

const QString kStar = QStringLiteral("*");
const QString kBulletPattern = QStringLiteral("^[\\*\\+-] \\S");
const QString kOrderedPattern = QStringLiteral("^[0-9]{1}\\. \\S");
const QString kOrderedPrefix = QStringLiteral("1. ");
// Block toggles number ordered lines with one digit, 1 to 9 and round again,
// so that toggling off (whose pattern takes one digit) undoes toggling on.
constexpr int kBlockToggleNumberWrap = 9;

} // namespace

// ---- Inline toggles

bool ORVMDTextCommands::substringInRangeIsSurroundedByPrefixSuffix(ORVEditRange range, const QString &prefix,
                                                                   const QString &suffix) const
{
    const QString &text = m_buffer.string();
    const auto surrounded = [&](qsizetype before, qsizetype after, QStringView p, QStringView s) {
        if (range.end() + after > text.size() || range.location < before)
            return false;
        return QStringView(text).mid(range.end(), after) == s && QStringView(text).mid(range.location - before, before) == p;
    };
    if (!range.isValid() || !surrounded(prefix.size(), suffix.size(), prefix, suffix))
        return false;
    if (prefix == kStar && suffix == kStar) {
        // Emphasis against strong: "***a***" is emphasis (and strong) to
        // take off, "**a**" is strong only, to wrap further.
        if (surrounded(3, 3, u"***", u"***"))
            return true;
        return !surrounded(2, 2, u"**", u"**");
    }
    return true;
}

bool ORVMDTextCommands::toggleForMarkupPrefixSuffix(const QString &prefix, const QString &suffix)
{
    const ORVEditRange r = m_buffer.selectedRange();
    const QString selected = m_buffer.string().mid(r.location, r.length);
    ORVUndoGroup group(m_buffer);
    if (!substringInRangeIsSurroundedByPrefixSuffix(r, prefix, suffix)) {
        insertTextReplacementRange(prefix + selected + suffix, r);
        m_buffer.setSelectedRange({r.location + prefix.size(), r.length});
        return true;
    }
    insertTextReplacementRange(selected, {r.location - prefix.size(), prefix.size() + r.length + suffix.size()});
    m_buffer.setSelectedRange({r.location - prefix.size(), r.length});
    return false;
}

void ORVMDTextCommands::toggleStrong() { toggleForMarkupPrefixSuffix(QStringLiteral("**"), QStringLiteral("**")); }
void ORVMDTextCommands::toggleEmphasis() { toggleForMarkupPrefixSuffix(kStar, kStar); }
void ORVMDTextCommands::toggleInlineCode() { toggleForMarkupPrefixSuffix(QStringLiteral("`"), QStringLiteral("`")); }
void ORVMDTextCommands::toggleBlockCode()
{
    toggleForMarkupPrefixSuffix(QStringLiteral("\n```"), QStringLiteral("\n```"));
}
void ORVMDTextCommands::toggleStrikethrough() { toggleForMarkupPrefixSuffix(QStringLiteral("~~"), QStringLiteral("~~")); }
void ORVMDTextCommands::toggleUnderline() { toggleForMarkupPrefixSuffix(QStringLiteral("_"), QStringLiteral("_")); }
void ORVMDTextCommands::toggleHighlight() { toggleForMarkupPrefixSuffix(QStringLiteral("=="), QStringLiteral("==")); }
void ORVMDTextCommands::toggleComment() { toggleForMarkupPrefixSuffix(QStringLiteral("<!--"), QStringLiteral("-->")); }

void ORVMDTextCommands::toggleLink()
{
    ORVUndoGroup group(m_buffer);
    if (toggleForMarkupPrefixSuffix(QStringLiteral("["), QStringLiteral("]()")))
        m_buffer.setSelectedRange({m_buffer.selectedRange().end() + 2, 0}); // between the parentheses
}

void ORVMDTextCommands::toggleImage()
{
    ORVUndoGroup group(m_buffer);
    if (toggleForMarkupPrefixSuffix(QStringLiteral("!["), QStringLiteral("]()")))
        m_buffer.setSelectedRange({m_buffer.selectedRange().end() + 2, 0});
}

// ---- Lines of the selection

ORVEditRange ORVMDTextCommands::wholeLinesOfSelection() const
{
    const QString &text = m_buffer.string();
    ORVEditRange lines = lineRangeForRange(text, m_buffer.selectedRange());
    if (lines.length > 0 && text.at(lines.end() - 1) == QLatin1Char('\n'))
        --lines.length;
    return lines;
}

bool ORVMDTextCommands::cursorLineIsEmptyAtStart() const
{
    const ORVEditRange sel = m_buffer.selectedRange();
    const QString &text = m_buffer.string();
    return sel.isEmpty() && lineStartBefore(text, sel.location) == sel.location &&
           lineEndAfter(text, sel.location) == sel.location;
}

bool ORVMDTextCommands::cursorLineBeginsWith(const QString &prefix) const
{
    // An empty caret standing after `prefix` at the start of its line (the
    // whole text when it is no longer than the prefix).
    const ORVEditRange sel = m_buffer.selectedRange();
    const QString &text = m_buffer.string();
    if (!sel.isEmpty() || sel.location == 0 || sel.location < prefix.size())
        return false;
    if (text.size() == prefix.size())
        return text == prefix;
    const qsizetype start = lineStartBefore(text, sel.location);
    return sel.location - start >= prefix.size() && QStringView(text).mid(start, prefix.size()) == prefix;
}

void ORVMDTextCommands::takeOffCursorLinePrefix(const QString &prefix)
{
    const ORVEditRange sel = m_buffer.selectedRange();
    const qsizetype start = lineStartBefore(m_buffer.string(), sel.location);
    insertTextReplacementRange(QString(), {start, prefix.size()});
    m_buffer.setSelectedRange({qMax(start, sel.location - prefix.size()), 0});
}

// ---- Headings

void ORVMDTextCommands::makeHeaderForSelectedLinesWithLevel(int level)
{
    level = qBound(0, level, 6);
    const ORVEditRange sel = m_buffer.selectedRange();
    ORVUndoGroup group(m_buffer);
    if (level > 0) {
        // preCheckTextViewIsMakeHeaderWithLevel
        const QString prefix = QString(level, QLatin1Char('#')) + QLatin1Char(' ');
        const QString &text = m_buffer.string();
        const qsizetype start = lineStartBefore(text, sel.location);
        const QStringView line = QStringView(text).mid(start, lineEndAfter(text, sel.location) - start);
        // At the start of a line that is no heading yet, the marks go in
        // before the caret (a heading line is converted below instead).
        if (sel.isEmpty() && sel.location == start && !line.startsWith(QLatin1Char('#'))) {
            orv_insertTextToCurrentSelectRange(prefix);
            return;
        }
        // The same heading command twice makes a paragraph again.
        if (line.startsWith(prefix))
            level = 0;
    }

    const QString prefix = level > 0 ? QString(level, QLatin1Char('#')) + QLatin1Char(' ') : QString();
    static const QRegularExpression marks(QStringLiteral("^(#+ )*.*?$"), QRegularExpression::MultilineOption);
    const ORVEditRange linesRange = wholeLinesOfSelection();
    const QStringList lines = m_buffer.string().mid(linesRange.location, linesRange.length).split(QLatin1Char('\n'));
    QStringList out;
    qsizetype firstDelta = 0;
    qsizetype otherDelta = 0;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString &line = lines.at(i);
        QString converted = line;
        if (lines.size() == 1 || !isBlankLine(line)) {
            const QRegularExpressionMatch m = marks.match(line);
            const qsizetype cut = m.hasMatch() && m.capturedStart(1) >= 0 ? m.capturedEnd(1) : 0;
            converted = prefix + line.mid(cut);
        }
        (i == 0 ? firstDelta : otherDelta) += converted.size() - line.size();
        out << converted;
    }
    const QString replacement = out.join(QLatin1Char('\n'));
    if (replacement != m_buffer.string().mid(linesRange.location, linesRange.length))
        insertTextReplacementRange(replacement, linesRange);
    const qsizetype loc = qMax(linesRange.location, sel.location + firstDelta);
    m_buffer.setSelectedRange({loc, qMax<qsizetype>(0, sel.length + otherDelta)});
}

// ---- Block toggles

void ORVMDTextCommands::toggleBlockWithPatternPrefix(const QString &pattern, const QString &prefix)
{
    const QRegularExpression re(pattern);
    const ORVEditRange sel = m_buffer.selectedRange();
    const ORVEditRange linesRange = wholeLinesOfSelection();
    const QString original = m_buffer.string().mid(linesRange.location, linesRange.length);
    const QStringList lines = original.split(QLatin1Char('\n'));

    bool takeOff = true;
    for (const QString &line : lines) {
        if (!line.isEmpty() && !re.match(line).hasMatch()) {
            takeOff = false;
            break;
        }
    }

    QStringList out;
    qsizetype total = 0;
    int number = 0;
    for (const QString &line : lines) {
        if (line.isEmpty()) {
            out << line;
        } else if (takeOff) {
            const qsizetype cut = qMin(prefix.size(), line.size());
            out << line.mid(cut);
            total += cut;
        } else {
            QString p = prefix;
            if (prefix == kOrderedPrefix)
                p = QStringLiteral("%1. ").arg(number++ % kBlockToggleNumberWrap + 1);
            out << p + line;
            total += p.size();
        }
    }
    const QString replacement = out.join(QLatin1Char('\n'));
    if (replacement == original)
        return;
    ORVUndoGroup group(m_buffer);
    insertTextReplacementRange(replacement, linesRange);
    qsizetype loc;
    qsizetype len;
    if (!takeOff) {
        loc = sel.location + prefix.size();
        len = sel.length + total - prefix.size();
    } else {
        loc = sel.location - prefix.size();
        len = sel.length - (total - prefix.size());
        if (loc < linesRange.location) {
            len -= linesRange.location - loc;
            loc = linesRange.location;
        }
    }
    m_buffer.setSelectedRange({loc, qMax<qsizetype>(0, len)});
}

void ORVMDTextCommands::toggleUnorderedList()
{
    ORVUndoGroup group(m_buffer);
    if (cursorLineIsEmptyAtStart())
        orv_insertTextToCurrentSelectRange(QStringLiteral("* "));
    else if (cursorLineBeginsWith(QStringLiteral("* ")))
        takeOffCursorLinePrefix(QStringLiteral("* "));
    else
        toggleBlockWithPatternPrefix(kBulletPattern, QStringLiteral("* "));
}

void ORVMDTextCommands::toggleOrderedList()
{
    ORVUndoGroup group(m_buffer);
    if (cursorLineIsEmptyAtStart())
        orv_insertTextToCurrentSelectRange(kOrderedPrefix);
    else if (cursorLineBeginsWith(kOrderedPrefix))
        takeOffCursorLinePrefix(kOrderedPrefix);
    else
        toggleBlockWithPatternPrefix(kOrderedPattern, kOrderedPrefix);
}

void ORVMDTextCommands::toggleTaskList()
{
    ORVUndoGroup group(m_buffer);
    const QString &text = m_buffer.string();
    const qsizetype pos = m_buffer.selectedRange().location;
    const qsizetype start = lineStartBefore(text, pos);
    const QStringView line = QStringView(text).mid(start, lineEndAfter(text, pos) - start);
    static const QRegularExpression bulletItem(QStringLiteral("^[\\*\\+-] "));
    if (bulletItem.match(line).hasMatch()) {
        const QStringView box = line.mid(2, 3);
        // A plain bullet item loses its bullet first, so that the toggle
        // below puts a task bullet in its place instead of a second one.
        if (box != u"[ ]" && box != u"[x]")
            toggleUnorderedList();
    }
    if (cursorLineIsEmptyAtStart())
        orv_insertTextToCurrentSelectRange(QStringLiteral("* [ ] "));
    else
        toggleBlockWithPatternPrefix(kBulletPattern, QStringLiteral("* [ ] "));
}

void ORVMDTextCommands::toggleBlockquote()
{
    ORVUndoGroup group(m_buffer);
    const ORVEditRange sel = m_buffer.selectedRange();
    const QString &text = m_buffer.string();
    // With no selection at the start of a line (or on an empty one) the mark
    // goes in at the caret, which nests an existing quote one level deeper;
    // elsewhere the caret's line is toggled as a one-line selection.
    if (sel.isEmpty() && lineStartBefore(text, sel.location) == sel.location)
        orv_insertTextToCurrentSelectRange(QStringLiteral("> "));
    else
        toggleBlockWithPatternPrefix(QStringLiteral("^> \\S"), QStringLiteral("> "));
}
