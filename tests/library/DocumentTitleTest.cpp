#include "library/document_title.h"
#include "support/TestEnv.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(DocumentTitle, OnlyTheLeadingRunOfHashesAndOneSpaceGo)
{
    EXPECT_EQ(documentTitleRemoveMark(QString()), QString());
    EXPECT_EQ(documentTitleRemoveMark(QStringLiteral("Plain # title")), QStringLiteral("Plain # title"));
    EXPECT_EQ(documentTitleRemoveMark(QStringLiteral("# title")), QStringLiteral("title"));
    EXPECT_EQ(documentTitleRemoveMark(QStringLiteral("#title")), QStringLiteral("title"));
    EXPECT_EQ(documentTitleRemoveMark(QStringLiteral("###  two spaces ##")), QStringLiteral(" two spaces ##"));
    EXPECT_EQ(documentTitleRemoveMark(QStringLiteral("### ")), QString());
    EXPECT_EQ(documentTitleRemoveMark(QStringLiteral("####")), QString());
}

TEST(DocumentTitle, TitleIsTheFirstParagraphAndTheSummaryTheRest)
{
    const auto t = documentTitleAndSummaryWithContent(QStringLiteral("# Garden\nbeans\nand peas"));
    EXPECT_EQ(t.title, QStringLiteral("Garden"));
    EXPECT_EQ(t.summary, QStringLiteral("beans and peas"));
    const auto empty = documentTitleAndSummaryWithContent(QStringLiteral("\nbody"));
    EXPECT_EQ(empty.title, QString()); // an empty first line is an empty title
    EXPECT_EQ(empty.summary, QStringLiteral("body"));
    EXPECT_EQ(documentTitleAndSummaryWithContent(QStringLiteral("# Only")).summary, QString());
}

TEST(DocumentTitle, ReadingStopsEarlyAndDropsLinesThatAreNotUTF8)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("17000000001234.md"));
    QByteArray content = "# Title\n\xff\xfe broken\n";
    for (int i = 0; i < 20; ++i)
        content += "line " + QByteArray::number(i) + "\n";
    ASSERT_TRUE(orvotest::writeFile(path, content));
    const QString text = readFileContentWithPathMaxLineLenth(path);
    EXPECT_FALSE(text.contains(QStringLiteral("broken")));
    EXPECT_TRUE(text.contains(QStringLiteral("line 12\n")));
    EXPECT_FALSE(text.contains(QStringLiteral("line 13"))); // 14 lines: the title and 13 more
    EXPECT_EQ(documentTitleAndSummaryWithFile(path).title, QStringLiteral("Title"));

    ASSERT_TRUE(orvotest::writeFile(path, QByteArray(200, 'a') + "\n" + QByteArray(100, 'b') + "\nnever read\n"));
    EXPECT_EQ(readFileContentWithPathMaxLineLenth(path).size(), 302); // stops once past 250 characters
    EXPECT_EQ(readFileContentWithPathMaxLineLenth(dir.filePath(QStringLiteral("missing.md"))), QString());
}
