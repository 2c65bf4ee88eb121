// Block parsing: headings, HTML blocks, rules, code, tables, quotes, lists
// and paragraphs, tried in that order at the start of each block.
//
// Nested blocks (the inside of a quote, a list item) are compacted in place:
// their prefixes and indents are removed by moving the later bytes left,
// which never needs more room than the text had, so nesting allocates
// nothing beyond the pooled work buffers.
#include "hoedown/document_internal.h"

#include <cstring>
#include <strings.h>

using namespace hoedown_detail;

namespace hoedown_detail {

size_t line_end(const uint8_t *data, size_t size)
{
    const uint8_t *nl = hoedown_find_byte(data, size, '\n');
    return nl ? size_t(nl - data) + 1 : size;
}

size_t is_empty(const uint8_t *data, size_t size)
{
    size_t i = 0;
    for (; i < size && data[i] != '\n'; ++i) {
        if (data[i] != ' ')
            return 0;
    }
    return i < size ? i + 1 : i;
}

bool is_hrule(const uint8_t *data, size_t size)
{
    size_t i = 0;
    while (i < 3 && i < size && data[i] == ' ')
        ++i;
    if (i >= size)
        return false;
    const uint8_t c = data[i];
    if (c != '*' && c != '-' && c != '_')
        return false;
    size_t n = 0;
    for (; i < size && data[i] != '\n'; ++i) {
        if (data[i] == c)
            ++n;
        else if (data[i] != ' ')
            return false;
    }
    return n >= 3;
}

size_t prefix_quote(const uint8_t *data, size_t size)
{
    size_t i = 0;
    while (i < 3 && i < size && data[i] == ' ')
        ++i;
    if (i < size && data[i] == '>') {
        if (i + 1 < size && data[i + 1] == ' ')
            return i + 2;
        return i + 1;
    }
    return 0;
}

size_t prefix_code(const uint8_t *data, size_t size)
{
    if (size >= 4 && data[0] == ' ' && data[1] == ' ' && data[2] == ' ' && data[3] == ' ')
        return 4;
    return 0;
}

size_t prefix_uli(const uint8_t *data, size_t size)
{
    size_t i = 0;
    while (i < 3 && i < size && data[i] == ' ')
        ++i;
    if (i + 1 >= size || (data[i] != '*' && data[i] != '+' && data[i] != '-') || data[i + 1] != ' ')
        return 0;
    return i + 2;
}

size_t prefix_oli(const uint8_t *data, size_t size)
{
    size_t i = 0;
    while (i < 3 && i < size && data[i] == ' ')
        ++i;
    if (i >= size || !is_digit(data[i]))
        return 0;
    while (i < size && is_digit(data[i]))
        ++i;
    if (i + 1 >= size || data[i] != '.' || data[i + 1] != ' ')
        return 0;
    return i + 2;
}

bool is_atxheader(const hoedown_document *doc, const uint8_t *data, size_t size)
{
    if (!size || data[0] != '#')
        return false;
    if (doc->ext_flags & HOEDOWN_EXT_SPACE_HEADERS) {
        size_t level = 0;
        while (level < size && level < 6 && data[level] == '#')
            ++level;
        if (level < size && data[level] != ' ')
            return false;
    }
    return true;
}

int is_headerline(const uint8_t *data, size_t size)
{
    if (!size)
        return 0;
    const uint8_t c = data[0];
    if (c != '=' && c != '-')
        return 0;
    size_t i = 0;
    while (i < size && data[i] == c)
        ++i;
    const size_t marks = i;
    while (i < size && data[i] == ' ')
        ++i;
    if (i < size && data[i] != '\n')
        return 0;
    if (c == '=')
        return 1;
    return marks >= 2 ? 2 : 0;
}

bool is_codefence(const uint8_t *data, size_t size, bool strict, fence_info *out)
{
    size_t i = 0;
    while (i < 3 && i < size && data[i] == ' ')
        ++i;
    if (i >= size || (data[i] != '`' && data[i] != '~'))
        return false;
    const uint8_t mark = data[i];
    const size_t indent = i;
    while (i < size && data[i] == mark)
        ++i;
    const size_t width = i - indent;
    if (width < 3)
        return false;
    const size_t len = line_end(data, size);
    const size_t eol = (len && data[len - 1] == '\n') ? len - 1 : len;
    if (strict) {
        // Three fence characters later on the line make it a code span.
        size_t run = 0;
        for (size_t k = i; k < eol; ++k) {
            run = data[k] == mark ? run + 1 : 0;
            if (run >= 3)
                return false;
        }
    }
    while (i < eol && data[i] == ' ')
        ++i;
    const size_t lang_b = i;
    while (i < eol && !is_ws(data[i]))
        ++i;
    out->indent = indent;
    out->width = width;
    out->mark = mark;
    out->lang_b = lang_b;
    out->lang_e = i;
    out->line_len = len;
    return true;
}

} // namespace hoedown_detail

