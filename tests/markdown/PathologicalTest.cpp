// Inputs built to make a parser rescan: unclosed marks by the thousand, deep
// nesting, huge tables. Each family is rendered at two sizes, n and 4n, and
// the larger may take at most 10 times as long as the smaller (linear growth
// gives 4, quadratic 16). Times are the thread's processor time, the best
// of several runs; no absolute limit is checked.
#include "hoedown/document.h"
#include "markdown/MarkdownWrap.h"
#include "markdown/html.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <string>

namespace {

std::string repeat(const std::string &unit, size_t n)
{
    std::string s;
    s.reserve(unit.size() * n + 1);
    for (size_t i = 0; i < n; ++i)
        s += unit;
    return s;
}

size_t renderBytes(const std::string &text)
{
    hoedown_renderer *r = hoedown_html_renderer_new(HOEDOWN_HTML_USE_XHTML | HOEDOWN_HTML_HARD_WRAP, 6);
    hoedown_document *doc = hoedown_document_new(r, 0x23FF, SIZE_MAX);
    hoedown_buffer *ob = hoedown_buffer_new(64);
    hoedown_document_render(doc, ob, reinterpret_cast<const uint8_t *>(text.data()), text.size());
    hoedown_buffer *sp = hoedown_buffer_new(64);
    hoedown_html_smartypants(sp, ob->data, ob->size);
    const size_t n = sp->size;
    hoedown_buffer_free(sp);
    hoedown_buffer_free(ob);
    hoedown_document_free(doc);
    hoedown_html_renderer_free(r);
    return n;
}

// The thread's processor time: unlike the wall clock, it does not count the
// time other processes take the processor away.
qint64 threadNanos()
{
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return qint64(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

qint64 bestNanos(const std::string &text)
{
    qint64 best = -1;
    for (int run = 0; run < 5; ++run) {
        const qint64 start = threadNanos();
        renderBytes(text);
        const qint64 ns = threadNanos() - start;
        best = best < 0 ? ns : std::min(best, ns);
    }
    return best;
}

struct Family {
    const char *name;
    std::function<std::string(size_t)> make;
    size_t bytesPerUnit; // roughly, to size n
};

// The smaller input's size. Both sizes stay within the processor's caches
// (the larger is 4 times this), whose edge would otherwise add its own step
// to the ratio.
constexpr size_t kSmallBytes = 32 * 1024;

class Pathological : public ::testing::TestWithParam<Family>
{
};

TEST_P(Pathological, GrowsLinearly)
{
    const Family &f = GetParam();
    const size_t n = kSmallBytes / f.bytesPerUnit;
    const std::string small = f.make(n), large = f.make(4 * n);
    // Other processes share the machine: a ratio above the bound is measured
    // again before it counts. Quadratic work exceeds it every time.
    qint64 a = 0, b = 0;
    double ratio = 0;
    for (int attempt = 0; attempt < 4; ++attempt) {
        a = bestNanos(small);
        b = bestNanos(large);
        ASSERT_GT(a, 0);
        ratio = double(b) / double(a);
        if (ratio < 10.0)
            break;
    }
    EXPECT_LT(ratio, 10.0) << f.name << ": " << small.size() << " bytes in " << a / 1000 << " us, "
                           << large.size() << " bytes in " << b / 1000 << " us";
}

std::string unit(const char *u, size_t n) { return repeat(u, n) + "\n"; }

const Family kFamilies[] = {
    {"open_brackets", [](size_t n) { return unit("[", n); }, 1},
    {"open_link_destinations", [](size_t n) { return unit("[a](", n); }, 4},
    {"open_images", [](size_t n) { return unit("![", n); }, 2},
    {"open_reference_links", [](size_t n) { return unit("[a][", n); }, 4},
    {"open_footnote_refs", [](size_t n) { return unit("[^", n); }, 2},
    {"closing_brackets", [](size_t n) { return unit("]", n); }, 1},
    {"open_stars", [](size_t n) { return unit("*a ", n); }, 3},
    {"open_double_stars", [](size_t n) { return unit("**a ", n); }, 4},
    {"open_triple_stars", [](size_t n) { return unit("***a ", n); }, 5},
    {"open_underscores", [](size_t n) { return unit("_a ", n); }, 3},
    {"open_tildes", [](size_t n) { return unit("~~a ", n); }, 4},
    {"open_equals", [](size_t n) { return unit("==a ", n); }, 4},
    {"stars_between_code_spans", [](size_t n) { return unit("*a `x` ", n); }, 7},
    {"stars_between_links", [](size_t n) { return unit("*a [x](y) ", n); }, 10},
    {"mark_runs", [](size_t n) { return unit("*", n); }, 1},
    {"backtick_runs", [](size_t n) { return unit("` `` ``` x", n); }, 10},
    {"lone_backticks", [](size_t n) { return "```x" + unit("`a", n); }, 2},
    {"open_tags", [](size_t n) { return unit("<a ", n); }, 3},
    {"open_comments", [](size_t n) { return unit("<!--", n); }, 4},
    {"angle_brackets", [](size_t n) { return unit("<", n); }, 1},
    {"open_dollars", [](size_t n) { return "$$" + unit("$a", n); }, 2},
    {"open_display_math", [](size_t n) { return unit("$$a ", n); }, 4},
    {"open_bracket_math", [](size_t n) { return unit("\\\\[a ", n); }, 4},
    {"open_superscript_parens", [](size_t n) { return unit("^(", n); }, 2},
    {"chained_superscripts", [](size_t n) { return unit("^a^a^a^a^a^a^a^a ", n); }, 17},
    {"ampersands", [](size_t n) { return unit("&a", n); }, 2},
    {"url_schemes", [](size_t n) { return unit("http://", n); }, 7},
    {"colons", [](size_t n) { return unit("a:", n); }, 2},
    {"at_signs", [](size_t n) { return unit("a@", n); }, 2},
    {"www_prefixes", [](size_t n) { return unit("www.", n); }, 4},
    {"closing_parens_in_url", [](size_t n) { return "http://a.com/" + unit(")", n); }, 1},
    {"backslashes", [](size_t n) { return unit("\\", n); }, 1},
    {"nested_quotes", [](size_t n) { return repeat(repeat("> ", 60) + "x\n\n", n); }, 123},
    {"quote_lines", [](size_t n) { return repeat("> a\n>\n", n); }, 6},
    {"list_items", [](size_t n) { return repeat("- a\n", n); }, 4},
    {"loose_list_items", [](size_t n) { return repeat("- a\n\n", n); }, 5},
    {"unclosed_divs", [](size_t n) { return repeat("<div>\n", n); }, 6},
    {"unclosed_divs_with_blank_lines", [](size_t n) { return repeat("<div>\n\ntext\n\n", n); }, 13},
    {"unclosed_html_comments", [](size_t n) { return repeat("<!-- x\n\n", n); }, 8},
    {"fences", [](size_t n) { return repeat("```\n", n); }, 4},
    {"wide_table",
     [](size_t n) { return repeat("| a ", n) + "|\n" + repeat("|---", n) + "|\n" + repeat("| `x` [y] ", n) + "|\n"; },
     17},
    {"table_rows", [](size_t n) { return "| a | b |\n|---|---|\n" + repeat("| `x | [y |\n", n); }, 12},
    {"references", [](size_t n) {
         std::string s;
         for (size_t i = 0; i < n; ++i)
             s += "[r" + std::to_string(i) + "]: /" + std::to_string(i) + "\n";
         for (size_t i = 0; i < n; ++i)
             s += "[R" + std::to_string(i) + "] [x" + std::to_string(i) + "] ";
         return s + "\n";
     }, 32},
    {"footnotes", [](size_t n) {
         std::string s;
         for (size_t i = 0; i < n; ++i)
             s += "a[^" + std::to_string(i) + "] [^z" + std::to_string(i) + "] ";
         s += "\n\n";
         for (size_t i = 0; i < n; ++i)
             s += "[^" + std::to_string(i) + "]: note\n";
         return s;
     }, 32},
    {"long_line", [](size_t n) { return repeat("word and \"more\" -- ", n) + "\n"; }, 19},
    {"smartypants_tags", [](size_t n) { return unit("<code>", n); }, 6},
};

std::string familyName(const ::testing::TestParamInfo<Family> &info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Markdown, Pathological, ::testing::ValuesIn(kFamilies), familyName);

TEST(PathologicalWrap, MegabyteLineThroughTheFullRender)
{
    // The whole road: UTF-16 in, table of contents, typographic replacement,
    // the [TOC] splice.
    const QString line = QString::fromStdString("[TOC]\n\n# h\n\n" + repeat("*a `b` [c](d) \"e\" <f ", 40000));
    MarkdownWrap::Options o;
    o.smartypants = o.toc = o.replaceTOC = o.newlineToBR = o.isMath = true;
    QString toc;
    o.tocString = &toc;
    const QString html = MarkdownWrap::markdownToHtml(line, o);
    EXPECT_GT(html.size(), line.size());
    EXPECT_TRUE(html.startsWith(toc));
}

} // namespace
