#include "highlight/pmh_parser/pmh_inline_parser.h"

#include <algorithm>
#include <cstring>

namespace pmh {

namespace {

// Parentheses nest at most this deep in a link destination. Each unclosed
// "](" opens one more level for every destination scan that passes it, so
// the bound keeps a run of broken links from being read over and over.
constexpr int kMaxParenDepth = 32;
// An entity name or number is at most this long; the longest named one has 31 letters.
constexpr uint32_t kMaxEntityLength = 32;
// A URL scheme before "://" in angle brackets; registered schemes are short.
constexpr uint32_t kMaxSchemeLength = 32;

bool isEmailLocal(char c)
{
    return isAlnum(c) || (c != '\0' && std::strchr(".!#$%&'*+/=?^_`{|}~-", c) != nullptr);
}
bool isBareEmailChar(char c) { return isAlnum(c) || c == '.' || c == '+' || c == '-' || c == '_'; }
bool isAttributeNameChar(char c) { return isAlnum(c) || c == '_' || c == '.' || c == ':' || c == '-'; }
bool isUnquotedValueChar(char c)
{
    return !isWhite(c) && c != '"' && c != '\'' && c != '=' && c != '<' && c != '>' && c != '`';
}

int delimIndex(char c)
{
    switch (c) {
    case '*': return 0;
    case '_': return 1;
    case '~': return 2;
    default: return 3;
    }
}

} // namespace

InlineParser::InlineParser(ParserState &state) : m_state(state)
{
    for (const char c : {'\\', '`', '<', '&', '!', '[', ']', '*', '_'})
        m_special[static_cast<unsigned char>(c)] = true;
    m_special[static_cast<unsigned char>('^')] = state.has(pmh_EXT_NOTES);
    m_special[static_cast<unsigned char>('~')] = state.has(pmh_EXT_STRIKE);
    m_special[static_cast<unsigned char>('=')] = state.has(pmh_EXT_MARK);
    m_special[static_cast<unsigned char>('$')] = state.has(pmh_EXT_MATH);
    for (const char c : {':', '.', '@'})
        m_special[static_cast<unsigned char>(c)] = state.has(pmh_EXT_AUTOLINK);
}

void InlineParser::parseAll()
{
    const std::vector<RawItem> &raw = m_state.raw;
    const char *stripped = m_state.stripped();
    for (size_t i = 0; i < raw.size();) {
        size_t j = i + 1;
        while (j + 1 < raw.size() && raw[j].type == pmh_SEPARATOR)
            j += 2;
        TextView view;
        if (j == i + 1) {
            view.text = stripped + raw[i].top;
            view.len = raw[i].len;
            view.base = raw[i].top;
        } else {
            // Pieces of one text with prefixes between them: join them.
            m_joined.clear();
            m_pieces.clear();
            for (size_t k = i; k < j; k += 2) {
                m_pieces.push_back({uint32_t(m_joined.size()), raw[k].top, raw[k].len});
                m_joined.insert(m_joined.end(), stripped + raw[k].top, stripped + raw[k].top + raw[k].len);
            }
            view.text = m_joined.data();
            view.len = uint32_t(m_joined.size());
            view.pieces = m_pieces.data();
            view.pieceCount = uint32_t(m_pieces.size());
        }
        parseText(view);
        i = j;
    }
}

void InlineParser::parseText(const TextView &view)
{
    m_view = view;
    m_text = view.text;
    m_len = view.len;
    m_floor = 0;
    m_lastBracket = -1;
    m_delims.clear();
    m_brackets.clear();
    m_linkBarrier = 0;
    for (FindCache &c : m_codeClose)
        c.reset();
    for (FindCache &c : m_quoteClose)
        c.reset();
    m_mathClose.reset();
    m_commentClose.reset();

    const char *t = m_text;
    uint32_t i = 0;
    while (i < m_len) {
        if (!m_special[static_cast<unsigned char>(t[i])]) {
            ++i;
            continue;
        }
        switch (t[i]) {
        case '\\':
            if (isAsciiPunct(at(i + 1))) {
                i += 2;
                m_floor = i;
            } else {
                ++i;
            }
            break;
        case '`':
            i = codeSpan(i);
            break;
        case '$':
            i = math(i);
            break;
        case '<':
            i = angleBracket(i);
            break;
        case '&':
            i = entity(i);
            break;
        case '!':
        case '^':
            if (at(i + 1) == '[') {
                m_brackets.push_back({i, int32_t(m_delims.size()) - 1,
                                      t[i] == '!' ? BracketKind::Image : BracketKind::InlineNote});
                m_lastBracket = i + 1;
                i += 2;
            } else {
                ++i;
            }
            break;
        case '[':
            m_brackets.push_back({i, int32_t(m_delims.size()) - 1, BracketKind::Link});
            m_lastBracket = i;
            ++i;
            break;
        case ']':
            i = closeBracket(i);
            break;
        case '*':
        case '_':
        case '~':
        case '=':
            i = delimiterRun(i);
            break;
        case ':':
            i = bareUrl(i);
            break;
        case '.':
            i = bareWww(i);
            break;
        case '@':
            i = bareEmail(i);
            break;
        default:
            ++i;
            break;
        }
    }
    processEmphasis(-1);
}

pmh_element *InlineParser::add(pmh_element_type type, uint32_t start, uint32_t end)
{
    return m_state.addElement(type, m_view.top(start), m_view.topEnd(end));
}

char *InlineParser::copy(uint32_t start, uint32_t end)
{
    return m_state.copyInput(m_view.top(start), m_view.topEnd(end));
}

// A run of 1 to 5 backticks, closed by a run of the same length.
uint32_t InlineParser::codeSpan(uint32_t i)
{
    const char *t = m_text;
    uint32_t j = i;
    while (j < m_len && t[j] == '`')
        ++j;
    const uint32_t run = j - i;
    if (run > 5)
        return j;
    const uint32_t close = m_codeClose[run - 1].find(j, [&](uint32_t from) {
        while (from < m_len) {
            const void *hit = std::memchr(t + from, '`', m_len - from);
            if (!hit)
                break;
            const uint32_t q = uint32_t(static_cast<const char *>(hit) - t);
            uint32_t r = q;
            while (r < m_len && t[r] == '`')
                ++r;
            if (r - q == run)
                return q;
            from = r;
        }
        return m_len;
    });
    if (close >= m_len)
        return j;
    add(pmh_CODE, i, close + run);
    return m_floor = close + run;
}

// "$$" up to the next unescaped "$$": math, coloured as code.
uint32_t InlineParser::math(uint32_t i)
{
    if (at(i + 1) != '$')
        return i + 1;
    const char *t = m_text;
    const uint32_t close = m_mathClose.find(i + 2, [&](uint32_t from) {
        while (from < m_len) {
            const void *hit = std::memchr(t + from, '$', m_len - from);
            if (!hit)
                break;
            const uint32_t q = uint32_t(static_cast<const char *>(hit) - t);
            if (q + 1 < m_len && t[q + 1] == '$' && t[q - 1] != '\\')
                return q;
            from = q + 1;
        }
        return m_len;
    });
    if (close >= m_len)
        return i + 2;
    add(pmh_CODE, i, close + 2);
    return m_floor = close + 2;
}

// A comment, an autolink or a tag.
uint32_t InlineParser::angleBracket(uint32_t i)
{
    const char *t = m_text;
    if (at(i + 1) == '!' && at(i + 2) == '-' && at(i + 3) == '-') {
        const uint32_t close = m_commentClose.find(i + 4, [&](uint32_t from) {
            return findString(t, from, m_len, "-->", 3);
        });
        if (close >= m_len)
            return i + 1;
        add(pmh_HTML, i, close + 3);
        return m_floor = close + 3;
    }

    const uint32_t j = i + 1;
    if (isAlpha(at(j))) {
        // <scheme://...>
        uint32_t s = j;
        while (s < m_len && s - j < kMaxSchemeLength && (isAlnum(t[s]) || t[s] == '+' || t[s] == '.' || t[s] == '-'))
            ++s;
        if (at(s) == ':' && at(s + 1) == '/' && at(s + 2) == '/') {
            uint32_t e = s + 3;
            while (e < m_len && !isWhite(t[e]) && t[e] != '<' && t[e] != '>' && static_cast<unsigned char>(t[e]) >= 0x20)
                ++e;
            if (at(e) == '>' && e > s + 3) {
                pmh_element *link = add(pmh_AUTO_LINK_URL, i, e + 1);
                link->address = copy(j, e);
                return m_floor = e + 1;
            }
        }
    }
    {
        // <address@domain> or <mailto:address@domain>
        uint32_t a = j;
        if (m_len - j > 7 && strncasecmp(t + j, "mailto:", 7) == 0)
            a += 7;
        uint32_t l = a;
        while (l < m_len && isEmailLocal(t[l]))
            ++l;
        if (l > a && at(l) == '@') {
            uint32_t d = l + 1;
            while (d < m_len && (isAlnum(t[d]) || t[d] == '-' || t[d] == '.'))
                ++d;
            if (d > l + 1 && at(d) == '>') {
                pmh_element *link = add(pmh_AUTO_LINK_EMAIL, i, d + 1);
                link->address = copy(j, d);
                return m_floor = d + 1;
            }
        }
    }
    return htmlTag(i);
}

// <name attr="value" ...>, <name/> or </name>.
uint32_t InlineParser::htmlTag(uint32_t i)
{
    const char *t = m_text;
    uint32_t k = i + 1;
    const bool closing = at(k) == '/';
    if (closing)
        ++k;
    if (!isAlpha(at(k)))
        return i + 1;
    while (k < m_len && (isAlnum(t[k]) || t[k] == '-'))
        ++k;
    uint32_t end = 0;
    while (!end) {
        uint32_t w = k;
        while (w < m_len && isWhite(t[w]))
            ++w;
        if (at(w) == '>') {
            end = w + 1;
        } else if (!closing && at(w) == '/' && at(w + 1) == '>') {
            end = w + 2;
        } else {
            // An attribute, after white space.
            if (closing || w == k || !(isAlpha(at(w)) || at(w) == '_' || at(w) == ':'))
                return i + 1;
            k = w + 1;
            while (k < m_len && isAttributeNameChar(t[k]))
                ++k;
            uint32_t v = k;
            while (v < m_len && isWhite(t[v]))
                ++v;
            if (at(v) != '=')
                continue;
            ++v;
            while (v < m_len && isWhite(t[v]))
                ++v;
            const char q = at(v);
            if (q == '"' || q == '\'') {
                FindCache &cache = m_quoteClose[q == '"' ? 0 : 1];
                const uint32_t close = cache.find(v + 1, [&](uint32_t from) {
                    const void *hit = from < m_len ? std::memchr(t + from, q, m_len - from) : nullptr;
                    return hit ? uint32_t(static_cast<const char *>(hit) - t) : m_len;
                });
                if (close >= m_len)
                    return i + 1;
                k = close + 1;
            } else {
                uint32_t u = v;
                while (u < m_len && isUnquotedValueChar(t[u]))
                    ++u;
                if (u == v)
                    return i + 1;
                k = u;
            }
        }
    }
    add(pmh_HTML, i, end);
    return m_floor = end;
}

// &name; &#123; &#x1F600;
uint32_t InlineParser::entity(uint32_t i)
{
    uint32_t j = i + 1;
    if (at(j) == '#')
        ++j;
    const uint32_t nameStart = j;
    while (j < m_len && isAlnum(m_text[j]) && j - nameStart < kMaxEntityLength)
        ++j;
    if (j == nameStart || at(j) != ';')
        return i + 1;
    add(pmh_HTML_ENTITY, i, j + 1);
    return m_floor = j + 1;
}

// A run of * or _, or exactly two ~ or =. Whether it may open or close
// depends on what stands on both sides: a run before a word opens, one
// after a word closes. Underscores are stricter, as they render: they open
// only after white space, and a single one closes only before white space,
// so that snake_case, (_x_) and _x_. stay text.
uint32_t InlineParser::delimiterRun(uint32_t i)
{
    const char *t = m_text;
    const char c = t[i];
    uint32_t j = i;
    while (j < m_len && t[j] == c)
        ++j;
    if ((c == '~' || c == '=') && j - i != 2)
        return j;
    const char before = i > 0 ? t[i - 1] : '\n';
    const char after = at(j);
    const bool beforeWhite = isWhite(before), afterWhite = isWhite(after);
    const bool beforePunct = isAsciiPunct(before), afterPunct = isAsciiPunct(after);
    const bool leftFlanking = !afterWhite && (!afterPunct || beforeWhite || beforePunct);
    const bool rightFlanking = !beforeWhite && (!beforePunct || afterWhite || afterPunct);
    bool canOpen = leftFlanking, canClose = rightFlanking;
    if (c == '_') {
        canOpen = leftFlanking && beforeWhite;
        canClose = rightFlanking && (afterWhite || (j - i >= 2 && afterPunct));
    }
    if (canOpen || canClose) {
        const int32_t index = int32_t(m_delims.size());
        if (index > 0)
            m_delims.back().next = index;
        m_delims.push_back({i, j, index - 1, -1, c, canOpen, canClose, uint8_t((j - i) % 3)});
    }
    return j;
}

void InlineParser::unlink(int32_t d)
{
    const Delim &x = m_delims[size_t(d)];
    if (x.prev >= 0)
        m_delims[size_t(x.prev)].next = x.next;
    if (x.next >= 0)
        m_delims[size_t(x.next)].prev = x.prev;
}

// Pairs the delimiters above `bottom`, innermost first, and drops them.
// openersBottom remembers, for each kind of closer, below which delimiter
// no opener for it was found, so a failed search is never repeated and the
// whole pass is linear.
void InlineParser::processEmphasis(int32_t bottom)
{
    int32_t openersBottom[4][2][3];
    std::fill(&openersBottom[0][0][0], &openersBottom[0][0][0] + 24, bottom);
    int32_t cur = bottom + 1 < int32_t(m_delims.size()) ? bottom + 1 : -1;
    while (cur >= 0) {
        Delim &c = m_delims[size_t(cur)];
        if (!c.canClose) {
            cur = c.next;
            continue;
        }
        int32_t &floorFor = openersBottom[delimIndex(c.ch)][c.canOpen ? 1 : 0][c.runMod3];
        int32_t o = c.prev;
        for (; o > bottom && o > floorFor; o = m_delims[size_t(o)].prev) {
            const Delim &d = m_delims[size_t(o)];
            if (d.ch != c.ch || !d.canOpen)
                continue;
            // A run that can both open and close pairs only when the two
            // runs' lengths do not add up to a multiple of 3 (unless both
            // are), so that *a**b* is not read as *a* *b*.
            const bool emphasis = c.ch == '*' || c.ch == '_';
            if (emphasis && (d.canClose || c.canOpen) && (d.runMod3 + c.runMod3) % 3 == 0
                && !(d.runMod3 == 0 && c.runMod3 == 0))
                continue;
            break;
        }
        if (o > bottom && o > floorFor) {
            Delim &d = m_delims[size_t(o)];
            uint32_t use = 2;
            if (c.ch == '*' || c.ch == '_')
                use = (d.hi - d.lo >= 2 && c.hi - c.lo >= 2) ? 2 : 1;
            pmh_element_type type = use == 2 ? pmh_STRONG : pmh_EMPH;
            if (c.ch == '~')
                type = pmh_STRIKE;
            else if (c.ch == '=')
                type = pmh_MARK;
            d.hi -= use;
            add(type, d.hi, c.lo + use);
            c.lo += use;
            // Delimiters between the two are spent: they stay text.
            d.next = cur;
            c.prev = o;
            if (d.hi == d.lo)
                unlink(o);
            if (c.lo == c.hi) {
                const int32_t next = c.next;
                unlink(cur);
                cur = next;
            }
        } else {
            floorFor = c.prev;
            const int32_t next = c.next;
            if (!c.canOpen)
                unlink(cur);
            cur = next;
        }
    }
    m_delims.resize(size_t(bottom + 1));
    if (bottom >= 0)
        m_delims[size_t(bottom)].next = -1;
}

bool InlineParser::isLabelText(uint32_t from, uint32_t to) const
{
    if (to <= from || to - from > kMaxLabelLength)
        return false;
    for (uint32_t k = from; k < to; ++k)
        if (!isWhite(m_text[k]))
            return true;
    return false;
}

uint32_t InlineParser::closeBracket(uint32_t i)
{
    const int64_t previousBracket = m_lastBracket;
    m_lastBracket = i;
    if (m_brackets.empty())
        return i + 1;
    const Bracket b = m_brackets.back();
    const bool inactive = b.kind == BracketKind::Link && m_brackets.size() - 1 < m_linkBarrier;
    m_brackets.pop_back();
    m_linkBarrier = std::min(m_linkBarrier, m_brackets.size());
    if (inactive)
        return i + 1;

    if (b.kind == BracketKind::InlineNote) {
        add(pmh_NOTE, b.pos, i + 1);
        processEmphasis(b.delimTop);
        return m_floor = i + 1;
    }

    const uint32_t textStart = b.pos + (b.kind == BracketKind::Link ? 1 : 2);
    // The text between the brackets can be a label when it holds no bracket.
    const bool labelText = previousBracket < int64_t(textStart) && isLabelText(textStart, i);

    if (b.kind == BracketKind::Link && m_state.hasNotes() && labelText && m_text[textStart] == '^'
        && i > textStart + 1) {
        m_state.labelKey(m_view, textStart + 1, i, m_key);
        if (m_state.hasNote(m_key)) {
            pmh_element *note = add(pmh_NOTE, b.pos, i + 1);
            note->label = copy(textStart + 1, i);
            processEmphasis(b.delimTop);
            return m_floor = i + 1;
        }
    }

    uint32_t end = 0, destStart = 0, destEnd = 0, labelFrom = 0, labelTo = 0;
    char *address = nullptr;
    if (at(i + 1) == '(' && inlineLink(i + 1, end, destStart, destEnd)) {
        address = copy(destStart, destEnd);
    } else if (m_state.hasReferences()) {
        if (at(i + 1) == '[') {
            // [text][label], or [text][] with the text as label.
            uint32_t k = i + 2;
            while (k < m_len && m_text[k] != ']' && m_text[k] != '[' && k - (i + 2) <= kMaxLabelLength)
                k += (m_text[k] == '\\' && k + 1 < m_len) ? 2 : 1;
            if (at(k) == ']') {
                if (k == i + 2) {
                    if (labelText) {
                        labelFrom = textStart;
                        labelTo = i;
                    }
                } else if (isLabelText(i + 2, k)) {
                    labelFrom = i + 2;
                    labelTo = k;
                }
                if (labelTo > labelFrom) {
                    m_state.labelKey(m_view, labelFrom, labelTo, m_key);
                    if ((address = m_state.referenceAddress(m_key))) {
                        end = k + 1;
                        m_lastBracket = k;
                    }
                }
            }
        }
        if (!end && labelText) {
            // [label] alone.
            m_state.labelKey(m_view, textStart, i, m_key);
            if ((address = m_state.referenceAddress(m_key))) {
                end = i + 1;
                labelFrom = textStart;
                labelTo = i;
            }
        }
    }
    if (!end)
        return i + 1;

    pmh_element *link = add(b.kind == BracketKind::Image ? pmh_IMAGE : pmh_LINK, b.pos, end);
    link->address = address;
    if (labelTo > labelFrom)
        link->label = copy(labelFrom, labelTo);
    processEmphasis(b.delimTop);
    if (b.kind == BracketKind::Link)
        m_linkBarrier = m_brackets.size();
    return m_floor = end;
}

// "(" destination, optional title, ")": the part of an inline link after
// its text. The destination is <…> or a run without white space whose
// parentheses balance.
bool InlineParser::inlineLink(uint32_t paren, uint32_t &end, uint32_t &destStart, uint32_t &destEnd)
{
    const char *t = m_text;
    uint32_t k = paren + 1;
    while (k < m_len && isWhite(t[k]))
        ++k;
    if (at(k) == '<') {
        destStart = ++k;
        while (k < m_len && t[k] != '>' && t[k] != '<' && t[k] != '\n')
            k += (t[k] == '\\' && k + 1 < m_len) ? 2 : 1;
        if (at(k) != '>')
            return false;
        destEnd = k++;
    } else {
        destStart = k;
        int depth = 0;
        while (k < m_len) {
            const char c = t[k];
            if (c == '\\' && isAsciiPunct(at(k + 1))) {
                k += 2;
                continue;
            }
            if (c == '(') {
                if (++depth > kMaxParenDepth)
                    return false;
            } else if (c == ')') {
                if (depth == 0)
                    break;
                --depth;
            } else if (isWhite(c) || static_cast<unsigned char>(c) < 0x20) {
                break;
            }
            ++k;
        }
        if (depth != 0)
            return false;
        destEnd = k;
    }
    uint32_t w = k;
    while (w < m_len && isWhite(t[w]))
        ++w;
    const char open = at(w);
    if ((w > k || destEnd == destStart) && (open == '"' || open == '\'' || open == '(')) {
        const uint32_t close = findUnescaped(open == '(' ? ')' : open, w + 1);
        if (close >= m_len)
            return false;
        w = close + 1;
        while (w < m_len && isWhite(t[w]))
            ++w;
    }
    if (at(w) != ')')
        return false;
    end = w + 1;
    return true;
}

// The next c at or after `from` that no backslash escapes, or m_len.
uint32_t InlineParser::findUnescaped(char c, uint32_t from)
{
    const char *t = m_text;
    FindCache &cache = m_quoteClose[c == '"' ? 0 : c == '\'' ? 1 : 2];
    for (;;) {
        const uint32_t q = cache.find(from, [&](uint32_t p) {
            const void *hit = p < m_len ? std::memchr(t + p, c, m_len - p) : nullptr;
            return hit ? uint32_t(static_cast<const char *>(hit) - t) : m_len;
        });
        if (q >= m_len)
            return m_len;
        uint32_t slashes = 0;
        while (q - slashes > from && t[q - slashes - 1] == '\\')
            ++slashes;
        if (slashes % 2 == 0)
            return q;
        from = q + 1;
    }
}

// The end of a bare URL: up to white space or '<', without trailing
// punctuation or a ')' that closes nothing in the URL.
uint32_t InlineParser::urlEnd(uint32_t from) const
{
    const char *t = m_text;
    uint32_t e = from;
    int opened = 0, closed = 0;
    while (e < m_len && !isWhite(t[e]) && t[e] != '<' && static_cast<unsigned char>(t[e]) >= 0x20) {
        opened += t[e] == '(';
        closed += t[e] == ')';
        ++e;
    }
    while (e > from) {
        const char c = t[e - 1];
        if (c == ')' && closed > opened) {
            --closed;
        } else if (!(c != '\0' && std::strchr(".,:;!?\"'*_~", c))) {
            break;
        }
        --e;
    }
    return e;
}

// http://, https:// or ftp:// before a host with a dot.
uint32_t InlineParser::bareUrl(uint32_t colon)
{
    const char *t = m_text;
    if (!m_brackets.empty() || at(colon + 1) != '/' || at(colon + 2) != '/')
        return colon + 1;
    uint32_t s = colon;
    while (s > m_floor && colon - s < 5 && isAlpha(t[s - 1]))
        --s;
    const uint32_t schemeLen = colon - s;
    const bool known = (schemeLen == 4 && strncasecmp(t + s, "http", 4) == 0)
                       || (schemeLen == 5 && strncasecmp(t + s, "https", 5) == 0)
                       || (schemeLen == 3 && strncasecmp(t + s, "ftp", 3) == 0);
    if (!known || (s > 0 && isAlnum(t[s - 1])))
        return colon + 1;
    const uint32_t hostStart = colon + 3;
    const uint32_t e = urlEnd(hostStart);
    uint32_t hostEnd = hostStart;
    while (hostEnd < e && t[hostEnd] != '/' && t[hostEnd] != '?' && t[hostEnd] != '#')
        ++hostEnd;
    const void *dot = hostEnd > hostStart + 1 ? std::memchr(t + hostStart + 1, '.', hostEnd - hostStart - 1) : nullptr;
    if (!dot || static_cast<const char *>(dot) + 1 >= t + hostEnd)
        return colon + 1;
    pmh_element *link = add(pmh_AUTO_LINK_URL, s, e);
    link->address = copy(s, e);
    return m_floor = e;
}

// www. at the start of a word.
uint32_t InlineParser::bareWww(uint32_t dot)
{
    const char *t = m_text;
    if (!m_brackets.empty() || dot < m_floor + 3 || std::memcmp(t + dot - 3, "www", 3) != 0)
        return dot + 1;
    const uint32_t s = dot - 3;
    if (s > 0 && (isAlnum(t[s - 1]) || t[s - 1] == '.' || t[s - 1] == '/' || t[s - 1] == '@' || t[s - 1] == ':'))
        return dot + 1;
    if (!isAlnum(at(dot + 1)))
        return dot + 1;
    const uint32_t e = urlEnd(dot + 1);
    pmh_element *link = add(pmh_AUTO_LINK_URL, s, e);
    link->address = copy(s, e);
    return m_floor = e;
}

// name@domain.tld
uint32_t InlineParser::bareEmail(uint32_t atSign)
{
    const char *t = m_text;
    if (!m_brackets.empty())
        return atSign + 1;
    uint32_t s = atSign;
    while (s > m_floor && isBareEmailChar(t[s - 1]))
        --s;
    while (s < atSign && !isAlnum(t[s]))
        ++s;
    if (s == atSign)
        return atSign + 1;
    uint32_t e = atSign + 1;
    while (e < m_len && (isAlnum(t[e]) || t[e] == '-' || t[e] == '_' || t[e] == '.'))
        ++e;
    while (e > atSign + 1 && !isAlnum(t[e - 1]))
        --e;
    const void *dot = e > atSign + 2 ? std::memchr(t + atSign + 2, '.', e - atSign - 2) : nullptr;
    if (!dot)
        return atSign + 1;
    pmh_element *link = add(pmh_AUTO_LINK_EMAIL, s, e);
    link->address = copy(s, e);
    return m_floor = e;
}

} // namespace pmh
