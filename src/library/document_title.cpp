#include "library/document_title.h"

#include <QFile>
#include <QStringDecoder>

#include <limits>

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

// Appends one line if it decodes; returns whether it counted.
bool appendDecodedLine(QString &text, QByteArrayView line)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = utf8(line);
    if (utf8.hasError())
        return false; // neither UTF-8 nor ASCII
    text += decoded;
    return true;
}

} // namespace

QString readFileContentWithPathMaxLineLenth(const QString &path, int maxLine, int length)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("");
    QString text;
    int counted = 0;
    while (!file.atEnd() && counted < maxLine && text.size() <= length) {
        if (appendDecodedLine(text, file.readLine()))
            ++counted;
    }
    return text;
}

QString readFileContentWithBytesMaxLineLenth(const QByteArray &bytes, int maxLine, int length)
{
    QString text;
    int counted = 0;
    qsizetype start = 0;
    while (start < bytes.size() && counted < maxLine && text.size() <= length) {
        qsizetype end = bytes.indexOf('\n', start);
        end = end < 0 ? bytes.size() : end + 1;
        if (appendDecodedLine(text, QByteArrayView(bytes).sliced(start, end - start)))
            ++counted;
        start = end;
    }
    return text;
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

QString stringByWellToDigitSortString(const QString &title)
{
    // Seven padded numbers tell apart any title a person gives a document
    // ("Volume 2, Part 3, Chapter 12"); the rule stops there.
    constexpr int kMaxPaddedRuns = 7;
    QString out;
    out.reserve(title.size() + 16);
    int padded = 0;
    qsizetype i = 0;
    const qsizetype n = title.size();
    while (i < n) {
        const QChar c = title.at(i);
        if (padded >= kMaxPaddedRuns || c < QLatin1Char('0') || c > QLatin1Char('9')) {
            out += c;
            ++i;
            continue;
        }
        qsizetype j = i;
        while (j < n && title.at(j) >= QLatin1Char('0') && title.at(j) <= QLatin1Char('9'))
            ++j;
        const QStringView run = QStringView(title).sliced(i, j - i);
        bool ok = false;
        qint64 value = run.toLongLong(&ok);
        if (!ok)
            value = std::numeric_limits<qint64>::max(); // all digits: only overflow fails
        if (value == 0) {
            out += run;
        } else {
            out += QStringLiteral("%1").arg(value, 8, 10, QLatin1Char('0'));
            ++padded;
        }
        i = j;
    }
    return out;
}