namespace {

// Whether an element with this slot needs its inline text parsed. Without a
// slot the element is dropped, and its text matters only when it may hold the
// first use of a footnote ("[^"), which numbers the footnotes.
bool needs_inline(const hoedown_document *doc, const void *slot, const uint8_t *data, size_t size)
{
    if (slot || !doc->fn_found.size)
        return slot != nullptr;
    for (const uint8_t *p = data; (p = hoedown_find_byte(p, size_t(data + size - p), '[')) != nullptr; ++p) {
        if (p + 1 < data + size && p[1] == '^')
            return true;
    }
    return false;
}

size_t trim_trailing_newlines(const uint8_t *data, size_t size)
{
    while (size && data[size - 1] == '\n')
        --size;
    return size;
}

size_t parse_atxheader(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size)
{
    size_t level = 0;
    while (level < size && level < 6 && data[level] == '#')
        ++level;
    size_t i = level;
    while (i < size && data[i] == ' ')
        ++i;
    const size_t next = line_end(data, size);
    size_t e = trim_trailing_newlines(data, next);
    while (e > i && data[e - 1] == ' ')
        --e;
    while (e > i && data[e - 1] == '#')
        --e;
    while (e > i && data[e - 1] == ' ')
        --e;
    if (e > i && needs_inline(doc, reinterpret_cast<const void *>(doc->md.header), data + i, e - i)) {
        hoedown_buffer *work = newbuf(doc, BUFFER_SPAN);
        parse_inline(work, doc, data + i, e - i);
        if (doc->md.header)
            doc->md.header(ob, work, int(level), &doc->data);
        popbuf(doc, BUFFER_SPAN);
    }
    return next;
}

size_t parse_fencedcode(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size)
{
    fence_info open;
    if (!is_codefence(data, size, true, &open))
        return 0;
    size_t beg = open.line_len;
    const size_t text_b = beg;
    size_t text_e = size;
    while (beg < size) {
        const size_t len = line_end(data + beg, size - beg);
        // The closing line: the same indent, mark and width, nothing else.
        size_t i = 0;
        while (i < len && data[beg + i] == ' ')
            ++i;
        if (i == open.indent) {
            size_t n = 0;
            while (i < len && data[beg + i] == open.mark) {
                ++i;
                ++n;
            }
            while (i < len && data[beg + i] == ' ')
                ++i;
            if (n == open.width && (i == len || data[beg + i] == '\n')) {
                text_e = beg;
                beg += len;
                break;
            }
        }
        beg += len;
    }
    if (doc->md.code_block) {
        const hoedown_buffer text = view(data + text_b, text_e - text_b);
        const hoedown_buffer lang = view(data + open.lang_b, open.lang_e - open.lang_b);
        doc->md.code_block(ob, &text, lang.size ? &lang : nullptr, &doc->data);
    }
    return beg;
}

size_t parse_blockquote(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size)
{
    size_t beg = 0, w = 0;
    while (beg < size) {
        const size_t len = line_end(data + beg, size - beg);
        const size_t pre = prefix_quote(data + beg, len);
        size_t from;
        if (pre) {
            from = beg + pre;
        } else if (is_empty(data + beg, len)) {
            // A blank line ends the quote unless the next line has the prefix.
            if (beg + len < size && data[beg + len - 1] == '\n' && prefix_quote(data + beg + len, size - beg - len))
                from = beg + len - 1;
            else
                break;
        } else {
            from = beg; // a lazy continuation line
        }
        memmove(data + w, data + from, beg + len - from);
        w += beg + len - from;
        beg += len;
    }
    hoedown_buffer *out = newbuf(doc, BUFFER_BLOCK);
    parse_block(out, doc, data, w);
    if (doc->md.quote_block)
        doc->md.quote_block(ob, out, &doc->data);
    popbuf(doc, BUFFER_BLOCK);
    return beg;
}

size_t parse_blockcode(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size)
{
    size_t beg = 0, w = 0;
    while (beg < size) {
        const size_t len = line_end(data + beg, size - beg);
        const size_t pre = prefix_code(data + beg, len);
        if (pre) {
            memmove(data + w, data + beg + pre, len - pre);
            w += len - pre;
        } else if (is_empty(data + beg, len)) {
            data[w++] = '\n';
        } else {
            break;
        }
        beg += len;
    }
    // Trailing newlines become one. The first line lost four spaces, so the
    // newline always fits.
    w = trim_trailing_newlines(data, w);
    data[w++] = '\n';
    if (doc->md.code_block) {
        const hoedown_buffer text = view(data, w);
        doc->md.code_block(ob, &text, nullptr, &doc->data);
    }
    return beg;
}

} // namespace

