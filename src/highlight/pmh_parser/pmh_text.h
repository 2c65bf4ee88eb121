#pragma once

// Small pieces both passes of the grammar use: character classes, the view
// of a text with its mapping back to the stripped text, and a search cache.
// Offsets are 32-bit to keep the parser's tables small; the entry point
// refuses texts that do not fit.

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace pmh {

// A link or reference label longer than this is no label, as in rendering
// and CommonMark. Labels hold no brackets, so no scan for one can overlap
// another; the bound is for sanity, not speed.
constexpr uint32_t kMaxLabelLength = 999;

inline bool isBlank(char c) { return c == ' ' || c == '\t'; }
// What separates words for the inline rules. A carriage return in the
// stripped text always comes before a newline.
inline bool isWhite(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }
inline bool isAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
inline bool isAlnum(char c) { return isAlpha(c) || isDigit(c); }
inline bool isAsciiPunct(char c)
{
    return (c >= '!' && c <= '/') || (c >= ':' && c <= '@') || (c >= '[' && c <= '`') || (c >= '{' && c <= '~');
}
inline char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? char(c + 32) : c; }

// A contiguous run of a joined text that comes from one place in the
// stripped text: text[at, at + len) is stripped[top, top + len).
struct Piece {
    uint32_t at;
    uint32_t top;
    uint32_t len;
};

// A text the grammar reads, and how its offsets map back to the stripped
// text. Without pieces the text is a slice of the stripped text starting at
// `base`; with pieces it was joined from them (a container's lines without
// their prefixes), and bytes past the last piece are extra text the parser
// added, which maps to the end of the last piece.
struct TextView {
    const char *text = nullptr;
    uint32_t len = 0;
    uint32_t base = 0;
    const Piece *pieces = nullptr;
    uint32_t pieceCount = 0;

    // Stripped offset of the character at pos (a span's start).
    uint32_t top(uint32_t pos) const
    {
        if (!pieceCount)
            return base + pos;
        const Piece &p = pieceAt(pos);
        return p.top + std::min(pos - std::min(pos, p.at), p.len);
    }
    // Stripped offset just after the character before pos (a span's end),
    // so that an end at a piece boundary stays on the piece it closes.
    uint32_t topEnd(uint32_t pos) const
    {
        if (!pieceCount || pos == 0)
            return top(pos);
        const Piece &p = pieceAt(pos - 1);
        return p.top + std::min(pos - std::min(pos, p.at), p.len);
    }

private:
    // The last piece starting at or before pos.
    const Piece &pieceAt(uint32_t pos) const
    {
        const Piece *end = pieces + pieceCount;
        const Piece *it = std::upper_bound(pieces, end, pos, [](uint32_t v, const Piece &p) { return v < p.at; });
        return it == pieces ? pieces[0] : it[-1];
    }
};

// Remembers the answer to the last search for one fixed pattern in one
// text. If the first match at or after `from` is at `at`, then any search
// starting in [from, at] has the same answer. The grammar searches forward
// as it goes, so a rule that looks for a closing mark many times (each
// unclosed "<!--", each unmatched backtick run) pays for the scan once and
// stays linear overall.
class FindCache
{
public:
    void reset() { m_valid = false; }

    // search(p) returns the first match at or after p, or the text's length.
    template <class Search>
    uint32_t find(uint32_t p, Search &&search)
    {
        if (m_valid && m_from <= p && p <= m_at)
            return m_at;
        m_at = search(p);
        m_from = p;
        m_valid = true;
        return m_at;
    }

private:
    bool m_valid = false;
    uint32_t m_from = 0;
    uint32_t m_at = 0;
};

// First occurrence of needle in text[from, len), or len.
inline uint32_t findString(const char *text, uint32_t from, uint32_t len, const char *needle, uint32_t needleLen)
{
    if (from >= len)
        return len;
    const void *hit = memmem(text + from, len - from, needle, needleLen);
    return hit ? uint32_t(static_cast<const char *>(hit) - text) : len;
}

} // namespace pmh
