#pragma once

// Internals of the Markdown parser, shared by its three translation units:
// document.cpp (set-up, first pass, definitions), document_block.cpp (block
// parsing) and document_inline.cpp (inline parsing). Not for renderers.

#include "hoedown/document.h"
#include "hoedown/stack.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace hoedown_detail {

enum { BUFFER_BLOCK = 0, BUFFER_SPAN = 1 };

// Work buffers in use beyond which the parser stops recursing whatever the
// caller's max_nesting says. Each level of nesting costs one work buffer, a
// few hundred bytes of C stack (a few kilobytes under AddressSanitizer) and,
// since every level's buffer holds the rendering of all it contains, memory
// for one more copy of that rendering. Real documents stay far below the
// limit (a paragraph in a list item in a quote in a list takes five or six
// buffers), while 128 levels keep both the stack and the copies small for
// any input. Text past the limit is written as plain text, so it is never
// lost.
constexpr size_t kMaxWorkBuffers = 128;

constexpr size_t kNone = SIZE_MAX;

// A growable array of plain values that keeps its memory between renders.
// Memory comes from hoedown_realloc, so exhaustion ends the process the way
// every other allocation of the parser does.
template <class T> struct pod_array {
    T *data = nullptr;
    size_t size = 0;
    size_t asize = 0;

    void reserve(size_t n)
    {
        if (n <= asize)
            return;
        size_t a = asize ? asize : 16;
        while (a < n)
            a *= 2;
        data = static_cast<T *>(hoedown_realloc(data, a * sizeof(T)));
        asize = a;
    }
    void push(const T &v)
    {
        if (size == asize)
            reserve(size + 1);
        data[size++] = v;
    }
    void clear() { size = 0; }
    void release()
    {
        free(data);
        data = nullptr;
        size = asize = 0;
    }
    T &operator[](size_t i) { return data[i]; }
    const T &operator[](size_t i) const { return data[i]; }
};

// A link reference: id hash, link and title as ranges of the document's
// definition arena, and the next record of its hash bucket (index + 1, 0 at
// the end of the chain).
struct link_ref {
    uint32_t id;
    uint32_t next;
    size_t link_off, link_len;
    size_t title_off, title_len;
    bool has_title;
};

// A footnote definition: id hash, its body in the definition arena, the
// number it got at its first use (0 while unused), and the next record of its
// hash bucket.
struct footnote_def {
    uint32_t id;
    uint32_t next;
    bool used;
    unsigned int num;
    size_t off, len;
};

// Hash buckets over records that carry their id hash and a `next` link
// (record index + 1, 0 at the end of a chain). A render starts with 8
// buckets, the bucket being the low 3 bits of the hash; a document with many
// definitions doubles the table as it fills, so that a lookup stays short.
struct id_buckets {
    pod_array<uint32_t> heads;

    void reset();
    template <class Record> Record *find(pod_array<Record> &records, uint32_t id) const
    {
        for (uint32_t i = heads[id & (heads.size - 1)]; i; i = records[i - 1].next) {
            // Ids are compared by hash alone: two ids with the same hash are
            // the same id.
            if (records[i - 1].id == id)
                return &records[i - 1];
        }
        return nullptr;
    }
    // Links the last record of `records` into its bucket.
    template <class Record> void add(pod_array<Record> &records)
    {
        if (records.size > 2 * heads.size) {
            // Double the buckets and relink every record.
            const size_t n = heads.size * 2;
            heads.clear();
            heads.reserve(n);
            for (size_t b = 0; b < n; ++b)
                heads.push(0);
            for (size_t i = records.size; i-- > 0;)
                link(records, i);
            return;
        }
        link(records, records.size - 1);
    }

private:
    template <class Record> void link(pod_array<Record> &records, size_t i)
    {
        uint32_t &head = heads[records[i].id & (heads.size - 1)];
        records[i].next = head;
        head = uint32_t(i + 1);
    }
};

// A span of the inline text that the closing search of emphasis jumps over:
// a code span or a link with its destination.
struct skip_region {
    size_t start, end;
};

// A run of backticks: where it starts, how long it is, and the index of the
// next run of the same length (kNone when there is none).
struct tick_run {
    size_t start, len, next_same;
};

// An opening bracket or parenthesis and its match (kNone when unmatched).
struct bracket_match {
    size_t pos, match;
};