// ---------------------------------------------------------------------------
// HTML blocks

namespace {

// The block tags whose element may hold a whole block of HTML.
const char *const kBlockTags[] = {"p",        "h1",       "h2",     "h3",    "h4",     "h5",
                                  "h6",       "div",      "del",    "ins",   "form",   "table",
                                  "figure",   "pre",      "fieldset", "noscript", "script", "style",
                                  "dl",       "ol",       "ul",     "math",  "iframe", "blockquote"};
constexpr int kBlockTagCount = int(sizeof kBlockTags / sizeof kBlockTags[0]);
constexpr int kTagDel = 8, kTagIns = 9, kTagPre = 13, kTagScript = 16, kTagStyle = 17;

// Searches of one block text whose failure from a position means failure
// from every later position: the closing tag of each block tag (at a line
// start, and anywhere) and the end of an HTML comment. Offsets are relative
// to the text of the parse_block call that owns the memo.
struct html_memo {
    size_t strict_fail[kBlockTagCount];
    size_t loose_fail[kBlockTagCount];
    size_t comment_fail;
    html_memo()
    {
        for (int i = 0; i < kBlockTagCount; ++i)
            strict_fail[i] = loose_fail[i] = kNone;
        comment_fail = kNone;
    }
};

int find_block_tag(const uint8_t *name, size_t len)
{
    if (len == 0 || len > 10)
        return -1;
    for (int i = 0; i < kBlockTagCount; ++i) {
        if (strlen(kBlockTags[i]) == len && strncasecmp(reinterpret_cast<const char *>(name), kBlockTags[i], len) == 0)
            return i;
    }
    return -1;
}

// Whether only spaces follow data[from] up to the end of its line; returns
// the offset after that line (after its newline, or size), or 0.
size_t rest_of_line_blank(const uint8_t *data, size_t from, size_t size)
{
    size_t i = from;
    while (i < size && data[i] == ' ')
        ++i;
    if (i == size)
        return size;
    return data[i] == '\n' ? i + 1 : 0;
}

// The closing tag "</tag>" (any case) from `from` on, followed by nothing but
// spaces on its line. With `line_start`, only at the start of a line that is
// not indented. Returns the start of the closing tag and sets *end to the
// offset after its line; kNone when there is none.
size_t find_closing_tag(const uint8_t *data, size_t size, size_t from, const char *tag, bool line_start,
                        size_t *end)
{
    const size_t tlen = strlen(tag);
    size_t i = from;
    while (i < size) {
        const void *p = memchr(data + i, '<', size - i);
        if (!p)
            return kNone;
        i = size_t(static_cast<const uint8_t *>(p) - data);
        if ((!line_start || i == 0 || data[i - 1] == '\n') && i + tlen + 3 <= size && data[i + 1] == '/' &&
            strncasecmp(reinterpret_cast<const char *>(data + i + 2), tag, tlen) == 0 && data[i + 2 + tlen] == '>') {
            const size_t after = rest_of_line_blank(data, i + tlen + 3, size);
            if (after) {
                *end = after;
                return i;
            }
        }
        ++i;
    }
    return kNone;
}

size_t parse_htmlblock(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size, html_memo &memo,
                       size_t pos)
{
    // The tag name runs up to a space or '>'.
    size_t i = 1;
    while (i < size && data[i] != ' ' && data[i] != '>' && data[i] != '\n' && data[i] != '\t')
        ++i;
    const int tag = find_block_tag(data + 1, i - 1);

    // The opening tag ends at the first '>' of the first line.
    const size_t first_len = line_end(data, size);
    const void *gt = memchr(data, '>', first_len);
    const size_t opening = gt ? size_t(static_cast<const uint8_t *>(gt) - data) + 1 : 0;

    if (tag < 0) {
        // An HTML comment, alone to the end of its line.
        if (size >= 4 && data[1] == '!' && data[2] == '-' && data[3] == '-' &&
            (memo.comment_fail == kNone || pos < memo.comment_fail)) {
            for (size_t k = 4; k + 3 <= size; ++k) {
                const void *dash = memchr(data + k, '-', size - k);
                if (!dash)
                    break;
                k = size_t(static_cast<const uint8_t *>(dash) - data);
                if (k + 3 <= size && data[k + 1] == '-' && data[k + 2] == '>') {
                    const size_t end = rest_of_line_blank(data, k + 3, size);
                    if (end) {
                        if (doc->md.html_block) {
                            const hoedown_buffer text = view(data, end);
                            doc->md.html_block(ob, &text, &doc->data);
                        }
                        return end;
                    }
                }
            }
            memo.comment_fail = pos;
        }
        // A horizontal rule tag, alone to the end of its line.
        if (size >= 3 && to_lower(data[1]) == 'h' && to_lower(data[2]) == 'r') {
            const void *hr_gt = memchr(data + 3, '>', first_len - 3);
            if (hr_gt) {
                const size_t end =
                    rest_of_line_blank(data, size_t(static_cast<const uint8_t *>(hr_gt) - data) + 1, size);
                if (end) {
                    if (doc->md.html_block) {
                        const hoedown_buffer text = view(data, end);
                        doc->md.html_block(ob, &text, &doc->data);
                    }
                    return end;
                }
            }
        }
        // Any other tag standing alone on its line is copied as it is.
        if (opening && rest_of_line_blank(data, opening, first_len)) {
            hoedown_buffer_put(ob, data, opening);
            return opening;
        }
        return 0;
    }

    const char *name = kBlockTags[tag];
    size_t end = 0;
    size_t close = kNone;
    const size_t abs_first = pos + first_len;
    if (memo.strict_fail[tag] == kNone || abs_first < memo.strict_fail[tag]) {
        close = find_closing_tag(data, size, first_len, name, true, &end);
        if (close == kNone)
            memo.strict_fail[tag] = abs_first;
    }
    if (close == kNone && tag != kTagIns && tag != kTagDel) {
        const size_t from = opening ? opening : i;
        if (memo.loose_fail[tag] == kNone || pos + from < memo.loose_fail[tag]) {
            close = find_closing_tag(data, size, from, name, false, &end);
            if (close == kNone)
                memo.loose_fail[tag] = pos + from;
        }
    }
    if (close == kNone) {
        // An unclosed tag is copied as it is, and what follows is Markdown.
        if (opening) {
            hoedown_buffer_put(ob, data, opening);
            return opening;
        }
        return 0;
    }

    // Where a blank line first follows the opening line; the elements whose
    // text is never Markdown have none by rule. Only a block that closes
    // needs it, and only up to its end.
    size_t blank = size;
    if (tag != kTagScript && tag != kTagPre && tag != kTagStyle) {
        for (size_t k = first_len; k < end;) {
            const size_t len = line_end(data + k, size - k);
            if (is_empty(data + k, len)) {
                blank = k;
                break;
            }
            k += len;
        }
    }
    const size_t width = strlen(name) + 3;
    if (blank + width < end && blank < close) {
        // A blank line after the opening line: the inside is Markdown.
        hoedown_buffer_put(ob, data, blank);
        hoedown_buffer *inner = newbuf(doc, BUFFER_BLOCK);
        parse_block(inner, doc, data + blank, close - blank);
        hoedown_buffer_put(ob, inner->data, inner->size);
        popbuf(doc, BUFFER_BLOCK);
        hoedown_buffer_put(ob, data + close, width);
        return end;
    }
    if (doc->md.html_block) {
        const hoedown_buffer text = view(data, end);
        doc->md.html_block(ob, &text, &doc->data);
    }
    return end;
}

} // namespace

