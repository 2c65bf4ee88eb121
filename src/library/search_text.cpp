#include "library/search_text.h"

QString orvoFoldCase(const QString &text)
{
    const qsizetype n = text.size();
    QString folded(n, Qt::Uninitialized);
    const char16_t *in = reinterpret_cast<const char16_t *>(text.constData());
    char16_t *out = reinterpret_cast<char16_t *>(folded.data());
    // First as if all were ASCII, without branches (the compiler makes it
    // wide): most documents are; the rest is put right below.
    char16_t wide = 0;
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = in[i];
        wide |= c;
        out[i] = char16_t(c + (char16_t(c - u'A') < 26 ? 32 : 0));
    }
    if (wide < 0x80)
        return folded;
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = in[i];
        if (c < 0x80)
            continue;
        if (QChar::isSurrogate(c)) {
            out[i] = c; // letters outside the BMP keep their case
        } else {
            const char32_t f = QChar::toCaseFolded(char32_t(c));
            out[i] = f <= 0xFFFF ? char16_t(f) : c;
        }
    }
    return folded;
}
