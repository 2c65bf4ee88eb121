#include "editor/ORVTextStorage.h"

#include <algorithm>

void ORVTextStorage::replaceCharactersInRange(qsizetype location, qsizetype length, const QString &text)
{
    location = std::clamp<qsizetype>(location, 0, m_string.size());
    length = std::clamp<qsizetype>(length, 0, m_string.size() - location);
    m_string.replace(location, length, text);
    const qsizetype delta = text.size() - length;
    if (m_pending) {
        // Widen the pending range to cover this edit, in the new text.
        if (m_editEnd > location)
            m_editEnd = std::max(m_editEnd + delta, location + text.size());
        else
            m_editEnd = location + text.size();
        m_editStart = std::min(m_editStart, location);
        m_delta += delta;
    } else {
        m_pending = true;
        m_editStart = location;
        m_editEnd = location + text.size();
        m_delta = delta;
    }
    if (m_editingDepth == 0)
        endEditing();
}

void ORVTextStorage::beginEditing() { ++m_editingDepth; }

void ORVTextStorage::endEditing()
{
    if (m_editingDepth > 0)
        --m_editingDepth;
    if (m_editingDepth > 0 || !m_pending)
        return;
    m_pending = false;
    m_editEnd = std::min(m_editEnd, m_string.size());
    emit didProcessEditing(m_editStart, m_editEnd - m_editStart, m_delta);
}
