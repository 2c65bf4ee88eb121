#pragma once

#include "highlight/pmh_parser/pmh_definitions.h"

#include <QColor>
#include <QList>
#include <QString>

// One rule of an editor theme, as read: what it sets. Unset fields stay
// invalid (colours), empty (family) or zero.
struct HGStyleAttributes {
    QColor foreground;
    QColor background;
    QColor caret;
    // Font size: absolute in points, or relative to the editor's font when
    // fontSizeIsRelative ("+2", "-1").
    double fontSize = 0;
    bool fontSizeIsRelative = false;
    QString fontFamily;
    bool italic = false;
    bool bold = false;
    bool underlined = false;
    bool through = false;

    // Fields set in `over` replace those here.
    void mergeFrom(const HGStyleAttributes &over);
    bool isEmpty() const;
};

// An editor theme: colours of the editor itself and one rule per element
// type of the highlight grammar.
struct HGStyleSheet {
    struct ElementRule {
        pmh_element_type type;
        HGStyleAttributes attributes;
    };

    HGStyleAttributes editor;            // "editor": foreground, background, caret
    HGStyleAttributes editorCurrentLine; // "editor-current-line": background
    HGStyleAttributes editorSelection;   // "editor-selection": foreground, background
    QList<ElementRule> elements;         // in the order the sheet gives them

    const HGStyleAttributes *attributesForType(pmh_element_type type) const;
    bool hasAnyRule() const;
};

// A fault found while reading a theme: the message (the texts are the
// program's own, see HGStyleSheetParser) and the 1-based line it is on.
struct HGStyleSheetError {
    int line = 0;
    QString message;
};
