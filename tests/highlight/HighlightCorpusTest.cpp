#include "HighlightTestSupport.h"
#include "support/TestEnv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

// Every file of the shared corpus (real tldr pages and book chapters): the
// result invariants, each span beginning and ending with what its rule
// requires, the same spans without the final newline, and the structure
// the two collections are known to have.

using namespace highlighttest;

namespace {

std::string readAll(const std::filesystem::path &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

bool startsWith(const std::string &s, const std::string &p) { return s.rfind(p, 0) == 0; }
bool endsWith(const std::string &s, const std::string &p)
{
    return s.size() >= p.size() && s.compare(s.size() - p.size(), p.size(), p) == 0;
}
std::string lastLine(const std::string &s) { return s.substr(s.find_last_of('\n') + 1); }

// What the text of a span must look like, whatever the document.
bool matchesItsRule(const Span &span, const std::string &c)
{
    switch (span.type) {
    case pmh_H1: case pmh_H2: case pmh_H3: case pmh_H4: case pmh_H5: case pmh_H6: {
        const auto level = size_t(span.type - pmh_H1 + 1);
        const std::string under = lastLine(c);
        const bool atx = startsWith(c, std::string(level, '#'));
        const bool setext = c.find('\n') != std::string::npos && !under.empty()
                            && under.find_first_not_of(level == 1 ? "= " : "- ") == std::string::npos;
        return atx || setext;
    }
    case pmh_BLOCKQUOTE: return startsWith(c, ">");
    case pmh_VERBATIM: {
        const std::string t = c.substr(std::min(c.find_first_not_of(" "), c.size()));
        return startsWith(t, "```") || startsWith(t, "~~~") || startsWith(c, "    ") || startsWith(c, "\t");
    }
    case pmh_HRULE: return c.size() >= 3 && c.find_first_not_of("*-_ \t") == std::string::npos;
    case pmh_LIST_BULLET: return c == "*" || c == "+" || c == "-";
    case pmh_LIST_ENUMERATOR: return c.size() >= 2 && c.back() == '.' && c.find_first_not_of("0123456789.") == std::string::npos;
    case pmh_CODE: return (startsWith(c, "`") && endsWith(c, "`")) || (startsWith(c, "$$") && endsWith(c, "$$"));
    case pmh_EMPH: return c.size() >= 3 && (c[0] == '*' || c[0] == '_') && c.back() == c[0];
    case pmh_STRONG: return (startsWith(c, "**") && endsWith(c, "**")) || (startsWith(c, "__") && endsWith(c, "__"));
    case pmh_STRIKE: return startsWith(c, "~~") && endsWith(c, "~~");
    case pmh_MARK: return startsWith(c, "==") && endsWith(c, "==");
    case pmh_LINK: return startsWith(c, "[") && (endsWith(c, ")") || endsWith(c, "]"));
    case pmh_IMAGE: return startsWith(c, "![") && (endsWith(c, ")") || endsWith(c, "]"));
    case pmh_NOTE: return startsWith(c, "[^") || startsWith(c, "^[");
    case pmh_AUTO_LINK_URL:
        return (startsWith(c, "<") && endsWith(c, ">")) || startsWith(c, "http") || startsWith(c, "ftp")
               || startsWith(c, "www.");
    case pmh_AUTO_LINK_EMAIL: return c.find('@') != std::string::npos;
    case pmh_HTML_ENTITY: return startsWith(c, "&") && endsWith(c, ";");
    case pmh_HTML: return startsWith(c, "<") && endsWith(c, ">");
    case pmh_HTMLBLOCK: return startsWith(c, "<");
    case pmh_COMMENT: return startsWith(c, "<!--") && endsWith(c, "-->");
    case pmh_REFERENCE: return startsWith(c, "[");
    default: return false;
    }
}

struct Line {
    unsigned long start; // code points
    std::string text;
};

std::vector<Line> linesOf(const std::string &text)
{
    std::vector<Line> lines;
    unsigned long cp = 0;
    std::string current;
    unsigned long start = 0;
    for (const char c : text) {
        if (c == '\n') {
            lines.push_back({start, current});
            current.clear();
            start = ++cp;
            continue;
        }
        current.push_back(c);
        cp += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }
    lines.push_back({start, current});
    return lines;
}

bool hasSpan(const std::vector<Span> &spans, pmh_element_type type, unsigned long start)
{
    return std::any_of(spans.begin(), spans.end(), [&](const Span &s) { return s.type == type && s.start == start; });
}

bool insideSpan(const std::vector<Span> &spans, pmh_element_type type, unsigned long pos)
{
    return std::any_of(spans.begin(), spans.end(),
                       [&](const Span &s) { return s.type == type && s.start <= pos && pos < s.end; });
}

// A tldr page: "# name", a "> " description, then "- " items each followed
// by a "`command`" line.
void checkTldrPage(const std::string &text, const std::vector<Span> &spans)
{
    ASSERT_FALSE(spans.empty());
    EXPECT_EQ(spans[0].type, pmh_H1);
    EXPECT_EQ(spans[0].start, 0u);
    EXPECT_TRUE(std::any_of(spans.begin(), spans.end(), [](const Span &s) { return s.type == pmh_BLOCKQUOTE; }));
    for (const Line &line : linesOf(text)) {
        if (startsWith(line.text, "- ")) {
            EXPECT_TRUE(hasSpan(spans, pmh_LIST_BULLET, line.start)) << line.text;
        }
        if (line.text.size() > 2 && line.text.front() == '`' && line.text.back() == '`'
            && std::count(line.text.begin(), line.text.end(), '`') == 2) {
            const Span code{pmh_CODE, line.start, line.start + codePointCount(line.text), {}, {}};
            EXPECT_TRUE(std::find(spans.begin(), spans.end(), code) != spans.end()) << line.text;
        }
    }
}

// A book chapter: every fence line is inside a code block, and every "#"
// line outside code, HTML and comments is a heading.
void checkChapter(const std::string &text, const std::vector<Span> &spans)
{
    for (const Line &line : linesOf(text)) {
        if (startsWith(line.text, "```")) {
            EXPECT_TRUE(insideSpan(spans, pmh_VERBATIM, line.start)) << line.text;
        } else if (startsWith(line.text, "#") && !insideSpan(spans, pmh_VERBATIM, line.start)
                   && !insideSpan(spans, pmh_HTMLBLOCK, line.start) && !insideSpan(spans, pmh_COMMENT, line.start)) {
            EXPECT_TRUE(std::any_of(spans.begin(), spans.end(), [&](const Span &s) {
                return s.type >= pmh_H1 && s.type <= pmh_H6 && s.start == line.start;
            })) << line.text;
        }
    }
}

} // namespace

TEST(HighlightCorpus, EveryFileGivesWellFormedSpans)
{
    const QString corpus = orvotest::corpusDir();
    if (corpus.isEmpty())
        GTEST_SKIP() << "no corpus beside the checkout";
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(corpus.toStdString()))
        if (entry.is_regular_file() && entry.path().extension() == ".md")
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    ASSERT_GT(files.size(), 7000u);

