#include "library/textEncoding.h"

#include <cstring>

namespace ORVStringEncoding {
QString name(std::uint32_t encoding)
{
    switch (encoding) {
    case Unknown: return QStringLiteral("unknown");
    case ASCII: return QStringLiteral("ASCII");
    case UTF8: return QStringLiteral("UTF-8");
    case UTF16BigEndian: return QStringLiteral("UTF-16BE");
    case UTF16LittleEndian: return QStringLiteral("UTF-16LE");
    case UTF32BigEndian: return QStringLiteral("UTF-32BE");
    case UTF32LittleEndian: return QStringLiteral("UTF-32LE");
    default: return QStringLiteral("encoding 0x%1").arg(encoding, 0, 16);
    }
}
} // namespace ORVStringEncoding

using namespace ORVStringEncoding;

bool isWellFormedUTF8(const char *data, qsizetype size)
{
    const auto *s = reinterpret_cast<const unsigned char *>(data);
    qsizetype i = 0;
    while (i < size) {
        // Eight ASCII bytes at a time: most text is mostly ASCII.
        if (i + 8 <= size) {
            std::uint64_t chunk;
            std::memcpy(&chunk, s + i, 8);
            if ((chunk & 0x8080808080808080ull) == 0) {
                i += 8;
                continue;
            }
        }
        const unsigned char c = s[i];
        if (c < 0x80) {
            ++i;
            continue;
        }
        int len;
        unsigned char lo = 0x80, hi = 0xBF; // allowed range of the second byte
        if (c >= 0xC2 && c <= 0xDF) {
            len = 2;
        } else if (c >= 0xE0 && c <= 0xEF) {
            len = 3;
            if (c == 0xE0)
                lo = 0xA0; // no overlong forms
            else if (c == 0xED)
                hi = 0x9F; // no surrogates
        } else if (c >= 0xF0 && c <= 0xF4) {
            len = 4;
            if (c == 0xF0)
                lo = 0x90;
            else if (c == 0xF4)
                hi = 0x8F; // nothing above U+10FFFF
        } else {
            return false;
        }
        if (i + len > size)
            return false;
        if (s[i + 1] < lo || s[i + 1] > hi)
            return false;
        for (int k = 2; k < len; ++k) {
            if (s[i + k] < 0x80 || s[i + k] > 0xBF)
                return false;
        }
        i += len;
    }
    return true;
}

ORVByteOrderMark byteOrderMarkOfData(const QByteArray &b)
{
    const auto at = [&](qsizetype i) { return i < b.size() ? static_cast<unsigned char>(b[i]) : 0x100; };
    if (at(0) == 0xFF && at(1) == 0xFE && at(2) == 0x00 && at(3) == 0x00)
        return {UTF32LittleEndian, 4};
    if (at(0) == 0x00 && at(1) == 0x00 && at(2) == 0xFE && at(3) == 0xFF)
        return {UTF32BigEndian, 4};
    if (at(0) == 0xEF && at(1) == 0xBB && at(2) == 0xBF)
        return {UTF8, 3};
    if (at(0) == 0xFF && at(1) == 0xFE)
        return {UTF16LittleEndian, 2};
    if (at(0) == 0xFE && at(1) == 0xFF)
        return {UTF16BigEndian, 2};
    return {};
}

namespace {

std::optional<QString> decodeUTF16(const char *data, qsizetype size, bool bigEndian)
{
    if (size % 2)
        return std::nullopt;
    QString text(size / 2, Qt::Uninitialized);
    auto *out = reinterpret_cast<char16_t *>(text.data());
    const auto *s = reinterpret_cast<const unsigned char *>(data);
    for (qsizetype i = 0; i < size / 2; ++i) {
        const unsigned char a = s[2 * i], b = s[2 * i + 1];
        out[i] = bigEndian ? char16_t((a << 8) | b) : char16_t((b << 8) | a);
    }
    return text;
}

std::optional<QString> decodeUTF32(const char *data, qsizetype size, bool bigEndian)
{
    if (size % 4)
        return std::nullopt;
    QString text;
    text.reserve(size / 4);
    const auto *s = reinterpret_cast<const unsigned char *>(data);
    for (qsizetype i = 0; i < size; i += 4) {
        const char32_t u = bigEndian ? (char32_t(s[i]) << 24 | char32_t(s[i + 1]) << 16 | char32_t(s[i + 2]) << 8 | s[i + 3])
                                     : (char32_t(s[i + 3]) << 24 | char32_t(s[i + 2]) << 16 | char32_t(s[i + 1]) << 8 | s[i]);
        if (u > 0x10FFFF || (u >= 0xD800 && u <= 0xDFFF))
            return std::nullopt;
        if (u > 0xFFFF) {
            text.append(QChar(QChar::highSurrogate(u)));
            text.append(QChar(QChar::lowSurrogate(u)));
        } else {
            text.append(QChar(char16_t(u)));
        }
    }
    return text;
}

} // namespace

