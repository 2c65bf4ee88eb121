// Orvo's slot overrides of the standard HTML renderer.
#include "markdown/html_overrides.h"
#include "markdown/html_internal.h"

#include <cstring>

using namespace hoedown_html;

namespace {

hoedown_html_renderer_state *state_of(const hoedown_renderer_data *data) { return hoedown_html_state(data); }

// --- task list items -------------------------------------------------------------

// The check box mark of an item: 1 unchecked, 2 checked, 0 none. The mark
// stands at the start of the item's text, after "<p>" in a block item.
int task_mark(const hoedown_buffer *content, unsigned int flags, size_t *offset)
{
    if (!content || content->size < 3)
        return 0;
    *offset = (flags & HOEDOWN_LI_BLOCK) ? 3 : 0;
    if (content->size < *offset + 3)
        return 0;
    const uint8_t *m = content->data + *offset;
    if (memcmp(m, "[ ]", 3) == 0)
        return 1;
    if (memcmp(m, "[x]", 3) == 0)
        return 2;
    return 0;
}

void task_list_item(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int flags,
                    const hoedown_renderer_data *data)
{
    const hoedown_html_renderer_state *st = state_of(data);
    size_t off = 0;
    const int mark = (st->flags & HOEDOWN_HTML_USE_TASK_LIST) ? task_mark(content, flags, &off) : 0;
    if (!mark) {
        HTML_PUTSL(ob, "<li>");
        if (content)
            list_item_content(ob, content->data, content->size, st);
        HTML_PUTSL(ob, "</li>\n");
        return;
    }
    HTML_PUTSL(ob, "<li class=\"task-list-item\">");
    hoedown_buffer_put(ob, content->data, off);
    if (use_xhtml(st)) {
        if (mark == 2)
            HTML_PUTSL(ob, "<input disabled=\"disabled\" type=\"checkbox\" checked />");
        else
            HTML_PUTSL(ob, "<input disabled=\"disabled\" type=\"checkbox\" />");
    } else {
        if (mark == 2)
            HTML_PUTSL(ob, "<input disabled=\"disabled\" type=\"checkbox\" checked>");
        else
            HTML_PUTSL(ob, "<input disabled=\"disabled\" type=\"checkbox\">");
    }
    list_item_content(ob, content->data + off + 3, content->size - off - 3, st);
    HTML_PUTSL(ob, "</li>\n");
}

// ePub readers have no form controls: the mark stays as text.
void text_task_list_item(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int flags,
                         const hoedown_renderer_data *data)
{
    const hoedown_html_renderer_state *st = state_of(data);
    size_t off = 0;
    const int mark = (st->flags & HOEDOWN_HTML_USE_TASK_LIST) ? task_mark(content, flags, &off) : 0;
    if (!mark) {
        task_list_item(ob, content, flags, data);
        return;
    }
    if (mark == 2)
        HTML_PUTSL(ob, "<li>[x] ");
    else
        HTML_PUTSL(ob, "<li>[ ] ");
    hoedown_buffer_put(ob, content->data, off);
    list_item_content(ob, content->data + off + 3, content->size - off - 3, st);
    HTML_PUTSL(ob, "</li>\n");
}

// --- chart-aware code blocks ---------------------------------------------------------

struct lang_alias {
    const char *lang, *alias;
};
const lang_alias kLangAliases[] = {
    {"c++", "cpp"},           {"coffee", "coffeescript"}, {"coffee-script", "coffeescript"},
    {"cs", "csharp"},         {"html", "markup"},         {"jl", "julia"},
    {"js", "javascript"},     {"json", "javascript"},     {"objective-c", "objectivec"},
    {"obj-c", "objectivec"},  {"objc", "objectivec"},     {"py", "python"},
    {"rb", "ruby"},           {"sh", "bash"},             {"xml", "markup"},
};

struct chart_lang {
    const char *lang;
    unsigned int flag;
};
const chart_lang kChartLangs[] = {
    {"sequence", HOEDOWN_HTML_SAW_FLOW_SEQ}, {"flow", HOEDOWN_HTML_SAW_FLOW_SEQ},
    {"mermaid", HOEDOWN_HTML_SAW_MERMAID},   {"plantuml", HOEDOWN_HTML_SAW_PLANTUML},
    {"echarts", HOEDOWN_HTML_SAW_ECHARTS},   {"dot", HOEDOWN_HTML_SAW_GRAPH},
    {"neato", HOEDOWN_HTML_SAW_GRAPH},       {"fdp", HOEDOWN_HTML_SAW_GRAPH},
    {"sfdp", HOEDOWN_HTML_SAW_GRAPH},        {"twopi", HOEDOWN_HTML_SAW_GRAPH},
    {"circo", HOEDOWN_HTML_SAW_GRAPH},
};

bool equals(const hoedown_buffer *b, const char *s)
{
    const size_t n = strlen(s);
    return b->size == n && memcmp(b->data, s, n) == 0;
}

void chart_code_block(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_buffer *lang,
                      const hoedown_renderer_data *data)
{
    hoedown_html_renderer_state *st = state_of(data);
    if (ob->size)
        hoedown_buffer_putc(ob, '\n');
    st->flags |= HOEDOWN_HTML_SAW_CODE;
    HTML_PUTSL(ob, "<pre");
    if (st->flags & HOEDOWN_HTML_LINE_NUMBERS)
        HTML_PUTSL(ob, " class=\"line-numbers\"");
    if (!lang || !lang->size) {
        HTML_PUTSL(ob, "><code class=\"language-text\">");
    } else {
        hoedown_buffer *lower = &st->scratch;
        lower->size = 0;
        hoedown_buffer_grow(lower, lang->size);
        for (size_t i = 0; i < lang->size; ++i) {
            const uint8_t c = lang->data[i];
            lower->data[i] = (c >= 'A' && c <= 'Z') ? uint8_t(c | 0x20) : c;
        }
        lower->size = lang->size;
        // Charts are told by the language as written, before its alias.
        for (const chart_lang &cl : kChartLangs) {
            if (equals(lower, cl.lang))
                st->flags |= cl.flag;
        }
        const uint8_t *name = lower->data;
        size_t name_len = lower->size;
        for (const lang_alias &a : kLangAliases) {
            if (equals(lower, a.lang)) {
                name = reinterpret_cast<const uint8_t *>(a.alias);
                name_len = strlen(a.alias);
                break;
            }
        }
        HTML_PUTSL(ob, "><code class=\"language-");
        hoedown_escape_html(ob, name, name_len);
        HTML_PUTSL(ob, "\">");
    }
    if (text)
        hoedown_escape_html(ob, text->data, text->size);
    HTML_PUTSL(ob, "</code></pre>\n");
}

// --- sized images ------------------------------------------------------------------

struct image_placement {
    char letter;
    const char *cls, *style;
};
const image_placement kPlacements[] = {
    {'c', " class=\"ov_img_center\"", "display: block; clear:both; margin: 0 auto;"},
    {'m', " class=\"ov_img_center\"", "display: block; clear:both; margin: 0 auto;"},
    {'l', " class=\"ov_img_left\"", "display: block; float: left; margin: 0px 8px 8px 0px;"},
    {'r', " class=\"ov_img_right\"", "display: block; float: right; margin: 0px 0px 8px 8px;"},
    {'w', "", ""},
};

// The style of the element img in notes: a single blank.
constexpr const char *kEvernoteImgStyle = " ";

// Reads a "-<letter><digits>" suffix at the end of the alt text (letter one
// of c, m, l, r, w; digits optional, a width in pixels up to 9000000).
// Returns the placement or null; fills the width and the length of the text
// before the suffix.
const image_placement *image_suffix(const uint8_t *alt, size_t n, long *width, size_t *keep)
{
    size_t i = n;
    long num = 0, mult = 1;
    size_t digits = 0;
    while (i > 0 && alt[i - 1] >= '0' && alt[i - 1] <= '9') {
        const long d = alt[i - 1] - '0';
        // Any non-zero digit from the eighth on passes 9000000.
        if (d && digits >= 7)
            return nullptr;
        num += d * mult;
        if (num > 9000000)
            return nullptr;
        if (digits < 7)
            mult *= 10;
        ++digits;
        --i;
    }
    if (i == 0)
        return nullptr;
    const uint8_t letter = alt[i - 1];
    const image_placement *found = nullptr;
    for (const image_placement &p : kPlacements) {
        if (p.letter == char(letter))
            found = &p;
    }
    if (!found || i < 2 || alt[i - 2] != '-')
        return nullptr;
    *width = num;
    *keep = i - 2;
    return found;
}

int sized_image_with(hoedown_buffer *ob, const hoedown_buffer *link, const hoedown_buffer *title,
                     const hoedown_buffer *alt, const hoedown_renderer_data *data, bool evernote)
{
    if (!link || !link->size)
        return 0;
    const hoedown_html_renderer_state *st = state_of(data);
    const bool figure = st->flags & HOEDOWN_HTML_FIGURE;
    const uint8_t *a = alt ? alt->data : nullptr;
    const size_t n = alt ? alt->size : 0;
    long width = 0;
    size_t keep = n;
    const image_placement *place = n ? image_suffix(a, n, &width, &keep) : nullptr;

    if (figure)
        HTML_PUTSL(ob, "<figure>");
    HTML_PUTSL(ob, "<img src=\"");
    hoedown_escape_href(ob, link->data, link->size);
    HTML_PUTSL(ob, "\" alt=\"");
    if (keep)
        hoedown_escape_html(ob, a, keep);
    if (place) {
        if (evernote) {
            hoedown_buffer_printf(ob, "\"%s style=\" %s ", place->cls, kEvernoteImgStyle);
            if (width > 0)
                hoedown_buffer_printf(ob, "width:%ldpx;", width);
            hoedown_buffer_puts(ob, place->style);
        } else if (width > 0) {
            hoedown_buffer_printf(ob, "\"%s style=\"width:%ldpx;%s", place->cls, width, place->style);
        } else {
            hoedown_buffer_printf(ob, "\"%s style=\"%s", place->cls, place->style);
        }
    } else if (evernote) {
        hoedown_buffer_printf(ob, "\" style=\"%s ", kEvernoteImgStyle);
    }
    if (title && title->size) {
        HTML_PUTSL(ob, "\" title=\"");
        hoedown_escape_html(ob, title->data, title->size);
    }
    if (use_xhtml(st))
        HTML_PUTSL(ob, "\"/>");
    else
        HTML_PUTSL(ob, "\">");
    if (figure) {
        if (keep) {
            HTML_PUTSL(ob, "<figcaption>");
            hoedown_escape_html(ob, a, keep);
            HTML_PUTSL(ob, "</figcaption>");
        }
        HTML_PUTSL(ob, "</figure>");
    }
    return 1;
}

int sized_image(hoedown_buffer *ob, const hoedown_buffer *link, const hoedown_buffer *title,
                const hoedown_buffer *alt, const hoedown_renderer_data *data)
{
    return sized_image_with(ob, link, title, alt, data, false);
}

int evernote_sized_image(hoedown_buffer *ob, const hoedown_buffer *link, const hoedown_buffer *title,
                         const hoedown_buffer *alt, const hoedown_renderer_data *data)
{
    return sized_image_with(ob, link, title, alt, data, true);
}

// --- math -----------------------------------------------------------------------------

// Left for the page's MathJax, and reported so that the page loads it.
int browser_math(hoedown_buffer *ob, const hoedown_buffer *text, int displaymode, const hoedown_renderer_data *data)
{
    state_of(data)->flags |= HOEDOWN_HTML_SAW_MATH;
    if (displaymode)
        math_between(ob, text, "\\[", "\\]");
    else
        math_between(ob, text, "\\(", "\\)");
    return 1;
}

int evernote_math(hoedown_buffer *ob, const hoedown_buffer *text, int displaymode, const hoedown_renderer_data *data)
{
    state_of(data)->flags |= HOEDOWN_HTML_SAW_MATH;
    if (displaymode)
        math_between(ob, text, "<div style=\"padding:2px;\"  class=\"orvolatextohtml\">\\[", "\\]</div>");
    else
        math_between(ob, text,
                     "<span style=\"padding:2px;display:inline-block !important;\" class=\"orvolatextohtml\">\\(",
                     "\\)</span>");
    return 1;
}

int latex_tag_math(hoedown_buffer *ob, const hoedown_buffer *text, int, const hoedown_renderer_data *)
{
    math_between(ob, text, "$latex ", " $");
    return 1;
}

int remote_image_math(hoedown_buffer *ob, const hoedown_buffer *text, int, const hoedown_renderer_data *)
{
    HTML_PUTSL(ob, "<img src=\"");
    hoedown_buffer_puts(ob, kORVLaTeXImageServiceURL);
    hoedown_escape_href(ob, text->data, text->size);
    HTML_PUTSL(ob, "\" />");
    return 1;
}

int strong_highlight(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *)
{
    return wrap_span(ob, content, "<strong>", "</strong>");
}

// --- PDF ids ------------------------------------------------------------------------------

void pdf_header(hoedown_buffer *ob, const hoedown_buffer *content, int level, const hoedown_renderer_data *data)
{
    header_with_id(ob, content, level, state_of(data), true);
}

void pdf_footnote_definition(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int num,
                             const hoedown_renderer_data *data)
{
    const int p = state_of(data)->render_counter;
    char open[64], backlink[128];
    snprintf(open, sizeof open, "\n<li id=\"fn%u_p%d\">\n", num, p);
    snprintf(backlink, sizeof backlink, "&nbsp;<a href=\"link://fn%u_p%d_ref\" rev=\"footnote\">&#8617;</a>", num, p);
    footnote_definition_with(ob, content, open, backlink);
}

int pdf_footnote_reference(hoedown_buffer *ob, unsigned int num, const hoedown_renderer_data *data)
{
    const int p = state_of(data)->render_counter;
    hoedown_buffer_printf(ob, "<sup id=\"fn%u_p%d_ref\"><a href=\"link://fn%u_p%d\" rel=\"footnote\">%u</a></sup>", num,
                          p, num, p, num);
    return 1;
}

// --- table of contents lines ------------------------------------------------------------

void pdf_toc_header(hoedown_buffer *ob, const hoedown_buffer *content, int level, const hoedown_renderer_data *data)
{
    toc_header_with(ob, content, level, state_of(data), true);
}

// Notes have no nested lists: indented lines with a break after each.
void evernote_toc_header(hoedown_buffer *ob, const hoedown_buffer *content, int level,
                         const hoedown_renderer_data *data)
{
    hoedown_html_renderer_state *st = state_of(data);
    if (level > st->toc_data.heading_nesting_level)
        return;
    for (int i = 1; i < level; ++i)
        HTML_PUTSL(ob, "<span>&nbsp;&nbsp;</span>\n");
    hoedown_buffer_printf(ob, "<a href=\"#toc_%d\">", st->toc_data.heading_count++);
    if (content)
        hoedown_buffer_put(ob, content->data, content->size);
    HTML_PUTSL(ob, "</a><br />\n");
}

} // namespace

