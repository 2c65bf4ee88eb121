#include "library/text_file.h"

#include <QFile>
#include <QStringDecoder>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::optional<QString> decodeWith(QStringConverter::Encoding encoding, QByteArrayView bytes)
{
    QStringDecoder decoder(encoding, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

bool startsWith(const QByteArray &bytes, const char *mark, qsizetype size)
{
    return bytes.size() >= size && std::equal(mark, mark + size, bytes.constData());
}

// UTF-16 without a mark: ASCII text in it has a NUL in every other byte.
// Looks at the start only, which is where a document's plain words are.
std::optional<QStringConverter::Encoding> unmarkedUtf16(const QByteArray &bytes)
{
    constexpr qsizetype kProbe = 512;
    const qsizetype n = std::min(bytes.size(), kProbe) & ~qsizetype(1);
    if (n < 2)
        return std::nullopt;
    qsizetype evenNul = 0, oddNul = 0;
    for (qsizetype i = 0; i < n; i += 2) {
        evenNul += bytes.at(i) == '\0';
        oddNul += bytes.at(i + 1) == '\0';
    }
    const qsizetype pairs = n / 2;
    if (oddNul * 10 >= pairs * 8 && evenNul * 10 < pairs)
        return QStringConverter::Utf16LE;
    if (evenNul * 10 >= pairs * 8 && oddNul * 10 < pairs)
        return QStringConverter::Utf16BE;
    return std::nullopt;
}

QString windowsLatin1(const QByteArray &bytes)
{
    // 0x80..0x9F: the printable characters Windows puts there; the five
    // unassigned codes stay as their Latin 1 controls.
    static const char16_t high[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    QString text(bytes.size(), Qt::Uninitialized);
    QChar *out = text.data();
    for (const char ch : bytes) {
        const auto b = static_cast<unsigned char>(ch);
        *out++ = (b >= 0x80 && b < 0xA0) ? QChar(high[b - 0x80]) : QChar(b);
    }
    return text;
}

} // namespace

std::optional<QString> decodeTextDetectingEncoding(const QByteArray &bytes, bool *isPlainUtf8)
{
    if (isPlainUtf8)
        *isPlainUtf8 = false;
    const QByteArrayView all(bytes);
    if (startsWith(bytes, "\xEF\xBB\xBF", 3))
        return decodeWith(QStringConverter::Utf8, all.sliced(3));
    if (startsWith(bytes, "\xFF\xFE\x00\x00", 4))
        return decodeWith(QStringConverter::Utf32LE, all.sliced(4));
    if (startsWith(bytes, "\x00\x00\xFE\xFF", 4))
        return decodeWith(QStringConverter::Utf32BE, all.sliced(4));
    if (startsWith(bytes, "\xFF\xFE", 2))
        return decodeWith(QStringConverter::Utf16LE, all.sliced(2));
    if (startsWith(bytes, "\xFE\xFF", 2))
        return decodeWith(QStringConverter::Utf16BE, all.sliced(2));
    // Before UTF-8: NUL bytes are valid UTF-8, so ASCII in UTF-16 would pass.
    if (const auto utf16 = unmarkedUtf16(bytes))
        return decodeWith(*utf16, all);
    if (bytes.contains('\0'))
        return std::nullopt;
    if (auto utf8 = decodeWith(QStringConverter::Utf8, all)) {
        if (isPlainUtf8)
            *isPlainUtf8 = true;
        return utf8;
    }
    return windowsLatin1(bytes);
}

std::optional<QByteArray> orvoReadWholeFile(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    // Sized by the file, so that a small document costs no more than its
    // size (a generous fixed buffer per file shows up in a search of
    // thousands). One byte more, so that the read that finds the end
    // normally needs no second allocation.
    struct stat st {};
    const qsizetype expected = ::fstat(fd, &st) == 0 && st.st_size > 0 ? qsizetype(st.st_size) : 0;
    QByteArray bytes(expected + 1, Qt::Uninitialized);
    qsizetype size = 0;
    bool ok = true;
    for (;;) {
        if (size == bytes.size())
            bytes.resize(bytes.size() * 2); // the file grew while being read
        const ssize_t n = ::read(fd, bytes.data() + size, size_t(bytes.size() - size));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            ok = false;
        if (n <= 0)
            break;
        size += n;
        // A plain file reads short only at its end: no read to find it.
        if (size < bytes.size() && S_ISREG(st.st_mode))
            break;
    }
    ::close(fd);
    if (!ok)
        return std::nullopt;
    bytes.truncate(size);
    return bytes;
}

std::optional<QString> readTextFileDetectingEncoding(const QString &path)
{
    const std::optional<QByteArray> bytes = orvoReadWholeFile(path);
    if (!bytes)
        return std::nullopt;
    return decodeTextDetectingEncoding(*bytes);
}
