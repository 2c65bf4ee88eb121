#include "EditingTestSupport.h"
#include "editor/ORVTextFinder.h"

#include <gtest/gtest.h>

using namespace editingtest;

namespace {

QRegularExpression pattern(const char *needle, ORVFindOptions o = {})
{
    const auto re = ORVTextFinder::patternFor(QString::fromUtf8(needle), o);
    EXPECT_TRUE(re.has_value()) << needle;
    return re.value_or(QRegularExpression());
}

} // namespace

TEST(TextFinder, FindsForwardBackwardAndAround)
{
    const QString text = QStringLiteral("cat Cat concat cat");
    const auto any = pattern("cat");
    EXPECT_EQ(ORVTextFinder::findNext(text, any, 0, false, true), ORVEditRange(0, 3));
    EXPECT_EQ(ORVTextFinder::findNext(text, any, 1, false, true), ORVEditRange(4, 3)) << "case-insensitive by default";
    EXPECT_EQ(ORVTextFinder::findNext(text, any, 16, false, true), ORVEditRange(0, 3)) << "wraps";
    EXPECT_EQ(ORVTextFinder::findNext(text, any, 16, false, false).location, ORVEditRange::kNotFound);
    EXPECT_EQ(ORVTextFinder::findNext(text, any, 15, true, true), ORVEditRange(11, 3)) << "backwards: ends before from";
    EXPECT_EQ(ORVTextFinder::findNext(text, any, 2, true, true), ORVEditRange(15, 3)) << "backwards wraps to the end";

    ORVFindOptions exact;
    exact.caseSensitive = true;
    exact.wholeWord = true;
    EXPECT_EQ(ORVTextFinder::countMatches(text, pattern("cat", exact)), 2);
    EXPECT_EQ(ORVTextFinder::countMatches(QStringLiteral("a.b a+b"), pattern("a.b")), 1) << "literal by default";

    ORVFindOptions regex;
    regex.regularExpression = true;
    EXPECT_EQ(ORVTextFinder::countMatches(QStringLiteral("a1 b22 c"), pattern("\\d+", regex)), 2);
    QString error;
    EXPECT_FALSE(ORVTextFinder::patternFor(QStringLiteral("(open"), regex, &error).has_value());
    EXPECT_TRUE(error.startsWith(QStringLiteral("Invalid regular expression")));
    EXPECT_FALSE(ORVTextFinder::patternFor(QString(), {}).has_value());
    EXPECT_EQ(ORVTextFinder::countMatches(QStringLiteral("abc"), pattern("x*", regex)), 0) << "empty matches skipped";
}

TEST(TextFinder, ReplacesWithTemplatesAsOneStep)
{
    ORVFindOptions regex;
    regex.regularExpression = true;
    ORVStringTextBuffer buffer = bufferFromMarked(QStringLiteral("|2024-03-09 and 1999-12-31, $5"));
    const auto dates = pattern("(\\d{4})-(\\d\\d)-(\\d\\d)", regex);
    EXPECT_EQ(ORVTextFinder::replaceAll(buffer, dates, QStringLiteral("$3.$2.\\1 ($$)"), true), 2);
    EXPECT_EQ(buffer.string(), QStringLiteral("09.03.2024 ($) and 31.12.1999 ($), $5"));
    EXPECT_TRUE(buffer.undo());
    EXPECT_FALSE(buffer.canUndo()) << "one step";
    EXPECT_EQ(ORVTextFinder::replaceAll(buffer, pattern("$5"), QStringLiteral("$1"), false), 1) << "literal replacement";
    EXPECT_TRUE(buffer.string().endsWith(QStringLiteral(", $1")));

    ORVStringTextBuffer one = bufferFromMarked(QStringLiteral("«cat» cat dog"));
    EXPECT_TRUE(ORVTextFinder::replaceSelectionAndFindNext(one, pattern("cat"), QStringLiteral("dog"), false, true));
    EXPECT_EQ(show(markedFromBuffer(one)), show(QStringLiteral("dog «cat» dog")));
    ORVStringTextBuffer other = bufferFromMarked(QStringLiteral("«ca»t cat"));
    EXPECT_FALSE(ORVTextFinder::replaceSelectionAndFindNext(other, pattern("cat"), QStringLiteral("dog"), false, true))
        << "a selection that is not a whole match stays";
    EXPECT_EQ(show(markedFromBuffer(other)), show(QStringLiteral("cat «cat»")));
}