    std::map<pmh_element_type, size_t> counts;
    size_t tldrPages = 0, chapters = 0;
    for (const std::filesystem::path &path : files) {
        SCOPED_TRACE(path.string());
        const std::string text = readAll(path);
        const std::vector<Span> spans = parse(text);
        for (const Span &s : spans) {
            ++counts[s.type];
            const std::string c = covered(text, s.start, s.end);
            EXPECT_TRUE(matchesItsRule(s, c)) << describe(text, s);
        }
        if (!text.empty() && text.back() == '\n') {
            EXPECT_EQ(parse(text.substr(0, text.size() - 1)), spans);
        }
        const std::string where = path.string();
        if (where.find("/tldr/pages/") != std::string::npos) {
            checkTldrPage(text, spans);
            ++tldrPages;
        } else if (where.find("/rust-book/src/") != std::string::npos) {
            checkChapter(text, spans);
            ++chapters;
        }
        if (HasFailure())
            break; // one broken file is enough to read
    }
    EXPECT_GT(tldrPages, 7000u);
    EXPECT_GT(chapters, 100u);
    // The collections use these elements (their images are HTML); each must be found.
    for (const pmh_element_type t : {pmh_H1, pmh_H2, pmh_H3, pmh_BLOCKQUOTE, pmh_LIST_BULLET, pmh_LIST_ENUMERATOR,
                                     pmh_CODE, pmh_VERBATIM, pmh_LINK, pmh_EMPH, pmh_STRONG,
                                     pmh_AUTO_LINK_URL, pmh_REFERENCE, pmh_HTML, pmh_COMMENT})
        EXPECT_GT(counts[t], 0u) << pmh_element_name_from_type(t);
}
