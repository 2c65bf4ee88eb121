// Indentation, Tab, and the insert commands.
#include "editor/ORVMDTextCommands.h"

#include "editor/textLines.h"

#include <QStringList>

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <memory>

using namespace orvtext;

namespace {

// One level of indentation in spaces, and the tab stop of Tab with spaces.
constexpr int kIndentWidth = 4;

// Maps a position of the text before an edit that put `added[i]` units at
// the start of line i (starting at `starts[i]`) to the text after it. A
// position at a line's start goes after what was put there.
qsizetype shiftedPosition(qsizetype pos, const QList<qsizetype> &starts, const QList<qsizetype> &added)
{
    qsizetype shift = 0;
    for (qsizetype i = 0; i < starts.size() && starts.at(i) <= pos; ++i)
        shift += added.at(i);
    return pos + shift;
}

} // namespace

// ---- Indentation

void ORVMDTextCommands::indent()
{
    ORVUndoGroup group(m_buffer);
    indentSelectedLinesWithPadding(m_options.isSpaceInsteadTabs ? QString(kIndentWidth, QLatin1Char(' '))
                                                                : QStringLiteral("\t"));
    if (currentLineListItemTypeWithRange(m_buffer.selectedRange()) == OrderedListItem)
        processOrderListItem();
}

void ORVMDTextCommands::unindent()
{
    ORVUndoGroup group(m_buffer);
    unindentSelectedLines();
    if (currentLineListItemTypeWithRange(m_buffer.selectedRange()) == OrderedListItem)
        processOrderListItem();
}

void ORVMDTextCommands::indentSelectedLinesWithPadding(const QString &padding)
{
    const ORVEditRange sel = m_buffer.selectedRange();
    const ORVEditRange linesRange = lineRangeForRange(m_buffer.string(), sel);
    // The line range ends with the last line's "\n", so splitting gives an
    // empty piece after it: that piece is no line of the selection.
    const QStringList lines = m_buffer.string().mid(linesRange.location, linesRange.length).split(QLatin1Char('\n'));
    QStringList out;
    QList<qsizetype> starts;
    QList<qsizetype> added;
    qsizetype start = linesRange.location;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString &line = lines.at(i);
        const bool lastAndEmpty = i == lines.size() - 1 && line.isEmpty();
        out << (lastAndEmpty ? line : padding + line);
        starts << start;
        added << (lastAndEmpty ? 0 : padding.size());
        start += line.size() + 1;
    }
    ORVUndoGroup group(m_buffer);
    insertTextReplacementRange(out.join(QLatin1Char('\n')), linesRange);
    const qsizetype loc = shiftedPosition(sel.location, starts, added);
    const qsizetype end = shiftedPosition(sel.end(), starts, added);
    m_buffer.setSelectedRange({loc, end - loc});
}

void ORVMDTextCommands::unindentSelectedLines()
{
    const ORVEditRange sel = m_buffer.selectedRange();
    const ORVEditRange linesRange = lineRangeForRange(m_buffer.string(), sel);
    const QString original = m_buffer.string().mid(linesRange.location, linesRange.length);
    const QStringList lines = original.split(QLatin1Char('\n'));
    QStringList out;
    qsizetype firstCount = -1;
    qsizetype total = 0;
    for (const QString &line : lines) {
        qsizetype spaces = 0;
        while (spaces < line.size() && spaces < kIndentWidth && line.at(spaces) == QLatin1Char(' '))
            ++spaces;
        qsizetype count = spaces;
        if (spaces < kIndentWidth && spaces < line.size() && line.at(spaces) == QLatin1Char('\t'))
            count = spaces + 1;
        if (firstCount < 0)
            firstCount = count;
        total += count;
        // A line of nothing but the indentation stays as it is, although
        // its count still moves the selection below.
        out << (count == line.size() ? line : line.mid(count));
    }
    const QString replacement = out.join(QLatin1Char('\n'));
    ORVUndoGroup group(m_buffer);
    if (replacement != original)
        insertTextReplacementRange(replacement, linesRange);
    qsizetype loc = sel.location - firstCount;
    qsizetype len = sel.length + firstCount - total;
    if (loc < linesRange.location) {
        len -= linesRange.location - loc;
        loc = linesRange.location;
    }
    m_buffer.setSelectedRange({loc, qMax<qsizetype>(0, len)});
}

