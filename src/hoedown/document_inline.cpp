// Inline parsing: runs of inactive bytes go to plain_text, and each active
// byte calls its handler with the text before it still readable. A handler
// returns how many bytes it consumed, or 0, and then the byte is text.
//
// Searches that could rescan the rest of the text for every mark (matching
// brackets, closing backticks, emphasis closers, math ends) use facts about
// the text computed once per inline text (inline_frame), so that texts full
// of unclosed marks stay linear.
#include "hoedown/document_internal.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <strings.h>

using namespace hoedown_detail;

namespace hoedown_detail {

void find_brackets(const uint8_t *data, size_t size, pod_array<bracket_match> &out)
{
    out.clear();
    // While an opening mark is unmatched its `match` links to the previous
    // unmatched one of its kind, so the two stacks live inside `out`.
    size_t open_bracket = kNone, open_paren = kNone;
    for (size_t i = 0; i < size; ++i) {
        const uint8_t c = data[i];
        switch (c) {
        case '\\':
            ++i;
            break;
        case '[':
            out.push({i, open_bracket});
            open_bracket = out.size - 1;
            break;
        case '(':
            out.push({i, open_paren});
            open_paren = out.size - 1;
            break;
        case ']':
            if (open_bracket != kNone) {
                const size_t k = open_bracket;
                open_bracket = out[k].match;
                out[k].match = i;
            }
            break;
        case ')':
            if (open_paren != kNone) {
                const size_t k = open_paren;
                open_paren = out[k].match;
                out[k].match = i;
            }
            break;
        default:
            break;
        }
    }
    while (open_bracket != kNone) {
        const size_t k = open_bracket;
        open_bracket = out[k].match;
        out[k].match = kNone;
    }
    while (open_paren != kNone) {
        const size_t k = open_paren;
        open_paren = out[k].match;
        out[k].match = kNone;
    }
}

size_t bracket_at(const pod_array<bracket_match> &brackets, size_t pos)
{
    size_t lo = 0, hi = brackets.size;
    while (lo < hi) {
        const size_t mid = lo + (hi - lo) / 2;
        if (brackets[mid].pos < pos)
            lo = mid + 1;
        else
            hi = mid;
    }
    return (lo < brackets.size && brackets[lo].pos == pos) ? brackets[lo].match : kNone;
}

void find_tick_runs(const uint8_t *data, size_t size, pod_array<tick_run> &out, pod_array<size_t> &order)
{
    out.clear();
    size_t i = 0;
    while (i < size) {
        const void *p = memchr(data + i, '`', size - i);
        if (!p)
            break;
        const size_t s = size_t(static_cast<const uint8_t *>(p) - data);
        size_t e = s;
        while (e < size && data[e] == '`')
            ++e;
        out.push({s, e - s, kNone});
        i = e;
    }
    // Link each run to the next run of its length: sort by (length, start).
    order.clear();
    order.reserve(out.size);
    for (size_t k = 0; k < out.size; ++k)
        order.push(k);
    std::sort(order.data, order.data + order.size, [&out](size_t a, size_t b) {
        return out[a].len != out[b].len ? out[a].len < out[b].len : a < b;
    });
    for (size_t j = 0; j + 1 < order.size; ++j) {
        if (out[order[j]].len == out[order[j + 1]].len)
            out[order[j]].next_same = order[j + 1];
    }
}

// The closing run for an opening run of `len` backticks at `open`: the start
// of the first later run of exactly that length, or kNone.
size_t tick_closer(const pod_array<tick_run> &runs, size_t open, size_t len)
{
    // The run holding `open`.
    size_t lo = 0, hi = runs.size;
    while (lo < hi) {
        const size_t mid = lo + (hi - lo) / 2;
        if (runs[mid].start + runs[mid].len <= open)
            lo = mid + 1;
        else
            hi = mid;
    }
    if (lo >= runs.size)
        return kNone;
    if (runs[lo].start == open && runs[lo].len == len) {
        const size_t next = runs[lo].next_same;
        return next == kNone ? kNone : runs[next].start;
    }
    // The opening run is the tail of a longer one (its first backtick was
    // escaped): walk the later runs.
    for (size_t k = lo + 1; k < runs.size; ++k) {
        if (runs[k].len == len)
            return runs[k].start;
    }
    return kNone;
}

void inline_frame::need_brackets()
{
    if (!brackets_ready) {
        find_brackets(base, size, brackets);
        brackets_ready = true;
    }
}

void inline_frame::need_runs()
{
    if (!runs_ready) {
        find_tick_runs(base, size, runs, scratch);
        runs_ready = true;
    }
}

} // namespace hoedown_detail

