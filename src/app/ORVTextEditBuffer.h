#pragma once

#include "editor/ORVTextBuffer.h"

#include <QObject>
#include <QPointer>
#include <QTextCursor>

class QPlainTextEdit;

// The editing commands' text buffer over a plain text editor widget.
//
// string() is a mirror of the widget's document kept in step edit by edit
// (lines end with "\n"), so commands and the document binding read the
// text without copying a large document at every keystroke. Edits go
// through text cursors, so they undo with the widget's own undo; a group
// is one edit block of the document.
//
// A document reports the edits of an edit block only when the block ends,
// so the buffer applies its own edits to the mirror as it makes them and
// ignores the document's later report of them; edits made by anyone else
// (typing, undo) come from the document's reports.
//
// Inserted text is stored as the document stores it: "\r\n", "\r" and
// U+2029 become "\n", in the mirror and in textEdited alike.
//
// The widget is not owned and must outlive the buffer. Thread: the main
// thread.
class ORVTextEditBuffer : public QObject, public ORVTextBuffer
{
    Q_OBJECT
public:
    explicit ORVTextEditBuffer(QPlainTextEdit *edit, QObject *parent = nullptr);

    // Follows the widget's current document (after setDocument).
    void attachToDocument();

    const QString &string() const override { return m_mirror; }
    ORVEditRange selectedRange() const override;
    void setSelectedRange(ORVEditRange range) override;
    void replaceCharactersInRange(ORVEditRange range, const QString &text) override;
    void beginUndoGrouping() override;
    void endUndoGrouping() override;

    // How often the mirror was rebuilt from the whole document because an
    // edit report did not add up (tests watch this stay low).
    int resyncCount() const { return m_resyncs; }

signals:
    // The text changed: [location, location + removed) of the old text
    // became `inserted`. A rebuild reports the whole text.
    void textEdited(qsizetype location, qsizetype removed, const QString &inserted);

private:
    void documentContentsChange(int from, int charsRemoved, int charsAdded);
    void resync();
    // A cursor over `range`, clamped to the text.
    QTextCursor cursorSelecting(ORVEditRange range) const;

    QPlainTextEdit *m_edit;
    QMetaObject::Connection m_connection;
    QString m_mirror;
    QTextCursor m_groupCursor;
    int m_groupDepth = 0;
    int m_ownEdits = 0; // inside an edit of ours: the document's reports are already mirrored
    int m_resyncs = 0;
};
