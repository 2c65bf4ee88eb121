// Typographic replacement over rendered HTML.
//
// Each of the characters " & ' ( - . 1 3 < \ ` calls an action, which may
// replace it (and what follows) or leave it; everything else, and whatever
// an action leaves, is copied as it is, in runs. Quotes curl by context: an
// opening quote needs a word boundary before it, a closing one a word
// boundary after it.
#include "markdown/html_internal.h"

#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

inline bool is_space(uint8_t c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }
inline bool is_punct(uint8_t c)
{
    return (c >= 33 && c <= 47) || (c >= 58 && c <= 64) || (c >= 91 && c <= 96) || (c >= 123 && c <= 126);
}
inline bool is_alpha(uint8_t c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }
inline bool is_alnum(uint8_t c) { return is_alpha(c) || (c >= '0' && c <= '9'); }
inline bool word_boundary(uint8_t c) { return c == 0 || is_space(c) || is_punct(c); }

// One pass over the text: text[pending, i) is still to be copied.
struct sp_pass {
    hoedown_buffer *ob;
    const uint8_t *text;
    size_t size;
    size_t pending;
    bool in_squote = false;
    bool in_dquote = false;

    uint8_t at(size_t i) const { return i < size ? text[i] : 0; }
    uint8_t before(size_t i) const { return i > 0 ? text[i - 1] : 0; }

    // Replaces text[i, i + len) with `with`; returns len.
    size_t replace(size_t i, size_t len, const char *with, size_t with_len)
    {
        hoedown_buffer_put(ob, text + pending, i - pending);
        hoedown_buffer_put(ob, reinterpret_cast<const uint8_t *>(with), with_len);
        pending = i + len;
        return len;
    }
    template <size_t N> size_t replace(size_t i, size_t len, const char (&with)[N])
    {
        return replace(i, len, with, N - 1);
    }

    // A curly quote for text[i, i + len) when the context allows it: an
    // entity "&[lr][ds]quo;". Returns len, or 0 when the quote stays.
    size_t curl(size_t i, size_t len, char kind, bool *is_open)
    {
        if (*is_open && !word_boundary(at(i + len)))
            return 0;
        if (!*is_open && !word_boundary(before(i)))
            return 0;
        const char ent[8] = {'&', *is_open ? 'r' : 'l', kind, 'q', 'u', 'o', ';', 0};
        *is_open = !*is_open;
        return replace(i, len, ent, 7);
    }

    // An apostrophe or single quote whose own form is text[i, i + len).
    size_t single_quote(size_t i, size_t len)
    {
        // Inside a word it is an apostrophe.
        if (is_alnum(before(i)) && is_alpha(at(i + len)))
            return replace(i, len, "&rsquo;");
        const size_t r = curl(i, len, 's', &in_squote);
        return r ? r : len;
    }
};

// Each action looks at text[i] and returns how many bytes it dealt with (at
// least one): replaced, or left to be copied.
typedef size_t (*sp_action)(sp_pass &p, size_t i);

size_t sp_squote(sp_pass &p, size_t i)
{
    // Two single quotes make a double one.
    if (p.at(i + 1) == '\'') {
        if (const size_t r = p.curl(i, 2, 'd', &p.in_dquote))
            return r;
    }
    return p.single_quote(i, 1);
}

size_t sp_dquote(sp_pass &p, size_t i)
{
    const size_t r = p.curl(i, 1, 'd', &p.in_dquote);
    return r ? r : 1;
}

size_t sp_amp(sp_pass &p, size_t i)
{
    const uint8_t *t = p.text + i;
    const size_t left = p.size - i;
    if (left >= 6 && memcmp(t, "&quot;", 6) == 0) {
        p.curl(i, 6, 'd', &p.in_dquote);
        return 6;
    }
    // Text apostrophes arrive escaped by the renderer; two make a double
    // quote, as two plain ones do.
    if (left >= 10 && memcmp(t, "&#39;&#39;", 10) == 0) {
        if (const size_t r = p.curl(i, 10, 'd', &p.in_dquote))
            return r;
    }
    if (left >= 5 && memcmp(t, "&#39;", 5) == 0)
        return p.single_quote(i, 5);
    if (left >= 4 && memcmp(t, "&#0;", 4) == 0)
        return p.replace(i, 4, "");
    return 1;
}

