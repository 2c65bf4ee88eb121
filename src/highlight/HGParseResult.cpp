#include "highlight/HGParseResult.h"

#include "highlight/pmh_parser/pmh_parser.h"

#include <algorithm>

namespace {

struct ElementsDeleter {
    void operator()(pmh_element **elems) const { pmh_free_elements(elems); }
};

bool carriesAddress(pmh_element_type t)
{
    return t == pmh_LINK || t == pmh_IMAGE || t == pmh_AUTO_LINK_URL || t == pmh_AUTO_LINK_EMAIL || t == pmh_REFERENCE;
}

QString headingTitle(QStringView text)
{
    const qsizetype newline = text.indexOf(u'\n');
    QStringView line = (newline < 0 ? text : text.left(newline)).trimmed();
    while (line.startsWith(u'#'))
        line = line.mid(1);
    line = line.trimmed();
    // A closing run of marks ("## Title ##") is no part of the title.
    qsizetype end = line.size();
    while (end > 0 && line.at(end - 1) == u'#')
        --end;
    if (end < line.size() && (end == 0 || line.at(end - 1).isSpace()))
        line = line.left(end);
    return line.trimmed().toString();
}

} // namespace

const std::array<pmh_element_type, pmh_NUM_LANG_TYPES> &HGParseResult::applicationOrder()
{
    static const std::array<pmh_element_type, pmh_NUM_LANG_TYPES> order = {
        pmh_BLOCKQUOTE, pmh_HTMLBLOCK, pmh_COMMENT,     pmh_NOTE,        pmh_REFERENCE,   pmh_HRULE,
        pmh_LIST_BULLET, pmh_LIST_ENUMERATOR, pmh_H1,   pmh_H2,          pmh_H3,          pmh_H4,
        pmh_H5,         pmh_H6,        pmh_LINK,        pmh_AUTO_LINK_URL, pmh_AUTO_LINK_EMAIL, pmh_IMAGE,
        pmh_EMPH,       pmh_STRONG,    pmh_STRIKE,      pmh_MARK,        pmh_HTML,        pmh_HTML_ENTITY,
        pmh_CODE,       pmh_VERBATIM,
    };
    return order;
}

HGParseResult::OffsetConverter::OffsetConverter(QStringView text) : m_utf16Length(text.size())
{
    qsizetype pairs = 0;
    for (qsizetype i = 0; i + 1 < text.size(); ++i) {
        if (text.at(i).isHighSurrogate() && text.at(i + 1).isLowSurrogate()) {
            m_pairCodePoints.push_back(i - pairs);
            ++pairs;
            ++i;
        }
    }
    m_codePointLength = static_cast<unsigned long>(text.size() - pairs);
}

qsizetype HGParseResult::OffsetConverter::utf16Offset(unsigned long codePoint) const
{
    if (codePoint >= m_codePointLength)
        return m_utf16Length;
    const auto before = std::lower_bound(m_pairCodePoints.begin(), m_pairCodePoints.end(), qsizetype(codePoint));
    return qsizetype(codePoint) + (before - m_pairCodePoints.begin());
}

