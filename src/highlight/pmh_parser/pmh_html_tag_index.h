#pragma once

#include <cstdint>
#include <vector>

namespace pmh {

// Where each block-level open tag of a text is closed. An HTML block runs
// from its open tag to the matching close tag, with tags of the same name
// nested in between; finding that by scanning from every candidate line
// would cost the rest of the text each time an open tag is never closed.
// The index reads the text once, pairs open and close tags of each name
// with a stack, and answers each block in logarithmic time.
//
// Tag names are those of the block tag list, written all in lower or all in
// upper case; "<div>" and "</DIV>" are different names.
class HtmlTagIndex
{
public:
    // Indexes text[from, len).
    HtmlTagIndex(const char *text, uint32_t from, uint32_t len);

    // One past the '>' of the close tag that matches the open tag starting at
    // pos, or 0 when it is never closed (or pos holds no indexed open tag).
    uint32_t closeFor(uint32_t pos) const;

    // The block tag id of name[0, len), or -1 when it is none.
    static int blockTag(const char *name, uint32_t len);
    // hr and isindex have no end tag: they are blocks by themselves.
    static bool isVoid(int tag);

private:
    struct Open {
        uint32_t pos;
        uint32_t closeEnd;
    };
    std::vector<Open> m_opens; // by position
};

} // namespace pmh
