// Typographic replacement over rendered HTML.
//
// Runs of ordinary bytes are copied as they are; each of the characters
// " & ' ( - . 1 3 < \ ` calls an action that writes its replacement or the
// character itself and says how many more bytes it consumed. Quotes curl by
// context: an opening quote needs a word boundary before it, a closing one a
// word boundary after it.
#include "markdown/html_internal.h"

#include <cstring>
#include <strings.h>

namespace {

struct sp_state {
    bool in_squote = false;
    bool in_dquote = false;
};

inline bool is_space(uint8_t c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }
inline bool is_punct(uint8_t c)
{
    return (c >= 33 && c <= 47) || (c >= 58 && c <= 64) || (c >= 91 && c <= 96) || (c >= 123 && c <= 126);
}
inline bool is_alpha(uint8_t c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }
inline bool is_alnum(uint8_t c) { return is_alpha(c) || (c >= '0' && c <= '9'); }
inline bool word_boundary(uint8_t c) { return c == 0 || is_space(c) || is_punct(c); }

// A curly quote built as "&[lr][ds]quo;" when the context allows it.
bool curl_quote(hoedown_buffer *ob, uint8_t previous, uint8_t next, char kind, bool *is_open)
{
    if (*is_open && !word_boundary(next))
        return false;
    if (!*is_open && !word_boundary(previous))
        return false;
    char ent[8] = {'&', *is_open ? 'r' : 'l', kind, 'q', 'u', 'o', ';', 0};
    hoedown_buffer_put(ob, reinterpret_cast<const uint8_t *>(ent), 7);
    *is_open = !*is_open;
    return true;
}

typedef size_t (*sp_action)(hoedown_buffer *ob, sp_state *st, uint8_t previous, const uint8_t *text, size_t size);

// An apostrophe or single quote whose own form took `len` bytes; `next` is
// the byte after it.
size_t single_quote(hoedown_buffer *ob, sp_state *st, uint8_t previous, const uint8_t *text, size_t size,
                    size_t len)
{
    const uint8_t next = size > len ? text[len] : 0;
    // Inside a word it is an apostrophe.
    if (is_alnum(previous) && is_alpha(next)) {
        HTML_PUTSL(ob, "&rsquo;");
        return len - 1;
    }
    if (curl_quote(ob, previous, next, 's', &st->in_squote))
        return len - 1;
    hoedown_buffer_put(ob, text, len);
    return len - 1;
}

size_t sp_squote(hoedown_buffer *ob, sp_state *st, uint8_t previous, const uint8_t *text, size_t size)
{
    // Two single quotes make a double one.
    if (size >= 2 && text[1] == '\'' && curl_quote(ob, previous, size >= 3 ? text[2] : 0, 'd', &st->in_dquote))
        return 1;
    return single_quote(ob, st, previous, text, size, 1);
}

size_t sp_dquote(hoedown_buffer *ob, sp_state *st, uint8_t previous, const uint8_t *text, size_t size)
{
    if (!curl_quote(ob, previous, size >= 2 ? text[1] : 0, 'd', &st->in_dquote))
        HTML_PUTSL(ob, "\"");
    return 0;
}

size_t sp_amp(hoedown_buffer *ob, sp_state *st, uint8_t previous, const uint8_t *text, size_t size)
{
    if (size >= 6 && memcmp(text, "&quot;", 6) == 0) {
        if (!curl_quote(ob, previous, size >= 7 ? text[6] : 0, 'd', &st->in_dquote))
            HTML_PUTSL(ob, "&quot;");
        return 5;
    }
    // Text apostrophes arrive escaped by the renderer; two make a double
    // quote, as two plain ones do.
    if (size >= 10 && memcmp(text, "&#39;&#39;", 10) == 0 &&
        curl_quote(ob, previous, size >= 11 ? text[10] : 0, 'd', &st->in_dquote))
        return 9;
    if (size >= 5 && memcmp(text, "&#39;", 5) == 0)
        return single_quote(ob, st, previous, text, size, 5);
    if (size >= 4 && memcmp(text, "&#0;", 4) == 0)
        return 3;
    HTML_PUTSL(ob, "&");
    return 0;
}

size_t sp_parens(hoedown_buffer *ob, sp_state *, uint8_t, const uint8_t *text, size_t size)
{
    if (size >= 3 && text[2] == ')') {
        const uint8_t c = text[1] | 0x20;
        if (c == 'c') {
            HTML_PUTSL(ob, "&copy;");
            return 2;
        }
        if (c == 'r') {
            HTML_PUTSL(ob, "&reg;");
            return 2;
        }
    }
    if (size >= 4 && (text[1] | 0x20) == 't' && (text[2] | 0x20) == 'm' && text[3] == ')') {
        HTML_PUTSL(ob, "&trade;");
        return 3;
    }
    HTML_PUTSL(ob, "(");
    return 0;
}

size_t sp_dash(hoedown_buffer *ob, sp_state *, uint8_t, const uint8_t *text, size_t size)
{
    if (size >= 3 && text[1] == '-' && text[2] == '-') {
        HTML_PUTSL(ob, "&mdash;");
        return 2;
    }
    if (size >= 2 && text[1] == '-') {
        HTML_PUTSL(ob, "&ndash;");
        return 1;
    }
    HTML_PUTSL(ob, "-");
    return 0;
}

size_t sp_period(hoedown_buffer *ob, sp_state *, uint8_t, const uint8_t *text, size_t size)
{
    if (size >= 3 && text[1] == '.' && text[2] == '.') {
        HTML_PUTSL(ob, "&hellip;");
        return 2;
    }
    if (size >= 5 && text[1] == ' ' && text[2] == '.' && text[3] == ' ' && text[4] == '.') {
        HTML_PUTSL(ob, "&hellip;");
        return 4;
    }
    HTML_PUTSL(ob, ".");
    return 0;
}

// A fraction stands alone: no letter, digit or slash on either side (so
// dates like 1/2/2024 stay as they are).
inline bool fraction_edge(uint8_t c) { return c != '/' && word_boundary(c); }

size_t sp_number(hoedown_buffer *ob, sp_state *, uint8_t previous, const uint8_t *text, size_t size)
{
    if (fraction_edge(previous) && size >= 3 && text[1] == '/' && (size == 3 || fraction_edge(text[3]))) {
        if (text[0] == '1' && text[2] == '2') {
            HTML_PUTSL(ob, "&frac12;");
            return 2;
        }
        if (text[0] == '1' && text[2] == '4') {
            HTML_PUTSL(ob, "&frac14;");
            return 2;
        }
        if (text[0] == '3' && text[2] == '4') {
            HTML_PUTSL(ob, "&frac34;");
            return 2;
        }
    }
    hoedown_buffer_putc(ob, text[0]);
    return 0;
}

size_t sp_backtick(hoedown_buffer *ob, sp_state *st, uint8_t previous, const uint8_t *text, size_t size)
{
    if (size >= 2 && text[1] == '`' && curl_quote(ob, previous, size >= 3 ? text[2] : 0, 'd', &st->in_dquote))
        return 1;
    HTML_PUTSL(ob, "`");
    return 0;
}

size_t sp_escape(hoedown_buffer *ob, sp_state *, uint8_t, const uint8_t *text, size_t size)
{
    if (size >= 2) {
        switch (text[1]) {
        case '\\':
        case '"':
        case '\'':
        case '.':
        case '-':
        case '`':
            hoedown_buffer_putc(ob, text[1]);
            return 1;
        default:
            break;
        }
    }
    HTML_PUTSL(ob, "\\");
    return 0;
}

// Elements whose text is never typographic.
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

// The skip element a tag opens, or null.
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
        return names_tag(name, size, "samp") ? "samp"
             : names_tag(name, size, "script") ? "script"
             : names_tag(name, size, "style") ? "style"
                                               : nullptr;
    case 'k':
        return names_tag(name, size, "kbd") ? "kbd" : nullptr;
    case 'm':
        return names_tag(name, size, "math") ? "math" : nullptr;
    default:
        return nullptr;
    }
}

