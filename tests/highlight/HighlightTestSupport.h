#pragma once

#include "highlight/pmh_parser/pmh_parser.h"

#include <string>
#include <vector>

// Helpers shared by the highlight grammar's tests. Every parse goes through
// parse(), which also checks the invariants any result must keep, so each
// test checks them on its own inputs too.
namespace highlighttest {

struct Span {
    pmh_element_type type;
    unsigned long start;
    unsigned long end;
    std::string label;
    std::string address;

    bool operator==(const Span &o) const { return type == o.type && start == o.start && end == o.end; }
};

// The sorted all-elements list of text. Adds a test failure when the result
// breaks an invariant: spans inside the text, start <= end, no internal
// types, every list sorted by start, and the per-type lists holding exactly
// the elements of the all-elements list.
std::vector<Span> parse(const std::string &text, int extensions = pmh_EXT_ALL);

// Code points of text, counted as the grammar counts them.
unsigned long codePointCount(const std::string &text);
// The bytes of code points [start, end) of text.
std::string covered(const std::string &text, unsigned long start, unsigned long end);
// "TYPE start end |covered text|", with newline, tab and backslash escaped.
std::string describe(const std::string &text, const Span &span);

// The spans of one type.
std::vector<Span> ofType(const std::vector<Span> &spans, pmh_element_type type);

} // namespace highlighttest