// ---------------------------------------------------------------------------
// Tables

namespace {

// The part of a table line between its outer pipes: spaces and one leading
// and one trailing '|' (not escaped) are left out, as they separate nothing.
void strip_pipes(const uint8_t *line, size_t size, size_t *b, size_t *e)
{
    size_t i = 0;
    while (i < size && line[i] == ' ')
        ++i;
    if (i < size && line[i] == '|')
        ++i;
    size_t j = size;
    while (j > i && line[j - 1] == ' ')
        --j;
    if (j > i && line[j - 1] == '|' && !is_escaped(line, j - 1))
        --j;
    *b = i;
    *e = j;
}

// Splits a table line into cells at the '|' that are not escaped and not
// inside a code span or a link. Fills doc->table_cells with begin/end pairs
// (untrimmed).
void split_row(hoedown_document *doc, const uint8_t *line, size_t size)
{
    pod_array<size_t> &cells = doc->table_cells;
    cells.clear();
    size_t i, e;
    strip_pipes(line, size, &i, &e);

    // Code spans and links are looked up, not rescanned, so that a line full
    // of unmatched marks stays linear.
    inline_frame &f = doc->row_frame;
    f.reset(line, e);
    size_t cell_b = i;
    while (i < e) {
        const uint8_t c = line[i];
        if (c == '\\') {
            i += 2;
            continue;
        }
        if (c == '`') {
            size_t n = 0;
            while (i + n < e && line[i + n] == '`')
                ++n;
            f.need_runs();
            const size_t close = tick_closer(f.runs, i, n);
            i = close == kNone ? i + n : close + n;
            continue;
        }
        if (c == '[') {
            f.need_brackets();
            const size_t m = bracket_at(f.brackets, i);
            if (m == kNone) {
                ++i;
                continue;
            }
            i = m + 1;
            if (i < e && line[i] == '(') {
                const size_t p = bracket_at(f.brackets, i);
                if (p != kNone)
                    i = p + 1;
            }
            continue;
        }
        if (c == '|') {
            cells.push(cell_b);
            cells.push(i);
            cell_b = i + 1;
        }
        ++i;
    }
    cells.push(cell_b);
    cells.push(e > cell_b ? e : cell_b);
}

// The alignment line under the header: each column an optional ':', dashes
// and an optional ':', at least 3 of those characters, columns separated by
// '|' or '+'. Fills doc->table_aligns; returns the number of columns, or 0
// when the line is no alignment line.
size_t parse_alignments(hoedown_document *doc, const uint8_t *line, size_t size)
{
    pod_array<uint8_t> &aligns = doc->table_aligns;
    aligns.clear();
    size_t i, e;
    strip_pipes(line, trim_trailing_newlines(line, size), &i, &e);
    if (e <= i)
        return 0;
    for (;;) {
        while (i < e && line[i] == ' ')
            ++i;
        uint8_t a = 0;
        size_t n = 0;
        if (i < e && line[i] == ':') {
            a |= HOEDOWN_TABLE_ALIGN_LEFT;
            ++i;
            ++n;
        }
        while (i < e && line[i] == '-') {
            ++i;
            ++n;
        }
        if (i < e && line[i] == ':') {
            a |= HOEDOWN_TABLE_ALIGN_RIGHT;
            ++i;
            ++n;
        }
        while (i < e && line[i] == ' ')
            ++i;
        if (n < 3)
            return 0;
        aligns.push(a);
        if (i >= e)
            break;
        if (line[i] != '|' && line[i] != '+')
            return 0;
        ++i;
    }
    return aligns.size;
}

void render_row(hoedown_buffer *ob, hoedown_document *doc, const uint8_t *line, size_t size, size_t columns,
                unsigned int header_flag)
{
    split_row(doc, line, size);
    hoedown_buffer *row = newbuf(doc, BUFFER_SPAN);
    const size_t ncells = doc->table_cells.size / 2;
    const bool parse = needs_inline(doc, reinterpret_cast<const void *>(doc->md.table_cell), line, size);
    for (size_t col = 0; col < columns; ++col) {
        hoedown_buffer *cell = newbuf(doc, BUFFER_SPAN);
        if (col < ncells && parse) {
            size_t b = doc->table_cells[2 * col], e = doc->table_cells[2 * col + 1];
            while (b < e && line[b] == ' ')
                ++b;
            while (e > b && line[e - 1] == ' ')
                --e;
            parse_inline(cell, doc, line + b, e - b);
        }
        if (doc->md.table_cell)
            doc->md.table_cell(row, cell, doc->table_aligns[col] | header_flag, &doc->data);
        popbuf(doc, BUFFER_SPAN);
    }
    if (doc->md.table_row)
        doc->md.table_row(ob, row, &doc->data);
    popbuf(doc, BUFFER_SPAN);
}

size_t parse_table(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size)
{
    const size_t head_len = line_end(data, size);
    if (!memchr(data, '|', head_len) || head_len >= size)
        return 0;
    const size_t under_len = line_end(data + head_len, size - head_len);
    // Cheap refusal first: an alignment line holds nothing but these.
    for (size_t k = 0; k < under_len; ++k) {
        const uint8_t c = data[head_len + k];
        if (c != '-' && c != ':' && c != '|' && c != '+' && c != ' ' && c != '\n')
            return 0;
    }
    split_row(doc, data, trim_trailing_newlines(data, head_len));
    const size_t columns = doc->table_cells.size / 2;
    if (parse_alignments(doc, data + head_len, under_len) != columns)
        return 0;

    size_t end = head_len + under_len;
    const size_t rows_b = end;
    while (end < size) {
        const size_t len = line_end(data + end, size - end);
        // A row needs a '|' and, as the last line of the text, a newline.
        if (data[end + len - 1] != '\n' || !memchr(data + end, '|', len))
            break;
        end += len;
    }

    hoedown_buffer *table = newbuf(doc, BUFFER_BLOCK);
    hoedown_buffer *rows = newbuf(doc, BUFFER_BLOCK);
    render_row(rows, doc, data, trim_trailing_newlines(data, head_len), columns, HOEDOWN_TABLE_HEADER);
    if (doc->md.table_header)
        doc->md.table_header(table, rows, &doc->data);
    rows->size = 0;
    for (size_t k = rows_b; k < end;) {
        const size_t len = line_end(data + k, end - k);
        render_row(rows, doc, data + k, len - 1, columns, 0);
        k += len;
    }
    if (doc->md.table_body)
        doc->md.table_body(table, rows, &doc->data);
    if (doc->md.table)
        doc->md.table(ob, table, &doc->data);
    popbuf(doc, BUFFER_BLOCK);
    popbuf(doc, BUFFER_BLOCK);
    return end;
}

} // namespace

