#pragma once

#include "editor/ORVTextBuffer.h"

#include <QRegularExpression>
#include <QString>

#include <optional>

// Find and replace over an editor's text. Positions are UTF-16 units.
struct ORVFindOptions {
    bool caseSensitive = false;
    bool wholeWord = false;
    bool regularExpression = false; // else the needle is literal text
    bool wrapAround = true;
};

class ORVTextFinder
{
public:
    // The pattern for a needle, or nothing (and the reason) when a regular
    // expression does not compile or the needle is empty.
    static std::optional<QRegularExpression> patternFor(const QString &needle, const ORVFindOptions &options,
                                                        QString *error = nullptr);

    // The next match at or after `from` (before `from` when backwards),
    // wrapping around the text when the options say so; location kNotFound
    // when there is none. Empty matches of a regular expression are skipped.
    static ORVEditRange findNext(const QString &text, const QRegularExpression &pattern, qsizetype from,
                                 bool backwards, bool wrapAround);

    static qsizetype countMatches(const QString &text, const QRegularExpression &pattern);

    // The replacement of one match: with a regular expression, "$1" to
    // "$99" and "\1" to "\9" stand for groups and "$$" for a dollar sign.
    static QString replacementFor(const QRegularExpressionMatch &match, const QString &replacement, bool templates);

    // Replaces every match as one undoable edit and selects nothing;
    // returns how many were replaced.
    static qsizetype replaceAll(ORVTextBuffer &buffer, const QRegularExpression &pattern, const QString &replacement,
                                bool templates);

    // When the selection is exactly a match, replaces it and selects the
    // next match; answers whether it replaced.
    static bool replaceSelectionAndFindNext(ORVTextBuffer &buffer, const QRegularExpression &pattern,
                                            const QString &replacement, bool templates, bool wrapAround);
};
