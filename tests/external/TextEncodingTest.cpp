#include "library/textEncoding.h"

#include <gtest/gtest.h>

using namespace ORVStringEncoding;

namespace {

// A text with a BMP letter, a character outside the BMP, CRLF and a tab,
// so every encoding has surrogates, multi-byte forms and line ends to keep.
const QString kSample = QString::fromUtf8("Caf\xC3\xA9 \xF0\x9F\x98\x80\r\n\tend");

struct Case {
    const char *name;
    std::uint32_t encoding;
    bool bom;
};

} // namespace

TEST(TextEncoding, EveryEncodingReadsAndWritesBackByteForByte)
{
    const Case cases[] = {
        {"UTF-8", UTF8, false},           {"UTF-8 with BOM", UTF8, true},
        {"UTF-16LE", UTF16LittleEndian, true}, {"UTF-16BE", UTF16BigEndian, true},
        {"UTF-32LE", UTF32LittleEndian, true}, {"UTF-32BE", UTF32BigEndian, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const auto bytes = encodeStringWithEncoding(kSample, c.encoding, c.bom);
        ASSERT_TRUE(bytes);
        const auto decoded = stringWithDataUsedEncoding(*bytes);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(decoded->text, kSample); // the mark is not part of the text
        EXPECT_EQ(decoded->encoding, c.encoding);
        EXPECT_EQ(decoded->hasByteOrderMark, c.bom);
        EXPECT_EQ(encodeStringWithEncoding(decoded->text, decoded->encoding, decoded->hasByteOrderMark), *bytes);
    }
    // The byte order marks themselves, as files carry them.
    EXPECT_TRUE(encodeStringWithEncoding(QStringLiteral("a"), UTF16LittleEndian, true)->startsWith("\xFF\xFE"));
    EXPECT_TRUE(encodeStringWithEncoding(QStringLiteral("a"), UTF32BigEndian, true)->startsWith(QByteArray("\x00\x00\xFE\xFF", 4)));
}

TEST(TextEncoding, UTF32MarkIsNotTakenForUTF16)
{
    // FF FE 00 00 starts with the UTF-16LE mark too.
    const QByteArray utf32 = *encodeStringWithEncoding(QStringLiteral("ab"), UTF32LittleEndian, true);
    EXPECT_EQ(byteOrderMarkOfData(utf32).encoding, UTF32LittleEndian);
    EXPECT_EQ(stringWithDataUsedEncoding(utf32)->text, QStringLiteral("ab"));
}

TEST(TextEncoding, WellFormedUTF8IsStrict)
{
    const auto ok = [](const QByteArray &b) { return isWellFormedUTF8(b.constData(), b.size()); };
    EXPECT_TRUE(ok(""));
    EXPECT_TRUE(ok("plain ascii long enough to take the eight byte path"));
    EXPECT_TRUE(ok("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"));
    EXPECT_FALSE(ok("\xC0\x80"));         // overlong NUL
    EXPECT_FALSE(ok("\xE0\x80\xAF"));     // overlong slash
    EXPECT_FALSE(ok("\xED\xA0\x80"));     // a surrogate
    EXPECT_FALSE(ok("\xF4\x90\x80\x80")); // above U+10FFFF
    EXPECT_FALSE(ok("\xF5\x80\x80\x80"));
    EXPECT_FALSE(ok("abc\xE2\x82"));      // cut at the end
    EXPECT_FALSE(ok("12345678\xA9"));     // a lone continuation after the fast path
}

TEST(TextEncoding, UndeclaredDataGuess)
{
    EXPECT_EQ(encodingOfUndeclaredData(QByteArray()), UTF8);
    EXPECT_EQ(encodingOfUndeclaredData("plain"), UTF8); // ASCII is well-formed UTF-8 first
    // Only the first 200 bytes are looked at: a bad byte after them still
    // guesses UTF-8, which then fails to convert.
    const QByteArray lateBad = QByteArray(300, 'a') + "\xFF";
    EXPECT_EQ(encodingOfUndeclaredData(lateBad), UTF8);
    EXPECT_FALSE(decodeTextWithEncodingDetection(lateBad));
    // A character cut by the 200-byte window is no reason to give up UTF-8.
    const QByteArray cut = QByteArray(199, 'a') + "\xC3\xA9";
    EXPECT_EQ(encodingOfUndeclaredData(cut), UTF8);
    EXPECT_EQ(decodeTextWithEncodingDetection(cut)->text.size(), 200);
    // A NUL ends the look: what comes before it decides.
    EXPECT_EQ(encodingOfUndeclaredData(QByteArray("ab\0\xFF\xFE", 5)), UTF8);
    // Marks decide when the head is not UTF-8; the conversion may still fail.
    EXPECT_EQ(encodingOfUndeclaredData(QByteArray("\xFF\xFE\x00\x00\x41", 5)), UTF32LittleEndian);
    EXPECT_EQ(encodingOfUndeclaredData(QByteArray("\xFE\xFF\x00", 3)), UTF16BigEndian);
    EXPECT_FALSE(decodeTextWithEncodingDetection(QByteArray("\xFE\xFF\x00", 3))); // odd length
    // Latin-1 bytes are not guessed: they give UTF-8, and no text.
    EXPECT_EQ(encodingOfUndeclaredData("caf\xE9"), UTF8);
    EXPECT_FALSE(decodeTextWithEncodingDetection("caf\xE9"));
}

TEST(TextEncoding, StrictDecodingAndUnrepresentableText)
{
    EXPECT_FALSE(decodeStringWithEncoding(QByteArray("\x00\x11\x00\x00", 4), UTF32BigEndian)); // above U+10FFFF
    EXPECT_FALSE(decodeStringWithEncoding(QByteArray("\x00\xD8\x00\x00", 4), UTF32LittleEndian)); // a surrogate
    EXPECT_FALSE(decodeStringWithEncoding("caf\xE9", ASCII));
    EXPECT_FALSE(decodeStringWithEncoding("x", 0x1234));
    EXPECT_FALSE(encodeStringWithEncoding(QStringLiteral("caf\u00e9"), ASCII));
    EXPECT_EQ(*encodeStringWithEncoding(QStringLiteral("cafe"), ASCII), QByteArray("cafe"));
    // UTF-16 carries a lone surrogate as it is; UTF-32 cannot.
    const QString lone(QChar(0xD800));
    EXPECT_EQ(decodeStringWithEncoding(*encodeStringWithEncoding(lone, UTF16BigEndian), UTF16BigEndian)->text, lone);
    EXPECT_EQ(*encodeStringWithEncoding(lone, UTF32BigEndian), QByteArray("\x00\x00\xFF\xFD", 4));
}
