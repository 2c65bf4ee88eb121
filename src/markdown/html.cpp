// The standard HTML renderer, the table of contents renderer and escaping.
#include "markdown/html_internal.h"

#include <cstdlib>
#include <cstring>
#include <new>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

using namespace hoedown_html;

namespace {

// --- escaping ------------------------------------------------------------------

struct html_escape_table {
    uint8_t v[256] = {};
    constexpr html_escape_table()
    {
        v[uint8_t('"')] = 1;
        v[uint8_t('&')] = 2;
        v[uint8_t('\'')] = 3;
        v[uint8_t('<')] = 4;
        v[uint8_t('>')] = 5;
    }
};
constexpr html_escape_table kHtmlEscape;
const char *const kHtmlEscapes[] = {"", "&quot;", "&amp;", "&#39;", "&lt;", "&gt;"};
const uint8_t kHtmlEscapeLen[] = {0, 6, 5, 5, 4, 4};

struct href_safe_table {
    bool v[256] = {};
    constexpr href_safe_table()
    {
        for (int c = '0'; c <= '9'; ++c)
            v[c] = true;
        for (int c = 'a'; c <= 'z'; ++c)
            v[c] = v[c - 32] = true;
        const char *more = "!#$%()*+,-./:;=?@_";
        for (const char *p = more; *p; ++p)
            v[uint8_t(*p)] = true;
    }
};
constexpr href_safe_table kHrefSafe;

} // namespace

namespace {

// The offset of the first byte at or after i that needs an entity, or size.
inline size_t next_html_special(const uint8_t *data, size_t i, size_t size)
{
#ifdef __SSE2__
    // Sixteen bytes at a time: most text has no special byte at all.
    const __m128i quot = _mm_set1_epi8('"'), amp = _mm_set1_epi8('&'), apos = _mm_set1_epi8('\''),
                  lt = _mm_set1_epi8('<'), gt = _mm_set1_epi8('>');
    while (i + 16 <= size) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + i));
        const __m128i hit = _mm_or_si128(
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, quot), _mm_cmpeq_epi8(v, amp)), _mm_cmpeq_epi8(v, apos)),
            _mm_or_si128(_mm_cmpeq_epi8(v, lt), _mm_cmpeq_epi8(v, gt)));
        const int mask = _mm_movemask_epi8(hit);
        if (mask)
            return i + size_t(__builtin_ctz(unsigned(mask)));
        i += 16;
    }
#endif
    while (i < size && !kHtmlEscape.v[data[i]])
        ++i;
    return i;
}

} // namespace

void hoedown_escape_html(hoedown_buffer *ob, const uint8_t *data, size_t size)
{
    // Most text needs no entity: make room once and copy runs.
    hoedown_buffer_grow(ob, ob->size + size + size / 8 + 8);
    size_t i = 0;
    for (;;) {
        const size_t org = i;
        i = next_html_special(data, i, size);
        if (i > org) {
            if (ob->size + (i - org) > ob->asize)
                hoedown_buffer_grow(ob, ob->size + (i - org));
            memcpy(ob->data + ob->size, data + org, i - org);
            ob->size += i - org;
        }
        if (i >= size)
            break;
        const uint8_t e = kHtmlEscape.v[data[i]];
        hoedown_buffer_put(ob, reinterpret_cast<const uint8_t *>(kHtmlEscapes[e]), kHtmlEscapeLen[e]);
        ++i;
    }
}

void hoedown_escape_href(hoedown_buffer *ob, const uint8_t *data, size_t size)
{
    static const char hex[] = "0123456789ABCDEF";
    size_t i = 0;
    while (i < size) {
        const size_t org = i;
        while (i < size && kHrefSafe.v[data[i]])
            ++i;
        hoedown_buffer_put(ob, data + org, i - org);
        if (i >= size)
            break;
        const uint8_t c = data[i];
        if (c == '&') {
            HTML_PUTSL(ob, "&amp;");
        } else if (c == '\'') {
            HTML_PUTSL(ob, "&#x27;");
        } else {
            const uint8_t pct[3] = {'%', uint8_t(hex[c >> 4]), uint8_t(hex[c & 0xF])};
            hoedown_buffer_put(ob, pct, 3);
        }
        ++i;
    }
}

