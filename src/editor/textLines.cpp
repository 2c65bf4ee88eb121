#include "editor/textLines.h"

namespace orvtext {

qsizetype lineStartBefore(const QString &text, qsizetype position)
{
    position = qBound<qsizetype>(0, position, text.size());
    const qsizetype nl = position > 0 ? text.lastIndexOf(QLatin1Char('\n'), position - 1) : -1;
    return nl + 1;
}

qsizetype lineEndAfter(const QString &text, qsizetype position)
{
    position = qBound<qsizetype>(0, position, text.size());
    const qsizetype nl = text.indexOf(QLatin1Char('\n'), position);
    return nl < 0 ? text.size() : nl;
}

ORVEditRange lineRangeForRange(const QString &text, ORVEditRange range)
{
    const qsizetype size = text.size();
    const qsizetype from = qBound<qsizetype>(0, range.location, size);
    const qsizetype to = qBound<qsizetype>(from, range.end(), size);
    const qsizetype start = lineStartBefore(text, from);
    // The last character of a non-empty range decides the last line, so a
    // range ending just after a line end keeps to that line.
    const qsizetype lastChar = to > from ? to - 1 : from;
    qsizetype end = lineEndAfter(text, lastChar);
    if (end < size)
        ++end; // the "\n"
    return {start, end - start};
}

qsizetype locationOfFirstNewlineBefore(const QString &text, qsizetype position)
{
    position = qBound<qsizetype>(0, position, text.size());
    if (position == 0)
        return ORVEditRange::kNotFound;
    const qsizetype nl = text.lastIndexOf(QLatin1Char('\n'), position - 1);
    return nl < 0 ? ORVEditRange::kNotFound : nl;
}

qsizetype locationOfFirstNonWhitespaceCharacterInLineBefore(const QString &text, qsizetype position)
{
    position = qBound<qsizetype>(0, position, text.size());
    for (qsizetype i = lineStartBefore(text, position); i < position; ++i) {
        if (!isLineSpace(text.at(i)))
            return i;
    }
    return ORVEditRange::kNotFound;
}

bool isBlankLine(QStringView line)
{
    for (const QChar c : line) {
        if (!isLineSpace(c) && c != QLatin1Char('\r'))
            return false;
    }
    return true;
}

} // namespace orvtext
