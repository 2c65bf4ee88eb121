#include "HighlightTestSupport.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <random>

// Inputs built to make a naive grammar backtrack: unclosed marks, brackets,
// tags and fences by the thousand, deep nesting, one enormous line. Each is
// parsed at two sizes eight times apart, and the work must grow about
// eightfold: a quadratic rule would grow it sixty-four fold. CPU time is
// only compared with itself, never with a fixed limit.
//
// Some of these inputs need far more memory than text (a bracket stack
// entry per '['), and fresh pages cost the kernel more than the parse, so
// the allocator is told to keep what it has and a first parse warms it. The
// sanitizer builds replace the allocator: there the inputs still run, for
// memory errors, but times are not compared.

using namespace highlighttest;

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kCompareTimes = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kCompareTimes = false;
#else
constexpr bool kCompareTimes = true;
#endif
#else
constexpr bool kCompareTimes = true;
#endif

// Both sizes stay within the processor's caches, so that memory speed
// does not blur the comparison; a quadratic rule is already thousands of
// times slower at these sizes.
constexpr size_t kSmall = 16 * 1024;
constexpr size_t kLarge = 8 * kSmall;
// Linear growth gives 8, noise can add some; quadratic gives 64.
constexpr double kMaxGrowth = 24;

double cpuSecondsToParse(const std::string &text)
{
    double best = 1e30;
    for (int run = 0; run < 7; ++run) {
        timespec t0{}, t1{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t0);
        pmh_element **lists = nullptr;
        pmh_markdown_to_elements(text.c_str(), pmh_EXT_ALL, &lists);
        pmh_sort_elements_by_pos(lists);
        pmh_free_elements(lists);
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t1);
        best = std::min(best, double(t1.tv_sec - t0.tv_sec) + double(t1.tv_nsec - t0.tv_nsec) / 1e9);
    }
    return best;
}

std::string repeat(const std::string &unit, size_t size)
{
    std::string s;
    s.reserve(size + unit.size());
    while (s.size() < size)
        s += unit;
    return s;
}

std::string nestedListLines(size_t size)
{
    std::string s;
    for (size_t i = 0; s.size() < size; ++i)
        s += std::string(2 * (i % 64), ' ') + "- item *a\n";
    return s;
}

std::string referencesAndLinks(size_t size)
{
    std::string s;
    for (size_t i = 0; s.size() < size / 2; ++i)
        s += "[r" + std::to_string(i % 1000) + "]: /u\n";
    s += "\n";
    for (size_t i = 0; s.size() < size; ++i)
        s += "[r" + std::to_string(i % 2000) + "] [x][r1] ";
    return s;
}

// Markdown punctuation and words at random, in paragraphs under random
// block markers. Each line starts with a letter, so that no fence or HTML
// block opens to run to the end: a larger text is then more of the same
// kind of text, not a different one.
std::string markdownNoise(size_t size)
{
    static const char *markers[] = {"", "", "- ", "1. ", "> ", "# ", "    ", "> - ", "[^n]: "};
    static const char *pieces[] = {"*", "**", "_", "__", "~~", "==", "`", "``", "[", "]", "(", ")", "![", "^[",
                                   "[^", "<", ">", "</", "<!--", "-->", "&", ";", "#", "\\", "$$", "http://",
                                   "@", "www.", "a", "word", " ", " ", " ", "\nw ", "- ", "1. ", "> ", "```",
                                   "---", "===", "<div>", "</div>", "\"", "'", ":", "[n]", "[^n]"};
    std::mt19937 rng(42);
    std::uniform_int_distribution<size_t> pickMarker(0, std::size(markers) - 1);
    std::uniform_int_distribution<size_t> pickPiece(0, std::size(pieces) - 1);
    std::uniform_int_distribution<int> paragraphLength(1, 80);
    std::string s = "[n]: /n\n\n";
    while (s.size() < size) {
        s += markers[pickMarker(rng)];
        s += "w ";
        for (int i = paragraphLength(rng); i > 0; --i)
            s += pieces[pickPiece(rng)];
        s += "\n\n";
    }
    return s;
}

struct Case {
    const char *name;
    std::function<std::string(size_t)> make;
};