namespace hoedown_html {

int wrap_span(hoedown_buffer *ob, const hoedown_buffer *content, const char *open, const char *close)
{
    if (!content || !content->size)
        return 0;
    hoedown_buffer_puts(ob, open);
    hoedown_buffer_put(ob, content->data, content->size);
    hoedown_buffer_puts(ob, close);
    return 1;
}

void list_item_content(hoedown_buffer *ob, const uint8_t *data, size_t size, const hoedown_html_renderer_state *st)
{
    while (size && data[size - 1] == '\n')
        --size;
    if (!(st->flags & HOEDOWN_HTML_HARD_WRAP)) {
        hoedown_buffer_put(ob, data, size);
        return;
    }
    // Line by line: a break before a line unless the previous one ended in
    // a break or a list item, or the line is markup.
    bool brk = false;
    size_t i = 0;
    while (i < size) {
        const size_t b = i;
        while (i < size && data[i] != '\n')
            ++i;
        const size_t e = i;
        const bool markup = data[b] == '<';
        if (brk) {
            if (markup)
                HTML_PUTSL(ob, "\n");
            else if (use_xhtml(st))
                HTML_PUTSL(ob, "<br/>\n");
            else
                HTML_PUTSL(ob, "<br>\n");
        }
        hoedown_buffer_put(ob, data + b, e - b);
        while (i < size && data[i] == '\n')
            ++i; // runs of newlines count as one
        if (i >= size)
            break;
        const size_t n = e - b;
        const auto ends_with = [&](const char *s, size_t len) {
            return n >= len && memcmp(data + e - len, s, len) == 0;
        };
        if (ends_with("<br>", 4) || ends_with("<br/>", 5) || ends_with("</li>", 5)) {
            HTML_PUTSL(ob, "\n");
            brk = false;
        } else {
            brk = true;
            if (markup)
                HTML_PUTSL(ob, "\n");
        }
    }
}

void header_with_id(hoedown_buffer *ob, const hoedown_buffer *content, int level, hoedown_html_renderer_state *st,
                    bool pdf_ids)
{
    if (ob->size)
        hoedown_buffer_putc(ob, '\n');
    if (level <= st->toc_data.heading_nesting_level) {
        if (pdf_ids)
            hoedown_buffer_printf(ob, "<h%d id=\"p%d_toc_%d\">", level, st->render_counter,
                                  st->toc_data.heading_count++);
        else
            hoedown_buffer_printf(ob, "<h%d id=\"toc_%d\">", level, st->toc_data.heading_count++);
    } else {
        hoedown_buffer_printf(ob, "<h%d>", level);
    }
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    hoedown_buffer_printf(ob, "</h%d>\n", level);
}

void footnote_definition_with(hoedown_buffer *ob, const hoedown_buffer *content, const char *open,
                              const char *backlink)
{
    hoedown_buffer_puts(ob, open);
    size_t at = SIZE_MAX;
    if (content) {
        for (size_t i = 0; i + 4 <= content->size; ++i) {
            if (memcmp(content->data + i, "</p>", 4) == 0) {
                at = i;
                break;
            }
        }
        if (at == SIZE_MAX) {
            hoedown_buffer_put(ob, content->data, content->size);
        } else {
            hoedown_buffer_put(ob, content->data, at);
            hoedown_buffer_puts(ob, backlink);
            hoedown_buffer_put(ob, content->data + at, content->size - at);
        }
    }
    HTML_PUTSL(ob, "</li>\n");
}

void toc_header_with(hoedown_buffer *ob, const hoedown_buffer *content, int level, hoedown_html_renderer_state *st,
                     bool pdf_ids)
{
    auto &toc = st->toc_data;
    if (level > toc.heading_nesting_level)
        return;
    if (toc.current_heading_level == 0)
        toc.heading_level_offset = level - 1;
    level -= toc.heading_level_offset;
    if (level > toc.current_heading_level) {
        while (level > toc.current_heading_level) {
            HTML_PUTSL(ob, "<ul>\n<li>\n");
            toc.current_heading_level++;
        }
    } else if (level < toc.current_heading_level) {
        HTML_PUTSL(ob, "</li>\n");
        while (level < toc.current_heading_level) {
            HTML_PUTSL(ob, "</ul>\n</li>\n");
            toc.current_heading_level--;
        }
        HTML_PUTSL(ob, "<li>\n");
    } else {
        HTML_PUTSL(ob, "</li>\n<li>\n");
    }
    if (pdf_ids)
        hoedown_buffer_printf(ob, "<a href=\"link://p%d_toc_%d\">", st->render_counter, toc.heading_count++);
    else
        hoedown_buffer_printf(ob, "<a href=\"#toc_%d\">", toc.heading_count++);
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    HTML_PUTSL(ob, "</a>\n");
}

void math_between(hoedown_buffer *ob, const hoedown_buffer *text, const char *open, const char *close)
{
    hoedown_buffer_puts(ob, open);
    hoedown_escape_html(ob, text->data, text->size);
    hoedown_buffer_puts(ob, close);
}

} // namespace hoedown_html

