#pragma once

// The Markdown parser.
//
// hoedown_document_render() reads UTF-8 Markdown bytes and calls the slots of
// a hoedown_renderer in document order; a renderer writes whatever it likes
// into the output buffer it is handed. The parser never decodes UTF-8, never
// fails, and turns any byte sequence (NUL bytes and invalid UTF-8 included)
// into some output: what it cannot read as an element stays text.
//
// Two passes: the first takes out link reference and footnote definitions,
// expands tabs and normalises line ends; the second parses blocks and, inside
// them, inline spans. Element text is handed to the renderer as
// hoedown_buffer pointers into the parser's own copy of the input or into
// pooled work buffers, valid only during the call.
//
// Threads: a document belongs to one render at a time; separate documents
// share nothing, so renders may run on any thread.

#include "hoedown/buffer.h"

#include <cstddef>
#include <cstdint>

// Extension bits of the word given to hoedown_document_new.
enum hoedown_extensions : unsigned int {
    HOEDOWN_EXT_TABLES = 1 << 0,
    HOEDOWN_EXT_FENCED_CODE = 1 << 1,
    HOEDOWN_EXT_FOOTNOTES = 1 << 2,
    HOEDOWN_EXT_AUTOLINK = 1 << 3,
    HOEDOWN_EXT_STRIKETHROUGH = 1 << 4,
    HOEDOWN_EXT_UNDERLINE = 1 << 5,
    HOEDOWN_EXT_HIGHLIGHT = 1 << 6,
    HOEDOWN_EXT_QUOTE = 1 << 7,
    HOEDOWN_EXT_SUPERSCRIPT = 1 << 8,
    HOEDOWN_EXT_MATH = 1 << 9,
    HOEDOWN_EXT_NO_INTRA_EMPHASIS = 1 << 11,
    HOEDOWN_EXT_SPACE_HEADERS = 1 << 12,
    HOEDOWN_EXT_MATH_EXPLICIT = 1 << 13,
    HOEDOWN_EXT_DISABLE_INDENTED_CODE = 1 << 14,
};

// Flags of list and list_item.
enum hoedown_list_flags : unsigned int {
    HOEDOWN_LIST_ORDERED = 1 << 0,
    HOEDOWN_LI_BLOCK = 1 << 1, // the item holds blocks (<p> around its text)
    HOEDOWN_LI_END = 1 << 3,   // internal: the item ends the list
};

// Flags of table_cell: the alignment in the low two bits, then the header bit.
enum hoedown_table_flags : unsigned int {
    HOEDOWN_TABLE_ALIGN_LEFT = 1,
    HOEDOWN_TABLE_ALIGN_RIGHT = 2,
    HOEDOWN_TABLE_ALIGN_CENTER = 3,
    HOEDOWN_TABLE_ALIGNMASK = 3,
    HOEDOWN_TABLE_HEADER = 4,
};

enum hoedown_autolink_type {
    HOEDOWN_AUTOLINK_NONE = 0,
    HOEDOWN_AUTOLINK_NORMAL = 1, // a URL
    HOEDOWN_AUTOLINK_EMAIL = 2,  // an address without its "mailto:"
};

// What every slot receives: the renderer's opaque pointer first.
struct hoedown_renderer_data {
    void *opaque;
};

// The slot table, in this order. A null block slot drops the element; a null
// span slot leaves its source as text; a null entity or plain_text slot
// copies the text. Span slots return 0 to refuse an element, and the parser
// then writes its source text instead.
struct hoedown_renderer {
    void *opaque;

    void (*code_block)(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_buffer *lang,
                       const hoedown_renderer_data *data);
    void (*quote_block)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    void (*header)(hoedown_buffer *ob, const hoedown_buffer *content, int level, const hoedown_renderer_data *data);
    void (*rule_line)(hoedown_buffer *ob, const hoedown_renderer_data *data);
    void (*list)(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int flags,
                 const hoedown_renderer_data *data);
    void (*list_item)(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int flags,
                      const hoedown_renderer_data *data);
    void (*paragraph)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    void (*table)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    void (*table_header)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    void (*table_body)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    void (*table_row)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    void (*table_cell)(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int flags,
                       const hoedown_renderer_data *data);
    void (*footnotes)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    void (*footnote_definition)(hoedown_buffer *ob, const hoedown_buffer *content, unsigned int num,
                                const hoedown_renderer_data *data);
    void (*html_block)(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_renderer_data *data);

    int (*autolink)(hoedown_buffer *ob, const hoedown_buffer *link, hoedown_autolink_type type,
                    const hoedown_renderer_data *data);
    int (*code_span)(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_renderer_data *data);
    int (*strong_span)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    int (*emphasis)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    int (*underline)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    int (*highlight)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    int (*quote)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    int (*image)(hoedown_buffer *ob, const hoedown_buffer *link, const hoedown_buffer *title,
                 const hoedown_buffer *alt, const hoedown_renderer_data *data);
    int (*line_break)(hoedown_buffer *ob, const hoedown_renderer_data *data);
    int (*link)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_buffer *link,
                const hoedown_buffer *title, const hoedown_renderer_data *data);
    int (*strong_emphasis_span)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    int (*strikethrough)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    int (*superscript)(hoedown_buffer *ob, const hoedown_buffer *content, const hoedown_renderer_data *data);
    int (*footnote_reference)(hoedown_buffer *ob, unsigned int num, const hoedown_renderer_data *data);
    int (*math)(hoedown_buffer *ob, const hoedown_buffer *text, int displaymode, const hoedown_renderer_data *data);
    int (*inline_html)(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_renderer_data *data);

    void (*entity)(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_renderer_data *data);
    void (*plain_text)(hoedown_buffer *ob, const hoedown_buffer *text, const hoedown_renderer_data *data);

    // Called first and last with 0 for a block render, 1 for an inline one.
    void (*page_start)(hoedown_buffer *ob, int inline_render, const hoedown_renderer_data *data);
    void (*page_end)(hoedown_buffer *ob, int inline_render, const hoedown_renderer_data *data);
};

struct hoedown_document;

// A parser over a copy of `renderer` (the table is copied; the opaque data it
// points to must outlive the document). `extensions` is a word of
// hoedown_extensions bits; `max_nesting` (above 0) bounds how many work
// buffers, one per open element, may be in use. The parser also keeps its
// own bound (128) and writes text past it as plain text, so that no input can
// exhaust the call stack. Never returns null.
hoedown_document *hoedown_document_new(const hoedown_renderer *renderer, unsigned int extensions,
                                       size_t max_nesting);

// Parses `size` bytes of Markdown and appends the rendering to `ob`.
// A document may render again afterwards.
void hoedown_document_render(hoedown_document *doc, hoedown_buffer *ob, const uint8_t *data, size_t size);

// Like hoedown_document_render for text the caller gives up, which must end
// in a newline: when no line needs normalising (no CR, no tab) the parser
// works on it where it lies instead of on a copy, changing its bytes; the
// caller must not read them afterwards. Saves a copy of a long document.
void hoedown_document_render_in_place(hoedown_document *doc, hoedown_buffer *ob, uint8_t *data, size_t size);

// Like hoedown_document_render for a piece of text that is one run of inline
// content (a title, a caption): no blocks, no references.
void hoedown_document_render_inline(hoedown_document *doc, hoedown_buffer *ob, const uint8_t *data, size_t size);

void hoedown_document_free(hoedown_document *doc);
