#include "hoedown/buffer.h"

#include <cassert>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

void hoedown_allocation_failed()
{
    fputs("Allocation failed.\n", stderr);
    abort();
}

void *hoedown_realloc(void *ptr, size_t size)
{
    void *p = realloc(ptr, size ? size : 1);
    if (!p)
        hoedown_allocation_failed();
    return p;
}

void *hoedown_calloc(size_t count, size_t size)
{
    void *p = calloc(count ? count : 1, size ? size : 1);
    if (!p)
        hoedown_allocation_failed();
    return p;
}

void hoedown_buffer_init(hoedown_buffer *buf, size_t unit)
{
    assert(buf && unit);
    buf->data = nullptr;
    buf->size = 0;
    buf->asize = 0;
    // A zero unit would never grow; one byte at a time is slow but correct.
    buf->unit = unit ? unit : 1;
}

void hoedown_buffer_uninit(hoedown_buffer *buf)
{
    if (!buf)
        return;
    free(buf->data);
    buf->data = nullptr;
    buf->size = buf->asize = 0;
}

hoedown_buffer *hoedown_buffer_new(size_t unit)
{
    auto *buf = static_cast<hoedown_buffer *>(hoedown_realloc(nullptr, sizeof(hoedown_buffer)));
    hoedown_buffer_init(buf, unit);
    return buf;
}

void hoedown_buffer_free(hoedown_buffer *buf)
{
    if (!buf)
        return;
    free(buf->data);
    free(buf);
}

void hoedown_buffer_reset(hoedown_buffer *buf)
{
    assert(buf && buf->unit);
    if (!buf)
        return;
    free(buf->data);
    buf->data = nullptr;
    buf->size = buf->asize = 0;
}

void hoedown_buffer_grow(hoedown_buffer *buf, size_t neosz)
{
    assert(buf && buf->unit);
    if (!buf || buf->asize >= neosz)
        return;
    // Round up to the unit, and at least double so that appending n bytes
    // one at a time costs O(n) in total even with a small unit.
    size_t neoasz = buf->asize + buf->asize / 2;
    if (neoasz < neosz)
        neoasz = neosz;
    neoasz = ((neoasz + buf->unit - 1) / buf->unit) * buf->unit;
    if (neoasz < neosz) // overflow of the rounding
        hoedown_allocation_failed();
    buf->data = static_cast<uint8_t *>(hoedown_realloc(buf->data, neoasz));
    buf->asize = neoasz;
}

void hoedown_buffer_puts(hoedown_buffer *buf, const char *str)
{
    hoedown_buffer_put(buf, reinterpret_cast<const uint8_t *>(str), strlen(str));
}

void hoedown_buffer_set(hoedown_buffer *buf, const uint8_t *data, size_t size)
{
    assert(buf && buf->unit);
    buf->size = 0;
    hoedown_buffer_put(buf, data, size);
}

void hoedown_buffer_printf(hoedown_buffer *buf, const char *fmt, ...)
{
    assert(buf && buf->unit);
    if (buf->size >= buf->asize)
        hoedown_buffer_grow(buf, buf->size + 1);
    va_list ap;
    va_start(ap, fmt);
    int n = vsnprintf(reinterpret_cast<char *>(buf->data + buf->size), buf->asize - buf->size, fmt, ap);
    va_end(ap);
    if (n < 0)
        return;
    if (static_cast<size_t>(n) >= buf->asize - buf->size) {
        hoedown_buffer_grow(buf, buf->size + static_cast<size_t>(n) + 1);
        va_start(ap, fmt);
        n = vsnprintf(reinterpret_cast<char *>(buf->data + buf->size), buf->asize - buf->size, fmt, ap);
        va_end(ap);
        if (n < 0)
            return;
    }
    buf->size += static_cast<size_t>(n);
}

void hoedown_buffer_putnum(hoedown_buffer *buf, long value)
{
    char tmp[24];
    char *p = tmp + sizeof tmp;
    unsigned long v = value < 0 ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
    do {
        *--p = static_cast<char>('0' + v % 10);
        v /= 10;
    } while (v);
    if (value < 0)
        *--p = '-';
    hoedown_buffer_put(buf, reinterpret_cast<const uint8_t *>(p), static_cast<size_t>(tmp + sizeof tmp - p));
}

void hoedown_buffer_slurp(hoedown_buffer *buf, size_t size)
{
    assert(buf && buf->unit);
    if (size >= buf->size) {
        buf->size = 0;
        return;
    }
    buf->size -= size;
    memmove(buf->data, buf->data + size, buf->size);
}

int hoedown_buffer_prefix(const hoedown_buffer *buf, const char *prefix)
{
    assert(buf && buf->unit);
    for (size_t i = 0; prefix[i]; ++i) {
        if (i >= buf->size)
            return -1;
        if (buf->data[i] != static_cast<uint8_t>(prefix[i]))
            return buf->data[i] - static_cast<uint8_t>(prefix[i]);
    }
    return 0;
}

const char *hoedown_buffer_cstr(hoedown_buffer *buf)
{
    assert(buf && buf->unit);
    if (buf->size < buf->asize && buf->data[buf->size] == 0)
        return reinterpret_cast<const char *>(buf->data);
    hoedown_buffer_grow(buf, buf->size + 1);
    buf->data[buf->size] = 0;
    return reinterpret_cast<const char *>(buf->data);
}
