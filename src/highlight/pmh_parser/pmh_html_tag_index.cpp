#include "highlight/pmh_parser/pmh_html_tag_index.h"

#include "highlight/pmh_parser/pmh_text.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace pmh {

namespace {

// The block tags, sorted for binary search.
constexpr std::string_view kBlockTags[] = {
    "address", "blockquote", "center", "dd",     "dir",   "div",      "dl",       "dt",       "fieldset",
    "form",    "frameset",   "h1",     "h2",     "h3",    "h4",       "h5",       "h6",       "hr",
    "isindex", "li",         "menu",   "noframes", "noscript", "ol", "p",        "pre",      "script",
    "style",   "table",      "tbody",  "td",     "tfoot", "th",       "thead",    "tr",       "ul",
};
static_assert(std::is_sorted(std::begin(kBlockTags), std::end(kBlockTags)));
constexpr int kTagCount = int(std::size(kBlockTags));

constexpr uint32_t longestTag()
{
    size_t longest = 0;
    for (const std::string_view tag : kBlockTags)
        longest = std::max(longest, tag.size());
    return uint32_t(longest);
}
// A longer name is no block tag, whatever it is.
constexpr uint32_t kLongestTag = longestTag();

} // namespace

int HtmlTagIndex::blockTag(const char *name, uint32_t len)
{
    if (len == 0 || len > kLongestTag)
        return -1;
    char lower[kLongestTag];
    bool hasLower = false, hasUpper = false;
    for (uint32_t i = 0; i < len; ++i) {
        const char c = name[i];
        hasLower |= (c >= 'a' && c <= 'z');
        hasUpper |= (c >= 'A' && c <= 'Z');
        lower[i] = lowerAscii(c);
    }
    if (hasLower == hasUpper) // mixed case, or digits alone
        return -1;
    const std::string_view key(lower, len);
    const auto *it = std::lower_bound(std::begin(kBlockTags), std::end(kBlockTags), key);
    if (it == std::end(kBlockTags) || *it != key)
        return -1;
    return int(it - std::begin(kBlockTags)) * 2 + (hasUpper ? 1 : 0);
}

bool HtmlTagIndex::isVoid(int tag)
{
    const std::string_view name = kBlockTags[tag / 2];
    return name == "hr" || name == "isindex";
}

HtmlTagIndex::HtmlTagIndex(const char *text, uint32_t from, uint32_t len)
{
    std::vector<std::vector<uint32_t>> open(size_t(kTagCount) * 2);
    uint32_t p = from;
    while (p < len) {
        const void *lt = std::memchr(text + p, '<', len - p);
        if (!lt)
            break;
        const uint32_t q = uint32_t(static_cast<const char *>(lt) - text);
        const bool closing = q + 1 < len && text[q + 1] == '/';
        const uint32_t nameStart = q + 1 + (closing ? 1 : 0);
        uint32_t nameEnd = nameStart;
        while (nameEnd < len && isAlnum(text[nameEnd]))
            ++nameEnd;
        const int tag = nameEnd < len ? blockTag(text + nameStart, nameEnd - nameStart) : -1;
        if (tag < 0) {
            p = q + 1;
            continue;
        }
        if (closing) {
            uint32_t k = nameEnd;
            while (k < len && isWhite(text[k]))
                ++k;
            if (k < len && text[k] == '>' && !open[tag].empty()) {
                m_opens[open[tag].back()].closeEnd = k + 1;
                open[tag].pop_back();
            }
            p = k;
            continue;
        }
        const char after = text[nameEnd];
        if (!isWhite(after) && after != '>' && after != '/') {
            p = nameEnd;
            continue;
        }
        // The tag ends at the next '>'. A '<' first means it never ends; the
        // scan stops there, so each byte is read once.
        uint32_t k = nameEnd;
        while (k < len && text[k] != '>' && text[k] != '<')
            ++k;
        if (k >= len || text[k] == '<') {
            p = k;
            continue;
        }
        if (text[k - 1] != '/' && !isVoid(tag)) {
            open[tag].push_back(uint32_t(m_opens.size()));
            m_opens.push_back({q, 0});
        }
        p = k + 1;
    }
}

uint32_t HtmlTagIndex::closeFor(uint32_t pos) const
{
    const auto it = std::lower_bound(m_opens.begin(), m_opens.end(), pos,
                                     [](const Open &o, uint32_t v) { return o.pos < v; });
    return (it != m_opens.end() && it->pos == pos) ? it->closeEnd : 0;
}

} // namespace pmh