// Facts about one inline text, computed on first need and valid while that
// text is being parsed. They turn searches that would otherwise rescan the
// rest of the text for every opening mark into lookups, so that inline
// parsing stays linear on texts full of unclosed marks.
struct inline_frame {
    const uint8_t *base;
    size_t size;

    bool brackets_ready, runs_ready, regions_ready;
    pod_array<bracket_match> brackets; // '[' and '(' positions in order
    pod_array<tick_run> runs;          // backtick runs in order
    pod_array<size_t> scratch;         // a stack or a sort order while computing
    pod_array<skip_region> regions;    // in order, not overlapping

    // Emphasis closing search, per mark (*, _, ~, =) and width (1 to 3):
    // the first closer at or after `from` is `answer` (kNone: none).
    struct closer_cache {
        size_t from, answer;
    } closers[4][3];

    // Searches whose failure from a position implies failure from every later
    // position of the same text: the position of the earliest known failure.
    enum { FAIL_DOLLAR, FAIL_DDOLLAR, FAIL_MATH_PAREN, FAIL_MATH_BRACKET, FAIL_TAG_END, FAIL_COMMENT_END, FAIL_COUNT };
    size_t fail[FAIL_COUNT];
    // Double quote runs: no closing run of at least quote_fail_len from
    // quote_fail_from on.
    size_t quote_fail_from, quote_fail_len;

    void reset(const uint8_t *b, size_t s);
    void release();
    // Compute the tables on first need.
    void need_brackets();
    void need_runs();
};

// Active character codes.
enum char_action : uint8_t {
    MD_CHAR_NONE = 0,
    MD_CHAR_EMPHASIS,
    MD_CHAR_CODESPAN,
    MD_CHAR_LINEBREAK,
    MD_CHAR_LINK,
    MD_CHAR_IMAGE,
    MD_CHAR_LANGLE,
    MD_CHAR_ESCAPE,
    MD_CHAR_ENTITY,
    MD_CHAR_AUTOLINK_URL,
    MD_CHAR_AUTOLINK_EMAIL,
    MD_CHAR_AUTOLINK_WWW,
    MD_CHAR_SUPERSCRIPT,
    MD_CHAR_QUOTE,
    MD_CHAR_MATH,
    MD_CHAR_COUNT
};

// Byte classes (ASCII only: every byte of a multi-byte UTF-8 sequence is
// "other", which is what the Markdown rules want).
inline bool is_space_or_nl(uint8_t c) { return c == ' ' || c == '\n'; }
inline bool is_ws(uint8_t c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }
inline bool is_digit(uint8_t c) { return c >= '0' && c <= '9'; }
inline bool is_alpha(uint8_t c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }
inline bool is_alnum(uint8_t c) { return is_digit(c) || is_alpha(c); }
inline bool is_punct(uint8_t c)
{
    return (c >= 33 && c <= 47) || (c >= 58 && c <= 64) || (c >= 91 && c <= 96) || (c >= 123 && c <= 126);
}
inline uint8_t to_lower(uint8_t c) { return (c >= 'A' && c <= 'Z') ? uint8_t(c | 0x20) : c; }

// A read-only view of parser text, as renderers receive it.
inline hoedown_buffer view(const uint8_t *data, size_t size)
{
    return hoedown_buffer{const_cast<uint8_t *>(data), size, 0, 1};
}

// Id hash of references and footnotes: over the lower-cased bytes,
// hash = hash * 65599 + byte in 32 bits.
inline uint32_t hash_id(const uint8_t *data, size_t size)
{
    uint32_t hash = 0;
    for (size_t i = 0; i < size; ++i)
        hash = hash * 65599u + to_lower(data[i]);
    return hash;
}

} // namespace hoedown_detail

// The document: a renderer, its definitions and its pools. One render at a
// time; see document.h.
struct hoedown_document {
    hoedown_renderer md;
    hoedown_renderer_data data;

    // Link references, and their hash buckets.
    hoedown_detail::pod_array<hoedown_detail::link_ref> refs;
    hoedown_detail::id_buckets ref_buckets;
    // Footnotes: every definition in order with its hash buckets, and the
    // used ones in order of first use (indices into fn_found).
    hoedown_detail::pod_array<hoedown_detail::footnote_def> fn_found;
    hoedown_detail::id_buckets fn_buckets;
    hoedown_detail::pod_array<uint32_t> fn_used;
    // Reference links and titles and footnote bodies, normalised.
    hoedown_buffer defs;
    // The normalised input of the render in progress.
    hoedown_buffer text;