std::optional<ORVDecodedText> decodeStringWithEncoding(const QByteArray &bytes, std::uint32_t encoding)
{
    const ORVByteOrderMark bom = byteOrderMarkOfData(bytes);
    const int skip = bom.encoding == encoding ? bom.length : 0;
    const char *data = bytes.constData() + skip;
    const qsizetype size = bytes.size() - skip;
    std::optional<QString> text;
    switch (encoding) {
    case ASCII:
        for (qsizetype i = 0; i < size; ++i) {
            if (static_cast<unsigned char>(data[i]) >= 0x80)
                return std::nullopt;
        }
        text = QString::fromLatin1(data, size);
        break;
    case UTF8:
        if (!isWellFormedUTF8(data, size))
            return std::nullopt;
        text = QString::fromUtf8(data, size);
        break;
    case UTF16BigEndian: text = decodeUTF16(data, size, true); break;
    case UTF16LittleEndian: text = decodeUTF16(data, size, false); break;
    case UTF32BigEndian: text = decodeUTF32(data, size, true); break;
    case UTF32LittleEndian: text = decodeUTF32(data, size, false); break;
    default: return std::nullopt;
    }
    if (!text)
        return std::nullopt;
    return ORVDecodedText{std::move(*text), encoding, skip > 0};
}

std::optional<ORVDecodedText> stringWithDataUsedEncoding(const QByteArray &bytes)
{
    const ORVByteOrderMark bom = byteOrderMarkOfData(bytes);
    return decodeStringWithEncoding(bytes, bom.length ? bom.encoding : UTF8);
}

std::uint32_t encodingOfUndeclaredData(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return UTF8;
    // The first 200 bytes tell enough for a guess, and stop at a NUL as a C
    // string would.
    constexpr qsizetype kSniffBytes = 200;
    qsizetype n = std::min<qsizetype>(bytes.size(), kSniffBytes);
    if (const void *nul = std::memchr(bytes.constData(), 0, size_t(n)))
        n = static_cast<const char *>(nul) - bytes.constData();
    if (isWellFormedUTF8(bytes.constData(), n))
        return UTF8;
    const ORVByteOrderMark bom = byteOrderMarkOfData(bytes);
    if (bom.length)
        return bom.encoding;
    for (qsizetype i = 0; i < n; ++i) {
        if (static_cast<unsigned char>(bytes[i]) >= 0x80)
            return UTF8;
    }
    return ASCII;
}

std::optional<ORVDecodedText> decodeTextWithEncodingDetection(const QByteArray &bytes)
{
    if (auto decoded = stringWithDataUsedEncoding(bytes))
        return decoded;
    return decodeStringWithEncoding(bytes, encodingOfUndeclaredData(bytes));
}

std::optional<QByteArray> encodeStringWithEncoding(const QString &text, std::uint32_t encoding, bool withByteOrderMark)
{
    QByteArray out;
    const auto putUnit16 = [&](char16_t u, bool be) {
        const char hi = char(u >> 8), lo = char(u & 0xFF);
        out.append(be ? hi : lo);
        out.append(be ? lo : hi);
    };
    const auto putUnit32 = [&](char32_t u, bool be) {
        const char b[4] = {char(u >> 24), char((u >> 16) & 0xFF), char((u >> 8) & 0xFF), char(u & 0xFF)};
        const char l[4] = {b[3], b[2], b[1], b[0]};
        out.append(be ? b : l, 4);
    };
    switch (encoding) {
    case ASCII:
        out.reserve(text.size());
        for (QChar c : text) {
            if (c.unicode() >= 0x80)
                return std::nullopt;
            out.append(char(c.unicode()));
        }
        return out;
    case UTF8:
        if (withByteOrderMark)
            out.append("\xEF\xBB\xBF", 3);
        out.append(text.toUtf8());
        return out;
    case UTF16BigEndian:
    case UTF16LittleEndian: {
        const bool be = encoding == UTF16BigEndian;
        out.reserve(2 * (text.size() + 1));
        if (withByteOrderMark)
            putUnit16(0xFEFF, be);
        for (QChar c : text)
            putUnit16(c.unicode(), be);
        return out;
    }
    case UTF32BigEndian:
    case UTF32LittleEndian: {
        const bool be = encoding == UTF32BigEndian;
        out.reserve(4 * (text.size() + 1));
        if (withByteOrderMark)
            putUnit32(0xFEFF, be);
        const qsizetype n = text.size();
        for (qsizetype i = 0; i < n; ++i) {
            const char16_t u = text.at(i).unicode();
            char32_t cp = u;
            if (QChar::isHighSurrogate(u) && i + 1 < n && QChar::isLowSurrogate(text.at(i + 1).unicode())) {
                cp = QChar::surrogateToUcs4(u, text.at(i + 1).unicode());
                ++i;
            } else if (QChar::isSurrogate(u)) {
                cp = 0xFFFD;
            }
            putUnit32(cp, be);
        }
        return out;
    }
    default: return std::nullopt;
    }
}
