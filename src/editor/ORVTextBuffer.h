#pragma once

#include "editor/ORVEditRange.h"

#include <QList>
#include <QString>

// What the editing commands need of a text view: the text, the selection and
// undoable replacement. Offsets and lengths are UTF-16 units; lines end with
// "\n" (the view turns other line ends into it).
//
// The commands only read string() and write through replaceCharactersInRange,
// so any text holder can carry them: the editor widget, an in-memory buffer
// for tests and headless tools.
class ORVTextBuffer
{
public:
    virtual ~ORVTextBuffer() = default;

    // The whole text. The reference stays valid until the next edit.
    virtual const QString &string() const = 0;

    virtual ORVEditRange selectedRange() const = 0;
    // Every selection, for views with several; most have one.
    virtual QList<ORVEditRange> selectedRanges() const { return {selectedRange()}; }
    // Sets the selection; a range outside the text is clamped to it.
    virtual void setSelectedRange(ORVEditRange range) = 0;

    // Replaces `range` (clamped to the text) by `text` as an undoable edit,
    // and puts the caret after the new text, as typing does.
    virtual void replaceCharactersInRange(ORVEditRange range, const QString &text) = 0;

    // Edits between these two calls undo and redo as one step. Calls nest;
    // the outermost pair decides.
    virtual void beginUndoGrouping() = 0;
    virtual void endUndoGrouping() = 0;
};

// Groups the edits of one command for the life of the object.
class ORVUndoGroup
{
public:
    explicit ORVUndoGroup(ORVTextBuffer &buffer) : m_buffer(buffer) { m_buffer.beginUndoGrouping(); }
    ~ORVUndoGroup() { m_buffer.endUndoGrouping(); }
    ORVUndoGroup(const ORVUndoGroup &) = delete;
    ORVUndoGroup &operator=(const ORVUndoGroup &) = delete;

private:
    ORVTextBuffer &m_buffer;
};
