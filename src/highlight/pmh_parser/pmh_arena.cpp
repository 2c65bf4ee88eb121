#include "highlight/pmh_parser/pmh_arena.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

namespace pmh {

namespace {
constexpr size_t kAlign = alignof(std::max_align_t);
constexpr size_t kMaxBlockSize = 1024 * 1024;
constexpr size_t roundUp(size_t n) { return (n + kAlign - 1) & ~(kAlign - 1); }
} // namespace

Arena::~Arena()
{
    while (m_last) {
        Block *previous = m_last->previous;
        ::operator delete(m_last);
        m_last = previous;
    }
}

void *Arena::allocate(size_t size)
{
    size = roundUp(size);
    if (size_t(m_limit - m_cursor) < size || !m_cursor) {
        const size_t header = roundUp(sizeof(Block));
        const size_t blockSize = std::max(m_nextBlockSize, header + size);
        m_nextBlockSize = std::min(m_nextBlockSize * 2, kMaxBlockSize);
        auto *block = static_cast<Block *>(::operator new(blockSize));
        block->previous = m_last;
        m_last = block;
        m_cursor = reinterpret_cast<char *>(block) + header;
        m_limit = reinterpret_cast<char *>(block) + blockSize;
    }
    void *p = m_cursor;
    m_cursor += size;
    return p;
}

char *Arena::copyString(const char *bytes, size_t len)
{
    auto *s = static_cast<char *>(allocate(len + 1));
    if (len)
        std::memcpy(s, bytes, len);
    s[len] = '\0';
    return s;
}

} // namespace pmh
