#pragma once

#include <QString>

// Case-insensitive matching for search. Both sides are folded the same
// way, one UTF-16 unit at a time (simple case folding), so a position in
// the folded text is the same position in the original: the snippets are
// cut from the original text at the positions found in the folded one.
QString orvoFoldCase(const QString &text);
