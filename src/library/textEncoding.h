#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

// Text encodings of documents, by the values the rest of the program stores
// (a document's `documentStringEncoding`): 0 means not known.
namespace ORVStringEncoding {
constexpr std::uint32_t Unknown = 0;
constexpr std::uint32_t ASCII = 1;
constexpr std::uint32_t UTF8 = 4;
constexpr std::uint32_t UTF16BigEndian = 0x90000100;
constexpr std::uint32_t UTF16LittleEndian = 0x94000100;
constexpr std::uint32_t UTF32BigEndian = 0x98000100;
constexpr std::uint32_t UTF32LittleEndian = 0x9C000100;

// "UTF-8", "UTF-16LE"...; "encoding 0x..." for a value we do not know.
QString name(std::uint32_t encoding);
} // namespace ORVStringEncoding

// Text decoded from bytes, with the encoding used and whether the bytes
// began with a byte order mark (which is not part of `text`, and which a
// save writes back so that an unchanged text gives the same bytes).
struct ORVDecodedText {
    QString text;
    std::uint32_t encoding = ORVStringEncoding::Unknown;
    bool hasByteOrderMark = false;
};

// True when the bytes are well-formed UTF-8 (no overlong forms, no
// surrogates, nothing above U+10FFFF, no cut sequence at the end).
bool isWellFormedUTF8(const char *data, qsizetype size);

// The byte order mark at the start of `bytes`: its encoding and length, or
// {Unknown, 0}. UTF-32 marks are tested before UTF-16 ones, since FF FE 00 00
// also starts with the UTF-16 little endian mark.
struct ORVByteOrderMark {
    std::uint32_t encoding = ORVStringEncoding::Unknown;
    int length = 0;
};
ORVByteOrderMark byteOrderMarkOfData(const QByteArray &bytes);

// Reads text the way a file is opened first: a byte order mark names the
// encoding; without one the bytes must be well-formed UTF-8. Nothing when
// the bytes do not decode that way (the caller then falls back to
// encodingOfUndeclaredData).
std::optional<ORVDecodedText> stringWithDataUsedEncoding(const QByteArray &bytes);

// The guess for bytes that did not decode above: looks at the first 200
// bytes at most (fewer when a NUL byte comes earlier). Well-formed UTF-8
// there gives UTF-8; else a byte order mark decides; else all bytes below
// 0x80 give ASCII; anything else UTF-8. An empty input is UTF-8.
std::uint32_t encodingOfUndeclaredData(const QByteArray &bytes);

// Both steps: stringWithDataUsedEncoding, else the guess of
// encodingOfUndeclaredData. Nothing when even the guess does not decode.
std::optional<ORVDecodedText> decodeTextWithEncodingDetection(const QByteArray &bytes);

// Strict conversion of all the bytes with one encoding; a byte order mark of
// that encoding at the start is taken off and reported. Nothing when the
// bytes are not valid in it.
std::optional<ORVDecodedText> decodeStringWithEncoding(const QByteArray &bytes, std::uint32_t encoding);

// The bytes of `text` in `encoding`, with its byte order mark first when
// asked. Nothing when the text cannot be represented (non-ASCII text in
// ASCII) or the encoding is not known. Lone surrogates, which no Unicode
// encoding but UTF-16 can carry, become U+FFFD.
std::optional<QByteArray> encodeStringWithEncoding(const QString &text, std::uint32_t encoding,
                                                   bool withByteOrderMark = false);
