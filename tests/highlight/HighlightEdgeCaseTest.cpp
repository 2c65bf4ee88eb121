#include "HighlightTestSupport.h"

#include <gtest/gtest.h>

#include <thread>

using namespace highlighttest;

namespace {

// The one span of `type` in text, checked to cover `expected`.
void expectSpan(const std::string &text, pmh_element_type type, unsigned long start, const std::string &expected,
                int extensions = pmh_EXT_ALL)
{
    const std::vector<Span> spans = ofType(parse(text, extensions), type);
    ASSERT_EQ(spans.size(), 1u) << pmh_element_name_from_type(type) << " in: " << text;
    EXPECT_EQ(spans[0].start, start) << pmh_element_name_from_type(type) << " in: " << text;
    EXPECT_EQ(covered(text, spans[0].start, spans[0].end), expected);
}

} // namespace

TEST(HighlightOffsets, MultibyteCharactersCountAsOneCodePoint)
{
    // 😀 is four bytes, one code point (two UTF-16 units, which the editor adds).
    expectSpan("😀 *a*", pmh_EMPH, 2, "*a*");
    expectSpan("é ü 中 😀 `x`", pmh_CODE, 8, "`x`");
    expectSpan("## 😀😀 title", pmh_H2, 0, "## 😀😀 title");
    expectSpan("😀\n\n[a](b)", pmh_LINK, 3, "[a](b)");
}

TEST(HighlightOffsets, ByteOrderMarkCountsFromTheStartOfTheInput)
{
    const std::string bom = "\xEF\xBB\xBF";
    expectSpan(bom + "# Title\n", pmh_H1, 1, "# Title");
    expectSpan(bom + "😀 *a*", pmh_EMPH, 3, "*a*");
    EXPECT_TRUE(parse(bom).empty());
    // A mark in the middle is text like any other character.
    expectSpan("a" + bom + " *b*", pmh_EMPH, 3, "*b*");
}

TEST(HighlightOffsets, MissingFinalNewlineGivesTheSameSpans)
{
    for (const std::string text : {"# T", "```\ncode", "a\n---", "> q", "- a\n  - b", "[r]: /u", "<div>\n</div>",
                                   "    code", "*a*", "[^1]: n"}) {
        EXPECT_EQ(parse(text), parse(text + "\n")) << text;
        EXPECT_EQ(parse(text), parse(text + "\n\n")) << text;
    }
}

TEST(HighlightOffsets, NestedConstructsGiveEverySpan)
{
    const std::string text = "**[a](b)**";
    expectSpan(text, pmh_STRONG, 0, "**[a](b)**");
    expectSpan(text, pmh_LINK, 2, "[a](b)");

    // Text parsed again inside containers keeps its offsets in the outer
    // text, across prefixes and multi-byte characters.
    const std::string nested = "> - 😀 *a*\n>   é [b](c)\n> > ~~d~~";
    expectSpan(nested, pmh_LIST_BULLET, 2, "-");
    expectSpan(nested, pmh_EMPH, 6, "*a*");
    expectSpan(nested, pmh_LINK, 16, "[b](c)");
    expectSpan(nested, pmh_STRIKE, 27, "~~d~~");
    const std::vector<Span> quotes = ofType(parse(nested), pmh_BLOCKQUOTE);
    ASSERT_EQ(quotes.size(), 2u);
    EXPECT_EQ(covered(nested, quotes[0].start, quotes[0].end), nested);
    EXPECT_EQ(covered(nested, quotes[1].start, quotes[1].end), "> ~~d~~");

    const std::string inItem = "1. > quote *x\n   > y* end\n\n   ```\n   code\n   ```";
    expectSpan(inItem, pmh_LIST_ENUMERATOR, 0, "1.");
    expectSpan(inItem, pmh_BLOCKQUOTE, 3, "> quote *x\n   > y* end");
    expectSpan(inItem, pmh_EMPH, 11, "*x\n   > y*");
    expectSpan(inItem, pmh_VERBATIM, 30, "```\n   code\n   ```");
}

TEST(HighlightOffsets, DeepNestingStopsReparsingButKeepsOffsets)
{
    // Containers nest 16 deep; the rest of the line is paragraph text whose
    // spans still land on the right characters.
    const std::string text = std::string(40, '>') + " *x*";
    const std::vector<Span> spans = parse(text);
    EXPECT_EQ(ofType(spans, pmh_BLOCKQUOTE).size(), 16u);
    expectSpan(text, pmh_EMPH, 41, "*x*");
}

TEST(HighlightResult, EmptyTextGivesEmptyLists)
{
    pmh_element **lists = nullptr;
    pmh_markdown_to_elements("", pmh_EXT_ALL, &lists);
    ASSERT_NE(lists, nullptr);
    for (int i = 0; i < pmh_NUM_TYPES; ++i)
        EXPECT_EQ(lists[i], nullptr) << i;
    pmh_sort_elements_by_pos(lists);
    pmh_free_elements(lists);
    pmh_free_elements(nullptr);
}

