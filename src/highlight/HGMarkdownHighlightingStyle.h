#pragma once

#include "highlight/HGStyleSheet.h"
#include "highlight/pmh_parser/pmh_definitions.h"

#include <QFont>
#include <QList>
#include <QTextCharFormat>

// How one element type looks in the editor: the character properties to
// add and to take away, font traits, and a font change.
//
// attributesToAdd carries colours, background, underline and strike-through;
// a font change (HGFontInformation: a family and a size) is kept beside it,
// and turns into the family and point size of format().
class HGMarkdownHighlightingStyle
{
public:
    // Bits of fontTraitsToAdd.
    enum FontTrait { ItalicTrait = 1, BoldTrait = 2 };

    HGMarkdownHighlightingStyle() = default;

    // initWithType:attributesToAdd:toRemove:fontTraitsToAdd:
    HGMarkdownHighlightingStyle(pmh_element_type type, const QTextCharFormat &attributesToAdd,
                                const QList<int> &attributesToRemove, int fontTraitsToAdd);
    // initWithStyleAttributes:baseFont: a relative font size counts from the
    // base font's size; a size or family equal to the base font's adds nothing.
    static HGMarkdownHighlightingStyle initWithStyleAttributesBaseFont(pmh_element_type type,
                                                                       const HGStyleAttributes &attributes,
                                                                       const QFont &baseFont);

    pmh_element_type elementType = pmh_LINK;
    QTextCharFormat attributesToAdd;
    QList<int> attributesToRemove; // QTextFormat property ids
    int fontTraitsToAdd = 0;
    // HGFontInformation: HGFontInformationNameKey and HGFontInformationSizeKey.
    QString fontInformationName;
    double fontInformationSize = 0;

    // Everything above as one format to merge over a span.
    QTextCharFormat format() const;
};
