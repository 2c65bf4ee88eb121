#include "editor/ORVStringTextBuffer.h"

ORVStringTextBuffer::ORVStringTextBuffer(const QString &text, ORVEditRange selection) : m_text(text)
{
    m_selection = clamped(selection);
}

ORVEditRange ORVStringTextBuffer::clamped(ORVEditRange range) const
{
    const qsizetype size = m_text.size();
    const qsizetype loc = qBound<qsizetype>(0, range.location, size);
    const qsizetype end = qBound<qsizetype>(loc, range.location + qMax<qsizetype>(0, range.length), size);
    return {loc, end - loc};
}

void ORVStringTextBuffer::setSelectedRange(ORVEditRange range)
{
    m_selection = clamped(range);
    if (m_groupDepth > 0)
        m_open.selectionAfter = m_selection;
}

void ORVStringTextBuffer::replaceCharactersInRange(ORVEditRange range, const QString &text)
{
    const ORVEditRange r = clamped(range);
    const bool standalone = m_groupDepth == 0;
    if (standalone)
        beginUndoGrouping();
    m_open.edits.append({r.location, m_text.mid(r.location, r.length), text});
    m_text.replace(r.location, r.length, text);
    m_selection = {r.location + text.size(), 0};
    m_open.selectionAfter = m_selection;
    m_redo.clear();
    if (standalone)
        endUndoGrouping();
}

void ORVStringTextBuffer::beginUndoGrouping()
{
    if (m_groupDepth++ == 0)
        m_open = Step{{}, m_selection, m_selection};
}

void ORVStringTextBuffer::endUndoGrouping()
{
    if (m_groupDepth == 0 || --m_groupDepth > 0)
        return;
    if (!m_open.edits.isEmpty())
        m_undo.append(m_open);
    m_open = Step{};
}

bool ORVStringTextBuffer::undo()
{
    if (m_undo.isEmpty() || m_groupDepth > 0)
        return false;
    const Step step = m_undo.takeLast();
    for (auto it = step.edits.crbegin(); it != step.edits.crend(); ++it)
        m_text.replace(it->location, it->inserted.size(), it->removed);
    m_selection = clamped(step.selectionBefore);
    m_redo.append(step);
    return true;
}

bool ORVStringTextBuffer::redo()
{
    if (m_redo.isEmpty() || m_groupDepth > 0)
        return false;
    const Step step = m_redo.takeLast();
    for (const Edit &e : step.edits)
        m_text.replace(e.location, e.removed.size(), e.inserted);
    m_selection = clamped(step.selectionAfter);
    m_undo.append(step);
    return true;
}
