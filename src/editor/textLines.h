#pragma once

#include "editor/ORVEditRange.h"

#include <QString>

// Line helpers over a text whose lines end with "\n". Positions are UTF-16
// units; "white space" inside a line is a space or a tab.
namespace orvtext {

// The whole lines that `range` touches, with the line end of the last one
// when it has one. A range that ends right after a "\n" does not take in the
// line that follows; an empty range takes the line it stands in.
ORVEditRange lineRangeForRange(const QString &text, ORVEditRange range);

// Start of the line holding `position`.
qsizetype lineStartBefore(const QString &text, qsizetype position);
// End of the line holding `position`, before its "\n" (or the text's end).
qsizetype lineEndAfter(const QString &text, qsizetype position);

// The position of the nearest "\n" before `position`, or kNotFound.
qsizetype locationOfFirstNewlineBefore(const QString &text, qsizetype position);

// The position of the first character that is not white space between the
// start of the line holding `position` and `position` itself, or kNotFound
// when there is none (the text before `position` in its line is blank).
qsizetype locationOfFirstNonWhitespaceCharacterInLineBefore(const QString &text, qsizetype position);

inline bool isLineSpace(QChar c) { return c == QLatin1Char(' ') || c == QLatin1Char('\t'); }

// Whether a line holds nothing but white space (or nothing).
bool isBlankLine(QStringView line);

} // namespace orvtext
