// The parser's interface: buffers and stacks, the order in which slots are
// called, what a missing slot does, document reuse and the nesting bounds.
// What the parser makes of Markdown is in the golden files.
#include "hoedown/buffer.h"
#include "hoedown/document.h"
#include "hoedown/stack.h"
#include "markdown/html.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::string str(const hoedown_buffer *b) { return b ? std::string(reinterpret_cast<const char *>(b->data), b->size) : ""; }

const uint8_t *bytes(const std::string &s) { return reinterpret_cast<const uint8_t *>(s.data()); }

// Renders with a renderer and returns the output.
std::string render(const hoedown_renderer *r, unsigned int ext, const std::string &text, size_t nesting = 64,
                   bool inlineOnly = false)
{
    hoedown_document *doc = hoedown_document_new(r, ext, nesting);
    hoedown_buffer *ob = hoedown_buffer_new(16);
    if (inlineOnly)
        hoedown_document_render_inline(doc, ob, bytes(text), text.size());
    else
        hoedown_document_render(doc, ob, bytes(text), text.size());
    std::string out = str(ob);
    hoedown_buffer_free(ob);
    hoedown_document_free(doc);
    return out;
}

std::string html(const std::string &text, unsigned int ext = 0x237F, size_t nesting = 64)
{
    hoedown_renderer *r = hoedown_html_renderer_new(HOEDOWN_HTML_USE_XHTML, 0);
    std::string out = render(r, ext, text, nesting);
    hoedown_html_renderer_free(r);
    return out;
}

TEST(Buffer, GrowsByWholeUnitsAndKeepsItsBytes)
{
    hoedown_buffer *b = hoedown_buffer_new(64);
    hoedown_buffer_puts(b, "0123456789");
    EXPECT_EQ(b->asize % 64, 0u);
    EXPECT_GE(b->asize, 10u);
    for (int i = 0; i < 100; ++i)
        hoedown_buffer_putc(b, uint8_t('a' + i % 26));
    EXPECT_EQ(b->size, 110u);
    EXPECT_EQ(b->asize % 64, 0u);
    EXPECT_EQ(str(b).substr(0, 12), "0123456789ab");

    // cstr terminates without counting the NUL, and again after more text.
    EXPECT_STREQ(hoedown_buffer_cstr(b) + 105, "rstuv");
    EXPECT_EQ(b->size, 110u);
    hoedown_buffer_printf(b, "%s-%d", std::string(300, 'x').c_str(), 42);
    EXPECT_EQ(b->size, 110u + 303u);
    EXPECT_EQ(str(b).substr(b->size - 4), "x-42");

    hoedown_buffer_slurp(b, 10);
    EXPECT_EQ(hoedown_buffer_prefix(b, "abc"), 0);
    EXPECT_NE(hoedown_buffer_prefix(b, "abd"), 0);
    hoedown_buffer_set(b, bytes("xy"), 2);
    hoedown_buffer_putnum(b, -1203);
    hoedown_buffer_putnum(b, 0);
    EXPECT_EQ(str(b), "xy-12030");
    hoedown_buffer_reset(b);
    EXPECT_EQ(b->size, 0u);
    EXPECT_EQ(b->data, nullptr);
    hoedown_buffer_free(b);
}

TEST(Stack, PushesPopsAndGrowsWithEmptySlots)
{
    hoedown_stack st;
    hoedown_stack_init(&st, 2);
    int a = 1, b = 2, c = 3;
    EXPECT_EQ(hoedown_stack_pop(&st), nullptr);
    hoedown_stack_push(&st, &a);
    hoedown_stack_push(&st, &b);
    hoedown_stack_push(&st, &c);
    EXPECT_GE(st.asize, 3u);
    EXPECT_EQ(hoedown_stack_top(&st), &c);
    EXPECT_EQ(hoedown_stack_pop(&st), &c);
    EXPECT_EQ(hoedown_stack_pop(&st), &b);
    EXPECT_EQ(st.size, 1u);
    hoedown_stack_grow(&st, 10);
    for (size_t i = 3; i < 10; ++i)
        EXPECT_EQ(st.item[i], nullptr);
    hoedown_stack_uninit(&st);
}

// A renderer that logs every slot call as "name" or "name:detail".
struct Recorder {
    std::vector<std::string> calls;
    static Recorder *of(const hoedown_renderer_data *d) { return static_cast<Recorder *>(d->opaque); }
};

