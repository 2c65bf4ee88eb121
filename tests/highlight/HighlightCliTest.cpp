#include "support/TestEnv.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

// `orvo highlight` end to end: the line and JSON forms, UTF-16 offsets, and
// refusals with the right exit codes.

using orvotest::runOrvo;

TEST(HighlightCli, PrintsOneSpanPerLineInCodePointsOrUtf16)
{
    const QByteArray text = "# Title\n\n\xF0\x9F\x98\x80 *a* [b](http://c.d)\n";
    const QString path = orvotest::tempHome() + QStringLiteral("/doc.md");
    ASSERT_TRUE(orvotest::writeFile(path, text));

    QByteArray out, err;
    ASSERT_EQ(runOrvo({QStringLiteral("highlight"), path}, &out, &err), 0) << err.constData();
    EXPECT_EQ(out, "H1 0 7\nEMPH 11 14\nLINK 15 30\n");

    // From standard input, in UTF-16 units: the emoji is a surrogate pair.
    ASSERT_EQ(runOrvo({QStringLiteral("highlight"), QStringLiteral("-"), QStringLiteral("--utf16")}, &out, &err, text), 0);
    EXPECT_EQ(out, "H1 0 7\nEMPH 12 15\nLINK 16 31\n");
}

TEST(HighlightCli, JsonCarriesAddressesAndLabels)
{
    QByteArray out;
    ASSERT_EQ(runOrvo({QStringLiteral("highlight"), QStringLiteral("--json")}, &out, nullptr,
                      "[x][r]\n\n[r]: /target\n"),
              0);
    const QJsonArray spans = QJsonDocument::fromJson(out).array();
    ASSERT_EQ(spans.size(), 2);
    const QJsonObject link = spans[0].toObject();
    EXPECT_EQ(link.value(QStringLiteral("type")).toString(), QStringLiteral("LINK"));
    EXPECT_EQ(link.value(QStringLiteral("start")).toInt(), 0);
    EXPECT_EQ(link.value(QStringLiteral("end")).toInt(), 6);
    EXPECT_EQ(link.value(QStringLiteral("label")).toString(), QStringLiteral("r"));
    EXPECT_EQ(link.value(QStringLiteral("address")).toString(), QStringLiteral("/target"));
    EXPECT_EQ(spans[1].toObject().value(QStringLiteral("type")).toString(), QStringLiteral("REFERENCE"));
}

TEST(HighlightCli, EmptyInputPrintsNothing)
{
    QByteArray out;
    EXPECT_EQ(runOrvo({QStringLiteral("highlight")}, &out), 0);
    EXPECT_TRUE(out.isEmpty());
}

TEST(HighlightCli, RefusesWhatItCannotRead)
{
    QByteArray err;
    EXPECT_EQ(runOrvo({QStringLiteral("highlight"), orvotest::tempHome() + QStringLiteral("/missing.md")}, nullptr, &err), 1);
    EXPECT_TRUE(err.startsWith("orvo: ")) << err.constData();

    // A NUL would cut the text short: refused rather than half reported.
    EXPECT_EQ(runOrvo({QStringLiteral("highlight")}, nullptr, &err, QByteArray("a\0*b*", 5)), 1);
    EXPECT_TRUE(err.contains("NUL")) << err.constData();

    EXPECT_EQ(runOrvo({QStringLiteral("highlight"), QStringLiteral("--bogus")}, nullptr, &err), 2);
    EXPECT_EQ(runOrvo({QStringLiteral("highlight"), QStringLiteral("a"), QStringLiteral("b")}, nullptr, &err), 2);
}
