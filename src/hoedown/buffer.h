#pragma once

// Growable byte buffers for the Markdown parser and its renderers.
//
// Bytes are opaque here: the parser works on UTF-8 but never decodes it, and
// the buffer never adds a terminating NUL except through hoedown_buffer_cstr.
// A buffer is owned by whoever made it (hoedown_buffer_new/_init) and is not
// shared between threads.

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

struct hoedown_buffer {
    uint8_t *data; // the bytes, or null while nothing was ever written
    size_t size;   // bytes in use
    size_t asize;  // bytes allocated
    size_t unit;   // growth step: allocations are rounded up to a multiple of it
};

// A buffer on the heap with the given growth unit. A zero unit is a
// programming error (asserted in debug builds; release builds use 1).
hoedown_buffer *hoedown_buffer_new(size_t unit);
void hoedown_buffer_free(hoedown_buffer *buf);

// For a buffer embedded in another object.
void hoedown_buffer_init(hoedown_buffer *buf, size_t unit);
void hoedown_buffer_uninit(hoedown_buffer *buf);

// Empties the buffer and gives its memory back.
void hoedown_buffer_reset(hoedown_buffer *buf);

// Makes room for at least `neosz` bytes in total.
void hoedown_buffer_grow(hoedown_buffer *buf, size_t neosz);

// Appending is inline: renderers append many short pieces, and most fit in
// the room the buffer already has.
inline void hoedown_buffer_put(hoedown_buffer *buf, const uint8_t *data, size_t size)
{
    assert(buf && buf->unit);
    if (!size)
        return;
    if (buf->size + size > buf->asize)
        hoedown_buffer_grow(buf, buf->size + size);
    memcpy(buf->data + buf->size, data, size);
    buf->size += size;
}
void hoedown_buffer_puts(hoedown_buffer *buf, const char *str);
inline void hoedown_buffer_putc(hoedown_buffer *buf, uint8_t c)
{
    assert(buf && buf->unit);
    if (buf->size >= buf->asize)
        hoedown_buffer_grow(buf, buf->size + 1);
    buf->data[buf->size++] = c;
}

// Replaces the contents.
void hoedown_buffer_set(hoedown_buffer *buf, const uint8_t *data, size_t size);
// Appends formatted text (printf rules).
void hoedown_buffer_printf(hoedown_buffer *buf, const char *fmt, ...) __attribute__((format(printf, 2, 3)));
// Appends the decimal form of a number.
void hoedown_buffer_putnum(hoedown_buffer *buf, long value);

// Removes `size` bytes from the front.
void hoedown_buffer_slurp(hoedown_buffer *buf, size_t size);
// Whether the contents start with `prefix`; 0 when they do (strncmp sense).
int hoedown_buffer_prefix(const hoedown_buffer *buf, const char *prefix);

// The contents as a NUL-terminated string (the NUL is not counted in size).
const char *hoedown_buffer_cstr(hoedown_buffer *buf);

// The first `c` in data[0, size), or null: memchr for the short spans the
// parser searches by the thousand (lines, tags), where a call into the C
// library costs more than the search.
inline const uint8_t *hoedown_find_byte(const uint8_t *data, size_t size, uint8_t c)
{
    size_t i = 0;
#ifdef __SSE2__
    const __m128i needle = _mm_set1_epi8(char(c));
    for (; i + 16 <= size; i += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + i));
        const int mask = _mm_movemask_epi8(_mm_cmpeq_epi8(v, needle));
        if (mask)
            return data + i + __builtin_ctz(unsigned(mask));
    }
#endif
    for (; i < size; ++i) {
        if (data[i] == c)
            return data + i;
    }
    return nullptr;
}

// Appends a string literal without measuring it at run time.
#define HOEDOWN_BUFPUTSL(output, literal) hoedown_buffer_put(output, (const uint8_t *)literal, sizeof(literal) - 1)

// Called when memory runs out: prints "Allocation failed.\n" on standard
// error and ends the process. A renderer has no way to go on without its
// output, and every caller would otherwise need an error path it cannot use.
[[noreturn]] void hoedown_allocation_failed();

// realloc that never returns null.
void *hoedown_realloc(void *ptr, size_t size);
void *hoedown_calloc(size_t count, size_t size);
