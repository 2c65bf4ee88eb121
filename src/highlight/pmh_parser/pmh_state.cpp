#include "highlight/pmh_parser/pmh_state.h"

#include <cassert>
#include <cstring>

namespace pmh {

namespace {

constexpr uint64_t kOnes = 0x0101010101010101ULL;
constexpr uint64_t kHighBits = 0x8080808080808080ULL;

// True when one of the eight bytes of w equals b.
inline bool hasByte(uint64_t w, unsigned char b)
{
    const uint64_t x = w ^ (kOnes * b);
    return ((x - kOnes) & ~x & kHighBits) != 0;
}

} // namespace

ParserState::ParserState(const char *input, uint32_t len, int extensions, Result *result)
    : m_input(input), m_inputLength(len), m_extensions(extensions), m_result(result)
{
    // The skip list starts with room for 1024 offsets and doubles as needed.
    m_skips.reserve(1024);
    m_stripped.reset(new char[size_t(len) + 3]);
    const auto *in = reinterpret_cast<const unsigned char *>(input);
    char *out = m_stripped.get();
    uint32_t i = 0;
    if (len >= 3 && in[0] == 0xEF && in[1] == 0xBB && in[2] == 0xBF) {
        m_skips.insert(m_skips.end(), {0, 1, 2});
        m_codePointShift = 1;
        i = 3;
    }
    while (i < len) {
        // Most text is ASCII without carriage returns: copy it eight bytes at a time.
        if (len - i >= 8) {
            uint64_t w;
            std::memcpy(&w, in + i, 8);
            if (!(w & kHighBits) && !hasByte(w, '\r')) {
                std::memcpy(out, &w, 8);
                out += 8;
                i += 8;
                continue;
            }
        }
        unsigned char c = in[i];
        if ((c & 0xC0) == 0x80) {
            m_skips.push_back(i++);
            continue;
        }
        // Offsets must stay those of the input, so a carriage return is not
        // dropped: alone it ends a line like a newline; before a newline it
        // stays, and the grammar reads it as part of the line's end.
        if (c == '\r' && !(i + 1 < len && in[i + 1] == '\n'))
            c = '\n';
        *out++ = char(c);
        ++i;
    }
    m_strippedLength = uint32_t(out - m_stripped.get());
    std::memcpy(out, "\n\n", 3);
}

TextView ParserState::documentView() const
{
    TextView v;
    v.text = m_stripped.get();
    v.len = m_strippedLength + 2;
    return v;
}

pmh_element *ParserState::addElement(pmh_element_type type, uint32_t start, uint32_t end)
{
    // Spans never reach into the appended "\n\n".
    end = std::min(end, m_strippedLength);
    start = std::min(start, end);
    auto *elem = static_cast<pmh_element *>(m_result->arena.allocate(sizeof(pmh_element)));
    assert(elem != NULL);
    *elem = pmh_element{type, start + m_codePointShift, end + m_codePointShift, nullptr, nullptr, nullptr, nullptr, nullptr};
    if (m_result->tails[type])
        m_result->tails[type]->next = elem;
    else
        m_result->lists[type] = elem;
    m_result->tails[type] = elem;
    if (m_result->tails[pmh_ALL])
        m_result->tails[pmh_ALL]->all_next = elem;
    else
        m_result->lists[pmh_ALL] = elem;
    m_result->tails[pmh_ALL] = elem;
    return elem;
}

uint32_t ParserState::inputOffset(uint32_t pos) const
{
    // The skip entries before the character at pos are those whose count of
    // kept bytes before them, skips[j] - j, is at most pos; that count never
    // decreases along the list.
    uint32_t lo = 0, hi = uint32_t(m_skips.size());
    while (lo < hi) {
        const uint32_t mid = lo + (hi - lo) / 2;
        if (m_skips[mid] - mid <= pos)
            lo = mid + 1;
        else
            hi = mid;
    }
    return std::min(pos + lo, m_inputLength);
}

char *ParserState::copyInput(uint32_t start, uint32_t end)
{
    end = std::min(end, m_strippedLength);
    start = std::min(start, end);
    const uint32_t from = inputOffset(start);
    const uint32_t to = inputOffset(end);
    return m_result->arena.copyString(m_input + from, to - from);
}

void ParserState::labelKey(const TextView &view, uint32_t from, uint32_t to, std::string &key) const
{
    key.clear();
    bool pendingSpace = false;
    for (uint32_t i = from; i < to; ++i) {
        const char c = view.text[i];
        if (isWhite(c)) {
            pendingSpace = !key.empty();
            continue;
        }
        if (pendingSpace) {
            key.push_back(' ');
            pendingSpace = false;
        }
        if (static_cast<unsigned char>(c) < 0x80) {
            key.push_back(lowerAscii(c));
            continue;
        }
        // A lead byte stands for a whole character: compare its input bytes.
        uint32_t b = inputOffset(view.top(i));
        key.push_back(m_input[b++]);
        while (b < m_inputLength && (static_cast<unsigned char>(m_input[b]) & 0xC0) == 0x80)
            key.push_back(m_input[b++]);
    }
}

void ParserState::addReference(const std::string &key, char *address)
{
    m_references.emplace(key, address);
}

char *ParserState::referenceAddress(const std::string &key) const
{
    const auto it = m_references.find(key);
    return it == m_references.end() ? nullptr : it->second;
}

} // namespace pmh
