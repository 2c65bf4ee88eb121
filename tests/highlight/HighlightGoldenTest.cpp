#include "HighlightTestSupport.h"
#include "support/TestEnv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

// The golden files in tests/data/highlight/, one per grammar rule. A case
// is a Markdown text and the spans it must give, each shown with the text
// it covers, so that a reader can check the offsets at a glance and a
// wrong offset shows as wrong text:
//
//   %% case name [nonl] [ext=none|ext=notes,strike,mark,math,autolink]
//   Markdown text, every line ending with a newline ("nonl": not the last)
//   %% spans
//   TYPE START END |covered text|
//
// With ORVO_REGENERATE_GOLDEN=1 the test rewrites the files from what the
// grammar gives now; review that diff like code.

using namespace highlighttest;

namespace {

struct Case {
    std::string header;
    std::vector<std::string> textLines;
    std::vector<std::string> expected;
    std::string text;
    int extensions = pmh_EXT_ALL;
    int line = 0;
};

struct GoldenFile {
    std::string preamble;
    std::vector<Case> cases;
};

int extensionsFrom(const std::string &value)
{
    if (value == "none")
        return pmh_EXT_NONE;
    int ext = 0;
    std::stringstream in(value);
    for (std::string name; std::getline(in, name, ',');) {
        if (name == "notes")
            ext |= pmh_EXT_NOTES;
        else if (name == "strike")
            ext |= pmh_EXT_STRIKE;
        else if (name == "mark")
            ext |= pmh_EXT_MARK;
        else if (name == "math")
            ext |= pmh_EXT_MATH;
        else if (name == "autolink")
            ext |= pmh_EXT_AUTOLINK;
        else
            ADD_FAILURE() << "unknown extension " << name;
    }
    return ext;
}

GoldenFile load(const std::filesystem::path &path)
{
    GoldenFile file;
    std::ifstream in(path, std::ios::binary);
    std::string line;
    enum { Preamble, Text, Spans } state = Preamble;
    int lineNumber = 0;
    while (std::getline(in, line)) {
        ++lineNumber;
        if (line.rfind("%% ", 0) == 0 && line != "%% spans") {
            Case c;
            c.header = line;
            c.line = lineNumber;
            file.cases.push_back(c);
            state = Text;
        } else if (line == "%% spans" && state == Text) {
            state = Spans;
        } else if (state == Preamble) {
            file.preamble += line + '\n';
        } else if (state == Text) {
            file.cases.back().textLines.push_back(line);
        } else if (!line.empty()) {
            file.cases.back().expected.push_back(line);
        }
    }
    for (Case &c : file.cases) {
        bool finalNewline = true;
        std::stringstream words(c.header.substr(3));
        for (std::string word; words >> word;) {
            if (word == "nonl")
                finalNewline = false;
            else if (word.rfind("ext=", 0) == 0)
                c.extensions = extensionsFrom(word.substr(4));
        }
        for (size_t i = 0; i < c.textLines.size(); ++i)
            c.text += c.textLines[i] + (i + 1 < c.textLines.size() || finalNewline ? "\n" : "");
    }
    return file;
}

void save(const std::filesystem::path &path, const GoldenFile &file)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << file.preamble;
    for (const Case &c : file.cases) {
        out << c.header << '\n';
        for (const std::string &l : c.textLines)
            out << l << '\n';
        out << "%% spans\n";
        for (const std::string &l : c.expected)
            out << l << '\n';
        out << '\n';
    }
}

std::string diff(const std::vector<std::string> &expected, const std::vector<std::string> &actual)
{
    std::string out;
    for (const std::string &l : expected)
        if (std::find(actual.begin(), actual.end(), l) == actual.end())
            out += "  - " + l + '\n';
    for (const std::string &l : actual)
        if (std::find(expected.begin(), expected.end(), l) == expected.end())
            out += "  + " + l + '\n';
    return out.empty() ? "  (same spans, different order)\n" : out;
}

} // namespace

TEST(HighlightGolden, EveryRuleGivesItsSpans)
{
    const std::filesystem::path dir = orvotest::dataDir().toStdString() + "/highlight";
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(dir))
        if (entry.path().extension() == ".txt")
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    ASSERT_GE(files.size(), 20u) << "golden files missing in " << dir;
    const bool regenerate = std::getenv("ORVO_REGENERATE_GOLDEN") != nullptr;

    for (const std::filesystem::path &path : files) {
        GoldenFile file = load(path);
        EXPECT_FALSE(file.cases.empty()) << path;
        for (Case &c : file.cases) {
            SCOPED_TRACE(path.filename().string() + ":" + std::to_string(c.line) + " " + c.header);
            const std::vector<Span> spans = parse(c.text, c.extensions);
            std::vector<std::string> actual;
            for (const Span &s : spans)
                actual.push_back(describe(c.text, s));
            if (regenerate)
                c.expected = actual;
            else if (actual != c.expected)
                ADD_FAILURE() << "spans differ (- expected, + actual):\n" << diff(c.expected, actual);

            // The appended "\n\n" makes a missing final newline no different.
            if (!c.text.empty() && c.text.back() == '\n') {
                EXPECT_EQ(parse(c.text.substr(0, c.text.size() - 1), c.extensions), spans)
                    << "spans change without the final newline";
            }
        }
        if (regenerate)
            save(path, file);
    }
}