    uint8_t active_char[256];
    unsigned int ext_flags;
    size_t max_nesting;
    int in_link_body;

    // Work buffer pools, indexed by BUFFER_BLOCK and BUFFER_SPAN.
    hoedown_stack work_bufs[2];
    // Inline frames by inline nesting depth, reused across texts.
    hoedown_detail::pod_array<hoedown_detail::inline_frame *> frames;
    size_t frame_depth;

    // Scratch of the table being parsed. Tables never nest (cells hold
    // inline text only), so one set serves every table.
    hoedown_detail::inline_frame row_frame;
    hoedown_detail::pod_array<uint8_t> table_aligns;
    hoedown_detail::pod_array<size_t> table_cells; // begin, end of each cell
};

namespace hoedown_detail {

// Work buffer pools: a buffer is taken on entering a nested element and
// given back on leaving it, last taken first given.
hoedown_buffer *newbuf(hoedown_document *doc, int type);
void popbuf(hoedown_document *doc, int type);
inline size_t buffers_in_use(const hoedown_document *doc)
{
    return doc->work_bufs[BUFFER_BLOCK].size + doc->work_bufs[BUFFER_SPAN].size;
}

// Writes text through plain_text, or as it is without that slot. Used where
// nesting runs out, so that no text is ever dropped by the internal bound.
void put_plain(hoedown_buffer *ob, hoedown_document *doc, const uint8_t *data, size_t size);

// Block parsing of data[0, size), which must end in a newline. The parser
// compacts nested blocks (quote prefixes, list indents) in place, so the
// bytes are modified.
void parse_block(hoedown_buffer *ob, hoedown_document *doc, uint8_t *data, size_t size);
// Inline parsing of data[0, size).
void parse_inline(hoedown_buffer *ob, hoedown_document *doc, const uint8_t *data, size_t size);

// Brackets and parentheses of a text with their matches, honouring nesting
// and backslash escapes ('[' matches ']' and '(' matches ')', separately).
void find_brackets(const uint8_t *data, size_t size, pod_array<bracket_match> &out);
// The match of the bracket or parenthesis at `pos`, kNone when unmatched.
size_t bracket_at(const pod_array<bracket_match> &brackets, size_t pos);
// Maximal backtick runs of a text, each linked to the next of its length.
void find_tick_runs(const uint8_t *data, size_t size, pod_array<tick_run> &out, pod_array<size_t> &order);
// The closing run for an opening run of `len` backticks at `open`: the start
// of the first later run of exactly that length, kNone when there is none.
size_t tick_closer(const pod_array<tick_run> &runs, size_t open, size_t len);

// Whether data[pos] is escaped by an odd run of backslashes before it (not
// looking before data[0]).
inline bool is_escaped(const uint8_t *data, size_t pos)
{
    size_t n = 0;
    while (n < pos && data[pos - n - 1] == '\\')
        ++n;
    return n & 1;
}

// Footnotes and references of the render in progress.
const link_ref *find_link_ref(hoedown_document *doc, const uint8_t *id, size_t size);
footnote_def *find_footnote(hoedown_document *doc, const uint8_t *id, size_t size);

// Line tests shared by the first pass and block parsing. Each looks at the
// line starting at data[0]; `size` bounds the text.
size_t line_end(const uint8_t *data, size_t size);  // offset after the line's newline (or size)
size_t is_empty(const uint8_t *data, size_t size);  // blank line: its length with the newline, else 0
bool is_hrule(const uint8_t *data, size_t size);
size_t prefix_quote(const uint8_t *data, size_t size);
size_t prefix_code(const uint8_t *data, size_t size);
size_t prefix_uli(const uint8_t *data, size_t size);
size_t prefix_oli(const uint8_t *data, size_t size);
bool is_atxheader(const hoedown_document *doc, const uint8_t *data, size_t size);
int is_headerline(const uint8_t *data, size_t size);

// A code fence at the start of the line: up to 3 spaces and 3 or more of
// one of '`' and '~'. Returns the fence width (0 when none) and fills the
// indent and the mark. With `strict`, a line whose rest holds three fence
// characters in a row is no fence (it reads as a code span). Without it only
// the line's start counts, as the first pass and list items test.
struct fence_info {
    size_t indent, width;
    uint8_t mark;
    size_t lang_b, lang_e; // the language, offsets in the line
    size_t line_len;       // the whole line with its newline
};
bool is_codefence(const uint8_t *data, size_t size, bool strict, fence_info *out);

} // namespace hoedown_detail
