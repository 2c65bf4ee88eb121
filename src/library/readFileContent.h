#pragma once

#include <QString>

// The head of a text file, for list rows and titles: lines (split at "\n",
// a "\r" before it dropped) are read one by one, each decoded as UTF-8 and
// dropped when it is not well-formed (it would not decode as ASCII either),
// and appended with their "\n". Reading stops at the end of the file, after
// `maxLine` lines, or as soon as the text is longer than `length` UTF-16
// units. A file that cannot be opened gives "".
//
// Lines are read up to 64 KiB each: a longer line is cut there (at a
// character boundary), so that a huge single-line file costs no more than
// that to summarise.
QString readFileContentWithPath(const QString &path, int maxLine, int length);