namespace {

// Bytes that a backslash escapes.
struct escape_table {
    bool v[256] = {};
    constexpr escape_table()
    {
        const char *chars = "\\`*_{}[]()#+-.!:|&<>^~=\"$";
        for (const char *c = chars; *c; ++c)
            v[uint8_t(*c)] = true;
    }
};
constexpr escape_table kEscapable;


// Matches are first looked for directly: most brackets and code spans close
// within a few words. A search that runs past this many bytes turns to the
// text's tables instead, so that no mark costs more than this and the tables
// are only computed for texts that need them.
constexpr size_t kDirectScan = 512;

// The match of the '[' or '(' at pos (nesting and escapes honoured), kNone
// when it has none.
size_t match_of(inline_frame &f, size_t pos)
{
    const uint8_t *base = f.base;
    const uint8_t open = base[pos], close = open == '[' ? ']' : ')';
    const size_t limit = pos + kDirectScan < f.size ? pos + kDirectScan : f.size;
    size_t level = 0;
    size_t i = pos + 1;
    for (; i < limit; ++i) {
        const uint8_t c = base[i];
        if (c == '\\') {
            ++i;
        } else if (c == open) {
            ++level;
        } else if (c == close) {
            if (level == 0)
                return i;
            --level;
        }
    }
    if (i >= f.size)
        return kNone;
    f.need_brackets();
    return bracket_at(f.brackets, pos);
}

// The closing run of an opening run of `len` backticks at `open`, kNone when
// there is none.
size_t code_closer(inline_frame &f, size_t open, size_t len)
{
    const uint8_t *base = f.base;
    const size_t limit = open + len + kDirectScan < f.size ? open + len + kDirectScan : f.size;
    size_t i = open + len;
    while (i < limit) {
        const void *p = memchr(base + i, '`', limit - i);
        if (!p) {
            if (limit == f.size)
                return kNone;
            break;
        }
        const size_t s = size_t(static_cast<const uint8_t *>(p) - base);
        size_t e = s;
        while (e < f.size && base[e] == '`')
            ++e;
        if (e - s == len)
            return s;
        i = e;
    }
    if (i >= f.size)
        return kNone;
    f.need_runs();
    return tick_closer(f.runs, open, len);
}

// Code spans and links with their destination or reference, which the
// closing search of emphasis jumps over, as seen from the text's start.
void ensure_regions(inline_frame &f)
{
    if (f.regions_ready)
        return;
    f.regions_ready = true;
    f.regions.clear();
    const uint8_t *base = f.base;
    const size_t size = f.size;
    size_t i = 0;
    while (i < size) {
        const uint8_t c = base[i];
        if (c == '\\') {
            i += 2;
            continue;
        }
        if (c == '`') {
            f.need_runs();
            size_t n = 0;
            while (i + n < size && base[i + n] == '`')
                ++n;
            const size_t close = tick_closer(f.runs, i, n);
            if (close != kNone) {
                f.regions.push({i, close + n});
                i = close + n;
            } else {
                i += n;
            }
            continue;
        }
        if (c == '[') {
            f.need_brackets();
            const size_t m = bracket_at(f.brackets, i);
            if (m != kNone && m + 1 < size && (base[m + 1] == '(' || base[m + 1] == '[')) {
                const size_t e = bracket_at(f.brackets, m + 1);
                if (e != kNone) {
                    f.regions.push({i, e + 1});
                    i = e + 1;
                    continue;
                }
            }
        }
        ++i;
    }
}

// Reverses backslash escapes of a link or title into `out`.
void unescape_into(hoedown_buffer *out, const uint8_t *data, size_t size)
{
    size_t i = 0;
    while (i < size) {
        size_t org = i;
        while (i < size && data[i] != '\\')
            ++i;
        hoedown_buffer_put(out, data + org, i - org);
        if (i + 1 >= size) {
            if (i < size)
                hoedown_buffer_putc(out, data[i]);
            break;
        }
        if (!kEscapable.v[data[i + 1]])
            hoedown_buffer_putc(out, '\\');
        hoedown_buffer_putc(out, data[i + 1]);
        i += 2;
    }
}

inline bool is_blank_range(const uint8_t *data, size_t b, size_t e)
{
    for (size_t i = b; i < e; ++i) {
        if (!is_ws(data[i]))
            return false;
    }
    return true;
}

typedef size_t (*char_handler)(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset);

// --- code spans -------------------------------------------------------------

size_t char_codespan(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    const uint8_t *base = f.base;
    size_t nb = 0;
    while (offset + nb < f.size && base[offset + nb] == '`')
        ++nb;
    const size_t close = code_closer(f, offset, nb);
    if (close == kNone) {
        // No closing run: the whole opening run stays text.
        put_plain(ob, doc, base + offset, nb);
        return nb;
    }
    size_t b = offset + nb, e = close;
    while (b < e && base[b] == ' ')
        ++b;
    while (e > b && base[e - 1] == ' ')
        --e;
    int r;
    if (e > b) {
        const hoedown_buffer text = view(base + b, e - b);
        r = doc->md.code_span(ob, &text, &doc->data);
    } else {
        r = doc->md.code_span(ob, nullptr, &doc->data);
    }
    return r ? close + nb - offset : 0;
}

// --- line breaks, entities, escapes -----------------------------------------

size_t char_linebreak(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    if (offset < 2 || f.base[offset - 1] != ' ' || f.base[offset - 2] != ' ')
        return 0;
    while (ob->size && ob->data[ob->size - 1] == ' ')
        ob->size--;
    return doc->md.line_break(ob, &doc->data) ? 1 : 0;
}

size_t char_entity(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    const uint8_t *data = f.base + offset;
    const size_t size = f.size - offset;
    size_t end = 1;
    if (end < size && data[end] == '#')
        ++end;
    const size_t body = end;
    while (end < size && is_alnum(data[end]))
        ++end;
    if (end == body || end >= size || data[end] != ';')
        return 0;
    ++end;
    if (doc->md.entity) {
        const hoedown_buffer text = view(data, end);
        doc->md.entity(ob, &text, &doc->data);
    } else {
        hoedown_buffer_put(ob, data, end);
    }
    return end;
}

size_t parse_math(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset, size_t open_len,
                  const char *close, int memo, int display);

size_t char_escape(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    const uint8_t *data = f.base + offset;
    const size_t size = f.size - offset;
    if (size < 2)
        return 0;
    if ((doc->ext_flags & HOEDOWN_EXT_MATH) && size > 2 && data[1] == '\\' && (data[2] == '[' || data[2] == '(')) {
        const bool display = data[2] == '[';
        const size_t r = parse_math(ob, doc, f, offset, 3, display ? "\\\\]" : "\\\\)",
                                    display ? inline_frame::FAIL_MATH_BRACKET : inline_frame::FAIL_MATH_PAREN,
                                    display ? 1 : 0);
        if (r)
            return r;
    }
    if (!kEscapable.v[data[1]])
        return 0;
    put_plain(ob, doc, data + 1, 1);
    return 2;
}

// --- math --------------------------------------------------------------------

// Math from offset, whose opening delimiter is open_len bytes, to the first
// unescaped `close`. A display of -1 means: display when only white space
// stands around the math in the inline text.
size_t parse_math(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset, size_t open_len,
                  const char *close, int memo, int display)
{
    if (!doc->md.math)
        return 0;
    const uint8_t *base = f.base;
    const size_t size = f.size;
    const size_t s = offset + open_len;
    if (f.fail[memo] != kNone && s >= f.fail[memo])
        return 0;
    const size_t clen = strlen(close);
    const uint8_t c0 = uint8_t(close[0]);
    size_t i = s;
    size_t found = kNone;
    while (i + clen <= size) {
        const uint8_t c = base[i];
        if (c == c0 && memcmp(base + i, close, clen) == 0) {
            found = i;
            break;
        }
        if (c == '\\') {
            i += 2;
            continue;
        }
        ++i;
    }
    if (found == kNone) {
        f.fail[memo] = s;
        return 0;
    }
    if (found == s)
        return 0;
    if (display < 0)
        display = is_blank_range(base, 0, offset) && is_blank_range(base, found + clen, size);
    const hoedown_buffer text = view(base + s, found - s);
    return doc->md.math(ob, &text, display, &doc->data) ? found + clen - offset : 0;
}

size_t char_math(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    const uint8_t *data = f.base + offset;
    const size_t size = f.size - offset;
    const bool explicit_dollar = doc->ext_flags & HOEDOWN_EXT_MATH_EXPLICIT;
    if (size > 1 && data[1] == '$')
        return parse_math(ob, doc, f, offset, 2, "$$", inline_frame::FAIL_DDOLLAR, explicit_dollar ? 1 : -1);
    if (explicit_dollar)
        return parse_math(ob, doc, f, offset, 1, "$", inline_frame::FAIL_DOLLAR, 0);
    return 0;
}

// --- superscript and quote ---------------------------------------------------

size_t char_superscript(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    if (!doc->md.superscript)
        return 0;
    const uint8_t *base = f.base;
    const size_t size = f.size;
    if (offset + 1 >= size)
        return 0;
    size_t sb, se, consumed;
    if (base[offset + 1] == '(') {
        const size_t close = match_of(f, offset + 1);
        if (close == kNone)
            return 0;
        sb = offset + 2;
        se = close;
        consumed = close + 1 - offset;
    } else {
        sb = se = offset + 1;
        while (se < size && !is_ws(base[se]))
            ++se;
        consumed = se - offset;
    }
    if (se == sb)
        return 0;
    hoedown_buffer *work = newbuf(doc, BUFFER_SPAN);
    parse_inline(work, doc, base + sb, se - sb);
    const int r = doc->md.superscript(ob, work, &doc->data);
    popbuf(doc, BUFFER_SPAN);
    return r ? consumed : 0;
}

size_t char_quote(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    if (!doc->md.quote)
        return 0;
    const uint8_t *base = f.base;
    const size_t size = f.size;
    size_t n = 0;
    while (offset + n < size && base[offset + n] == '"')
        ++n;
    const size_t s = offset + n;
    if (f.quote_fail_from != kNone && s >= f.quote_fail_from && n >= f.quote_fail_len)
        return 0;
    // A closing run of at least n quotes.
    size_t i = s, q = kNone;
    while (i < size) {
        const void *p = memchr(base + i, '"', size - i);
        if (!p)
            break;
        const size_t k = size_t(static_cast<const uint8_t *>(p) - base);
        size_t r = 0;
        while (k + r < size && base[k + r] == '"')
            ++r;
        if (r >= n) {
            q = k;
            break;
        }
        i = k + r;
    }
    if (q == kNone) {
        if (f.quote_fail_from == kNone || n <= f.quote_fail_len) {
            f.quote_fail_from = s;
            f.quote_fail_len = n;
        }
        return 0;
    }
    size_t b = s, e = q;
    while (b < e && base[b] == ' ')
        ++b;
    while (e > b && base[e - 1] == ' ')
        --e;
    if (e == b)
        return 0;
    hoedown_buffer *work = newbuf(doc, BUFFER_SPAN);
    parse_inline(work, doc, base + b, e - b);
    const int r = doc->md.quote(ob, work, &doc->data);
    popbuf(doc, BUFFER_SPAN);
    return r ? q + n - offset : 0;
}

} // namespace