TEST(HighlightResult, NamesFollowTheTypeTable)
{
    const char *names[] = {"LINK",      "AUTO_LINK_URL", "AUTO_LINK_EMAIL", "IMAGE",  "CODE",       "HTML",
                           "HTML_ENTITY", "EMPH",        "STRONG",          "STRIKE", "MARK",       "LIST_BULLET",
                           "LIST_ENUMERATOR", "COMMENT", "H1",              "H2",     "H3",         "H4",
                           "H5",        "H6",            "BLOCKQUOTE",      "VERBATIM", "HTMLBLOCK", "HRULE",
                           "REFERENCE", "NOTE"};
    for (int i = 0; i < pmh_NUM_LANG_TYPES; ++i)
        EXPECT_STREQ(pmh_element_name_from_type(pmh_element_type(i)), names[i]);
    for (const int outside : {-1, int(pmh_ALL), 1000})
        EXPECT_STREQ(pmh_element_name_from_type(pmh_element_type(outside)), "unknown type");
}

TEST(HighlightResult, EqualStartsKeepTheOrderFound)
{
    // The heading comes from the block pass, the emphasis from the inline
    // pass: both start at 0 and the heading stays first.
    const std::vector<Span> spans = parse("*a*\n===\n");
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_EQ(spans[0].type, pmh_H1);
    EXPECT_EQ(spans[1].type, pmh_EMPH);

    // Inner emphasis is found before the outer: sorting puts the outer first.
    const std::vector<Span> nested = parse("***a** b*");
    ASSERT_EQ(nested.size(), 2u);
    EXPECT_EQ(nested[0].type, pmh_EMPH);
    EXPECT_EQ(nested[1].type, pmh_STRONG);
}

TEST(HighlightResult, LinksCarryTheirLabelsAndAddresses)
{
    const std::string text = "[Café][] [x](</a b>) <http://h.io> [^n]\n\n"
                             "[café]: http://first.example 'T'\n[CAFÉ]: /upper\n[café]: /second\n[^n]: note";
    const std::vector<Span> spans = parse(text);
    const std::vector<Span> links = ofType(spans, pmh_LINK);
    ASSERT_EQ(links.size(), 2u);
    // ASCII letters fold, other characters compare as written; the first
    // definition wins.
    EXPECT_EQ(links[0].label, "Café");
    EXPECT_EQ(links[0].address, "http://first.example");
    EXPECT_EQ(links[1].label, "");
    EXPECT_EQ(links[1].address, "/a b");
    EXPECT_EQ(ofType(spans, pmh_AUTO_LINK_URL).at(0).address, "http://h.io");
    const std::vector<Span> refs = ofType(spans, pmh_REFERENCE);
    ASSERT_EQ(refs.size(), 3u);
    EXPECT_EQ(refs[1].label, "CAFÉ");
    EXPECT_EQ(refs[1].address, "/upper");
    const std::vector<Span> notes = ofType(spans, pmh_NOTE);
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_EQ(notes[0].label, "n");
    EXPECT_EQ(notes[1].label, "n");
}

TEST(HighlightInput, InvalidUtf8CountsEveryByteThatStartsACharacter)
{
    expectSpan("\x80\x80*a*", pmh_EMPH, 0, "*a*");
    expectSpan("\xF0*a*", pmh_EMPH, 1, "*a*");
    expectSpan("\xC3\xA9\xA9 *a*", pmh_EMPH, 2, "*a*");
}

TEST(HighlightInput, CarriageReturnsEndLines)
{
    const std::string crlf = "# T\r\n\r\n- *a*\r\n```\r\nx\r\n```\r\n";
    expectSpan(crlf, pmh_H1, 0, "# T");
    expectSpan(crlf, pmh_EMPH, 9, "*a*");
    expectSpan(crlf, pmh_VERBATIM, 14, "```\r\nx\r\n```");
    // The carriage return is part of the line end, not a space after a marker.
    EXPECT_EQ(parse("*\r\nfoo\r\n-\r\n1.\r\n"), parse("*\nfoo\n-\n1.\n"));
    expectSpan("<!-- c -->\r\n", pmh_COMMENT, 0, "<!-- c -->");
    // An old Mac file: a lone carriage return is a line end too.
    const std::string cr = "# T\r\r*a*\r";
    expectSpan(cr, pmh_H1, 0, "# T");
    expectSpan(cr, pmh_EMPH, 5, "*a*");
}

TEST(HighlightThreads, ParsesAreIndependent)
{
    std::string text;
    for (int i = 0; i < 200; ++i)
        text += "# H\n\n> *q* [l](u)\n\n- `c`\n\n[r]: /r\n\n";
    const std::vector<Span> expected = parse(text);
    std::vector<std::vector<Span>> results(4);
    std::vector<std::thread> threads;
    for (auto &r : results)
        threads.emplace_back([&r, &text] {
            pmh_element **lists = nullptr;
            pmh_markdown_to_elements(text.c_str(), pmh_EXT_ALL, &lists);
            pmh_sort_elements_by_pos(lists);
            for (const pmh_element *e = lists[pmh_ALL]; e; e = e->all_next)
                r.push_back({e->type, e->start, e->end, {}, {}});
            pmh_free_elements(lists);
        });
    for (std::thread &t : threads)
        t.join();
    for (const auto &r : results)
        EXPECT_EQ(r, expected);
}
