#pragma once

// Character classes and number reading shared by the matcher and the standard
// markers and filters. Texts are UTF-16.

#include <QStringView>

#include <limits>

namespace mgtemplate
{

// White space as templates see it: the Unicode White_Space characters (what
// "\s" matches in an ICU regular expression). All of them lie in the BMP.
inline bool isSpace(char16_t c)
{
    if (c <= 0x20)
        return c == 0x20 || (c >= 0x09 && c <= 0x0D);
    if (c < 0x85)
        return false;
    return c == 0x85 || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x2028 ||
           c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000;
}

// The characters that end a line (what "." doesn't match in an ICU regular
// expression). Each of them is also white space.
inline bool isLineTerminator(char16_t c)
{
    return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

// Equality of two texts, inline: every marker and expression of a run is
// compared with a few names, which mostly differ in length.
inline bool sameText(QStringView a, QStringView b)
{
    if (a.size() != b.size())
        return false;
    const char16_t *x = a.utf16();
    const char16_t *y = b.utf16();
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (x[i] != y[i])
            return false;
    }
    return true;
}

// The integer at the start of a text: leading white space, an optional sign,
// then decimal digits; 0 when there are none. Saturates at the limits of a
// 64-bit integer instead of overflowing. "12abc" reads 12, "3.7" reads 3.
inline qint64 integerValue(QStringView text)
{
    qsizetype i = 0;
    while (i < text.size() && isSpace(text[i].unicode()))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+'))
        negative = text[i++] == u'-';
    quint64 magnitude = 0;
    const quint64 limit = negative ? quint64(std::numeric_limits<qint64>::max()) + 1
                                   : quint64(std::numeric_limits<qint64>::max());
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
        const unsigned digit = text[i].unicode() - u'0';
        magnitude = magnitude > (limit - digit) / 10 ? limit : magnitude * 10 + digit;
    }
    if (negative)
        return magnitude == limit ? std::numeric_limits<qint64>::min() : -qint64(magnitude);
    return qint64(magnitude);
}

} // namespace mgtemplate
