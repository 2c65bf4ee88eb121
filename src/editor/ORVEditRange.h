#pragma once

#include <QtGlobal>

// A range of text in UTF-16 units, as the editor counts: a location and a
// length. The location of "no range" is kNotFound.
struct ORVEditRange {
    static constexpr qsizetype kNotFound = -1;

    qsizetype location = 0;
    qsizetype length = 0;

    constexpr ORVEditRange() = default;
    constexpr ORVEditRange(qsizetype loc, qsizetype len) : location(loc), length(len) {}

    constexpr qsizetype end() const { return location + length; }
    constexpr bool isEmpty() const { return length == 0; }
    constexpr bool isValid() const { return location >= 0 && length >= 0; }
    // Whether [location, end) lies inside a text of `size` units.
    constexpr bool fitsIn(qsizetype size) const { return isValid() && end() <= size; }
    // The smallest range holding both (an empty range still counts by its location).
    constexpr ORVEditRange unionWith(ORVEditRange other) const
    {
        const qsizetype lo = qMin(location, other.location);
        const qsizetype hi = qMax(end(), other.end());
        return {lo, hi - lo};
    }
    constexpr bool operator==(const ORVEditRange &) const = default;
};
