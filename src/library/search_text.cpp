#include "library/search_text.h"

QString orvoFoldCase(const QString &text)
{
    QString folded(text.size(), Qt::Uninitialized);
    const QChar *in = text.constData();
    QChar *out = folded.data();
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = in[i].unicode();
        if (c < 0x80) {
            out[i] = QChar(c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c);
        } else if (QChar::isSurrogate(c)) {
            out[i] = in[i]; // letters outside the BMP keep their case
        } else {
            const char32_t f = QChar::toCaseFolded(char32_t(c));
            out[i] = f <= 0xFFFF ? QChar(char16_t(f)) : in[i];
        }
    }
    return folded;
}
