#pragma once

#include <QString>

// Word and character counts of a text, as the editor's status shows them.
//
// A word is a run of letters, digits, marks and joining punctuation
// (apostrophes and hyphens between letters, underscores); every Chinese,
// Japanese or Korean character counts as one word by itself, since those
// scripts put no spaces between words. Characters count code points (a
// surrogate pair is one), line ends excluded.
struct ORVTextStatistics {
    qsizetype words = 0;
    qsizetype characters = 0;              // line ends excluded
    qsizetype charactersWithoutSpaces = 0; // no white space at all
    qsizetype lines = 0;                   // 0 for an empty text
    qsizetype paragraphs = 0;              // runs of non-blank lines

    static ORVTextStatistics countText(QStringView text);
};