// --- emphasis ------------------------------------------------------------------

namespace {

int mark_index(uint8_t c)
{
    switch (c) {
    case '*': return 0;
    case '_': return 1;
    case '~': return 2;
    default: return 3; // '='
    }
}

// The first closing run of mark c at or after `from` for an opening run of
// `width` (1 to 3), skipping code spans, links and escaped marks:
//  - width 1: a run of exactly one mark. For '_' the first such run is
//    returned whatever precedes it; the caller decides whether it closes.
//  - width 2: a run of exactly two.
//  - width 3: a run of one to three (three closes, one or two fall back).
// Except for a single '_', a closer must not follow a space or a newline and,
// with the intra-word bit, not precede a letter or digit. Returns the run's
// start, or kNone.
// Whether the run of r marks at q closes an opening run of `width`:
//  - width 1: a run of exactly one mark. For '_' any single underscore will
//    do here; the caller decides whether it closes or fails the span.
//  - width 2: a run of exactly two.
//  - width 3: a run of one to three (three closes, one or two fall back).
// Except for a single '_', a closer must not follow a space or a newline and,
// with the intra-word bit, not precede a letter or digit.
bool is_closer(const hoedown_document *doc, const inline_frame &f, size_t q, size_t r, uint8_t c, int width)
{
    if (width == 1 && c == '_')
        return r == 1;
    if (q == 0 || is_space_or_nl(f.base[q - 1]))
        return false;
    if ((doc->ext_flags & HOEDOWN_EXT_NO_INTRA_EMPHASIS) && q + r < f.size && is_alnum(f.base[q + r]))
        return false;
    return width == 3 ? r <= 3 : r == size_t(width);
}

inline size_t run_length(const inline_frame &f, size_t q, uint8_t c)
{
    size_t r = 1;
    while (q + r < f.size && f.base[q + r] == c)
        ++r;
    return r;
}

// The first closing run of mark c at or after `from` (see is_closer),
// skipping code spans, links and escaped marks, using the text's regions.
// Returns the run's start, or kNone.
size_t scan_closer(const hoedown_document *doc, inline_frame &f, size_t from, uint8_t c, int width)
{
    ensure_regions(f);
    const uint8_t *base = f.base;
    const size_t size = f.size;
    // The first region at or after `from`.
    size_t k = 0, hi = f.regions.size;
    while (k < hi) {
        const size_t mid = k + (hi - k) / 2;
        if (f.regions[mid].start < from)
            k = mid + 1;
        else
            hi = mid;
    }
    size_t pos = from;
    while (pos < size) {
        const size_t limit = k < f.regions.size ? f.regions[k].start : size;
        const void *p = pos < limit ? memchr(base + pos, c, limit - pos) : nullptr;
        if (!p) {
            if (k >= f.regions.size)
                return kNone;
            pos = f.regions[k++].end;
            continue;
        }
        const size_t q = size_t(static_cast<const uint8_t *>(p) - base);
        if (is_escaped(base, q)) {
            pos = q + 1;
            continue;
        }
        const size_t r = run_length(f, q, c);
        if (is_closer(doc, f, q, r, c, width))
            return q;
        pos = q + r;
    }
    return kNone;
}

// The same search walking the text directly, for as long as kDirectScan
// allows: kNone when the text ends first, kUnknown when the budget does.
constexpr size_t kUnknown = kNone - 1;
size_t direct_closer(const hoedown_document *doc, inline_frame &f, size_t from, uint8_t c, int width)
{
    const uint8_t *base = f.base;
    const size_t size = f.size;
    const size_t limit = from + 2 * kDirectScan < size ? from + 2 * kDirectScan : size;
    size_t pos = from;
    while (pos < limit) {
        const uint8_t b = base[pos];
        if (b == c) {
            const size_t r = run_length(f, pos, c);
            if (is_closer(doc, f, pos, r, c, width))
                return pos;
            pos += r;
        } else if (b == '\\') {
            pos += 2;
        } else if (b == '`') {
            size_t n = 1;
            while (pos + n < size && base[pos + n] == '`')
                ++n;
            const size_t close = code_closer(f, pos, n);
            pos = close == kNone ? pos + n : close + n;
        } else if (b == '[') {
            const size_t m = match_of(f, pos);
            size_t e = kNone;
            if (m != kNone && m + 1 < size && (base[m + 1] == '(' || base[m + 1] == '['))
                e = match_of(f, m + 1);
            pos = e == kNone ? pos + 1 : e + 1;
        } else {
            ++pos;
        }
    }
    return pos >= size ? kNone : kUnknown;
}

// The closer search: directly for nearby closers, otherwise through the
// frame's cache. Queries of one text come in increasing order, so each
// (mark, width) pair scans the text at most once.
size_t find_closer(const hoedown_document *doc, inline_frame &f, size_t from, uint8_t c, int width)
{
    inline_frame::closer_cache &cache = f.closers[mark_index(c)][width - 1];
    if (cache.from != kNone && cache.from <= from && (cache.answer == kNone || from <= cache.answer))
        return cache.answer;
    const size_t direct = direct_closer(doc, f, from, c, width);
    if (direct != kUnknown)
        return direct;
    const size_t answer = scan_closer(doc, f, from, c, width);
    cache = {from, answer};
    return answer;
}

int render_emphasis(hoedown_buffer *ob, hoedown_document *doc, const hoedown_buffer *content, uint8_t c, int width)
{
    const hoedown_renderer &md = doc->md;
    if (width == 1) {
        if (c == '_' && (doc->ext_flags & HOEDOWN_EXT_UNDERLINE))
            return md.underline ? md.underline(ob, content, &doc->data) : 0;
        return md.emphasis ? md.emphasis(ob, content, &doc->data) : 0;
    }
    if (width == 2) {
        if (c == '~')
            return md.strikethrough ? md.strikethrough(ob, content, &doc->data) : 0;
        if (c == '=')
            return md.highlight ? md.highlight(ob, content, &doc->data) : 0;
        return md.strong_span ? md.strong_span(ob, content, &doc->data) : 0;
    }
    return md.strong_emphasis_span ? md.strong_emphasis_span(ob, content, &doc->data) : 0;
}

// Renders base[b, e) as the content of an emphasis of this width.
int emit_emphasis(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t b, size_t e, uint8_t c,
                  int width)
{
    const uint8_t *base = f.base;
    hoedown_buffer *work = newbuf(doc, BUFFER_SPAN);
    parse_inline(work, doc, base + b, e - b);
    const int r = render_emphasis(ob, doc, work, c, width);
    popbuf(doc, BUFFER_SPAN);
    return r;
}

// A single mark's span whose content starts at s; returns the offset after
// the closer, or 0.
size_t parse_emph1(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t s, size_t content_b,
                   uint8_t c)
{
    const size_t q = find_closer(doc, f, s, c, 1);
    if (q == kNone)
        return 0;
    if (c == '_') {
        // The underscore that would close must follow a non-space and be
        // followed by a space, a newline or the end; otherwise no span.
        if (is_space_or_nl(f.base[q - 1]))
            return 0;
        if (q + 1 < f.size && !is_space_or_nl(f.base[q + 1]))
            return 0;
    }
    return emit_emphasis(ob, doc, f, content_b, q, c, 1) ? q + 1 : 0;
}

size_t parse_emph2(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t s, size_t content_b,
                   uint8_t c)
{
    const size_t q = find_closer(doc, f, s, c, 2);
    if (q == kNone)
        return 0;
    return emit_emphasis(ob, doc, f, content_b, q, c, 2) ? q + 2 : 0;
}

size_t parse_emph3(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t s, uint8_t c)
{
    const size_t q = find_closer(doc, f, s, c, 3);
    if (q == kNone)
        return 0;
    size_t r = 1;
    while (q + r < f.size && f.base[q + r] == c)
        ++r;
    if (r == 3)
        return emit_emphasis(ob, doc, f, s, q, c, 3) ? q + 3 : 0;
    // Two close first: a double inside a single, whose content starts at the
    // second opening mark. One closes first: a single inside a double.
    if (r == 2)
        return parse_emph1(ob, doc, f, q + 2, s - 2, c);
    return parse_emph2(ob, doc, f, q + 1, s - 1, c);
}

size_t char_emphasis(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    const uint8_t *base = f.base;
    const uint8_t *data = base + offset;
    const size_t size = f.size - offset;
    const uint8_t c = data[0];
    // The underscore rule: '_' opens only at the start of the text or after
    // a space or a newline, whatever the extensions.
    if (c == '_' && offset > 0 && !is_space_or_nl(data[-1]))
        return 0;
    if ((doc->ext_flags & HOEDOWN_EXT_NO_INTRA_EMPHASIS) && offset > 0 && !is_ws(data[-1]) && !is_punct(data[-1]))
        return 0;
    size_t end;
    if (size > 2 && data[1] != c) {
        if (c == '~' || c == '=' || is_space_or_nl(data[1]))
            return 0;
        end = parse_emph1(ob, doc, f, offset + 1, offset + 1, c);
    } else if (size > 3 && data[1] == c && data[2] != c) {
        if (is_space_or_nl(data[2]))
            return 0;
        end = parse_emph2(ob, doc, f, offset + 2, offset + 2, c);
    } else if (size > 4 && data[1] == c && data[2] == c && data[3] != c) {
        if (c == '~' || c == '=' || is_space_or_nl(data[3]))
            return 0;
        end = parse_emph3(ob, doc, f, offset + 3, c);
    } else {
        return 0;
    }
    return end ? end - offset : 0;
}

} // namespace