std::shared_ptr<const HGParseResult> HGParseResult::parseText(QString text, int extensions)
{
    auto result = std::make_shared<HGParseResult>();
    // The grammar reads "\n" line ends and a NUL-terminated text: a
    // paragraph separator becomes "\n" and a NUL a replacement character,
    // both one unit, so offsets stay the text's own.
    for (QChar &c : text) {
        if (c == QChar::ParagraphSeparator)
            c = QLatin1Char('\n');
        else if (c.unicode() == 0)
            c = QChar::ReplacementCharacter;
    }
    result->textLength = text.size();

    result->m_blockStarts.push_back(0);
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) == QLatin1Char('\n'))
            result->m_blockStarts.push_back(i + 1);
    }

    const QByteArray utf8 = text.toUtf8();
    pmh_element **raw = nullptr;
    pmh_markdown_to_elements(utf8.constData(), extensions, &raw);
    const std::unique_ptr<pmh_element *, ElementsDeleter> owner(raw);
    pmh_sort_elements_by_pos(raw);

    const OffsetConverter offsets(text);
    for (const pmh_element *e = raw[pmh_ALL]; e; e = e->all_next) {
        HGElementSpan span{e->type, offsets.utf16Offset(e->start), offsets.utf16Offset(e->end), QString()};
        if (carriesAddress(e->type) && e->address)
            span.address = QString::fromUtf8(e->address);
        result->elements.append(span);
        if (e->type >= pmh_H1 && e->type <= pmh_H6) {
            result->outline.append({int(e->type - pmh_H1) + 1, span.start, result->blockOf(span.start),
                                    headingTitle(QStringView(text).mid(span.start, span.end - span.start))});
        }
    }

    // Cut the spans by block, in application order, then group them by
    // block keeping that order (a counting sort is stable).
    struct Piece {
        int block;
        HGBlockSpan span;
    };
    std::vector<Piece> pieces;
    pieces.reserve(size_t(result->elements.size()) + result->m_blockStarts.size());
    for (const pmh_element_type type : applicationOrder()) {
        for (const pmh_element *e = raw[type]; e; e = e->next) {
            const qsizetype s = offsets.utf16Offset(e->start);
            const qsizetype end = offsets.utf16Offset(e->end);
            if (end <= s)
                continue;
            const int first = result->blockOf(s);
            const int last = result->blockOf(end - 1);
            for (int b = first; b <= last; ++b) {
                const qsizetype bs = result->blockStart(b);
                const qsizetype be = b + 1 < result->blockCount() ? result->blockStart(b + 1) - 1 : text.size();
                const qsizetype ps = qMax(s, bs);
                const qsizetype pe = qMin(end, be);
                if (pe > ps)
                    pieces.push_back({b, {type, qint32(ps - bs), qint32(pe - ps)}});
            }
        }
    }
    auto &offsetsOfBlocks = result->m_blockSpanOffsets;
    offsetsOfBlocks.assign(result->m_blockStarts.size() + 1, 0);
    for (const Piece &p : pieces)
        ++offsetsOfBlocks[size_t(p.block) + 1];
    for (size_t i = 1; i < offsetsOfBlocks.size(); ++i)
        offsetsOfBlocks[i] += offsetsOfBlocks[i - 1];
    result->m_blockSpans.resize(pieces.size());
    std::vector<quint32> fill(offsetsOfBlocks.begin(), offsetsOfBlocks.end() - 1);
    for (const Piece &p : pieces)
        result->m_blockSpans[fill[size_t(p.block)]++] = p.span;
    return result;
}

int HGParseResult::blockOf(qsizetype position) const
{
    const auto it = std::upper_bound(m_blockStarts.begin(), m_blockStarts.end(), position);
    return int(qMax<std::ptrdiff_t>(0, (it - m_blockStarts.begin()) - 1));
}

std::span<const HGBlockSpan> HGParseResult::spansOfBlock(int block) const
{
    if (block < 0 || size_t(block) + 1 >= m_blockSpanOffsets.size())
        return {};
    return std::span<const HGBlockSpan>(m_blockSpans.data() + m_blockSpanOffsets[size_t(block)],
                                        m_blockSpanOffsets[size_t(block) + 1] - m_blockSpanOffsets[size_t(block)]);
}

QString HGParseResult::linkAddressAt(qsizetype position) const
{
    // Elements are sorted by start; links never nest deeply, so looking back
    // from the last element that starts at or before `position` is short.
    auto it = std::upper_bound(elements.cbegin(), elements.cend(), position,
                               [](qsizetype p, const HGElementSpan &e) { return p < e.start; });
    QString found;
    while (it != elements.cbegin()) {
        --it;
        // Elements that start this far back are no link around `position`.
        constexpr qsizetype kLongestLink = 4096;
        if (position - it->start > kLongestLink)
            break;
        if (carriesAddress(it->type) && it->type != pmh_REFERENCE && !it->address.isEmpty() && position < it->end) {
            found = it->address;
            break;
        }
    }
    return found;
}
