#pragma once

#include <cstddef>

namespace pmh {

// Bump allocator for the records and strings of one parse result. Nothing is
// freed singly: the whole arena goes at once, so a parse costs a handful of
// allocations however many elements it finds.
class Arena
{
public:
    Arena() = default;
    ~Arena();
    Arena(const Arena &) = delete;
    Arena &operator=(const Arena &) = delete;

    // size bytes aligned for any record; allocation failure throws like new.
    void *allocate(size_t size);
    // A NUL-terminated copy of len bytes.
    char *copyString(const char *bytes, size_t len);

private:
    struct Block {
        Block *previous;
    };
    Block *m_last = nullptr;
    char *m_cursor = nullptr;
    char *m_limit = nullptr;
    // Blocks grow from 16 KiB to 1 MiB: small texts stay small, a book
    // needs only a few blocks.
    size_t m_nextBlockSize = 16 * 1024;
};

} // namespace pmh
