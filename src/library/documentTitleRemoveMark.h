#pragma once

#include <QString>

// The title form of a heading line: an empty string stays empty; a string
// that does not start with "#" stays as it is; otherwise the whole leading
// run of "#" goes, and one space after it if there is one. "### a #" gives
// "a #", "#title" gives "title", "###" and "### " give "".
QString documentTitleRemoveMark(const QString &text);
