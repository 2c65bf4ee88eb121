#include "site/site_text.h"

#include "library/textEncoding.h"

#include <QFile>
#include <QRegularExpression>
#include <QUrl>

#include <unicode/utrans.h>

#include <memory>
#include <mutex>

QString stringByURLEncodedString(const QString &text)
{
    // Unreserved characters are never encoded; these are the rest of what a
    // path may hold.
    static const QByteArray pathAllowed = QByteArrayLiteral("!$&'()*+,;=:@/");
    return QString::fromLatin1(QUrl::toPercentEncoding(text, pathAllowed));
}

QString stringByStrippingHTML(const QString &html)
{
    // What removing each match of "<[^>]+>" does, by hand: a "<" starts a
    // tag when a ">" follows with at least one character between them.
    const qsizetype n = html.size();
    qsizetype open = html.indexOf(QLatin1Char('<'));
    if (open < 0)
        return html;
    QString out;
    out.reserve(n);
    qsizetype last = 0;
    while (open >= 0) {
        const qsizetype close = html.indexOf(QLatin1Char('>'), open + 1);
        if (close < 0)
            break;
        if (close == open + 1) { // "<>" is no tag
            open = html.indexOf(QLatin1Char('<'), open + 1);
            continue;
        }
        out += QStringView(html).mid(last, open - last);
        last = close + 1;
        open = html.indexOf(QLatin1Char('<'), last);
    }
    out += QStringView(html).mid(last);
    return out;
}

void replaceLocalImagesWithUploaded(QString &html, MGTemplateMap &values,
                                    const QList<std::pair<QString, QString>> &uploaded)
{
    for (const auto &[localURL, remoteURL] : uploaded) {
        if (localURL.isEmpty() || remoteURL.isEmpty())
            continue;
        const QString decoded = QUrl::fromPercentEncoding(localURL.toUtf8());
        for (const auto &entry : MGTemplateMap(values)) {
            const QString *text = entry.second.text();
            if (text && (*text == localURL || *text == decoded))
                values.insert(entry.first, remoteURL);
        }
        const QString remote = QStringLiteral("=\"%1\"").arg(remoteURL);
        html.replace(QStringLiteral("=\"%1\"").arg(localURL), remote, Qt::CaseInsensitive);
        if (decoded != localURL)
            html.replace(QStringLiteral("=\"%1\"").arg(decoded), remote, Qt::CaseInsensitive);
    }
}

namespace
{

// ICU's transliterators are costly to make and not safe to share between
// threads while they run, so each thread gets its own.
struct TransliteratorCloser {
    void operator()(UTransliterator *t) const { utrans_close(t); }
};

UTransliterator *latinTransliterator()
{
    thread_local std::unique_ptr<UTransliterator, TransliteratorCloser> made;
    thread_local bool tried = false;
    if (!tried) {
        tried = true;
        const QString id = QStringLiteral(
            "Any-Latin; NFD; [:Nonspacing Mark:] Remove; NFC; [^[:Latin:][:space:][:number:]] Remove");
        UErrorCode status = U_ZERO_ERROR;
        UParseError parseError;
        UTransliterator *t = utrans_openU(reinterpret_cast<const UChar *>(id.utf16()), int32_t(id.size()),
                                          UTRANS_FORWARD, nullptr, 0, &parseError, &status);
        if (U_SUCCESS(status))
            made.reset(t);
        else if (t)
            utrans_close(t);
    }
    return made.get();
}

QString transliterated(const QString &text)
{
    UTransliterator *t = latinTransliterator();
    if (!t || text.isEmpty())
        return text;
    // Latin transcription can be several times longer than CJK text.
    int32_t capacity = int32_t(text.size()) * 8 + 16;
    QString buffer(capacity, Qt::Uninitialized);
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::copy(text.utf16(), text.utf16() + text.size(), reinterpret_cast<char16_t *>(buffer.data()));
        int32_t length = int32_t(text.size());
        int32_t limit = length;
        UErrorCode status = U_ZERO_ERROR;
        utrans_transUChars(t, reinterpret_cast<UChar *>(buffer.data()), &length, capacity, 0, &limit, &status);
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            capacity = length + 16;
            buffer.resize(capacity);
            continue;
        }
        if (U_FAILURE(status))
            return text;
        buffer.resize(length);
        return buffer;
    }
    return text;
}

} // namespace

QString stringByReturnURLStyleStringWithMaxLength(const QString &text, int maxLength)
{
    const QString latin = transliterated(text).trimmed();
    const QStringList words = latin.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    QString out = words.join(QLatin1Char('-'));
    if (maxLength >= 0 && out.size() > maxLength)
        out.truncate(maxLength);
    if (out.endsWith(QLatin1Char('-')))
        out.chop(1);
    return out.toLower();
}

QString siteSafeFileBase(const QString &name)
{
    QString out;
    out.reserve(name.size());
    for (const QChar c : name) {
        if (c == QLatin1Char('/') || c == QLatin1Char('\\'))
            out += QLatin1Char('-');
        else if (c.unicode() >= 0x20 && c.unicode() != 0x7F)
            out += c;
    }
    bool onlyDots = !out.isEmpty();
    for (const QChar c : out)
        onlyDots = onlyDots && c == QLatin1Char('.');
    if (onlyDots)
        out = QStringLiteral("_");
    return out;
}

std::optional<QString> readSiteTextFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (auto decoded = stringWithDataUsedEncoding(bytes))
        return std::move(decoded->text);
    return QString::fromLatin1(bytes);
}

QString replaceLibraryLinkToStaticWebsiteLink(const QString &markdown,
                                              const std::function<QString(qint64 uuid)> &linkForDocument)
{
    if (!markdown.contains(QLatin1String("orvolib://"), Qt::CaseInsensitive))
        return markdown;
    // One per thread: documents are rendered on several threads at once.
    thread_local const QRegularExpression link(QStringLiteral("orvolib://([0-9]{10,20})"),
                                               QRegularExpression::CaseInsensitiveOption);
    QString out;
    out.reserve(markdown.size());
    qsizetype last = 0;
    for (auto it = link.globalMatch(markdown); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        bool ok = false;
        const qint64 uuid = m.captured(1).toLongLong(&ok);
        const QString target = ok && uuid > 0 ? linkForDocument(uuid) : QString();
        if (target.isEmpty())
            continue;
        out += QStringView(markdown).mid(last, m.capturedStart() - last);
        out += target;
        last = m.capturedEnd();
    }
    out += QStringView(markdown).mid(last);
    return out;
}