// --- links and images ------------------------------------------------------------

namespace {

// A link, image or footnote reference whose '[' is at `p`.
size_t parse_link(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t p, bool is_img)
{
    const uint8_t *base = f.base;
    const size_t size = f.size;
    const hoedown_renderer &md = doc->md;

    if (!is_img && (doc->ext_flags & HOEDOWN_EXT_FOOTNOTES) && p + 1 < size && base[p + 1] == '^') {
        const size_t m = match_of(f, p);
        if (m == kNone || m <= p + 2)
            return 0;
        footnote_def *fn = find_footnote(doc, base + p + 2, m - p - 2);
        if (!fn)
            return 0;
        if (!fn->used) {
            // Footnotes are numbered in the order of their first use.
            fn->used = true;
            doc->fn_used.push(uint32_t(fn - doc->fn_found.data));
            fn->num = unsigned(doc->fn_used.size);
        }
        if (md.footnote_reference)
            return md.footnote_reference(ob, fn->num, &doc->data) ? m + 1 - p : 0;
        put_plain(ob, doc, base + p, m + 1 - p);
        return m + 1 - p;
    }

    if (is_img ? !md.image : !md.link)
        return 0;
    const size_t txt_e = match_of(f, p);
    if (txt_e == kNone)
        return 0;
    const size_t txt_b = p + 1;
    size_t i = txt_e + 1;
    size_t consumed;
    const uint8_t *link_p = nullptr, *title_p = nullptr;
    size_t link_n = 0, title_n = 0;
    bool has_title = false;

    if (i < size && base[i] == '(') {
        // An inline link: destination and optional title up to the matching
        // parenthesis.
        const size_t pc = match_of(f, i);
        if (pc == kNone)
            return 0;
        size_t link_b = i + 1;
        while (link_b < pc && is_ws(base[link_b]))
            ++link_b;
        size_t link_e = pc;
        for (size_t k = link_b; k < pc; ++k) {
            const uint8_t c = base[k];
            if (c == '\\') {
                ++k;
                continue;
            }
            if ((c == '"' || c == '\'') && k > link_b && is_ws(base[k - 1])) {
                size_t t = pc;
                while (t > k + 1 && base[t - 1] != c)
                    --t;
                if (t > k + 1) {
                    title_p = base + k + 1;
                    title_n = t - 1 - (k + 1);
                    has_title = true;
                    link_e = k;
                    break;
                }
            }
        }
        while (link_e > link_b && is_ws(base[link_e - 1]))
            --link_e;
        if (link_e > link_b && base[link_b] == '<')
            ++link_b;
        if (link_e > link_b && base[link_e - 1] == '>')
            --link_e;
        link_p = base + link_b;
        link_n = link_e - link_b;
        consumed = pc + 1 - p;
    } else {
        const uint8_t *id = base + txt_b;
        size_t id_n = txt_e - txt_b;
        if (i < size && base[i] == '[') {
            // A reference link; an empty id is the link text.
            const size_t id_e = match_of(f, i);
            if (id_e == kNone)
                return 0;
            if (id_e > i + 1) {
                id = base + i + 1;
                id_n = id_e - i - 1;
            }
            consumed = id_e + 1 - p;
        } else {
            // A shortcut reference: the text is the id.
            consumed = txt_e + 1 - p;
        }
        const link_ref *ref = find_link_ref(doc, id, id_n);
        if (!ref)
            return 0;
        link_p = doc->defs.data + ref->link_off;
        link_n = ref->link_len;
        has_title = ref->has_title;
        title_p = doc->defs.data + ref->title_off;
        title_n = ref->title_len;
    }

    hoedown_buffer *link = newbuf(doc, BUFFER_SPAN);
    unescape_into(link, link_p, link_n);
    hoedown_buffer *title = nullptr;
    if (has_title) {
        title = newbuf(doc, BUFFER_SPAN);
        unescape_into(title, title_p, title_n);
    }
    int r;
    if (is_img) {
        const hoedown_buffer alt = view(base + txt_b, txt_e - txt_b);
        r = md.image(ob, link, title, &alt, &doc->data);
    } else {
        hoedown_buffer *content = newbuf(doc, BUFFER_SPAN);
        if (txt_e > txt_b) {
            // Link text never holds autolinks.
            const int saved = doc->in_link_body;
            doc->in_link_body = 1;
            parse_inline(content, doc, base + txt_b, txt_e - txt_b);
            doc->in_link_body = saved;
        }
        r = md.link(ob, content, link, title, &doc->data);
        popbuf(doc, BUFFER_SPAN);
    }
    if (title)
        popbuf(doc, BUFFER_SPAN);
    popbuf(doc, BUFFER_SPAN);
    return r ? consumed : 0;
}

size_t char_link(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    // An image when an unescaped '!' stands before the bracket.
    const bool is_img = offset > 0 && f.base[offset - 1] == '!' && !is_escaped(f.base, offset - 1);
    return parse_link(ob, doc, f, offset, is_img);
}

size_t char_image(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    if (offset + 1 >= f.size || f.base[offset + 1] != '[')
        return 0;
    const size_t r = parse_link(ob, doc, f, offset + 1, true);
    return r ? r + 1 : 0;
}

// --- angle brackets: comments, autolinks, tags ---------------------------------

bool is_url_char(uint8_t c) { return c != ' ' && c != '\n' && c != '\t' && c != '<' && c != '>'; }

size_t char_langle(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    const uint8_t *base = f.base;
    const uint8_t *data = base + offset;
    const size_t size = f.size - offset;
    const hoedown_renderer &md = doc->md;

    if (size >= 7 && data[1] == '!' && data[2] == '-' && data[3] == '-') {
        const size_t s = offset + 4;
        if (f.fail[inline_frame::FAIL_COMMENT_END] == kNone || s < f.fail[inline_frame::FAIL_COMMENT_END]) {
            for (size_t k = 4; k + 3 <= size; ++k) {
                const void *dash = memchr(data + k, '-', size - k);
                if (!dash)
                    break;
                k = size_t(static_cast<const uint8_t *>(dash) - data);
                if (k + 3 <= size && data[k + 1] == '-' && data[k + 2] == '>') {
                    if (!md.inline_html)
                        return 0;
                    const hoedown_buffer text = view(data, k + 3);
                    return md.inline_html(ob, &text, &doc->data) ? k + 3 : 0;
                }
            }
            f.fail[inline_frame::FAIL_COMMENT_END] = s;
        }
    }

    // Everything else ends at the first '>'.
    const size_t s = offset + 1;
    if (f.fail[inline_frame::FAIL_TAG_END] != kNone && s >= f.fail[inline_frame::FAIL_TAG_END])
        return 0;
    const void *gtp = memchr(data + 1, '>', size - 1);
    if (!gtp) {
        f.fail[inline_frame::FAIL_TAG_END] = s;
        return 0;
    }
    const size_t gt = size_t(static_cast<const uint8_t *>(gtp) - data);
    const size_t len = gt + 1;

    // An autolink: a scheme and ':', or exactly one '@', and no white space.
    hoedown_autolink_type type = HOEDOWN_AUTOLINK_NONE;
    if (gt > 1) {
        size_t k = 1;
        while (k < gt && is_url_char(data[k]))
            ++k;
        if (k == gt) {
            size_t sch = 1;
            if (is_alpha(data[1])) {
                while (sch < gt && (is_alnum(data[sch]) || data[sch] == '+' || data[sch] == '.' || data[sch] == '-'))
                    ++sch;
            }
            if (sch >= 3 && sch <= 33 && sch + 1 < gt && data[sch] == ':') {
                type = HOEDOWN_AUTOLINK_NORMAL;
            } else {
                const void *at = memchr(data + 1, '@', gt - 1);
                if (at) {
                    const size_t a = size_t(static_cast<const uint8_t *>(at) - data);
                    if (a > 1 && a + 1 < gt && !memchr(data + a + 1, '@', gt - a - 1))
                        type = HOEDOWN_AUTOLINK_EMAIL;
                }
            }
        }
    }
    if (type != HOEDOWN_AUTOLINK_NONE && md.autolink) {
        const hoedown_buffer link = view(data + 1, gt - 1);
        return md.autolink(ob, &link, type, &doc->data) ? len : 0;
    }
    // A tag: '<', an optional '/', a letter.
    const bool tag = is_alpha(data[1]) || (data[1] == '/' && gt > 2 && is_alpha(data[2]));
    if ((tag || type != HOEDOWN_AUTOLINK_NONE) && md.inline_html) {
        const hoedown_buffer text = view(data, len);
        return md.inline_html(ob, &text, &doc->data) ? len : 0;
    }
    return 0;
}

// --- autolinks in running text ---------------------------------------------------

bool is_safe_prefix(const uint8_t *link, size_t size)
{
    static const char *const prefixes[] = {"http://", "https://", "/", "#", "ftp://", "mailto:"};
    for (const char *pre : prefixes) {
        const size_t n = strlen(pre);
        if (size > n && strncasecmp(reinterpret_cast<const char *>(link), pre, n) == 0 && is_alnum(link[n]))
            return true;
    }
    return false;
}

// A domain at data[0]: letters, digits, '-' and '.', starting with a letter
// or digit and holding at least one dot. Returns its length, or 0.
size_t check_domain(const uint8_t *data, size_t size)
{
    if (!size || !is_alnum(data[0]))
        return 0;
    size_t i = 1, dots = 0;
    for (; i < size; ++i) {
        if (data[i] == '.')
            ++dots;
        else if (!is_alnum(data[i]) && data[i] != '-')
            break;
    }
    return dots ? i : 0;
}

// Trims the end of an autolink of trailing punctuation and of closing
// parentheses, brackets and quotes that have no partner in the link.
size_t trim_link_end(const uint8_t *data, size_t end)
{
    size_t open_paren = 0, close_paren = 0, open_br = 0, close_br = 0, dquotes = 0, squotes = 0;
    for (size_t i = 0; i < end; ++i) {
        switch (data[i]) {
        case '(': ++open_paren; break;
        case ')': ++close_paren; break;
        case '[': ++open_br; break;
        case ']': ++close_br; break;
        case '"': ++dquotes; break;
        case '\'': ++squotes; break;
        default: break;
        }
    }
    while (end > 0) {
        const uint8_t c = data[end - 1];
        if (strchr("?!.,:;*_~", c) && c) {
            --end;
        } else if (c == ')' && close_paren > open_paren) {
            --close_paren;
            --end;
        } else if (c == ']' && close_br > open_br) {
            --close_br;
            --end;
        } else if (c == '"' && (dquotes & 1)) {
            --dquotes;
            --end;
        } else if (c == '\'' && (squotes & 1)) {
            --squotes;
            --end;
        } else {
            break;
        }
    }
    return end;
}

// Takes back `n` bytes just written as text, when they are `expect`.
bool take_back(hoedown_buffer *ob, const uint8_t *expect, size_t n)
{
    if (ob->size < n || memcmp(ob->data + ob->size - n, expect, n) != 0)
        return false;
    ob->size -= n;
    return true;
}

size_t char_autolink_url(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    if (doc->in_link_body || !doc->md.autolink)
        return 0;
    const uint8_t *data = f.base + offset;
    const size_t size = f.size - offset;
    if (size < 4 || data[1] != '/' || data[2] != '/')
        return 0;
    size_t rewind = 0;
    while (rewind < offset && is_alpha(f.base[offset - 1 - rewind]))
        ++rewind;
    if (!rewind)
        return 0;
    const uint8_t *start = data - rewind;
    // The domain first: it is short, while the link may run to the end of
    // a long line.
    if (!is_safe_prefix(start, size + rewind) || !check_domain(data + 3, size - 3))
        return 0;
    size_t end = 3;
    while (end < size && !is_ws(data[end]) && data[end] != '<')
        ++end;
    end = trim_link_end(data, end);
    if (end <= 3 || !check_domain(data + 3, end - 3))
        return 0;
    if (!take_back(ob, start, rewind))
        return 0;
    const hoedown_buffer link = view(start, rewind + end);
    if (!doc->md.autolink(ob, &link, HOEDOWN_AUTOLINK_NORMAL, &doc->data)) {
        hoedown_buffer_put(ob, start, rewind);
        return 0;
    }
    return end;
}

bool is_mail_char(uint8_t c) { return is_alnum(c) || c == '.' || c == '+' || c == '-' || c == '_'; }

size_t char_autolink_email(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    if (doc->in_link_body || !doc->md.autolink)
        return 0;
    const uint8_t *data = f.base + offset;
    const size_t size = f.size - offset;
    size_t rewind = 0;
    while (rewind < offset && is_mail_char(f.base[offset - 1 - rewind]))
        ++rewind;
    if (!rewind)
        return 0;
    size_t end = 1;
    while (end < size && is_mail_char(data[end]))
        ++end;
    end = trim_link_end(data, end);
    // The domain needs a dot with something on both sides.
    bool dotted = false;
    for (size_t k = 2; k + 1 < end; ++k) {
        if (data[k] == '.')
            dotted = true;
    }
    if (!dotted || !is_alnum(data[1]))
        return 0;
    const uint8_t *start = data - rewind;
    if (!take_back(ob, start, rewind))
        return 0;
    const hoedown_buffer link = view(start, rewind + end);
    if (!doc->md.autolink(ob, &link, HOEDOWN_AUTOLINK_EMAIL, &doc->data)) {
        hoedown_buffer_put(ob, start, rewind);
        return 0;
    }
    return end;
}

size_t char_autolink_www(hoedown_buffer *ob, hoedown_document *doc, inline_frame &f, size_t offset)
{
    if (doc->in_link_body || !doc->md.link)
        return 0;
    const uint8_t *data = f.base + offset;
    const size_t size = f.size - offset;
    if (offset > 0 && !is_ws(data[-1]) && !is_punct(data[-1]))
        return 0;
    if (size < 5 || memcmp(data, "www.", 4) != 0)
        return 0;
    if (!check_domain(data, size))
        return 0;
    size_t end = 4;
    while (end < size && !is_ws(data[end]) && data[end] != '<')
        ++end;
    end = trim_link_end(data, end);
    if (!check_domain(data, end) || end <= 4)
        return 0;
    hoedown_buffer *url = newbuf(doc, BUFFER_SPAN);
    HOEDOWN_BUFPUTSL(url, "http://");
    hoedown_buffer_put(url, data, end);
    hoedown_buffer *text = newbuf(doc, BUFFER_SPAN);
    put_plain(text, doc, data, end);
    const int r = doc->md.link(ob, text, url, nullptr, &doc->data);
    popbuf(doc, BUFFER_SPAN);
    popbuf(doc, BUFFER_SPAN);
    return r ? end : 0;
}

const char_handler kHandlers[MD_CHAR_COUNT] = {
    nullptr,          char_emphasis,       char_codespan,        char_linebreak,
    char_link,        char_image,          char_langle,          char_escape,
    char_entity,      char_autolink_url,   char_autolink_email,  char_autolink_www,
    char_superscript, char_quote,          char_math,
};

} // namespace

