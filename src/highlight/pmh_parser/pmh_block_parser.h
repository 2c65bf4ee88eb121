#pragma once

#include "highlight/pmh_parser/pmh_state.h"

#include <memory>
#include <utility>
#include <vector>

namespace pmh {

class HtmlTagIndex;

// The first pass: block structure. Reads the stripped text line by line,
// adds the block elements, collects references and notes, and leaves the
// text of paragraphs and headings in the raw list for the inline pass. A
// container (block quote, list item, note) joins its lines without their
// prefixes into a raw list text and parses that again, one level deeper.
// The grammar is written down in pmh_parser.h.
class BlockParser
{
public:
    explicit BlockParser(ParserState &state);
    ~BlockParser();

    void parseDocument();

private:
    struct Line;
    struct Source;
    using Range = std::pair<uint32_t, uint32_t>;

    void parseBlocks(Source &src);
    uint32_t parseBlock(Source &src, const Line &line);

    uint32_t atxHeading(Source &src, const Line &line);
    bool htmlBlock(Source &src, const Line &line, uint32_t &next);
    bool commentBlock(Source &src, const Line &line, uint32_t &next);
    bool noteDefinition(Source &src, const Line &line, bool add, uint32_t &next);
    bool referenceDefinition(Source &src, const Line &line, bool add, uint32_t &next);
    uint32_t horizontalRule(Source &src, const Line &line);
    bool fencedCode(Source &src, const Line &line, uint32_t &next);
    uint32_t blockQuote(Source &src, const Line &line);
    uint32_t verbatim(Source &src, const Line &line);
    bool listItem(Source &src, const Line &line, uint32_t &next);
    bool setextHeading(Source &src, const Line &line, uint32_t &next);
    uint32_t paragraph(Source &src, const Line &line);
    bool interruptsParagraph(Source &src, const Line &line);

    // Parses the lines ranges (half-open, each ending with its newline) of
    // src as the text of a container one level deeper.
    void parseContainer(Source &src, const std::vector<Range> &ranges, uint32_t containerStart);
    std::vector<Range> &rangesFor(const Source &src);

    pmh_element *add(pmh_element_type type, const Source &src, uint32_t start, uint32_t end);
    // Leaves src[start, end) for the inline pass.
    void addRaw(const Source &src, uint32_t start, uint32_t end);

    ParserState &m_state;
    // One source per nesting level, reused from container to container.
    std::vector<std::unique_ptr<Source>> m_sources;
    std::vector<std::vector<Range>> m_ranges;
    // The text of the outermost container being parsed. Deeper containers
    // are joined in place inside their parent's text: the parent never reads
    // those lines again, and the stripped text stays intact for the inline pass.
    std::unique_ptr<char[]> m_scratch;
    uint32_t m_scratchSize = 0;
    std::string m_key;
};

} // namespace pmh
