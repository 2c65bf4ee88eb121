#pragma once

// Pieces of the standard HTML renderer that Orvo's slot overrides reuse.
// Not for other modules.

#include "markdown/html.h"

#include <cstdio>

namespace hoedown_html {

#define HTML_PUTSL(ob, literal) hoedown_buffer_put(ob, reinterpret_cast<const uint8_t *>(literal), sizeof(literal) - 1)

inline bool use_xhtml(const hoedown_html_renderer_state *st) { return st->flags & HOEDOWN_HTML_USE_XHTML; }

// An inline span between two tags; an empty span fails, so that the parser
// writes its source text.
int wrap_span(hoedown_buffer *ob, const hoedown_buffer *content, const char *open, const char *close);

// A list item's content after its opening tag: trailing newlines dropped,
// and with hard wrap, line breaks between its lines.
void list_item_content(hoedown_buffer *ob, const uint8_t *data, size_t size, const hoedown_html_renderer_state *st);

// A heading with an id made by `id` ("toc_%d" style, given the state) when
// its level is at most the nesting level.
void header_with_id(hoedown_buffer *ob, const hoedown_buffer *content, int level, hoedown_html_renderer_state *st,
                    bool pdf_ids);

// A footnote definition: `open` first, then the content with `backlink`
// inserted before its first "</p>", then "</li>\n".
void footnote_definition_with(hoedown_buffer *ob, const hoedown_buffer *content, const char *open,
                              const char *backlink);

// The table of contents line for one heading, with the anchor `href_fmt`
// (one or two %d: the render counter for PDF, then the heading count).
void toc_header_with(hoedown_buffer *ob, const hoedown_buffer *content, int level, hoedown_html_renderer_state *st,
                     bool pdf_ids);

// Math between delimiters, the text HTML-escaped.
void math_between(hoedown_buffer *ob, const hoedown_buffer *text, const char *open, const char *close);

} // namespace hoedown_html
