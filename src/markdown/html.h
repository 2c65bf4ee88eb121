#pragma once

// HTML renderers for the Markdown parser: the standard one, the table of
// contents one, and the escaping and typographic replacement they share.
// Plain C++ over UTF-8 bytes, no Qt. A renderer is made and freed by its
// owner and serves one document render at a time.

#include "hoedown/document.h"

#include <cstddef>
#include <cstdint>

// Flag bits of hoedown_html_renderer_state::flags. The first six and
// FIGURE are chosen when the renderer is made; the SAW_ bits start clear and
// slots set them while rendering, to tell the caller what the text held.
enum hoedown_html_flags : unsigned int {
    HOEDOWN_HTML_SKIP_HTML = 0x1,       // drop raw HTML
    HOEDOWN_HTML_ESCAPE = 0x2,          // escape raw HTML
    HOEDOWN_HTML_HARD_WRAP = 0x4,       // newlines in paragraphs and items become line breaks
    HOEDOWN_HTML_USE_XHTML = 0x8,       // <br/>, <hr/>, "/>
    HOEDOWN_HTML_USE_TASK_LIST = 0x10,  // "[ ]" and "[x]" items become check boxes
    HOEDOWN_HTML_LINE_NUMBERS = 0x20,   // code blocks get class "line-numbers"
    HOEDOWN_HTML_SAW_MATH = 0x40,       // a math span or block was rendered (by a reporting form)
    HOEDOWN_HTML_SAW_CODE = 0x80,       // a code block was rendered
    HOEDOWN_HTML_SAW_FLOW_SEQ = 0x100,  // a "sequence" or "flow" code block
    HOEDOWN_HTML_SAW_MERMAID = 0x200,   // a "mermaid" code block
    HOEDOWN_HTML_SAW_PLANTUML = 0x400,  // a "plantuml" code block
    HOEDOWN_HTML_SAW_ECHARTS = 0x800,   // an "echarts" code block
    HOEDOWN_HTML_SAW_GRAPH = 0x1000,    // a Graphviz code block (dot, neato, fdp, sfdp, twopi, circo)
    HOEDOWN_HTML_FIGURE = 0x2000,       // images become <figure> with a caption
};

// The renderer's state, the opaque pointer of its slots.
struct hoedown_html_renderer_state {
    void *opaque; // the caller's

    struct {
        int heading_count;         // ids given so far: the next heading is toc_<heading_count>
        int current_heading_level; // table of contents: open list levels
        int heading_level_offset;  // table of contents: first heading's level minus 1
        int heading_nesting_level; // headings up to this level get an id (0: none)
    } toc_data;

    unsigned int flags; // hoedown_html_flags

    // Extra attributes written inside <a> of links and autolinks; never set by
    // Orvo, kept for renderers made elsewhere.
    void (*link_attributes)(hoedown_buffer *ob, const hoedown_buffer *url, const hoedown_renderer_data *data);

    // The process-wide render count of this render, which PDF ids carry.
    int render_counter;

    // Scratch for the slots (lower-cased code languages), reused.
    hoedown_buffer scratch;
};

// The standard HTML renderer with these flags; headings up to
// `nesting_level` get ids. Free with hoedown_html_renderer_free.
hoedown_renderer *hoedown_html_renderer_new(unsigned int render_flags, int nesting_level);

// The table of contents renderer: only headings up to `nesting_level` and
// the inline spans inside them produce output, a nested list of links to
// "#toc_N".
hoedown_renderer *hoedown_html_toc_renderer_new(int nesting_level);

void hoedown_html_renderer_free(hoedown_renderer *renderer);

inline hoedown_html_renderer_state *hoedown_html_state(const hoedown_renderer_data *data)
{
    return static_cast<hoedown_html_renderer_state *>(data->opaque);
}

// Appends text with '"', '&', '\'', '<' and '>' as entities ('/' stays).
void hoedown_escape_html(hoedown_buffer *ob, const uint8_t *data, size_t size);

// Appends a URL for an attribute: letters, digits and "!#$%()*+,-./:;=?@_"
// stay, '&' becomes "&amp;", '\'' "&#x27;", and every other byte %XX.
void hoedown_escape_href(hoedown_buffer *ob, const uint8_t *data, size_t size);

// Typographic replacement over rendered HTML: dashes, ellipses, curly
// quotes, (c) (r) (tm), simple fractions. Tags are copied as they are, and
// pre, code, var, samp, kbd, math, script and style elements and comments
// are copied through their end untouched. Appends to ob.
void hoedown_html_smartypants(hoedown_buffer *ob, const uint8_t *data, size_t size);
