#include "highlight/pmh_parser/pmh_parser.h"

#include "highlight/pmh_parser/pmh_block_parser.h"
#include "highlight/pmh_parser/pmh_inline_parser.h"
#include "highlight/pmh_parser/pmh_state.h"

#include <cassert>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <type_traits>

namespace {

// The list heads are the first member, so the caller's array and the
// result it belongs to have the same address.
static_assert(std::is_standard_layout_v<pmh::Result> && offsetof(pmh::Result, lists) == 0);

using NextField = pmh_element *pmh_element::*;

// Stable natural merge sort of a singly linked list by start. The lists
// come out of the parser almost sorted (the block pass and the inline pass
// each go forward through the text), so there are few runs to merge.
pmh_element *sortList(pmh_element *head, NextField next)
{
    if (!head)
        return head;
    for (;;) {
        pmh_element *result = nullptr;
        pmh_element **tail = &result;
        int runs = 0;
        pmh_element *p = head;
        while (p) {
            // Two ascending runs from p, merged onto the tail.
            pmh_element *a = p;
            pmh_element *aEnd = a;
            while (aEnd->*next && (aEnd->*next)->start >= aEnd->start)
                aEnd = aEnd->*next;
            pmh_element *b = aEnd->*next;
            aEnd->*next = nullptr;
            pmh_element *bEnd = b;
            if (bEnd) {
                while (bEnd->*next && (bEnd->*next)->start >= bEnd->start)
                    bEnd = bEnd->*next;
                p = bEnd->*next;
                bEnd->*next = nullptr;
            } else {
                p = nullptr;
            }
            ++runs;
            while (a && b) {
                // Ties take from the earlier run: the order found is kept.
                if (b->start < a->start) {
                    *tail = b;
                    b = b->*next;
                } else {
                    *tail = a;
                    a = a->*next;
                }
                tail = &((*tail)->*next);
            }
            *tail = a ? a : b;
            while (*tail)
                tail = &((*tail)->*next);
        }
        head = result;
        if (runs <= 1)
            return head;
    }
}

constexpr const char *kTypeNames[] = {
    "LINK",       "AUTO_LINK_URL", "AUTO_LINK_EMAIL", "IMAGE",      "CODE",     "HTML",          "HTML_ENTITY",
    "EMPH",       "STRONG",        "STRIKE",          "MARK",       "LIST_BULLET", "LIST_ENUMERATOR", "COMMENT",
    "H1",         "H2",            "H3",              "H4",         "H5",       "H6",            "BLOCKQUOTE",
    "VERBATIM",   "HTMLBLOCK",     "HRULE",           "REFERENCE",  "NOTE",     "RAW_LIST",      "RAW",
    "SEPARATOR",  "EXTRA_TEXT",
};
static_assert(std::size(kTypeNames) == pmh_ALL);

} // namespace

void pmh_markdown_to_elements(const char *string, int extensions, pmh_element **out_result[])
{
    assert(string != NULL);
    auto *result = new pmh::Result();
    *out_result = result->lists;
    const size_t length = std::strlen(string);
    // Offsets are 32-bit inside the parser; a text of 4 GiB is far beyond
    // anything an editor holds, and gets no highlighting rather than wrong
    // offsets.
    if (length == 0 || length > pmh::ParserState::maxInputLength())
        return;
    pmh::ParserState state(string, uint32_t(length), extensions, result);
    pmh::BlockParser(state).parseDocument();
    pmh::InlineParser(state).parseAll();
}

void pmh_sort_elements_by_pos(pmh_element *element_lists[])
{
    if (!element_lists)
        return;
    for (int type = 0; type < pmh_ALL; ++type)
        element_lists[type] = sortList(element_lists[type], &pmh_element::next);
    element_lists[pmh_ALL] = sortList(element_lists[pmh_ALL], &pmh_element::all_next);
}

void pmh_free_elements(pmh_element **elems)
{
    delete reinterpret_cast<pmh::Result *>(elems);
}

const char *pmh_element_name_from_type(pmh_element_type type)
{
    if (type < 0 || type >= pmh_ALL)
        return "unknown type";
    return kTypeNames[type];
}