size_t sp_tag(hoedown_buffer *ob, sp_state *, uint8_t, const uint8_t *text, size_t size)
{
    // A comment is copied through its end.
    if (size >= 4 && memcmp(text, "<!--", 4) == 0) {
        size_t i = 4;
        while (i + 3 <= size && memcmp(text + i, "-->", 3) != 0)
            ++i;
        const size_t end = i + 3 <= size ? i + 3 : size;
        hoedown_buffer_put(ob, text, end);
        return end - 1;
    }
    const void *gt = memchr(text, '>', size);
    if (!gt) {
        HTML_PUTSL(ob, "<");
        return 0;
    }
    size_t end = size_t(static_cast<const uint8_t *>(gt) - text) + 1;
    if (const char *tag = skip_tag(text + 1, size - 1)) {
        // Copy through the closing tag.
        size_t i = end;
        for (;;) {
            const void *lt = i < size ? memchr(text + i, '<', size - i) : nullptr;
            if (!lt) {
                end = size;
                break;
            }
            i = size_t(static_cast<const uint8_t *>(lt) - text);
            if (i + 1 < size && text[i + 1] == '/' && names_tag(text + i + 2, size - i - 2, tag)) {
                const void *close = memchr(text + i, '>', size - i);
                end = close ? size_t(static_cast<const uint8_t *>(close) - text) + 1 : size;
                break;
            }
            ++i;
        }
    }
    hoedown_buffer_put(ob, text, end);
    return end - 1;
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

const sp_action kActions[] = {nullptr, sp_dquote, sp_amp,   sp_squote, sp_parens,  sp_dash,
                              sp_period, sp_number, sp_tag, sp_escape, sp_backtick};

} // namespace

void hoedown_html_smartypants(hoedown_buffer *ob, const uint8_t *text, size_t size)
{
    if (!text)
        return;
    sp_state st;
    hoedown_buffer_grow(ob, ob->size + size + size / 16);
    size_t i = 0;
    while (i < size) {
        const size_t org = i;
        while (i < size && !kActive.v[text[i]])
            ++i;
        hoedown_buffer_put(ob, text + org, i - org);
        if (i >= size)
            break;
        const uint8_t previous = i > 0 ? text[i - 1] : 0;
        i += kActions[kActive.v[text[i]]](ob, &st, previous, text + i, size - i) + 1;
    }
}