void ORVMDTextCommands::insertTab()
{
    const ORVEditRange sel = m_buffer.selectedRange();
    if (!sel.isEmpty() || currentLineListItemTypeWithRange(sel) != NoListItem)
        indent();
    else if (m_options.isSpaceInsteadTabs)
        insertSpacesForTab();
    else
        orv_insertTextToCurrentSelectRange(QStringLiteral("\t"));
}

void ORVMDTextCommands::insertSpacesForTab()
{
    const ORVEditRange sel = m_buffer.selectedRange();
    const qsizetype column = sel.location - lineStartBefore(m_buffer.string(), sel.location);
    orv_insertTextToCurrentSelectRange(QString(kIndentWidth - column % kIndentWidth, QLatin1Char(' ')));
}

// ---- Inserting

void ORVMDTextCommands::insertCommentReadMore()
{
    orv_insertTextToCurrentSelectRange(QStringLiteral("\n%1\n").arg(QStringLiteral("<!-- more -->")));
}
void ORVMDTextCommands::insertHR() { orv_insertTextToCurrentSelectRange(QStringLiteral("\n-------\n")); }
void ORVMDTextCommands::insertAmp() { orv_insertTextToCurrentSelectRange(QStringLiteral("&amp;")); }
void ORVMDTextCommands::insertLt() { orv_insertTextToCurrentSelectRange(QStringLiteral("&lt;")); }
void ORVMDTextCommands::insertGt() { orv_insertTextToCurrentSelectRange(QStringLiteral("&gt;")); }
void ORVMDTextCommands::insertNbsp() { orv_insertTextToCurrentSelectRange(QStringLiteral("&nbsp;")); }
void ORVMDTextCommands::insertQuot() { orv_insertTextToCurrentSelectRange(QStringLiteral("&quot;")); }
void ORVMDTextCommands::insert39() { orv_insertTextToCurrentSelectRange(QStringLiteral("&#39;")); }
void ORVMDTextCommands::insertEmsp() { orv_insertTextToCurrentSelectRange(QStringLiteral("&emsp;")); }
void ORVMDTextCommands::insertEnsp() { orv_insertTextToCurrentSelectRange(QStringLiteral("&ensp;")); }

QString ORVMDTextCommands::mediumDateTimeString(const QDateTime &when, bool withTime)
{
    // ICU takes the user's locale and time zone from the environment, as
    // the rest of the program's dates do.
    const std::unique_ptr<icu::DateFormat> format(
        withTime ? icu::DateFormat::createDateTimeInstance(icu::DateFormat::kMedium, icu::DateFormat::kMedium)
                 : icu::DateFormat::createDateInstance(icu::DateFormat::kMedium));
    if (!format)
        return QLocale::system().toString(when, QLocale::ShortFormat);
    icu::UnicodeString out;
    format->format(static_cast<UDate>(when.toMSecsSinceEpoch()), out);
    return QString(reinterpret_cast<const QChar *>(out.getBuffer()), out.length());
}

void ORVMDTextCommands::insertCurrentDateTime(const QDateTime &now)
{
    orv_insertTextToCurrentSelectRange(mediumDateTimeString(now.isValid() ? now : QDateTime::currentDateTime(), true));
}

void ORVMDTextCommands::insertCurrentDate(const QDateTime &now)
{
    orv_insertTextToCurrentSelectRange(mediumDateTimeString(now.isValid() ? now : QDateTime::currentDateTime(), false));
}

void ORVMDTextCommands::insertNewParagraph()
{
    const QString &text = m_buffer.string();
    const qsizetype pos = m_buffer.selectedRange().location;
    ORVUndoGroup group(m_buffer);
    if (lineStartBefore(text, pos) == lineEndAfter(text, pos)) {
        insertNewline();
        return;
    }
    m_buffer.setSelectedRange({wholeLinesOfSelection().end(), 0});
    orv_insertTextToCurrentSelectRange(QStringLiteral("\n\n"));
}
