#include "highlight/pmh_parser/pmh_block_parser.h"

#include "highlight/pmh_parser/pmh_html_tag_index.h"

#include <cstring>

namespace pmh {

namespace {

// Containers (block quotes, list items, notes) nest at most this deep. Each
// level reads its text again, so the depth bounds the work per input byte;
// markers deeper than this stay paragraph text. Real documents nest a few
// levels.
constexpr int kMaxContainerDepth = 16;

} // namespace

struct BlockParser::Line {
    uint32_t start;     // its first byte
    uint32_t end;       // the newline that ends it, or the carriage return before it
    uint32_t first;     // first byte that is not a space or tab; == end when blank
    uint32_t indent;    // columns before `first`, a tab going to the next multiple of 4
    uint32_t nextStart; // just after the newline

    bool blank() const { return first == end; }
    uint32_t next() const { return nextStart; }
};

// A text being parsed for blocks: the stripped text itself, or a container's
// joined text. Its last line is always blank (the appended "\n\n", or a
// newline added after a container's lines), so every line ends with a
// newline before len.
struct BlockParser::Source {
    char *text = nullptr;
    uint32_t len = 0;
    TextView view;
    std::vector<Piece> pieces;
    int depth = 0;
    FindCache commentClose;
    std::unique_ptr<HtmlTagIndex> tags;

