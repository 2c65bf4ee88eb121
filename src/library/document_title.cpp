#include "library/document_title.h"

#include <QFile>
#include <QStringDecoder>

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

QString documentTitleRemoveMark(const QString &text)
{
    if (text.isEmpty() || text.at(0) != QLatin1Char('#'))
        return text;
    qsizetype i = 0;
    while (i < text.size() && text.at(i) == QLatin1Char('#'))
        ++i;
    if (i < text.size() && text.at(i) == QLatin1Char(' '))
        ++i;
    return text.mid(i);
}

namespace {

// Takes lines from `bytes` into `text` while the limits allow: a line counts
// only while the text so far is at most `length` characters, and a line
// that is not UTF-8 (nor ASCII) is dropped. A last line without its line
// feed is taken only `atEnd`. `consumed` tells how far it got; the answer
// is whether a limit was reached.
bool takeLines(QByteArrayView bytes, bool atEnd, int maxLine, int length, QString &text, int &counted,
               qsizetype &consumed)
{
    while (counted < maxLine && text.size() <= length) {
        if (consumed >= bytes.size())
            return false;
        qsizetype end = bytes.indexOf('\n', consumed);
        if (end < 0) {
            if (!atEnd)
                return false;
            end = bytes.size();
        } else {
            ++end;
        }
        const QByteArrayView line = bytes.sliced(consumed, end - consumed);
        consumed = end;
        if (!line.isValidUtf8())
            continue; // neither UTF-8 nor ASCII
        // A mark of byte order leads only the file, never a line of text.
        text += QString::fromUtf8(line.startsWith("\xEF\xBB\xBF") ? line.sliced(3) : line);
        ++counted;
    }
    return true;
}

} // namespace

QString readFileContentWithPathMaxLineLenth(const QString &path, int maxLine, int length)
{
    // Plain reads of a few kilobytes: lists read the start of thousands of
    // files, and a buffered file object costs several calls more per file.
    constexpr qsizetype kChunk = 4096;
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return QStringLiteral("");
    QByteArray bytes;
    QString text;
    int counted = 0;
    qsizetype consumed = 0;
    for (;;) {
        const qsizetype had = bytes.size();
        bytes.resize(had + kChunk);
        ssize_t n;
        do
            n = ::read(fd, bytes.data() + had, size_t(kChunk));
        while (n < 0 && errno == EINTR);
        bytes.resize(had + std::max<ssize_t>(n, 0));
        const bool atEnd = n <= 0;
        if (takeLines(bytes, atEnd, maxLine, length, text, counted, consumed) || atEnd)
            break;
    }
    ::close(fd);
    return text;
}

QString readFileContentWithBytesMaxLineLenth(const QByteArray &bytes, int maxLine, int length)
{
    QString text;
    int counted = 0;
    qsizetype consumed = 0;
    takeLines(bytes, true, maxLine, length, text, counted, consumed);
    return text;
}

QString readFileContentWithTextMaxLineLenth(const QString &text, int maxLine, int length)
{
    qsizetype end = 0;
    int counted = 0;
    // The same limits as above: a line counts while the text before it is
    // at most `length` characters, which here is simply its start offset.
    while (end < text.size() && counted < maxLine && end <= length) {
        const qsizetype lf = text.indexOf(QLatin1Char('\n'), end);
        end = lf < 0 ? text.size() : lf + 1;
        ++counted;
    }
    return text.left(end);
}

ORVDocumentTitleAndSummary documentTitleAndSummaryWithContent(const QString &content)
{
    // A paragraph ends at a line feed, a carriage return or a paragraph separator.
    qsizetype end = 0;
    while (end < content.size()) {
        const QChar c = content.at(end);
        if (c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QChar(0x2029))
            break;
        ++end;
    }
    ORVDocumentTitleAndSummary result;
    result.title = documentTitleRemoveMark(content.left(end));
    result.summary = end + 1 < content.size() ? content.mid(end + 1) : QString();
    result.summary.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return result;
}

ORVDocumentTitleAndSummary documentTitleAndSummaryWithFile(const QString &path)
{
    return documentTitleAndSummaryWithContent(readFileContentWithPathMaxLineLenth(path));
}
