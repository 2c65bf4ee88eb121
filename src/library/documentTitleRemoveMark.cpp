#include "library/documentTitleRemoveMark.h"

QString documentTitleRemoveMark(const QString &text)
{
    if (!text.startsWith(QLatin1Char('#')))
        return text;
    qsizetype i = 0;
    while (i < text.size() && text.at(i) == QLatin1Char('#'))
        ++i;
    if (i < text.size() && text.at(i) == QLatin1Char(' '))
        ++i;
    return text.mid(i);
}