void orvo_html_apply_overrides(hoedown_renderer *r, int renderType, bool isMath)
{
    switch (renderType) {
    case ORVRenderTypeEvernote:
        // Notes once took a further set of overrides with inline styles on
        // every element, for an old toolkit version that never occurs here;
        // that set is not built.
        r->list_item = task_list_item;
        r->code_block = chart_code_block;
        r->image = evernote_sized_image;
        if (isMath)
            r->math = evernote_math;
        r->highlight = strong_highlight;
        break;
    case ORVRenderTypePDF:
        r->list_item = task_list_item;
        r->code_block = chart_code_block;
        r->image = sized_image;
        r->math = browser_math;
        r->header = pdf_header;
        r->footnote_definition = pdf_footnote_definition;
        r->footnote_reference = pdf_footnote_reference;
        break;
    case ORVRenderTypeLaTeXTag:
        r->list_item = task_list_item;
        r->code_block = chart_code_block;
        r->image = sized_image;
        r->math = latex_tag_math;
        break;
    case ORVRenderTypeEPub:
        r->list_item = text_task_list_item;
        r->code_block = chart_code_block;
        r->image = sized_image;
        r->math = browser_math;
        break;
    case ORVRenderTypeMathImage:
        r->list_item = task_list_item;
        if (isMath)
            r->math = remote_image_math;
        r->highlight = strong_highlight;
        break;
    case ORVRenderTypeTableOnly:
        r->list_item = task_list_item;
        r->code_block = chart_code_block;
        r->image = sized_image;
        r->math = browser_math;
        // The table builder reads the cells back as the text the user wrote:
        // emphasis marks stay literal, as in a render where only tables are
        // recognised.
        r->emphasis = nullptr;
        r->strong_span = nullptr;
        r->strong_emphasis_span = nullptr;
        r->underline = nullptr;
        break;
    default: // plain, figure and any unknown type
        r->list_item = task_list_item;
        r->code_block = chart_code_block;
        r->image = sized_image;
        r->math = browser_math;
        break;
    }
}

void orvo_html_toc_apply_form(hoedown_renderer *r, int renderType)
{
    if (renderType == ORVRenderTypeEvernote)
        r->header = evernote_toc_header;
    else if (renderType == ORVRenderTypePDF)
        r->header = pdf_toc_header;
}
