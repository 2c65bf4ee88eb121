// The parser with every renderer Orvo has, on arbitrary bytes. The first
// byte picks the extensions (its bits spread over the extension word), the
// second the render type's slots and the nesting limit; the rest is the text.
#include "hoedown/document.h"
#include "markdown/html.h"
#include "markdown/html_overrides.h"

#include <cstddef>
#include <cstdint>

namespace {

void renderWith(hoedown_renderer *r, unsigned int ext, size_t nesting, const uint8_t *data, size_t size,
                bool inlineOnly)
{
    hoedown_document *doc = hoedown_document_new(r, ext, nesting);
    hoedown_buffer *ob = hoedown_buffer_new(64);
    if (inlineOnly)
        hoedown_document_render_inline(doc, ob, data, size);
    else
        hoedown_document_render(doc, ob, data, size);
    hoedown_buffer *sp = hoedown_buffer_new(64);
    hoedown_html_smartypants(sp, ob->data, ob->size);
    hoedown_buffer_free(sp);
    hoedown_buffer_free(ob);
    hoedown_document_free(doc);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    const uint8_t a = data[0], b = data[1];
    data += 2;
    size -= 2;
    // Bits 0-7 as they are, bit 9 and 11-14 from the same byte.
    const unsigned int ext = a | ((a & 0x2) ? 0x200u : 0u) | (unsigned(a & 0xF0) << 7);
    const int type = b & 7;
    const size_t nesting = (b & 0x80) ? SIZE_MAX : size_t((b >> 3) & 0xF) + 1;
    const unsigned int flags = HOEDOWN_HTML_USE_XHTML | HOEDOWN_HTML_USE_TASK_LIST | ((b & 0x8) ? 0x4u : 0u) |
                               ((b & 0x10) ? 0x2000u : 0u) | ((b & 0x20) ? 0x20u : 0u) | ((b & 0x40) ? 0x3u : 0u);

    hoedown_renderer *html = hoedown_html_renderer_new(flags, 6);
    orvo_html_apply_overrides(html, type, (b & 0x40) != 0);
    renderWith(html, ext, nesting, data, size, false);
    renderWith(html, ext, nesting, data, size, true);
    hoedown_html_renderer_free(html);

    hoedown_renderer *toc = hoedown_html_toc_renderer_new(6);
    orvo_html_toc_apply_form(toc, type);
    renderWith(toc, ext, nesting, data, size, false);
    hoedown_html_renderer_free(toc);
    return 0;
}