// ---------------------------------------------------------------------------
// Lists

namespace {

// One list item from data[0], which starts with its marker. The item's text
// is compacted in place: the first line's text stays where it is and later
// lines follow it with up to 4 leading spaces removed. Returns the length
// consumed; sets HOEDOWN_LI_BLOCK and HOEDOWN_LI_END in *flags.
size_t parse_listitem(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size, unsigned int *flags)
{
    size_t orgpre = 0;
    while (orgpre < 3 && orgpre < size && data[orgpre] == ' ')
        ++orgpre;
    size_t beg = prefix_uli(data, size);
    if (!beg)
        beg = prefix_oli(data, size);
    if (!beg)
        return 0;
    const size_t first_end = line_end(data, size);
    size_t w = first_end, cur = first_end, sublist = 0;
    bool in_empty = false, has_inside_empty = false;
    fence_info fi;
    bool in_fence = is_codefence(data + beg, first_end - beg, false, &fi);

    while (cur < size) {
        const size_t len = line_end(data + cur, size - cur);
        if (is_empty(data + cur, len)) {
            in_empty = true;
            cur += len;
            continue;
        }
        size_t pre = 0;
        while (pre < 4 && data[cur + pre] == ' ')
            ++pre;
        const uint8_t *line = data + cur + pre;
        const size_t line_len = len - pre;

        bool next_uli = false, next_oli = false;
        if (is_codefence(line, line_len, false, &fi)) {
            // Markers inside a fence are code, not items.
            in_fence = !in_fence;
        } else if (!in_fence) {
            if (is_hrule(data + cur, len)) {
                *flags |= HOEDOWN_LI_END;
                break;
            }
            next_uli = prefix_uli(line, line_len) != 0;
            next_oli = prefix_oli(line, line_len) != 0;
        }

        if (next_uli || next_oli) {
            if (in_empty)
                has_inside_empty = true;
            if (pre <= orgpre) {
                // The next item; after a blank line, a marker of the other
                // kind starts another list.
                const bool ordered = *flags & HOEDOWN_LIST_ORDERED;
                if (in_empty && ((ordered && next_uli) || (!ordered && next_oli)))
                    *flags |= HOEDOWN_LI_END;
                break;
            }
            if (!sublist)
                sublist = w - beg;
        } else if (in_empty && pre == 0) {
            *flags |= HOEDOWN_LI_END;
            break;
        }

        if (in_empty) {
            data[w++] = '\n';
            has_inside_empty = true;
            in_empty = false;
        }
        memmove(data + w, line, line_len);
        w += line_len;
        cur += len;
    }

    if (has_inside_empty)
        *flags |= HOEDOWN_LI_BLOCK;

    uint8_t *content = data + beg;
    const size_t csize = w - beg;
    const bool split = sublist && sublist < csize;
    hoedown_buffer *inter = newbuf(doc, BUFFER_SPAN);
    if (*flags & HOEDOWN_LI_BLOCK) {
        if (split) {
            parse_block(inter, doc, content, sublist);
            parse_block(inter, doc, content + sublist, csize - sublist);
        } else {
            parse_block(inter, doc, content, csize);
        }
    } else {
        const size_t inline_size = split ? sublist : csize;
        if (needs_inline(doc, reinterpret_cast<const void *>(doc->md.list_item), content, inline_size))
            parse_inline(inter, doc, content, inline_size);
        if (split)
            parse_block(inter, doc, content + sublist, csize - sublist);
    }
    if (doc->md.list_item)
        doc->md.list_item(ob, inter, *flags, &doc->data);
    popbuf(doc, BUFFER_SPAN);
    return cur;
}

size_t parse_list(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size, unsigned int flags)
{
    hoedown_buffer *work = newbuf(doc, BUFFER_BLOCK);
    size_t i = 0;
    while (i < size) {
        const size_t j = parse_listitem(work, doc, data + i, size - i, &flags);
        i += j;
        if (!j || (flags & HOEDOWN_LI_END))
            break;
    }
    if (doc->md.list)
        doc->md.list(ob, work, flags, &doc->data);
    popbuf(doc, BUFFER_BLOCK);
    return i;
}

// ---------------------------------------------------------------------------
// Paragraphs

// Whether a line ends the paragraph before it.
bool interrupts_paragraph(const hoedown_document *doc, const uint8_t *line, size_t size)
{
    const uint8_t c = line[0];
    // A list may interrupt a paragraph, but only at the first column and,
    // when ordered, with a single digit ("12. x" does not).
    if ((c == '*' || c == '+' || c == '-') && size > 1 && line[1] == ' ')
        return true;
    if (is_digit(c) && size > 2 && line[1] == '.' && line[2] == ' ')
        return true;
    if (doc->ext_flags & HOEDOWN_EXT_FENCED_CODE) {
        size_t k = 0;
        while (k < 3 && k < size && line[k] == ' ')
            ++k;
        fence_info fi;
        if (k < size && (line[k] == '`' || line[k] == '~') && is_codefence(line, size, true, &fi))
            return true;
    }
    if (c == '#' && is_atxheader(doc, line, size))
        return true;
    return is_hrule(line, size) || prefix_quote(line, size);
}

void render_paragraph(hoedown_buffer *ob, hoedown_document *doc, const uint8_t *data, size_t size)
{
    size = trim_trailing_newlines(data, size);
    if (!needs_inline(doc, reinterpret_cast<const void *>(doc->md.paragraph), data, size))
        return;
    hoedown_buffer *tmp = newbuf(doc, BUFFER_BLOCK);
    parse_inline(tmp, doc, data, size);
    if (doc->md.paragraph)
        doc->md.paragraph(ob, tmp, &doc->data);
    popbuf(doc, BUFFER_BLOCK);
}

size_t parse_paragraph(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size)
{
    size_t i = 0, last_b = 0, underline_end = 0;
    int level = 0;
    while (i < size) {
        const size_t len = line_end(data + i, size - i);
        if (is_empty(data + i, len))
            break;
        if (i > 0) {
            if ((level = is_headerline(data + i, len)) != 0) {
                underline_end = i + len;
                break;
            }
            if (interrupts_paragraph(doc, data + i, len))
                break;
        }
        last_b = i;
        i += len;
    }
    if (!level) {
        render_paragraph(ob, doc, data, i);
        return i;
    }

    // A Setext underline: the last line is the heading, the lines before it
    // a paragraph.
    if (last_b > 0)
        render_paragraph(ob, doc, data, last_b);
    size_t hb = last_b, he = trim_trailing_newlines(data, i);
    while (hb < he && data[hb] == ' ')
        ++hb;
    while (he > hb && data[he - 1] == ' ')
        --he;
    if (he > hb && needs_inline(doc, reinterpret_cast<const void *>(doc->md.header), data + hb, he - hb)) {
        hoedown_buffer *work = newbuf(doc, BUFFER_SPAN);
        parse_inline(work, doc, data + hb, he - hb);
        if (doc->md.header)
            doc->md.header(ob, work, level, &doc->data);
        popbuf(doc, BUFFER_SPAN);
    }
    return underline_end;
}

} // namespace

