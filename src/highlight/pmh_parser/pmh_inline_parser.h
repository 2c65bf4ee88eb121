#pragma once

#include "highlight/pmh_parser/pmh_state.h"

#include <string>
#include <vector>

namespace pmh {

// The second pass: spans inside the texts the block pass left in the raw
// list, one text at a time in document order. Code spans, math, autolinks,
// inline HTML and entities are taken as they come; brackets and emphasis
// marks go on two stacks and are paired when their closer shows up, so no
// span is ever looked for twice. The grammar is written down in
// pmh_parser.h.
class InlineParser
{
public:
    explicit InlineParser(ParserState &state);

    void parseAll();

private:
    // A run of *, _, ~~ or == that may open or close a span. [lo, hi) is
    // what is left of it: openers are used from the right, closers from
    // the left.
    struct Delim {
        uint32_t lo;
        uint32_t hi;
        int32_t prev;
        int32_t next;
        char ch;
        bool canOpen;
        bool canClose;
        uint8_t runMod3; // the whole run's length modulo 3
    };
    enum class BracketKind : uint8_t { Link, Image, InlineNote };
    struct Bracket {
        uint32_t pos;      // of '[', '![' or '^['
        int32_t delimTop;  // last delimiter before it
        BracketKind kind;
    };

    void parseText(const TextView &view);
    char at(uint32_t i) const { return i < m_len ? m_text[i] : '\n'; }

    uint32_t codeSpan(uint32_t i);
    uint32_t math(uint32_t i);
    uint32_t angleBracket(uint32_t i);
    uint32_t htmlTag(uint32_t i);
    uint32_t entity(uint32_t i);
    uint32_t delimiterRun(uint32_t i);
    uint32_t closeBracket(uint32_t i);
    bool inlineLink(uint32_t paren, uint32_t &end, uint32_t &destStart, uint32_t &destEnd);
    uint32_t findUnescaped(char c, uint32_t from);
    bool isLabelText(uint32_t from, uint32_t to) const;
    uint32_t bareUrl(uint32_t colon);
    uint32_t bareWww(uint32_t dot);
    uint32_t bareEmail(uint32_t at);
    uint32_t urlEnd(uint32_t from) const;

    void processEmphasis(int32_t bottom);
    void unlink(int32_t d);

    pmh_element *add(pmh_element_type type, uint32_t start, uint32_t end);
    char *copy(uint32_t start, uint32_t end);

    ParserState &m_state;
    bool m_special[256] = {};

    // The text being parsed.
    TextView m_view;
    const char *m_text = nullptr;
    uint32_t m_len = 0;
    // Text before this was taken by a span: autolinks that look back for
    // their start stop here.
    uint32_t m_floor = 0;
    // Position of the last '[' or ']' seen, to tell whether a bracket's text
    // can be a label (labels hold no brackets); -1 before any.
    int64_t m_lastBracket = -1;

    std::vector<Delim> m_delims;
    std::vector<Bracket> m_brackets;
    // Links cannot hold links: once one closes, the '[' openers below this
    // stack height can no longer make one. One number instead of a pass
    // over the stack keeps each closing bracket constant time.
    size_t m_linkBarrier = 0;

    FindCache m_codeClose[5];
    FindCache m_mathClose;
    FindCache m_commentClose;
    FindCache m_quoteClose[3]; // ", ' and ) ending a link title

    std::vector<char> m_joined;
    std::vector<Piece> m_pieces;
    std::string m_key;
};

} // namespace pmh