// --- the standard slots ------------------------------------------------------------

namespace {

hoedown_html_renderer_state *state_of(const hoedown_renderer_data *data) { return hoedown_html_state(data); }

void rndr_code_block(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_buffer *lang,
                     const hoedown_renderer_data *data)
{
    hoedown_html_renderer_state *st = state_of(data);
    if (ob->size)
        hoedown_buffer_putc(ob, '\n');
    st->flags |= HOEDOWN_HTML_SAW_CODE;
    if (lang && lang->size) {
        HTML_PUTSL(ob, "<pre><code class=\"language-");
        hoedown_escape_html(ob, lang->data, lang->size);
        HTML_PUTSL(ob, "\">");
    } else {
        HTML_PUTSL(ob, "<pre><code>");
    }
    if (text)
        hoedown_escape_html(ob, text->data, text->size);
    HTML_PUTSL(ob, "</code></pre>\n");
}

void rndr_quote_block(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *)
{
    HTML_PUTSL(ob, "<blockquote>\n");
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    HTML_PUTSL(ob, "</blockquote>\n");
}

void rndr_header(hoedown_buffer *ob, const hoedown_buffer *content, int level, const hoedown_renderer_data *data)
{
    header_with_id(ob, content, level, state_of(data), false);
}

void rndr_rule_line(hoedown_buffer *ob, const hoedown_renderer_data *data)
{
    if (use_xhtml(state_of(data)))
        HTML_PUTSL(ob, "<hr/>\n");
    else
        HTML_PUTSL(ob, "<hr>\n");
}

void rndr_list(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int flags, const hoedown_renderer_data *)
{
    const bool ordered = flags & HOEDOWN_LIST_ORDERED;
    if (ordered)
        HTML_PUTSL(ob, "<ol>\n");
    else
        HTML_PUTSL(ob, "<ul>\n");
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    if (ordered)
        HTML_PUTSL(ob, "</ol>\n");
    else
        HTML_PUTSL(ob, "</ul>\n");
}

void rndr_list_item(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int, const hoedown_renderer_data *data)
{
    HTML_PUTSL(ob, "<li>");
    if (content)
        list_item_content(ob, content->data, content->size, state_of(data));
    HTML_PUTSL(ob, "</li>\n");
}

void rndr_paragraph(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data)
{
    const hoedown_html_renderer_state *st = state_of(data);
    if (!content)
        return;
    size_t i = 0;
    const size_t size = content->size;
    const uint8_t *d = content->data;
    while (i < size && (d[i] == ' ' || d[i] == '\n' || d[i] == '\t' || d[i] == '\r'))
        ++i;
    if (i == size)
        return;
    HTML_PUTSL(ob, "<p>");
    if (st->flags & HOEDOWN_HTML_HARD_WRAP) {
        while (i < size) {
            const size_t org = i;
            const uint8_t *nl = hoedown_find_byte(d + i, size - i, '\n');
            i = nl ? size_t(nl - d) : size;
            hoedown_buffer_put(ob, d + org, i - org);
            // No break after the last line.
            if (i + 1 >= size)
                break;
            if (use_xhtml(st))
                HTML_PUTSL(ob, "<br/>\n");
            else
                HTML_PUTSL(ob, "<br>\n");
            ++i;
        }
    } else {
        hoedown_buffer_put(ob, d + i, size - i);
    }
    HTML_PUTSL(ob, "</p>\n");
}

void rndr_table(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *)
{
    HTML_PUTSL(ob, "<table>\n");
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    HTML_PUTSL(ob, "</table>\n");
}

void rndr_table_header(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *)
{
    HTML_PUTSL(ob, "<thead>\n");
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    HTML_PUTSL(ob, "</thead>\n");
}

void rndr_table_body(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *)
{
    HTML_PUTSL(ob, "<tbody>\n");
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    HTML_PUTSL(ob, "</tbody>\n");
}

void rndr_table_row(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *)
{
    HTML_PUTSL(ob, "<tr>\n");
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    HTML_PUTSL(ob, "</tr>\n");
}

void rndr_table_cell(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int flags,
                     const hoedown_renderer_data *)
{
    const bool header = flags & HOEDOWN_TABLE_HEADER;
    if (header)
        HTML_PUTSL(ob, "<th");
    else
        HTML_PUTSL(ob, "<td");
    switch (flags & HOEDOWN_TABLE_ALIGNMASK) {
    case HOEDOWN_TABLE_ALIGN_CENTER: HTML_PUTSL(ob, " style=\"text-align: center\">"); break;
    case HOEDOWN_TABLE_ALIGN_LEFT: HTML_PUTSL(ob, " style=\"text-align: left\">"); break;
    case HOEDOWN_TABLE_ALIGN_RIGHT: HTML_PUTSL(ob, " style=\"text-align: right\">"); break;
    default: HTML_PUTSL(ob, ">"); break;
    }
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    if (header)
        HTML_PUTSL(ob, "</th>\n");
    else
        HTML_PUTSL(ob, "</td>\n");
}

void rndr_footnotes(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data)
{
    HTML_PUTSL(ob, "<div class=\"footnotes\">\n");
    rndr_rule_line(ob, data);
    HTML_PUTSL(ob, "<ol>\n");
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    HTML_PUTSL(ob, "\n</ol>\n</div>\n");
}

void rndr_footnote_definition(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int num,
                              const hoedown_renderer_data *)
{
    char open[48], backlink[96];
    snprintf(open, sizeof open, "\n<li id=\"fn%u\">\n", num);
    snprintf(backlink, sizeof backlink, "&nbsp;<a href=\"#fnref%u\" rev=\"footnote\">&#8617;</a>", num);
    footnote_definition_with(ob, content, open, backlink);
}

int rndr_footnote_reference(hoedown_buffer *ob, unsigned int num, const hoedown_renderer_data *)
{
    hoedown_buffer_printf(ob, "<sup id=\"fnref%u\"><a href=\"#fn%u\" rel=\"footnote\">%u</a></sup>", num, num, num);
    return 1;
}

void rndr_html_block(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_renderer_data *data)
{
    const hoedown_html_renderer_state *st = state_of(data);
    if (st->flags & HOEDOWN_HTML_SKIP_HTML)
        return;
    size_t org = 0, sz = text->size;
    while (org < sz && text->data[org] == '\n')
        ++org;
    while (sz > org && text->data[sz - 1] == '\n')
        --sz;
    if (org >= sz)
        return;
    if (ob->size)
        hoedown_buffer_putc(ob, '\n');
    if (st->flags & HOEDOWN_HTML_ESCAPE)
        hoedown_escape_html(ob, text->data + org, sz - org);
    else
        hoedown_buffer_put(ob, text->data + org, sz - org);
    hoedown_buffer_putc(ob, '\n');
}

void close_link_tag(hoedown_buffer *ob, const hoedown_buffer *link, const hoedown_renderer_data *data)
{
    const hoedown_html_renderer_state *st = state_of(data);
    if (st->link_attributes) {
        hoedown_buffer_putc(ob, '"');
        st->link_attributes(ob, link, data);
        hoedown_buffer_putc(ob, '>');
    } else {
        HTML_PUTSL(ob, "\">");
    }
}

int rndr_autolink(hoedown_buffer *ob, const hoedown_buffer *link, hoedown_autolink_type type,
                  const hoedown_renderer_data *data)
{
    if (!link || !link->size)
        return 0;
    HTML_PUTSL(ob, "<a href=\"");
    if (type == HOEDOWN_AUTOLINK_EMAIL)
        HTML_PUTSL(ob, "mailto:");
    hoedown_escape_href(ob, link->data, link->size);
    close_link_tag(ob, link, data);
    // The visible text loses a leading "mailto:".
    if (link->size > 7 && memcmp(link->data, "mailto:", 7) == 0)
        hoedown_escape_html(ob, link->data + 7, link->size - 7);
    else
        hoedown_escape_html(ob, link->data, link->size);
    HTML_PUTSL(ob, "</a>");
    return 1;
}

int rndr_link(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_buffer *link,
              const hoedown_buffer *title, const hoedown_renderer_data *data)
{
    HTML_PUTSL(ob, "<a href=\"");
    if (link && link->size)
        hoedown_escape_href(ob, link->data, link->size);
    if (title && title->size) {
        HTML_PUTSL(ob, "\" title=\"");
        hoedown_escape_html(ob, title->data, title->size);
    }
    close_link_tag(ob, link, data);
    if (content && content->size)
        hoedown_buffer_put(ob, content->data, content->size);
    HTML_PUTSL(ob, "</a>");
    return 1;
}

int rndr_image(hoedown_buffer *ob, const hoedown_buffer *link, const hoedown_buffer *title,
               const hoedown_buffer *alt, const hoedown_renderer_data *data)
{
    if (!link || !link->size)
        return 0;
    HTML_PUTSL(ob, "<img src=\"");
    hoedown_escape_href(ob, link->data, link->size);
    HTML_PUTSL(ob, "\" alt=\"");
    if (alt && alt->size)
        hoedown_escape_html(ob, alt->data, alt->size);
    if (title && title->size) {
        HTML_PUTSL(ob, "\" title=\"");
        hoedown_escape_html(ob, title->data, title->size);
    }
    if (use_xhtml(state_of(data)))
        HTML_PUTSL(ob, "\"/>");
    else
        HTML_PUTSL(ob, "\">");
    return 1;
}

int rndr_code_span(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_renderer_data *)
{
    HTML_PUTSL(ob, "<code>");
    if (text)
        hoedown_escape_html(ob, text->data, text->size);
    HTML_PUTSL(ob, "</code>");
    return 1;
}

int rndr_strong_span(hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *)
{
    return wrap_span(ob, c, "<strong>", "</strong>");
}
int rndr_emphasis(hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *)
{
    return wrap_span(ob, c, "<em>", "</em>");
}
int rndr_underline(hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *)
{
    return wrap_span(ob, c, "<u>", "</u>");
}
int rndr_highlight(hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *)
{
    return wrap_span(ob, c, "<mark>", "</mark>");
}
int rndr_quote(hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *)
{
    return wrap_span(ob, c, "<q>", "</q>");
}
int rndr_strong_emphasis(hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *)
{
    return wrap_span(ob, c, "<strong><em>", "</em></strong>");
}
int rndr_strikethrough(hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *)
{
    return wrap_span(ob, c, "<del>", "</del>");
}
int rndr_superscript(hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *)
{
    return wrap_span(ob, c, "<sup>", "</sup>");
}

int rndr_line_break(hoedown_buffer *ob, const hoedown_renderer_data *data)
{
    if (use_xhtml(state_of(data)))
        HTML_PUTSL(ob, "<br/>\n");
    else
        HTML_PUTSL(ob, "<br>\n");
    return 1;
}

int rndr_math(hoedown_buffer *ob, const hoedown_buffer *text, int displaymode, const hoedown_renderer_data *)
{
    if (displaymode)
        math_between(ob, text, "\\[", "\\]");
    else
        math_between(ob, text, "\\(", "\\)");
    return 1;
}

int rndr_inline_html(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_renderer_data *data)
{
    const hoedown_html_renderer_state *st = state_of(data);
    if (st->flags & HOEDOWN_HTML_SKIP_HTML)
        return 1;
    if (st->flags & HOEDOWN_HTML_ESCAPE)
        hoedown_escape_html(ob, text->data, text->size);
    else
        hoedown_buffer_put(ob, text->data, text->size);
    return 1;
}

void rndr_plain_text(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_renderer_data *)
{
    hoedown_escape_html(ob, text->data, text->size);
}

// --- the table of contents slots -----------------------------------------------------

void toc_header(hoedown_buffer *ob, const hoedown_buffer *content, int level, const hoedown_renderer_data *data)
{
    toc_header_with(ob, content, level, state_of(data), false);
}

int toc_link(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_buffer *, const hoedown_buffer *,
             const hoedown_renderer_data *)
{
    // The text only: a link inside a table of contents entry would nest
    // anchors.
    if (content && content->size)
        hoedown_buffer_put(ob, content->data, content->size);
    return 1;
}

void toc_page_end(hoedown_buffer *ob, int inline_render, const hoedown_renderer_data *data)
{
    if (inline_render)
        return;
    hoedown_html_renderer_state *st = state_of(data);
    for (int i = 0; i < st->toc_data.current_heading_level; ++i)
        HTML_PUTSL(ob, "</li>\n</ul>\n");
    st->toc_data.current_heading_level = 0;
}

hoedown_renderer *new_renderer(unsigned int flags, int nesting_level)
{
    auto *st = static_cast<hoedown_html_renderer_state *>(hoedown_calloc(1, sizeof(hoedown_html_renderer_state)));
    st->flags = flags;
    st->toc_data.heading_nesting_level = nesting_level;
    hoedown_buffer_init(&st->scratch, 64);
    auto *r = static_cast<hoedown_renderer *>(hoedown_calloc(1, sizeof(hoedown_renderer)));
    r->opaque = st;
    return r;
}

} // namespace

