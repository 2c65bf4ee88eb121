#pragma once

#include "highlight/pmh_parser/pmh_arena.h"
#include "highlight/pmh_parser/pmh_definitions.h"
#include "highlight/pmh_parser/pmh_text.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace pmh {

// What pmh_markdown_to_elements() hands out: the list heads come first, so
// the array the caller holds is also the address of the whole result.
struct Result {
    pmh_element *lists[pmh_NUM_TYPES] = {};
    pmh_element *tails[pmh_NUM_TYPES] = {};
    Arena arena;
};

// One item of the raw list the block pass leaves for the inline pass: a
// pmh_RAW piece of the stripped text, or a pmh_SEPARATOR saying that the
// pieces on both sides are one text (the lines of a paragraph inside a
// block quote, say, whose prefixes lie between them).
struct RawItem {
    pmh_element_type type;
    uint32_t top;
    uint32_t len;
};

// The state of one parse, shared by the block and inline passes. Holds the
// input, its stripped copy (one byte per code point) with the skip list that
// maps it back, the raw list, the references and notes the block pass
// collects, and the result being built. Owned by one thread for one parse.
class ParserState
{
public:
    // input: len bytes of UTF-8 (not necessarily valid); len must be below
    // maxInputLength().
    ParserState(const char *input, uint32_t len, int extensions, Result *result);

    static constexpr uint32_t maxInputLength() { return UINT32_MAX - 16; }

    bool has(int extension) const { return (m_extensions & extension) != 0; }

    // The stripped text: every byte that starts a UTF-8 sequence, with a
    // carriage return that is not followed by a newline turned into one,
    // then "\n\n" and a NUL. strippedLength() leaves the "\n\n" out.
    char *stripped() { return m_stripped.get(); }
    uint32_t strippedLength() const { return m_strippedLength; }
    // The grammar's text: the stripped text with the appended "\n\n".
    TextView documentView() const;

    // Adds a result element over stripped[start, end).
    pmh_element *addElement(pmh_element_type type, uint32_t start, uint32_t end);
    // A copy of the input bytes behind stripped[start, end), in the result.
    char *copyInput(uint32_t start, uint32_t end);

    // The key a reference label or note id is found by: whitespace runs
    // become one space, ends trimmed, ASCII letters lower-cased; other
    // characters are compared as their UTF-8 bytes.
    void labelKey(const TextView &view, uint32_t from, uint32_t to, std::string &key) const;

    // The first definition of a label wins, as in rendering.
    void addReference(const std::string &key, char *address);
    char *referenceAddress(const std::string &key) const;
    bool hasReferences() const { return !m_references.empty(); }
    void addNote(const std::string &key) { m_notes.insert(key); }
    bool hasNote(const std::string &key) const { return m_notes.count(key) != 0; }
    bool hasNotes() const { return !m_notes.empty(); }

    // Filled by the block pass, read by the inline pass.
    std::vector<RawItem> raw;

private:
    // Byte offset in the input of the character at stripped offset pos.
    uint32_t inputOffset(uint32_t pos) const;

    const char *m_input;
    uint32_t m_inputLength;
    int m_extensions;
    Result *m_result;
    // Input offsets of the bytes left out of the stripped text, ascending:
    // a byte order mark's three bytes and every UTF-8 continuation byte.
    std::vector<uint32_t> m_skips;
    std::unique_ptr<char[]> m_stripped;
    uint32_t m_strippedLength = 0;
    // A byte order mark is one code point before stripped offset 0.
    uint32_t m_codePointShift = 0;
    std::unordered_map<std::string, char *> m_references;
    std::unordered_set<std::string> m_notes;
};

} // namespace pmh
