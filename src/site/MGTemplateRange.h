#pragma once

#include <QString>

#include <limits>

// A span of a template, in UTF-16 code units: where it starts and how long it
// is. A location of NotFound means "nowhere"; a remaining range with that
// location ends a run.
struct MGTemplateRange {
    static constexpr qsizetype NotFound = std::numeric_limits<qsizetype>::max();

    qsizetype location = NotFound;
    qsizetype length = 0;

    // One past the last unit. Only meaningful when location isn't NotFound.
    qsizetype end() const { return location + length; }
    bool operator==(const MGTemplateRange &) const = default;
    // "{location, length}", the form in which ranges are shown and keyed.
    QString toString() const { return QStringLiteral("{%1, %2}").arg(location).arg(length); }
};