size_t sp_parens(sp_pass &p, size_t i)
{
    const uint8_t a = p.at(i + 1) | 0x20, b = p.at(i + 2);
    if (b == ')' && a == 'c')
        return p.replace(i, 3, "&copy;");
    if (b == ')' && a == 'r')
        return p.replace(i, 3, "&reg;");
    if (a == 't' && (b | 0x20) == 'm' && p.at(i + 3) == ')')
        return p.replace(i, 4, "&trade;");
    return 1;
}

size_t sp_dash(sp_pass &p, size_t i)
{
    if (p.at(i + 1) == '-') {
        if (p.at(i + 2) == '-')
            return p.replace(i, 3, "&mdash;");
        return p.replace(i, 2, "&ndash;");
    }
    return 1;
}

size_t sp_period(sp_pass &p, size_t i)
{
    if (p.at(i + 1) == '.' && p.at(i + 2) == '.')
        return p.replace(i, 3, "&hellip;");
    if (p.at(i + 1) == ' ' && p.at(i + 2) == '.' && p.at(i + 3) == ' ' && p.at(i + 4) == '.')
        return p.replace(i, 5, "&hellip;");
    return 1;
}

// A fraction stands alone: no letter, digit or slash on either side (so
// dates like 1/2/2024 stay as they are).
inline bool fraction_edge(uint8_t c) { return c != '/' && word_boundary(c); }

size_t sp_number(sp_pass &p, size_t i)
{
    if (p.at(i + 1) != '/' || !fraction_edge(p.before(i)) || i + 2 >= p.size || !fraction_edge(p.at(i + 3)))
        return 1;
    const uint8_t a = p.text[i], b = p.text[i + 2];
    if (a == '1' && b == '2')
        return p.replace(i, 3, "&frac12;");
    if (a == '1' && b == '4')
        return p.replace(i, 3, "&frac14;");
    if (a == '3' && b == '4')
        return p.replace(i, 3, "&frac34;");
    return 1;
}

size_t sp_backtick(sp_pass &p, size_t i)
{
    if (p.at(i + 1) == '`') {
        if (const size_t r = p.curl(i, 2, 'd', &p.in_dquote))
            return r;
    }
    return 1;
}

size_t sp_escape(sp_pass &p, size_t i)
{
    const uint8_t c = p.at(i + 1);
    switch (c) {
    case '\\':
    case '"':
    case '\'':
    case '.':
    case '-':
    case '`': {
        // The backslash goes, the character stays as it is.
        const char keep[2] = {char(c), 0};
        return p.replace(i, 2, keep, 1);
    }
    default:
        return 1;
    }
}

// Whether text (after '<' or "</") names `tag` (lower case), ending at a
// space, '>' or '/'.
bool names_tag(const uint8_t *text, size_t size, const char *tag)
{
    size_t n = 0;
    for (; tag[n]; ++n) {
        if (n >= size || (text[n] | 0x20) != uint8_t(tag[n]))
            return false;
    }
    if (n >= size)
        return false;
    const uint8_t c = text[n];
    return c == '>' || c == '/' || is_space(c);
}

// The element a tag opens if its text is never typographic: pre, code, var,
// samp, kbd, math, script or style; null otherwise.
const char *skip_tag(const uint8_t *name, size_t size)
{
    if (!size)
        return nullptr;
    // Most tags are none of them: tell by the first letter.
    switch (name[0] | 0x20) {
    case 'p':
        return names_tag(name, size, "pre") ? "pre" : nullptr;
    case 'c':
        return names_tag(name, size, "code") ? "code" : nullptr;
    case 'v':
        return names_tag(name, size, "var") ? "var" : nullptr;
    case 's':
        return names_tag(name, size, "samp")     ? "samp"
               : names_tag(name, size, "script") ? "script"
               : names_tag(name, size, "style")  ? "style"
                                                 : nullptr;
    case 'k':
        return names_tag(name, size, "kbd") ? "kbd" : nullptr;
    case 'm':
        return names_tag(name, size, "math") ? "math" : nullptr;
    default:
        return nullptr;
    }
}