    Line line(uint32_t p) const
    {
        Line l;
        l.start = p;
        uint32_t col = 0, q = p;
        for (; q < len; ++q) {
            if (text[q] == ' ')
                ++col;
            else if (text[q] == '\t')
                col = (col + 4) & ~3u;
            else
                break;
        }
        l.first = q;
        l.indent = col;
        uint32_t nl = q;
        if (q >= len || text[q] != '\n') {
            const void *hit = q < len ? std::memchr(text + q, '\n', len - q) : nullptr;
            nl = hit ? uint32_t(static_cast<const char *>(hit) - text) : len;
        }
        l.nextStart = nl + 1;
        l.end = (nl > q && text[nl - 1] == '\r') ? nl - 1 : nl;
        return l;
    }
    // `to` without the spaces and tabs before it, but not before `from`.
    uint32_t trimEnd(uint32_t from, uint32_t to) const
    {
        while (to > from && isBlank(text[to - 1]))
            --to;
        return to;
    }
    uint32_t contentEnd(const Line &l) const { return trimEnd(l.first, l.end); }
    // Where the line's text starts once up to `columns` columns of
    // indentation are taken off; a tab that crosses the limit goes whole.
    uint32_t stripColumns(const Line &l, uint32_t columns) const
    {
        uint32_t col = 0, q = l.start;
        while (q < l.first && col < columns) {
            col = text[q] == '\t' ? (col + 4) & ~3u : col + 1;
            ++q;
        }
        return q;
    }
};

namespace {

// 3 or more of one of *, - and _, with spaces between, and nothing else.
template <class L>
bool isRuleLine(const char *t, const L &l)
{
    if (l.indent > 3)
        return false;
    const char c = t[l.first];
    if (c != '*' && c != '-' && c != '_')
        return false;
    int count = 0;
    for (uint32_t q = l.first; q < l.end; ++q) {
        if (t[q] == c)
            ++count;
        else if (!isBlank(t[q]))
            return false;
    }
    return count >= 3;
}

// The run length of a fence opening the line, or 0. A line whose info text
// holds a run of three fence characters is inline code, not a fence.
template <class L>
uint32_t fenceOpener(const char *t, const L &l)
{
    if (l.indent > 3)
        return 0;
    const char c = t[l.first];
    if (c != '`' && c != '~')
        return 0;
    uint32_t q = l.first;
    while (q < l.end && t[q] == c)
        ++q;
    const uint32_t run = q - l.first;
    if (run < 3)
        return 0;
    for (uint32_t same = 0; q < l.end; ++q) {
        same = t[q] == c ? same + 1 : 0;
        if (same >= 3)
            return 0;
    }
    return run;
}

// Up to 3 spaces, exactly `run` of c, then only spaces.
template <class L>
bool isFenceCloser(const char *t, const L &l, char c, uint32_t run)
{
    if (l.indent > 3 || t[l.first] != c)
        return false;
    uint32_t q = l.first;
    while (q < l.end && t[q] == c)
        ++q;
    if (q - l.first != run)
        return false;
    while (q < l.end && isBlank(t[q]))
        ++q;
    return q == l.end;
}

// Whether text[from, end) starts with up to 3 spaces and a run of 3 or more
// backticks or tildes: the cheap test a list item uses to know that its
// lines are inside a fence.
bool startsFence(const char *t, uint32_t from, uint32_t end)
{
    uint32_t q = from;
    while (q < end && q - from < 3 && t[q] == ' ')
        ++q;
    const char c = q < end ? t[q] : '\0';
    if (c != '`' && c != '~')
        return false;
    uint32_t r = q;
    while (r < end && t[r] == c)
        ++r;
    return r - q >= 3;
}

// 1 for a line of '=', 2 for a line of two or more '-', else 0.
template <class L>
int underlineLevel(const char *t, const L &l)
{
    if (l.blank() || l.indent > 3)
        return 0;
    const char c = t[l.first];
    if (c != '=' && c != '-')
        return 0;
    uint32_t q = l.first;
    while (q < l.end && t[q] == c)
        ++q;
    const uint32_t run = q - l.first;
    while (q < l.end && isBlank(t[q]))
        ++q;
    if (q != l.end)
        return 0;
    return c == '=' ? 1 : (run >= 2 ? 2 : 0);
}

template <class L>
bool isQuoteLine(const char *t, const L &l)
{
    return l.indent <= 3 && t[l.first] == '>';
}

// A list marker followed by a space or tab: *, + or -, or digits and '.'.
template <class L>
bool listMarker(const char *t, const L &l, uint32_t &markerEnd, pmh_element_type &type)
{
    if (l.indent > 3)
        return false;
    uint32_t q = l.first;
    const char c = t[q];
    if (c == '*' || c == '+' || c == '-') {
        ++q;
        type = pmh_LIST_BULLET;
    } else if (isDigit(c)) {
        while (q < l.end && isDigit(t[q]))
            ++q;
        if (t[q] != '.')
            return false;
        ++q;
        type = pmh_LIST_ENUMERATOR;
    } else {
        return false;
    }
    if (q >= l.end || !isBlank(t[q]))
        return false;
    markerEnd = q;
    return true;
}

// A title that takes the rest of the line: "…", '…' or (…).
bool titleToLineEnd(const char *t, uint32_t from, uint32_t end)
{
    const char open = t[from];
    const char close = open == '(' ? ')' : open;
    if (open != '"' && open != '\'' && open != '(')
        return false;
    while (end > from && isBlank(t[end - 1]))
        --end;
    return end - from >= 2 && t[end - 1] == close;
}

} // namespace

BlockParser::BlockParser(ParserState &state) : m_state(state)
{
    for (int i = 0; i <= kMaxContainerDepth; ++i)
        m_sources.push_back(std::make_unique<Source>());
    m_ranges.resize(kMaxContainerDepth + 1);
}

BlockParser::~BlockParser() = default;

void BlockParser::parseDocument()
{
    Source &doc = *m_sources[0];
    doc.text = m_state.stripped();
    doc.view = m_state.documentView();
    doc.len = doc.view.len;
    doc.depth = 0;
    parseBlocks(doc);
}

void BlockParser::parseBlocks(Source &src)
{
    uint32_t p = 0;
    while (p < src.len) {
        const Line line = src.line(p);
        p = line.blank() ? line.next() : parseBlock(src, line);
    }
}

// The rules in the order they are tried; the first that holds takes its lines.
uint32_t BlockParser::parseBlock(Source &src, const Line &line)
{
    const char c = src.text[line.first];
    uint32_t next = 0;
    if (line.indent == 0 && c == '#')
        return atxHeading(src, line);
    if (line.indent == 0 && c == '<' && (htmlBlock(src, line, next) || commentBlock(src, line, next)))
        return next;
    if (line.indent >= 4)
        return verbatim(src, line);
    if (c == '[' && (noteDefinition(src, line, true, next) || referenceDefinition(src, line, true, next)))
        return next;
    if (isRuleLine(src.text, line))
        return horizontalRule(src, line);
    if (fencedCode(src, line, next))
        return next;
    const bool canNest = src.depth < kMaxContainerDepth;
    if (canNest && c == '>')
        return blockQuote(src, line);
    if (canNest && listItem(src, line, next))
        return next;
    if (setextHeading(src, line, next))
        return next;
    return paragraph(src, line);
}

uint32_t BlockParser::atxHeading(Source &src, const Line &line)
{
    const char *t = src.text;
    uint32_t q = line.first;
    int level = 0;
    while (q < line.end && t[q] == '#' && level < 6) {
        ++q;
        ++level;
    }
    const uint32_t end = src.contentEnd(line);
    uint32_t textStart = q;
    while (textStart < end && isBlank(t[textStart]))
        ++textStart;
    // A closing run of '#' after a space is not part of the text.
    uint32_t textEnd = end;
    uint32_t closing = end;
    while (closing > textStart && t[closing - 1] == '#')
        --closing;
    if (closing < end && (closing == textStart || isBlank(t[closing - 1])))
        textEnd = src.trimEnd(textStart, closing);
    add(pmh_element_type(pmh_H1 + level - 1), src, line.first, end);
    addRaw(src, textStart, textEnd);
    return line.next();
}

bool BlockParser::htmlBlock(Source &src, const Line &line, uint32_t &next)
{
    const char *t = src.text;
    const uint32_t nameStart = line.first + 1;
    uint32_t nameEnd = nameStart;
    while (nameEnd < line.end && isAlnum(t[nameEnd]))
        ++nameEnd;
    const int tag = HtmlTagIndex::blockTag(t + nameStart, nameEnd - nameStart);
    if (tag < 0)
        return false;
    const char after = t[nameEnd];
    if (!isWhite(after) && after != '>' && after != '/')
        return false;
    // The open tag may run over several lines, but not past another '<'.
    uint32_t gt = nameEnd;
    while (gt < src.len && t[gt] != '>' && t[gt] != '<')
        ++gt;
    if (gt >= src.len || t[gt] != '>')
        return false;
    uint32_t end = gt + 1;
    if (t[gt - 1] != '/' && !HtmlTagIndex::isVoid(tag)) {
        if (!src.tags)
            src.tags = std::make_unique<HtmlTagIndex>(t, line.first, src.len);
        end = src.tags->closeFor(line.first);
        if (!end)
            return false;
    }
    // The block takes the rest of the line its end tag is on.
    const Line last = src.line(end);
    add(pmh_HTMLBLOCK, src, line.first, src.trimEnd(line.first, last.end));
    next = last.next();
    return true;
}

bool BlockParser::commentBlock(Source &src, const Line &line, uint32_t &next)
{
    const char *t = src.text;
    if (line.end - line.first < 4 || std::memcmp(t + line.first, "<!--", 4) != 0)
        return false;
    const uint32_t close = src.commentClose.find(line.first + 4, [&](uint32_t from) {
        return findString(t, from, src.len, "-->", 3);
    });
    if (close >= src.len)
        return false;
    // Only white space may follow on its line; otherwise the comment is
    // inline HTML in a paragraph.
    const Line last = src.line(close);
    if (src.contentEnd(last) != close + 3)
        return false;
    add(pmh_COMMENT, src, line.first, close + 3);
    next = last.next();
    return true;
}

bool BlockParser::noteDefinition(Source &src, const Line &line, bool addIt, uint32_t &next)
{
    const char *t = src.text;
    if (!m_state.has(pmh_EXT_NOTES) || line.indent > 3 || t[line.first] != '[' || t[line.first + 1] != '^')
        return false;
    const uint32_t idStart = line.first + 2;
    uint32_t idEnd = idStart;
    while (idEnd < line.end && t[idEnd] != ']')
        ++idEnd;
    if (idEnd >= line.end || idEnd == idStart || t[idEnd + 1] != ':')
        return false;
    if (!addIt)
        return true;
    if (src.depth >= kMaxContainerDepth)
        return false;

    // The text after "]:", then lines indented by 4 columns and the blank
    // lines between them.
    std::vector<Range> &ranges = rangesFor(src);
    uint32_t content = idEnd + 2;
    while (content < line.end && isBlank(t[content]))
        ++content;
    ranges.push_back({content, line.next()});
    size_t kept = ranges.size();
    uint32_t lastEnd = src.contentEnd(line);
    next = line.next();
    for (uint32_t p = next; p < src.len;) {
        const Line m = src.line(p);
        if (m.blank()) {
            ranges.push_back({m.end, m.next()});
            p = m.next();
            continue;
        }
        if (m.indent < 4)
            break;
        ranges.push_back({src.stripColumns(m, 4), m.next()});
        kept = ranges.size();
        lastEnd = src.contentEnd(m);
        p = next = m.next();
    }
    ranges.resize(kept);

    pmh_element *note = add(pmh_NOTE, src, line.first, lastEnd);
    note->label = m_state.copyInput(src.view.top(idStart), src.view.topEnd(idEnd));
    m_state.labelKey(src.view, idStart, idEnd, m_key);
    m_state.addNote(m_key);
    parseContainer(src, ranges, line.start);
    return true;
}

bool BlockParser::referenceDefinition(Source &src, const Line &line, bool addIt, uint32_t &next)
{
    const char *t = src.text;
    if (line.indent > 3 || t[line.first] != '[')
        return false;
    const uint32_t labelStart = line.first + 1;
    uint32_t labelEnd = labelStart;
    bool hasText = false;
    for (; labelEnd < line.end && t[labelEnd] != ']'; ++labelEnd) {
        if (t[labelEnd] == '[' || labelEnd - labelStart > kMaxLabelLength)
            return false;
        if (t[labelEnd] == '\\' && labelEnd + 1 < line.end)
            ++labelEnd;
        hasText |= !isBlank(t[labelEnd]);
    }
    if (labelEnd >= line.end || !hasText || t[labelEnd + 1] != ':')
        return false;

    // The destination, on this line or the next.
    Line destLine = line;
    uint32_t d = labelEnd + 2;
    while (d < destLine.end && isBlank(t[d]))
        ++d;
    if (d == destLine.end) {
        if (destLine.next() >= src.len)
            return false;
        destLine = src.line(destLine.next());
        if (destLine.blank())
            return false;
        d = destLine.first;
    }
    uint32_t destStart = d, destEnd;
    if (t[d] == '<') {
        destStart = d + 1;
        destEnd = destStart;
        while (destEnd < destLine.end && t[destEnd] != '>' && t[destEnd] != '<')
            ++destEnd;
        if (destEnd >= destLine.end || t[destEnd] != '>' || destEnd == destStart)
            return false;
        d = destEnd + 1;
    } else {
        while (d < destLine.end && !isBlank(t[d]))
            ++d;
        destEnd = d;
    }

    // An optional title after white space, ending its line: on the same line
    // or alone on the next.
    Line endLine = destLine;
    uint32_t w = d;
    while (w < destLine.end && isBlank(t[w]))
        ++w;
    if (w < destLine.end) {
        if (w == d || !titleToLineEnd(t, w, destLine.end))
            return false;
    } else if (destLine.next() < src.len) {
        const Line titleLine = src.line(destLine.next());
        if (!titleLine.blank() && titleToLineEnd(t, titleLine.first, titleLine.end))
            endLine = titleLine;
    }

    next = endLine.next();
    if (!addIt)
        return true;
    pmh_element *ref = add(pmh_REFERENCE, src, line.first, src.contentEnd(endLine));
    ref->label = m_state.copyInput(src.view.top(labelStart), src.view.topEnd(labelEnd));
    ref->address = m_state.copyInput(src.view.top(destStart), src.view.topEnd(destEnd));
    m_state.labelKey(src.view, labelStart, labelEnd, m_key);
    m_state.addReference(m_key, ref->address);
    return true;
}

uint32_t BlockParser::horizontalRule(Source &src, const Line &line)
{
    add(pmh_HRULE, src, line.first, src.contentEnd(line));
    return line.next();
}

bool BlockParser::fencedCode(Source &src, const Line &line, uint32_t &next)
{
    const char *t = src.text;
    const uint32_t run = fenceOpener(t, line);
    if (!run)
        return false;
    const char c = t[line.first];
    // A fence left open runs to the end of its container, as it renders.
    uint32_t lastEnd = src.contentEnd(line);
    next = src.len;
    for (uint32_t p = line.next(); p < src.len;) {
        const Line m = src.line(p);
        if (!m.blank())
            lastEnd = src.contentEnd(m);
        if (isFenceCloser(t, m, c, run)) {
            next = m.next();
            break;
        }
        p = m.next();
    }
    add(pmh_VERBATIM, src, line.start, lastEnd);
    return true;
}

uint32_t BlockParser::blockQuote(Source &src, const Line &first)
{
    const char *t = src.text;
    std::vector<Range> &ranges = rangesFor(src);
    uint32_t lastEnd = first.first;
    uint32_t next = first.next();
    Line l = first;
    for (;;) {
        if (isQuoteLine(t, l)) {
            uint32_t c = l.first + 1;
            if (c < l.end && t[c] == ' ')
                ++c;
            ranges.push_back({c, l.next()});
            lastEnd = src.contentEnd(l);
        } else if (!l.blank()) {
            // A lazy line: any text line continues the quote.
            ranges.push_back({l.start, l.next()});
            lastEnd = src.contentEnd(l);
        } else if (l.next() < src.len && isQuoteLine(t, src.line(l.next()))) {
            // A blank line stays inside when the quote goes on after it.
            ranges.push_back({l.end, l.next()});
        } else {
            break;
        }
        next = l.next();
        if (next >= src.len)
            break;
        l = src.line(next);
    }
    add(pmh_BLOCKQUOTE, src, first.first, lastEnd);
    parseContainer(src, ranges, first.start);
    return next;
}

uint32_t BlockParser::verbatim(Source &src, const Line &line)
{
    uint32_t lastEnd = src.contentEnd(line);
    uint32_t next = line.next();
    for (uint32_t p = next; p < src.len;) {
        const Line m = src.line(p);
        if (!m.blank()) {
            if (m.indent < 4)
                break;
            lastEnd = src.contentEnd(m);
            next = m.next();
        }
        p = m.next();
    }
    add(pmh_VERBATIM, src, line.start, lastEnd);
    return next;
}

bool BlockParser::listItem(Source &src, const Line &line, uint32_t &next)
{
    const char *t = src.text;
    uint32_t markerEnd = 0;
    pmh_element_type type = pmh_LIST_BULLET;
    if (!listMarker(t, line, markerEnd, type))
        return false;

    // The item's text starts after the marker and its spaces; its other
    // lines give up the indentation up to that column, so that a sublist
    // indented under the text nests. Five spaces or more after the marker
    // start indented code, as in rendering, so the column is then the
    // marker's end plus one.
    uint32_t content = markerEnd;
    while (content < line.end && isBlank(t[content]))
        ++content;
    uint32_t markerCol = line.indent + (markerEnd - line.first);
    uint32_t contentCol = markerCol;
    for (uint32_t q = markerEnd; q < content; ++q)
        contentCol = t[q] == '\t' ? (contentCol + 4) & ~3u : contentCol + 1;
    if (content == line.end || contentCol - markerCol > 4) {
        contentCol = markerCol + 1;
        content = std::min(markerEnd + 1, line.end);
    }

    std::vector<Range> &ranges = rangesFor(src);
    ranges.push_back({content, line.next()});
    size_t kept = ranges.size();
    bool inFence = startsFence(t, content, line.end);
    bool afterBlank = false;
    next = line.next();
    for (uint32_t p = next; p < src.len;) {
        const Line m = src.line(p);
        if (m.blank()) {
            ranges.push_back({m.end, m.next()});
            afterBlank = true;
            p = m.next();
            continue;
        }
        if (afterBlank && m.indent == 0)
            break;
        uint32_t dummy;
        pmh_element_type dummyType;
        if (!inFence && m.indent <= line.indent && (listMarker(t, m, dummy, dummyType) || isRuleLine(t, m)))
            break;
        const uint32_t from = src.stripColumns(m, contentCol);
        ranges.push_back({from, m.next()});
        kept = ranges.size();
        if (startsFence(t, from, m.end))
            inFence = !inFence;
        afterBlank = false;
        p = next = m.next();
    }
    ranges.resize(kept);
    add(type, src, line.first, markerEnd);
    parseContainer(src, ranges, line.start);
    return true;
}

bool BlockParser::setextHeading(Source &src, const Line &line, uint32_t &next)
{
    if (line.next() >= src.len)
        return false;
    const Line under = src.line(line.next());
    const int level = underlineLevel(src.text, under);
    if (!level)
        return false;
    add(level == 1 ? pmh_H1 : pmh_H2, src, line.first, src.contentEnd(under));
    addRaw(src, line.first, src.contentEnd(line));
    next = under.next();
    return true;
}

uint32_t BlockParser::paragraph(Source &src, const Line &line)
{
    const char *t = src.text;
    uint32_t lastEnd = src.contentEnd(line);
    uint32_t p = line.next();
    while (p < src.len) {
        const Line m = src.line(p);
        if (m.blank() || interruptsParagraph(src, m))
            break;
        // A line with an underline below starts a heading: the paragraph
        // ends before it.
        const uint32_t below = m.next();
        if (below < src.len) {
            uint32_t q = below;
            while (q < src.len && q - below < 3 && t[q] == ' ')
                ++q;
            if (q < src.len && (t[q] == '=' || t[q] == '-') && underlineLevel(t, src.line(below)))
                break;
        }
        lastEnd = src.contentEnd(m);
        p = m.next();
    }
    addRaw(src, line.first, lastEnd);
    return p;
}

bool BlockParser::interruptsParagraph(Source &src, const Line &line)
{
    const char *t = src.text;
    const char c = t[line.first];
    if (line.indent == 0 && c == '#')
        return true;
    if (line.indent > 3)
        return false;
    uint32_t dummy = 0;
    switch (c) {
    case '>':
        return true;
    case '*':
    case '-':
    case '_':
        if (isRuleLine(t, line))
            return true;
        break;
    case '`':
    case '~':
        return fenceOpener(t, line) != 0;
    case '[':
        // Definitions are taken out of the text around them, as in rendering.
        return noteDefinition(src, line, false, dummy) || referenceDefinition(src, line, false, dummy);
    default:
        break;
    }
    // A list interrupts a paragraph from the first column only, and a
    // numbered one only with a single digit: "2024. was a year" is text.
    if (line.indent == 0) {
        const char after = t[line.first + 1];
        if ((c == '*' || c == '+' || c == '-') && isBlank(after))
            return true;
        if (isDigit(c) && after == '.' && isBlank(t[line.first + 2]))
            return true;
    }
    return false;
}

std::vector<BlockParser::Range> &BlockParser::rangesFor(const Source &src)
{
    std::vector<Range> &ranges = m_ranges[size_t(src.depth)];
    ranges.clear();
    return ranges;
}

void BlockParser::parseContainer(Source &src, const std::vector<Range> &ranges, uint32_t containerStart)
{
    Source &child = *m_sources[size_t(src.depth) + 1];
    uint32_t total = 0;
    for (const Range &r : ranges)
        total += r.second - r.first;
    char *dst;
    if (src.depth == 0) {
        if (m_scratchSize < total + 1) {
            m_scratchSize = std::max(total + 1, m_scratchSize * 2);
            m_scratch.reset(new char[m_scratchSize]);
        }
        dst = m_scratch.get();
    } else {
        // Every line gave up at least its marker, so the joined text and its
        // final newline fit where the lines were; writing never passes reading.
        dst = src.text + containerStart;
    }
    child.pieces.clear();
    // The ranges go forward, so the parent's piece of each is found by
    // walking its pieces once rather than searching for every line.
    const Piece *parentPiece = src.view.pieces;
    const Piece *parentEnd = src.view.pieces + src.view.pieceCount;
    uint32_t at = 0;
    for (const Range &r : ranges) {
        const uint32_t len = r.second - r.first;
        std::memmove(dst + at, src.text + r.first, len);
        uint32_t top = src.view.base + r.first;
        if (parentPiece) {
            while (parentPiece + 1 < parentEnd && parentPiece[1].at <= r.first)
                ++parentPiece;
            top = parentPiece->top + (r.first - parentPiece->at);
        }
        if (!child.pieces.empty() && child.pieces.back().top + child.pieces.back().len == top)
            child.pieces.back().len += len;
        else
            child.pieces.push_back({at, top, len});
        at += len;
    }
    dst[at] = '\n'; // extra text: the blank line every source ends with
    child.text = dst;
    child.len = at + 1;
    child.depth = src.depth + 1;
    child.view = TextView{dst, child.len, 0, child.pieces.data(), uint32_t(child.pieces.size())};
    child.commentClose.reset();
    child.tags.reset();
    parseBlocks(child);
}

pmh_element *BlockParser::add(pmh_element_type type, const Source &src, uint32_t start, uint32_t end)
{
    return m_state.addElement(type, src.view.top(start), src.view.topEnd(end));
}

void BlockParser::addRaw(const Source &src, uint32_t start, uint32_t end)
{
    if (start >= end)
        return;
    std::vector<RawItem> &raw = m_state.raw;
    const TextView &v = src.view;
    if (!v.pieceCount) {
        raw.push_back({pmh_RAW, v.base + start, end - start});
        return;
    }
    // One pmh_RAW per piece the text covers, pmh_SEPARATOR between them;
    // pieces that touch in the stripped text are one.
    const Piece *p = std::upper_bound(v.pieces, v.pieces + v.pieceCount, start,
                                      [](uint32_t pos, const Piece &piece) { return pos < piece.at; });
    if (p != v.pieces)
        --p;
    bool first = true;
    uint32_t lastTopEnd = 0;
    for (; p < v.pieces + v.pieceCount && p->at < end; ++p) {
        const uint32_t lo = std::max(start, p->at);
        const uint32_t hi = std::min(end, p->at + p->len);
        if (lo >= hi)
            continue;
        const uint32_t top = p->top + (lo - p->at);
        if (!first && top == lastTopEnd) {
            raw.back().len += hi - lo;
        } else {
            if (!first)
                raw.push_back({pmh_SEPARATOR, 0, 0});
            raw.push_back({pmh_RAW, top, hi - lo});
        }
        lastTopEnd = top + (hi - lo);
        first = false;
    }
}

} // namespace pmh
