// Feeds arbitrary bytes to the highlight grammar. The first byte chooses the
// extension word, so every combination of rules is explored; the rest is the
// text, up to its first NUL as the editor would pass it.
//
// Besides what the sanitizers catch, a result must keep its invariants (an
// abort otherwise): spans inside the text with start <= end, only result
// types, every list sorted, the per-type lists holding exactly the
// elements of the all-elements list; and a text without its final newline
// must give the same spans as with it.

#include "highlight/pmh_parser/pmh_parser.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct Span {
    pmh_element_type type;
    unsigned long start;
    unsigned long end;
    bool operator==(const Span &o) const { return type == o.type && start == o.start && end == o.end; }
};

void require(bool condition)
{
    if (!condition)
        std::abort();
}

std::vector<Span> parse(const std::string &text, int extensions)
{
    unsigned long length = 0;
    for (const char c : text)
        length += (static_cast<unsigned char>(c) & 0xC0) != 0x80;

    pmh_element **lists = nullptr;
    pmh_markdown_to_elements(text.c_str(), extensions, &lists);
    pmh_sort_elements_by_pos(lists);
    size_t inTypeLists = 0;
    for (int type = 0; type < pmh_ALL; ++type) {
        unsigned long previous = 0;
        for (const pmh_element *e = lists[type]; e; e = e->next, ++inTypeLists) {
            require(type < pmh_NUM_LANG_TYPES && e->type == type && e->start >= previous);
            previous = e->start;
        }
    }
    std::vector<Span> spans;
    unsigned long previous = 0;
    for (const pmh_element *e = lists[pmh_ALL]; e; e = e->all_next) {
        require(e->start >= previous && e->start <= e->end && e->end <= length && !e->text);
        previous = e->start;
        spans.push_back({e->type, e->start, e->end});
    }
    require(spans.size() == inTypeLists);
    pmh_free_elements(lists);
    return spans;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const int extensions = data[0] & pmh_EXT_ALL;
    std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
    text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
    const std::vector<Span> spans = parse(text, extensions);
    if (!text.empty() && text.back() == '\n')
        require(parse(text.substr(0, text.size() - 1), extensions) == spans);
    return 0;
}
