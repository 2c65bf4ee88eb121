#include "library/document_title.h"

#include <QFile>
#include <QStringDecoder>

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

QString readFileContentWithPathMaxLineLenth(const QString &path, int maxLine, int length)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("");
    QString text;
    int counted = 0;
    while (!file.atEnd() && counted < maxLine && text.size() <= length) {
        const QByteArray line = file.readLine();
        QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString decoded = utf8(line);
        if (utf8.hasError())
            continue; // neither UTF-8 nor ASCII
        text += decoded;
        ++counted;
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
