#pragma once

#include "highlight/pmh_parser/pmh_definitions.h"

#include <QList>
#include <QString>

#include <array>
#include <memory>
#include <span>
#include <vector>

// One element found in the editor's text, in UTF-16 units.
struct HGElementSpan {
    pmh_element_type type;
    qsizetype start;
    qsizetype end; // exclusive
    QString address; // links, images, references: the destination
};

// A heading of the text, for the document outline and scroll sync.
struct HGOutlineItem {
    int level;        // 1 to 6
    qsizetype position;
    int blockNumber;  // the line (text block) it starts on
    QString title;    // the heading's text without its marks
};

// A piece of an element that lies in one block (line), relative to it.
struct HGBlockSpan {
    pmh_element_type type;
    qint32 start;
    qint32 length;
};

// The result of one parse of the editor's text: what the highlight grammar
// found, with offsets turned into UTF-16 units, and the same spans cut by
// line, so that styling a range of lines costs only those lines.
//
// Made by parseText on the highlighter's worker thread and read-only after
// that; shared with the main thread by a shared pointer.
class HGParseResult
{
public:
    // The order in which element styles are applied, later ones over
    // earlier ones: blocks first, then line marks and headings, then inline
    // spans, code last, so that what is inside code looks like code.
    static const std::array<pmh_element_type, pmh_NUM_LANG_TYPES> &applicationOrder();

    // Parses `text` (lines end with "\n" or U+2029, as a text document
    // holds them) with the grammar's extension word.
    static std::shared_ptr<const HGParseResult> parseText(QString text, int extensions);

    // convertOffsets: UTF-16 offset of every code point offset of `text`,
    // one more for each surrogate pair before it. Offsets past the text
    // give the text's length.
    class OffsetConverter
    {
    public:
        explicit OffsetConverter(QStringView text);
        qsizetype utf16Offset(unsigned long codePoint) const;

    private:
        std::vector<qsizetype> m_pairCodePoints; // code point index of each surrogate pair
        qsizetype m_utf16Length;
        unsigned long m_codePointLength;
    };

    qsizetype textLength = 0;
    // Every element, sorted by start (ties in the order found).
    QList<HGElementSpan> elements;
    QList<HGOutlineItem> outline;

    int blockCount() const { return int(m_blockStarts.size()); }
    qsizetype blockStart(int block) const { return m_blockStarts.at(size_t(block)); }
    // The block holding `position`.
    int blockOf(qsizetype position) const;
    // The pieces of elements inside block `block`, in application order.
    std::span<const HGBlockSpan> spansOfBlock(int block) const;

    // The destination of the link, image or automatic link at `position`
    // ("" when there is none).
    QString linkAddressAt(qsizetype position) const;

private:
    std::vector<qsizetype> m_blockStarts;
    std::vector<quint32> m_blockSpanOffsets; // blockCount() + 1 entries
    std::vector<HGBlockSpan> m_blockSpans;
};