// --- the inline loop ---------------------------------------------------------------

namespace {

// Active bytes whose handler would refuse at once, told from their
// neighbours: the run of text goes on through them instead of being cut for
// a call that does nothing. Each test is the handler's own first refusal.
inline bool cannot_start(const hoedown_document *doc, const uint8_t *data, size_t i, size_t size)
{
    const uint8_t c = data[i];
    switch (c) {
    case '\n': // a line break needs two spaces before it
        return i < 2 || data[i - 1] != ' ' || data[i - 2] != ' ';
    case 'w': // "www." after a boundary
        return i + 4 >= size || data[i + 1] != 'w' || data[i + 2] != 'w' || data[i + 3] != '.' ||
               (i > 0 && !is_ws(data[i - 1]) && !is_punct(data[i - 1]));
    case ':': // "://"
        return i + 3 >= size || data[i + 1] != '/' || data[i + 2] != '/' || i == 0 || !is_alpha(data[i - 1]);
    case '@': // an address character on each side
        return i == 0 || i + 1 >= size ||
               (!is_alnum(data[i - 1]) && data[i - 1] != '.' && data[i - 1] != '_' && data[i - 1] != '-' &&
                data[i - 1] != '+');
    case '_': // the underscore rule
        return i > 0 && !is_space_or_nl(data[i - 1]);
    case '~':
    case '=': // never alone
        return i + 1 >= size || data[i + 1] != c;
    case '!': // an image
        return i + 1 >= size || data[i + 1] != '[';
    case '&': // an entity
        return i + 1 >= size || (data[i + 1] != '#' && !is_alnum(data[i + 1]));
    case '$': // math: "$$", or "$" when it is explicit
        return i + 1 >= size || (data[i + 1] != '$' && !(doc->ext_flags & HOEDOWN_EXT_MATH_EXPLICIT));
    default:
        return false;
    }
}

// The first active byte at or after i, or size.
inline size_t next_active(const uint8_t *active, const uint8_t *data, size_t i, size_t size)
{
    while (i + 4 <= size) {
        if (active[data[i]])
            return i;
        if (active[data[i + 1]])
            return i + 1;
        if (active[data[i + 2]])
            return i + 2;
        if (active[data[i + 3]])
            return i + 3;
        i += 4;
    }
    while (i < size && !active[data[i]])
        ++i;
    return i;
}

} // namespace

