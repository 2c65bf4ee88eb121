#pragma once

#include "highlight/HGStyleSheet.h"

#include <functional>

// Reads an editor theme.
//
// The format: a rule name on a line of its own, starting in the first
// column, then its attributes, one per line, "name: value" or "name = value".
// A rule name is an element type of the highlight grammar (EMPH, H1, CODE...,
// in any case) or one of "editor", "editor-current-line", "editor-selection".
// A line whose first non-blank character is "#" is a comment; blank lines
// separate nothing and are skipped. A rule that appears twice adds to itself.
//
// Attributes: "color" / "foreground" / "foreground-color", "background" /
// "background-color", "caret" / "caret-color" take hexadecimal colours of 6
// (RRGGBB) or 8 (AARRGGBB) digits, with an optional "#"; "font-size" takes
// points ("14", "14pt") or a change of the editor's size ("+2", "-1");
// "font-family" a family name; "font-style" any of "italic", "bold",
// "underlined", "through", separated by commas or spaces.
//
// Faults never stop the reading: each goes to the error handler, and the
// rest of the sheet still applies. The messages:
//   "No style attributes defined for style rule '%s'"
//   "Invalid attribute definition: str does not contain an assignment operator (%s): '%s'"
//   "Value '%s' is invalid for attribute '%s'"
//   "Invalid color value '%s' for attribute '%s'"
//   "Style rule '%s' is not an element type or editor rule"
//   "Unknown attribute '%s'"
//   "Attribute definition outside of any style rule: '%s'"
class HGStyleSheetParser
{
public:
    using ErrorHandler = std::function<void(const HGStyleSheetError &)>;

    static HGStyleSheet parse(const QString &text, const ErrorHandler &onError = {});

    // colorFromARGBColor: "RRGGBB" or "AARRGGBB" (an optional leading "#"),
    // invalid for anything else.
    static QColor colorFromARGBColor(const QString &text);

    // The element type of a rule name (case-insensitive), or -1.
    static int elementTypeForRuleName(const QString &name);
};