hoedown_renderer *hoedown_html_renderer_new(unsigned int render_flags, int nesting_level)
{
    hoedown_renderer *r = new_renderer(render_flags, nesting_level);
    r->code_block = rndr_code_block;
    r->quote_block = rndr_quote_block;
    r->header = rndr_header;
    r->rule_line = rndr_rule_line;
    r->list = rndr_list;
    r->list_item = rndr_list_item;
    r->paragraph = rndr_paragraph;
    r->table = rndr_table;
    r->table_header = rndr_table_header;
    r->table_body = rndr_table_body;
    r->table_row = rndr_table_row;
    r->table_cell = rndr_table_cell;
    r->footnotes = rndr_footnotes;
    r->footnote_definition = rndr_footnote_definition;
    r->html_block = rndr_html_block;
    r->autolink = rndr_autolink;
    r->code_span = rndr_code_span;
    r->strong_span = rndr_strong_span;
    r->emphasis = rndr_emphasis;
    r->underline = rndr_underline;
    r->highlight = rndr_highlight;
    r->quote = rndr_quote;
    r->image = rndr_image;
    r->line_break = rndr_line_break;
    r->link = rndr_link;
    r->strong_emphasis_span = rndr_strong_emphasis;
    r->strikethrough = rndr_strikethrough;
    r->superscript = rndr_superscript;
    r->footnote_reference = rndr_footnote_reference;
    r->math = rndr_math;
    r->inline_html = rndr_inline_html;
    r->plain_text = rndr_plain_text;
    return r;
}

hoedown_renderer *hoedown_html_toc_renderer_new(int nesting_level)
{
    hoedown_renderer *r = new_renderer(HOEDOWN_HTML_USE_XHTML, nesting_level);
    r->header = toc_header;
    r->code_span = rndr_code_span;
    r->strong_span = rndr_strong_span;
    r->emphasis = rndr_emphasis;
    r->underline = rndr_underline;
    r->highlight = rndr_highlight;
    r->quote = rndr_quote;
    r->strong_emphasis_span = rndr_strong_emphasis;
    r->strikethrough = rndr_strikethrough;
    r->superscript = rndr_superscript;
    r->link = toc_link;
    r->plain_text = rndr_plain_text;
    r->page_end = toc_page_end;
    return r;
}

void hoedown_html_renderer_free(hoedown_renderer *renderer)
{
    if (!renderer)
        return;
    auto *st = static_cast<hoedown_html_renderer_state *>(renderer->opaque);
    if (st) {
        hoedown_buffer_uninit(&st->scratch);
        free(st);
    }
    free(renderer);
}