// A tag is left as it is, attributes and all; a comment and a skip element
// through their end.
size_t sp_tag(sp_pass &p, size_t i)
{
    const uint8_t *text = p.text + i;
    const size_t size = p.size - i;
    if (size >= 4 && memcmp(text, "<!--", 4) == 0) {
        size_t k = 4;
        while (k + 3 <= size && memcmp(text + k, "-->", 3) != 0)
            ++k;
        return k + 3 <= size ? k + 3 : size;
    }
    const uint8_t *gt = hoedown_find_byte(text, size, '>');
    if (!gt)
        return 1;
    const size_t end = size_t(gt - text) + 1;
    if (const char *tag = skip_tag(text + 1, size - 1)) {
        size_t k = end;
        for (;;) {
            const void *lt = k < size ? memchr(text + k, '<', size - k) : nullptr;
            if (!lt)
                return size;
            k = size_t(static_cast<const uint8_t *>(lt) - text);
            if (k + 1 < size && text[k + 1] == '/' && names_tag(text + k + 2, size - k - 2, tag)) {
                const void *close = memchr(text + k, '>', size - k);
                return close ? size_t(static_cast<const uint8_t *>(close) - text) + 1 : size;
            }
            ++k;
        }
    }
    return end;
}

enum : uint8_t { SP_NONE, SP_DQUOTE, SP_AMP, SP_SQUOTE, SP_PARENS, SP_DASH, SP_PERIOD, SP_NUMBER, SP_TAG, SP_ESCAPE, SP_BACKTICK };

struct sp_table {
    uint8_t v[256] = {};
    constexpr sp_table()
    {
        v[uint8_t('"')] = SP_DQUOTE;
        v[uint8_t('&')] = SP_AMP;
        v[uint8_t('\'')] = SP_SQUOTE;
        v[uint8_t('(')] = SP_PARENS;
        v[uint8_t('-')] = SP_DASH;
        v[uint8_t('.')] = SP_PERIOD;
        v[uint8_t('1')] = SP_NUMBER;
        v[uint8_t('3')] = SP_NUMBER;
        v[uint8_t('<')] = SP_TAG;
        v[uint8_t('\\')] = SP_ESCAPE;
        v[uint8_t('`')] = SP_BACKTICK;
    }
};
constexpr sp_table kActive;

const sp_action kActions[] = {nullptr,   sp_dquote, sp_amp, sp_squote, sp_parens,  sp_dash,
                              sp_period, sp_number, sp_tag, sp_escape, sp_backtick};

// Finds the next byte that has an action.
struct action_finder {
#ifdef __SSE2__
    // Rendered HTML runs long between these bytes: sixteen bytes are
    // looked at together.
    __m128i set[11];
    action_finder()
    {
        static const char chars[] = "\"&'(-.13<\\`";
        for (int k = 0; k < 11; ++k)
            set[k] = _mm_set1_epi8(chars[k]);
    }
#endif
    // The first byte at or after i that has an action, or size.
    size_t next(const uint8_t *text, size_t i, size_t size) const
    {
#ifdef __SSE2__
        while (i + 16 <= size) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + i));
            __m128i hit = _mm_cmpeq_epi8(v, set[0]);
            for (int k = 1; k < 11; ++k)
                hit = _mm_or_si128(hit, _mm_cmpeq_epi8(v, set[k]));
            const int mask = _mm_movemask_epi8(hit);
            if (mask)
                return i + size_t(__builtin_ctz(unsigned(mask)));
            i += 16;
        }
#endif
        while (i < size && !kActive.v[text[i]])
            ++i;
        return i;
    }
};

} // namespace

void hoedown_html_smartypants(hoedown_buffer *ob, const uint8_t *text, size_t size)
{
    if (!text || !size)
        return;
    hoedown_buffer_grow(ob, ob->size + size + size / 16);
    sp_pass p{ob, text, size, 0};
    const action_finder find;
    size_t i = find.next(text, 0, size);
    while (i < size) {
        i += kActions[kActive.v[text[i]]](p, i);
        i = find.next(text, i, size);
    }
    hoedown_buffer_put(ob, text + p.pending, size - p.pending);
}
