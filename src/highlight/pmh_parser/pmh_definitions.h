#pragma once

// Types shared by the highlight grammar and its clients (the editor
// highlighter, `orvo highlight`, tests). Plain C++ with no toolkit in it, so
// the grammar builds, fuzzes and benchmarks on its own.

#include <cstdint>

// Element types, as small integers in this order; the editor's themes name
// them by the strings of pmh_element_name_from_type().
enum pmh_element_type : int32_t {
    pmh_LINK = 0,          // [text](url), [text][label], [label], [text][]
    pmh_AUTO_LINK_URL,     // <scheme://...>, and bare URLs with pmh_EXT_AUTOLINK
    pmh_AUTO_LINK_EMAIL,   // <a@b.c>, <mailto:a@b.c>, and bare addresses with pmh_EXT_AUTOLINK
    pmh_IMAGE,             // ![alt](url) and its reference forms
    pmh_CODE,              // `code` (runs of 1 to 5 backticks), and $$math$$ with pmh_EXT_MATH
    pmh_HTML,              // an inline tag or comment
    pmh_HTML_ENTITY,       // &amp; &#38; &#x26;
    pmh_EMPH,              // *a* _a_
    pmh_STRONG,            // **a** __a__
    pmh_STRIKE,            // ~~a~~ with pmh_EXT_STRIKE
    pmh_MARK,              // ==a== with pmh_EXT_MARK
    pmh_LIST_BULLET,       // the marker of one bullet item: *, + or -
    pmh_LIST_ENUMERATOR,   // the marker of one numbered item: 12.
    pmh_COMMENT,           // a block of <!-- ... -->
    pmh_H1,
    pmh_H2,
    pmh_H3,
    pmh_H4,
    pmh_H5,
    pmh_H6,
    pmh_BLOCKQUOTE,
    pmh_VERBATIM,          // indented and fenced code blocks
    pmh_HTMLBLOCK,
    pmh_HRULE,
    pmh_REFERENCE,         // [label]: url "title"
    pmh_NOTE,              // [^id]: text, [^id] and ^[inline] with pmh_EXT_NOTES

    // Used inside the parser only; never in a result.
    pmh_RAW_LIST,          // a container's text, joined from its lines and parsed again as blocks
    pmh_RAW,               // a piece of text left for the inline pass
    pmh_SEPARATOR,         // stands between two pieces that are one text for the inline pass
    pmh_EXTRA_TEXT,        // text the parser added to a joined text; it maps to no input offset

    // Index of the list of all elements in the result array.
    pmh_ALL
};

// Types that can appear in a result: 0 .. pmh_NUM_LANG_TYPES - 1.
constexpr int pmh_NUM_LANG_TYPES = pmh_RAW_LIST;
// Length of the result array: one list per type, then the all-elements list.
constexpr int pmh_NUM_TYPES = pmh_ALL + 1;

// The extension word: bits that turn on the grammar's additions to plain
// Markdown. The editor passes its own word unchanged.
enum pmh_extensions : int {
    pmh_EXT_NONE = 0,
    pmh_EXT_NOTES = 1 << 0,     // footnotes: [^id]: definitions, [^id] references, ^[inline notes]
    pmh_EXT_STRIKE = 1 << 1,    // ~~strike~~
    pmh_EXT_MARK = 1 << 2,      // ==mark==
    pmh_EXT_MATH = 1 << 3,      // $$math$$, coloured as CODE
    pmh_EXT_AUTOLINK = 1 << 4,  // bare http://, https://, ftp://, www. links and e-mail addresses
    pmh_EXT_ALL = (1 << 5) - 1,
};

// One highlighted span. Offsets count code points of the text given to the
// parser (a byte order mark counts as one), the end is exclusive. All
// records and strings belong to the result array and live until
// pmh_free_elements().
struct pmh_element {
    pmh_element_type type;
    unsigned long start;
    unsigned long end;
    pmh_element *next;      // next element of the same type
    pmh_element *all_next;  // next element in the all-elements list
    char *text;             // null in results: the parser keeps raw text in records of its own
    char *label;            // LINK/IMAGE by reference: the label as written; REFERENCE: its label;
                            // NOTE: the note's id; null otherwise
    char *address;          // LINK/IMAGE: the destination (a reference's, when by reference);
                            // REFERENCE, AUTO_LINK_URL, AUTO_LINK_EMAIL: the address as written
};