hoedown_renderer recordingRenderer(Recorder *rec)
{
    hoedown_renderer r{};
    r.opaque = rec;
    r.header = [](hoedown_buffer *ob, const hoedown_buffer *c, int level, const hoedown_renderer_data *d) {
        Recorder::of(d)->calls.push_back("header:" + std::to_string(level) + ":" + str(c));
        hoedown_buffer_puts(ob, "H");
    };
    r.paragraph = [](hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *d) {
        Recorder::of(d)->calls.push_back("paragraph:" + str(c));
        hoedown_buffer_puts(ob, "P");
    };
    r.emphasis = [](hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *d) {
        Recorder::of(d)->calls.push_back("emphasis:" + str(c));
        hoedown_buffer_puts(ob, "<e>");
        return 1;
    };
    r.footnotes = [](hoedown_buffer *, const hoedown_buffer *c, const hoedown_renderer_data *d) {
        Recorder::of(d)->calls.push_back("footnotes:" + str(c));
    };
    r.footnote_definition = [](hoedown_buffer *ob, const hoedown_buffer *c, unsigned int num,
                               const hoedown_renderer_data *d) {
        Recorder::of(d)->calls.push_back("footnote_definition:" + std::to_string(num) + ":" + str(c));
        hoedown_buffer_puts(ob, "F");
    };
    r.footnote_reference = [](hoedown_buffer *ob, unsigned int num, const hoedown_renderer_data *d) {
        Recorder::of(d)->calls.push_back("footnote_reference:" + std::to_string(num));
        hoedown_buffer_puts(ob, "R");
        return 1;
    };
    r.plain_text = [](hoedown_buffer *ob, const hoedown_buffer *t, const hoedown_renderer_data *d) {
        Recorder::of(d)->calls.push_back("plain_text:" + str(t));
        hoedown_buffer_put(ob, t->data, t->size);
    };
    r.page_start = [](hoedown_buffer *, int inl, const hoedown_renderer_data *d) {
        Recorder::of(d)->calls.push_back("page_start:" + std::to_string(inl));
    };
    r.page_end = [](hoedown_buffer *, int inl, const hoedown_renderer_data *d) {
        Recorder::of(d)->calls.push_back("page_end:" + std::to_string(inl));
    };
    return r;
}

TEST(Document, CallsSlotsInDocumentOrderInsideThePageSlots)
{
    Recorder rec;
    const hoedown_renderer r = recordingRenderer(&rec);
    render(&r, HOEDOWN_EXT_FOOTNOTES, "# Title\n\nSee *this*[^n] now.\n\n[^n]: Note.\n");
    const std::vector<std::string> expected = {
        "page_start:0",
        "plain_text:Title",
        "header:1:Title",
        "plain_text:See ",
        "plain_text:this",
        "emphasis:this",
        "footnote_reference:1",
        "plain_text: now.",
        "paragraph:See <e>R now.",
        "plain_text:Note.",
        "paragraph:Note.",
        "footnote_definition:1:P",
        "footnotes:F",
        "page_end:0",
    };
    EXPECT_EQ(rec.calls, expected);

    rec.calls.clear();
    render(&r, 0, "");
    EXPECT_EQ(rec.calls, (std::vector<std::string>{"page_start:0", "page_end:0"}));

    rec.calls.clear();
    render(&r, 0, "# no *block*", 64, true);
    EXPECT_EQ(rec.calls, (std::vector<std::string>{"page_start:1", "plain_text:# no ", "plain_text:block",
                                                   "emphasis:block", "page_end:1"}));
}

TEST(Document, MissingSlotsDropBlocksAndLeaveSpansAsText)
{
    hoedown_renderer r{};
    r.paragraph = [](hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *) {
        hoedown_buffer_puts(ob, "[");
        hoedown_buffer_put(ob, c->data, c->size);
        hoedown_buffer_puts(ob, "]");
    };
    // No heading, list, emphasis, entity or plain_text slot: headings and
    // lists vanish, marks stay, text and entities are copied unescaped.
    EXPECT_EQ(render(&r, 0x237F, "# Heading\n\n- item\n\n*a* &amp; <b> ~~s~~\n"), "[*a* &amp; <b> ~~s~~]");

    // The underline slot alone makes '_' active only with the underline bit.
    r.underline = [](hoedown_buffer *ob, const hoedown_buffer *c, const hoedown_renderer_data *) {
        hoedown_buffer_puts(ob, "<u>");
        hoedown_buffer_put(ob, c->data, c->size);
        hoedown_buffer_puts(ob, "</u>");
        return 1;
    };
    EXPECT_EQ(render(&r, HOEDOWN_EXT_UNDERLINE, "_x_ *y*\n"), "[<u>x</u> *y*]");
    EXPECT_EQ(render(&r, 0, "_x_ *y*\n"), "[_x_ *y*]");
}

TEST(Document, ARefusedSpanLeavesItsSourceText)
{
    hoedown_renderer *r = hoedown_html_renderer_new(HOEDOWN_HTML_USE_XHTML, 0);
    r->emphasis = [](hoedown_buffer *, const hoedown_buffer *, const hoedown_renderer_data *) { return 0; };
    EXPECT_EQ(render(r, 0, "*a* **b**\n"), "<p>*a* <strong>b</strong></p>\n");
    hoedown_html_renderer_free(r);
}

