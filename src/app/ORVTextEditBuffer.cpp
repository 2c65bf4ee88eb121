#include "app/ORVTextEditBuffer.h"

#include <QPlainTextEdit>
#include <QTextDocument>

#include <algorithm>

namespace {

QString plainFromDocumentText(QString text)
{
    // A document separates its blocks with U+2029; the editor's text uses "\n".
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    return text;
}

// The text as a document stores it once inserted, in the mirror's terms: a
// text cursor turns "\r\n", a lone "\r", U+2029 and the frame marks U+FDD0
// and U+FDD1 into one block separator each, which the mirror spells "\n".
// Without this the mirror would keep the caller's spelling and drift from
// the document by one unit per "\r\n".
QString asDocumentStoresIt(const QString &text)
{
    const auto special = [](QChar ch) {
        return ch == QLatin1Char('\r') || ch == QChar::ParagraphSeparator || ch.unicode() == 0xFDD0 ||
               ch.unicode() == 0xFDD1;
    };
    if (std::none_of(text.cbegin(), text.cend(), special))
        return text;
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar ch = text.at(i);
        if (ch == QLatin1Char('\r') && i + 1 < text.size() && text.at(i + 1) == QLatin1Char('\n'))
            continue; // the "\n" that follows stands for both
        out.append(special(ch) ? QChar(QLatin1Char('\n')) : ch);
    }
    return out;
}

} // namespace

ORVTextEditBuffer::ORVTextEditBuffer(QPlainTextEdit *edit, QObject *parent) : QObject(parent), m_edit(edit)
{
    attachToDocument();
}

void ORVTextEditBuffer::attachToDocument()
{
    disconnect(m_connection);
    m_connection = connect(m_edit->document(), &QTextDocument::contentsChange, this,
                           &ORVTextEditBuffer::documentContentsChange);
    m_mirror = plainFromDocumentText(m_edit->document()->toRawText());
}

void ORVTextEditBuffer::resync()
{
    const qsizetype oldSize = m_mirror.size();
    m_mirror = plainFromDocumentText(m_edit->document()->toRawText());
    ++m_resyncs;
    emit textEdited(0, oldSize, m_mirror);
}

void ORVTextEditBuffer::documentContentsChange(int from, int charsRemoved, int charsAdded)
{
    if (m_ownEdits > 0)
        return;
    QTextDocument *doc = m_edit->document();
    const qsizetype size = doc->characterCount() - 1;
    // Reports may count the document's final separator; such a report, or
    // one that does not add up, rebuilds the mirror.
    if (from < 0 || from + charsRemoved > m_mirror.size() || from + charsAdded > size ||
        m_mirror.size() - charsRemoved + charsAdded != size) {
        resync();
        return;
    }
    QString inserted;
    if (charsAdded > 0) {
        QTextCursor c(doc);
        c.setPosition(from);
        c.setPosition(from + charsAdded, QTextCursor::KeepAnchor);
        inserted = plainFromDocumentText(c.selectedText());
        if (inserted.size() != charsAdded) {
            resync();
            return;
        }
    }
    m_mirror.replace(from, charsRemoved, inserted);
    emit textEdited(from, charsRemoved, inserted);
}

ORVEditRange ORVTextEditBuffer::selectedRange() const
{
    const QTextCursor c = m_edit->textCursor();
    const int lo = qMin(c.anchor(), c.position());
    return {lo, qAbs(c.anchor() - c.position())};
}

QTextCursor ORVTextEditBuffer::cursorSelecting(ORVEditRange range) const
{
    const qsizetype size = m_mirror.size();
    const qsizetype loc = qBound<qsizetype>(0, range.location, size);
    const qsizetype end = qBound<qsizetype>(loc, range.location + qMax<qsizetype>(0, range.length), size);
    QTextCursor c(m_edit->document());
    c.setPosition(int(loc));
    c.setPosition(int(end), QTextCursor::KeepAnchor);
    return c;
}

void ORVTextEditBuffer::setSelectedRange(ORVEditRange range) { m_edit->setTextCursor(cursorSelecting(range)); }

void ORVTextEditBuffer::replaceCharactersInRange(ORVEditRange range, const QString &rawText)
{
    const QString text = asDocumentStoresIt(rawText);
    QTextCursor c = cursorSelecting(range);
    const qsizetype loc = c.selectionStart();
    const qsizetype end = c.selectionEnd();
    ++m_ownEdits;
    if (m_groupDepth == 0)
        c.beginEditBlock();
    c.insertText(text);
    if (m_groupDepth == 0)
        c.endEditBlock();
    --m_ownEdits;
    m_edit->setTextCursor(c);
    if (m_mirror.size() - (end - loc) + text.size() != m_edit->document()->characterCount() - 1) {
        // The document took the text otherwise than foreseen: read it back.
        resync();
        return;
    }
    m_mirror.replace(loc, end - loc, text);
    emit textEdited(loc, end - loc, text);
}

void ORVTextEditBuffer::beginUndoGrouping()
{
    if (m_groupDepth++ == 0) {
        // Undo gives the caret back where this cursor stands: the selection
        // the command started from.
        m_groupCursor = m_edit->textCursor();
        m_groupCursor.beginEditBlock();
    }
}

void ORVTextEditBuffer::endUndoGrouping()
{
    if (m_groupDepth == 0 || --m_groupDepth > 0)
        return;
    ++m_ownEdits; // the block's report now covers edits mirrored already
    m_groupCursor.endEditBlock();
    --m_ownEdits;
    m_groupCursor = QTextCursor();
    if (m_mirror.size() != m_edit->document()->characterCount() - 1)
        resync();
}