const std::vector<Case> &cases()
{
    static const std::vector<Case> all = {
        {"run of stars", [](size_t n) { return std::string(n, '*'); }},
        {"unclosed stars", [](size_t n) { return repeat("*a ", n); }},
        {"unclosed underscores", [](size_t n) { return repeat(" _a", n); }},
        {"mixed star runs", [](size_t n) { return repeat("**a *b ***c ****d ", n); }},
        {"strike and mark openers", [](size_t n) { return repeat("~~a ==b ", n); }},
        {"run of open brackets", [](size_t n) { return std::string(n, '['); }},
        {"run of close brackets", [](size_t n) { return std::string(n, ']'); }},
        {"unclosed link destinations", [](size_t n) { return repeat("[a](b", n); }},
        {"nested parentheses in destinations", [](size_t n) { return repeat("[a](((", n); }},
        {"unclosed angle destinations", [](size_t n) { return repeat("[a](<b ", n); }},
        {"unclosed titles", [](size_t n) { return repeat("[a](b \"t ", n); }},
        {"unclosed reference labels", [](size_t n) { return repeat("[a][b", n); }},
        {"images and notes in brackets", [](size_t n) { return repeat("![[^[*[", n); }},
        {"backtick runs of every length", [](size_t n) { return repeat("`a``b```c````d`````e``````", n); }},
        {"run of angle brackets", [](size_t n) { return std::string(n, '<'); }},
        {"unclosed tags", [](size_t n) { return repeat("<a x=\"1\" ", n); }},
        {"unclosed attribute values", [](size_t n) { return repeat("<a x=\"", n); }},
        {"unclosed comments", [](size_t n) { return repeat("<!-- ", n); }},
        {"unclosed autolinks", [](size_t n) { return repeat("<http://a <a@b ", n); }},
        {"ampersands", [](size_t n) { return repeat("&&#&a", n); }},
        {"backslashes", [](size_t n) { return std::string(n, '\\'); }},
        {"unclosed math", [](size_t n) { return repeat("$$a $", n); }},
        {"bare link fragments", [](size_t n) { return repeat("http://a www. a@b ftp:// ", n); }},
        {"one deep quote line", [](size_t n) { return std::string(n, '>') + " *x*"; }},
        {"many deep quote lines", [](size_t n) { return repeat(std::string(100, '>') + " a *b\n", n); }},
        {"one deep list line", [](size_t n) { return repeat("- ", n) + "a"; }},
        {"one deep enumerated line", [](size_t n) { return repeat("1. ", n) + "a"; }},
        {"nested list lines", nestedListLines},
        {"unclosed html blocks", [](size_t n) { return repeat("<div>\n\n", n); }},
        {"html block opens in one paragraph", [](size_t n) { return repeat("<table>\n", n); }},
        {"unclosed comment blocks", [](size_t n) { return repeat("<!--\n\n", n); }},
        {"unbalanced fences", [](size_t n) { return repeat("````\n```\n~~~\n", n); }},
        {"setext candidates", [](size_t n) { return repeat("a\n=\nb\n-\n--\n", n); }},
        {"definitions interrupting paragraphs", [](size_t n) { return repeat("text\n[a]: /u\n[^b]: n\n", n); }},
        {"references and links", referencesAndLinks},
        {"markdown noise", markdownNoise},
    };
    return all;
}

} // namespace

TEST(HighlightPathological, WorkGrowsLinearly)
{
    // Large blocks from the heap, and freed memory kept for the next parse.
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 1024 * 1024 * 1024);
    for (const Case &c : cases()) {
        SCOPED_TRACE(c.name);
        const std::string small = c.make(kSmall);
        const std::string large = c.make(kLarge);
        parse(small); // the invariants hold on these inputs too
        parse(large);
        if (!kCompareTimes)
            continue;
        const double tSmall = cpuSecondsToParse(small);
        const double tLarge = cpuSecondsToParse(large);
        EXPECT_LT(tLarge, kMaxGrowth * std::max(tSmall, 1e-6))
            << "small " << tSmall << " s, large " << tLarge << " s";
    }
}

TEST(HighlightPathological, FiveMegabyteLine)
{
    std::string line = markdownNoise(5 * 1024 * 1024);
    std::replace(line.begin(), line.end(), '\n', ' ');
    const std::vector<Span> spans = parse(line);
    EXPECT_FALSE(spans.empty());
}