TEST(Document, IsReusableAndForgetsEarlierDefinitions)
{
    hoedown_renderer *r = hoedown_html_renderer_new(HOEDOWN_HTML_USE_XHTML, 0);
    hoedown_document *doc = hoedown_document_new(r, HOEDOWN_EXT_FOOTNOTES, 16);
    hoedown_buffer *ob = hoedown_buffer_new(64);
    const std::string first = "[a] and x[^1]\n\n[a]: http://a.com\n[^1]: note\n";
    const std::string second = "[a] and x[^1]\n";
    hoedown_document_render(doc, ob, bytes(first), first.size());
    const std::string once = str(ob);
    ob->size = 0;
    hoedown_document_render(doc, ob, bytes(first), first.size());
    EXPECT_EQ(str(ob), once);
    EXPECT_NE(once.find("<a href=\"http://a.com\">a</a>"), std::string::npos);
    ob->size = 0;
    hoedown_document_render(doc, ob, bytes(second), second.size());
    EXPECT_EQ(str(ob), "<p>[a] and x[^1]</p>\n");
    hoedown_buffer_free(ob);
    hoedown_document_free(doc);
    hoedown_html_renderer_free(r);
}

TEST(Document, ManyDefinitionsAllResolve)
{
    // Enough definitions to grow the hash buckets several times.
    std::string text, expected;
    for (int i = 0; i < 3000; ++i)
        text += "[r" + std::to_string(i) + "]: /u" + std::to_string(i) + "\n";
    for (int i = 2999; i >= 0; i -= 997)
        text += "[R" + std::to_string(i) + "] ";
    const std::string out = html(text + "\n");
    for (int i = 2999; i >= 0; i -= 997)
        EXPECT_NE(out.find("<a href=\"/u" + std::to_string(i) + "\">R" + std::to_string(i) + "</a>"), std::string::npos)
            << i;
}

TEST(Document, MaxNestingStopsDeeperBlocks)
{
    // Each quote level and each paragraph takes a work buffer: with a limit
    // of 2 the second level's paragraph has no inline text left, and the
    // third level no blocks.
    EXPECT_EQ(html("> a\n> > b\n> > > c\n", 0x237F, 2),
              "<blockquote>\n<p>a</p>\n<blockquote>\n<blockquote>\n</blockquote>\n</blockquote>\n</blockquote>\n");
}

std::string repeat(const std::string &unit, size_t n)
{
    std::string s;
    s.reserve(unit.size() * n);
    for (size_t i = 0; i < n; ++i)
        s += unit;
    return s;
}

TEST(Document, DeepNestingIsBoundedAndLosesNoText)
{
    // Far deeper than the parser recurses: the innermost text comes out as
    // text instead of overflowing the stack.
    const std::string quotes = html(repeat("> ", 10000) + "innermost words\n", 0x237F, SIZE_MAX);
    EXPECT_NE(quotes.find("innermost words"), std::string::npos);

    std::string lists;
    for (size_t depth = 0; depth < 600; ++depth)
        lists += std::string(depth * 4, ' ') + "- level\n";
    lists += std::string(2400, ' ') + "- deepest item\n";
    EXPECT_NE(html(lists, 0x237F, SIZE_MAX).find("deepest item"), std::string::npos);

    // Markers stacked on one line, bare and inside quotes.
    EXPECT_NE(html(repeat("- ", 10000) + "last words\n", 0x237F, SIZE_MAX).find("last words"), std::string::npos);
    EXPECT_NE(html(repeat("> 1. ", 10000) + "last words\n", 0x237F, SIZE_MAX).find("last words"), std::string::npos);

    std::string stairs;
    for (size_t depth = 0; depth < 10000; ++depth)
        stairs += std::string(depth % 64, ' ') + "- step\n";
    EXPECT_NE(html(stairs + "last words\n", 0x237F, SIZE_MAX).find("last words"), std::string::npos);

    const std::string spans = html(repeat("*a ", 10000) + "core" + repeat(" a*", 10000) + "\n", 0x237F, SIZE_MAX);
    EXPECT_NE(spans.find("core"), std::string::npos);
    const std::string links = html(repeat("[", 10000) + "x" + repeat("](u)", 10000) + "\n", 0x237F, SIZE_MAX);
    EXPECT_NE(links.find('x'), std::string::npos);
}

TEST(Document, KeepsNulAndInvalidBytesAsText)
{
    using namespace std::string_literals;
    EXPECT_EQ(html("a\0b \xff\xfe *c\x80*\n"s), "<p>a\0b \xff\xfe <em>c\x80</em></p>\n"s);
}

} // namespace