// ---------------------------------------------------------------------------
// The block loop

namespace hoedown_detail {

void parse_block(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size)
{
    const size_t in_use = buffers_in_use(doc);
    if (in_use > doc->max_nesting)
        return;
    if (in_use > kMaxWorkBuffers) {
        put_plain(ob, doc, data, size);
        return;
    }
    const unsigned int ext = doc->ext_flags;
    html_memo memo;
    size_t beg = 0;
    while (beg < size) {
        uint8_t *txt = data + beg;
        const size_t end = size - beg;
        const uint8_t c = txt[0];
        size_t n = 0;
        if (c == '#' && is_atxheader(doc, txt, end))
            n = parse_atxheader(ob, doc, txt, end);
        else if (c == '<' && doc->md.html_block && (n = parse_htmlblock(ob, doc, txt, end, memo, beg)) != 0)
            ;
        else if ((n = is_empty(txt, end)) != 0)
            ;
        else if (is_hrule(txt, end)) {
            if (doc->md.rule_line)
                doc->md.rule_line(ob, &doc->data);
            n = line_end(txt, end);
        } else if ((ext & HOEDOWN_EXT_FENCED_CODE) && (n = parse_fencedcode(ob, doc, txt, end)) != 0)
            ;
        else if ((ext & HOEDOWN_EXT_TABLES) && (n = parse_table(ob, doc, txt, end)) != 0)
            ;
        else if (prefix_quote(txt, end))
            n = parse_blockquote(ob, doc, txt, end);
        else if (!(ext & HOEDOWN_EXT_DISABLE_INDENTED_CODE) && prefix_code(txt, end))
            n = parse_blockcode(ob, doc, txt, end);
        else if (prefix_uli(txt, end))
            n = parse_list(ob, doc, txt, end, 0);
        else if (prefix_oli(txt, end))
            n = parse_list(ob, doc, txt, end, HOEDOWN_LIST_ORDERED);
        else
            n = parse_paragraph(ob, doc, txt, end);
        // Every branch consumes at least one byte; the guard keeps a future
        // mistake from becoming an endless loop.
        beg += n ? n : 1;
    }
}

} // namespace hoedown_detail
