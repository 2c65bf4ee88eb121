// The worker's side of highlighting: offsets in UTF-16 units, spans cut by
// line in the order styles apply, the outline and link look-up.
#include "highlight/HGParseResult.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

std::vector<HGElementSpan> ofType(const HGParseResult &r, pmh_element_type t)
{
    std::vector<HGElementSpan> out;
    for (const HGElementSpan &s : r.elements) {
        if (s.type == t)
            out.push_back(s);
    }
    return out;
}

} // namespace

TEST(ParseResult, OffsetsCountUtf16Units)
{
    // One emoji (two units) before the span moves it by two; a second one
    // inside moves its end once more.
    const auto r = HGParseResult::parseText(QString::fromUtf8("\xF0\x9F\x98\x80 *a\xF0\x9F\x98\x80*"), pmh_EXT_ALL);
    const auto emph = ofType(*r, pmh_EMPH);
    ASSERT_EQ(emph.size(), 1u);
    EXPECT_EQ(emph[0].start, 3);
    EXPECT_EQ(emph[0].end, 8);

    const HGParseResult::OffsetConverter conv(QString::fromUtf8("a\xF0\x9F\x98\x80" "b\xF0\x9F\x98\x80" "c"));
    const qsizetype expected[] = {0, 1, 3, 4, 6, 7};
    for (unsigned long cp = 0; cp < 6; ++cp)
        EXPECT_EQ(conv.utf16Offset(cp), expected[cp]) << cp;
    EXPECT_EQ(conv.utf16Offset(99), 7) << "past the end gives the length";
}

TEST(ParseResult, SeparatorsAndNulsKeepOffsets)
{
    const QString lf = QStringLiteral("# T\n\n*e*\n");
    QString ps = lf;
    ps.replace(QLatin1Char('\n'), QChar::ParagraphSeparator);
    const auto a = HGParseResult::parseText(lf, pmh_EXT_ALL);
    const auto b = HGParseResult::parseText(ps, pmh_EXT_ALL);
    ASSERT_EQ(a->elements.size(), b->elements.size());
    for (qsizetype i = 0; i < a->elements.size(); ++i) {
        EXPECT_EQ(a->elements[i].start, b->elements[i].start);
        EXPECT_EQ(a->elements[i].end, b->elements[i].end);
    }
    EXPECT_EQ(b->blockCount(), 4);

    QString withNul = QStringLiteral("x\n**b**");
    withNul[0] = QChar(0);
    const auto n = HGParseResult::parseText(withNul, pmh_EXT_ALL);
    const auto strong = ofType(*n, pmh_STRONG);
    ASSERT_EQ(strong.size(), 1u) << "a NUL does not end the text";
    EXPECT_EQ(strong[0].start, 2);
}

TEST(ParseResult, SpansCutByLineInApplicationOrder)
{
    const auto r = HGParseResult::parseText(QStringLiteral("> quote *em*\n> more\n\npara"), pmh_EXT_ALL);
    ASSERT_EQ(r->blockCount(), 4);
    const auto first = r->spansOfBlock(0);
    ASSERT_GE(first.size(), 2u);
    EXPECT_EQ(first[0].type, pmh_BLOCKQUOTE) << "blocks go on before inline spans";
    EXPECT_EQ(first[0].start, 0);
    EXPECT_EQ(first[0].length, 12) << "the piece stops at the line end";
    const auto emph = std::find_if(first.begin(), first.end(), [](const HGBlockSpan &s) { return s.type == pmh_EMPH; });
    ASSERT_NE(emph, first.end());
    EXPECT_EQ(emph->start, 8);
    const auto second = r->spansOfBlock(1);
    ASSERT_EQ(second.size(), 1u);
    EXPECT_EQ(second[0].type, pmh_BLOCKQUOTE);
    EXPECT_EQ(second[0].length, 6);
    EXPECT_TRUE(r->spansOfBlock(2).empty());
    EXPECT_TRUE(r->spansOfBlock(99).empty());

    // Code last: inside a fenced block nothing else shows.
    const auto order = HGParseResult::applicationOrder();
    const auto pos = [&](pmh_element_type t) { return std::find(order.begin(), order.end(), t) - order.begin(); };
    EXPECT_LT(pos(pmh_H1), pos(pmh_EMPH));
    EXPECT_LT(pos(pmh_EMPH), pos(pmh_CODE));
    EXPECT_EQ(pos(pmh_VERBATIM), long(order.size()) - 1);
}

TEST(ParseResult, OutlineAndLinks)
{
    const auto r = HGParseResult::parseText(
        QStringLiteral("# One #\n\nSetext two\n---\n\ntext [site](http://a.example/x) <http://b.example>\n\n### Three"), pmh_EXT_ALL);
    ASSERT_EQ(r->outline.size(), 3);
    EXPECT_EQ(r->outline[0].title, QStringLiteral("One"));
    EXPECT_EQ(r->outline[0].level, 1);
    EXPECT_EQ(r->outline[1].title, QStringLiteral("Setext two"));
    EXPECT_EQ(r->outline[1].level, 2);
    EXPECT_EQ(r->outline[1].blockNumber, 2);
    EXPECT_EQ(r->outline[2].title, QStringLiteral("Three"));
    EXPECT_EQ(r->outline[2].blockNumber, 7);

    const qsizetype link = r->outline[1].position + 16 + 6;
    EXPECT_EQ(r->linkAddressAt(link), QStringLiteral("http://a.example/x"));
    EXPECT_EQ(r->linkAddressAt(link + 30), QStringLiteral("http://b.example"));
    EXPECT_EQ(r->linkAddressAt(0), QString());
}