namespace hoedown_detail {

void parse_inline(hoedown_buffer *ob, hoedown_document *doc, const uint8_t *data, size_t size)
{
    const size_t in_use = buffers_in_use(doc);
    if (in_use > doc->max_nesting)
        return;
    if (in_use > kMaxWorkBuffers) {
        put_plain(ob, doc, data, size);
        return;
    }
    if (doc->frame_depth == doc->frames.size) {
        auto *fresh = new (hoedown_calloc(1, sizeof(inline_frame))) inline_frame();
        doc->frames.push(fresh);
    }
    inline_frame &f = *doc->frames[doc->frame_depth++];
    f.reset(data, size);

    const uint8_t *active = doc->active_char;
    size_t i = 0, end = 0;
    while (i < size) {
        for (;;) {
            end = next_active(active, data, end, size);
            if (end >= size || !cannot_start(doc, data, end, size))
                break;
            ++end;
        }
        if (end > i)
            put_plain(ob, doc, data + i, end - i);
        if (end >= size)
            break;
        i = end;
        const size_t consumed = kHandlers[active[data[end]]](ob, doc, f, i);
        if (!consumed) {
            end = i + 1;
        } else {
            i += consumed;
            end = i;
        }
    }
    doc->frame_depth--;
}

} // namespace hoedown_detail
