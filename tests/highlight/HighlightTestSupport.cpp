#include "HighlightTestSupport.h"

#include <gtest/gtest.h>

#include <set>

namespace highlighttest {

namespace {

void checkInvariants(pmh_element **lists, const std::string &text)
{
    const unsigned long length = codePointCount(text);
    std::set<const pmh_element *> inTypeLists;
    for (int type = 0; type < pmh_ALL; ++type) {
        unsigned long previous = 0;
        for (const pmh_element *e = lists[type]; e; e = e->next) {
            EXPECT_LT(type, pmh_NUM_LANG_TYPES) << "internal element in the result";
            EXPECT_EQ(e->type, type) << "element in another type's list";
            EXPECT_GE(e->start, previous) << pmh_element_name_from_type(e->type) << " list not sorted";
            previous = e->start;
            inTypeLists.insert(e);
        }
    }
    unsigned long previous = 0;
    size_t count = 0;
    for (const pmh_element *e = lists[pmh_ALL]; e; e = e->all_next, ++count) {
        EXPECT_TRUE(inTypeLists.count(e)) << "element missing from its type's list";
        EXPECT_GE(e->start, previous) << "all-elements list not sorted";
        EXPECT_LE(e->start, e->end);
        EXPECT_LE(e->end, length) << pmh_element_name_from_type(e->type) << " ends past the text";
        EXPECT_EQ(e->text, nullptr);
        previous = e->start;
    }
    EXPECT_EQ(count, inTypeLists.size()) << "per-type lists and the all-elements list differ";
}

} // namespace

std::vector<Span> parse(const std::string &text, int extensions)
{
    pmh_element **lists = nullptr;
    pmh_markdown_to_elements(text.c_str(), extensions, &lists);
    pmh_sort_elements_by_pos(lists);
    checkInvariants(lists, text);
    std::vector<Span> spans;
    for (const pmh_element *e = lists[pmh_ALL]; e; e = e->all_next)
        spans.push_back({e->type, e->start, e->end, e->label ? e->label : "", e->address ? e->address : ""});
    pmh_free_elements(lists);
    return spans;
}

unsigned long codePointCount(const std::string &text)
{
    unsigned long n = 0;
    for (const char c : text)
        n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return n;
}

std::string covered(const std::string &text, unsigned long start, unsigned long end)
{
    std::string out;
    unsigned long cp = 0;
    for (const char c : text) {
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80)
            ++cp;
        if (cp > start && cp <= end)
            out.push_back(c);
    }
    return out;
}

std::string describe(const std::string &text, const Span &span)
{
    std::string out = pmh_element_name_from_type(span.type);
    out += ' ' + std::to_string(span.start) + ' ' + std::to_string(span.end) + " |";
    for (const char c : covered(text, span.start, span.end)) {
        if (c == '\n')
            out += "\\n";
        else if (c == '\t')
            out += "\\t";
        else if (c == '\\')
            out += "\\\\";
        else
            out.push_back(c);
    }
    return out + '|';
}

std::vector<Span> ofType(const std::vector<Span> &spans, pmh_element_type type)
{
    std::vector<Span> out;
    for (const Span &s : spans)
        if (s.type == type)
            out.push_back(s);
    return out;
}

} // namespace highlighttest
