// Sort keys of titles, reading the start of files, and decoding text of
// unknown encoding.
#include "library/ORVListDataItem.h"
#include "library/document_title.h"
#include "library/text_file.h"
#include "support/TestEnv.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(SortTitle, ZeroRunsAndLeadingZerosCountForNothing)
{
    const auto key = &ORVListDataItem::stringByWellToDigitSortString;
    EXPECT_EQ(key(QStringLiteral("v007 and 000 and 0")), QStringLiteral("v00000007 and 000 and 0"));
    // Zero runs do not use up the seven padded runs.
    EXPECT_EQ(key(QStringLiteral("0-1-2-3-4-5-6-7-8")),
              QStringLiteral("0-00000001-00000002-00000003-00000004-00000005-00000006-00000007-8"));
    // Too long for 64 bits: kept as written, never wrapped around.
    EXPECT_EQ(key(QStringLiteral("99999999999999999999")), QStringLiteral("99999999999999999999"));
    EXPECT_EQ(key(QString()), QString());
}

TEST(SortTitle, TheStartOfAFileReadsTheSameFromDiskAndFromMemory)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.md"));
    const QList<QByteArray> contents = {
        QByteArray("# Title\nline\n"),
        QByteArray("no newline at the end"),
        QByteArray("# T\n\xff\xfe bad line\nafter\n"),
        QByteArray(5000, 'x') + "\nsecond\n",           // one line longer than a read chunk
        QByteArray(),
        []() {
            QByteArray b;
            for (int i = 0; i < 40; ++i)
                b += "line " + QByteArray::number(i) + "\n";
            return b;
        }(),
    };
    for (const QByteArray &content : contents) {
        ASSERT_TRUE(orvotest::writeFile(path, content));
        EXPECT_EQ(readFileContentWithPathMaxLineLenth(path), readFileContentWithBytesMaxLineLenth(content))
            << content.left(40).constData();
        if (content.isValidUtf8()) {
            EXPECT_EQ(readFileContentWithTextMaxLineLenth(QString::fromUtf8(content)),
                      readFileContentWithBytesMaxLineLenth(content))
                << content.left(40).constData();
        }
    }
    EXPECT_EQ(readFileContentWithBytesMaxLineLenth(QByteArray(5000, 'x') + "\nsecond\n").size(), 5001);
}

TEST(TextFile, EncodingsAreDetectedAndBinaryIsNotText)
{
    EXPECT_EQ(decodeTextDetectingEncoding(QByteArray("\xEF\xBB\xBFh\xC3\xA9")), QStringLiteral("hé"));
    EXPECT_EQ(decodeTextDetectingEncoding(QByteArray("h\xC3\xA9")), QStringLiteral("hé"));
    EXPECT_EQ(decodeTextDetectingEncoding(QByteArray("\xFF\xFEh\0i\0", 6)), QStringLiteral("hi"));
    EXPECT_EQ(decodeTextDetectingEncoding(QByteArray("\xFE\xFF\0h\0i", 6)), QStringLiteral("hi"));
    EXPECT_EQ(decodeTextDetectingEncoding(QByteArray("#\0 \0T\0i\0t\0l\0e\0", 14)), QStringLiteral("# Title"));
    // Not UTF-8: Windows Latin 1, with its printable 0x80-0x9F.
    EXPECT_EQ(decodeTextDetectingEncoding(QByteArray("caf\xE9 \x80 \x93quoted\x94")),
              QString::fromUtf8("café € “quoted”"));
    EXPECT_EQ(decodeTextDetectingEncoding(QByteArray("\x7F" "ELF\x02\x01\x01\0\0\0\0\xff\xfe", 14)), std::nullopt);
    EXPECT_EQ(decodeTextDetectingEncoding(QByteArray()), QString());
    EXPECT_EQ(readTextFileDetectingEncoding(QStringLiteral("/nonexistent/file.md")), std::nullopt);
}
