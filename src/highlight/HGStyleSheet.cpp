#include "highlight/HGStyleSheet.h"

void HGStyleAttributes::mergeFrom(const HGStyleAttributes &over)
{
    if (over.foreground.isValid())
        foreground = over.foreground;
    if (over.background.isValid())
        background = over.background;
    if (over.caret.isValid())
        caret = over.caret;
    if (over.fontSize != 0 || over.fontSizeIsRelative) {
        fontSize = over.fontSize;
        fontSizeIsRelative = over.fontSizeIsRelative;
    }
    if (!over.fontFamily.isEmpty())
        fontFamily = over.fontFamily;
    italic = italic || over.italic;
    bold = bold || over.bold;
    underlined = underlined || over.underlined;
    through = through || over.through;
}

bool HGStyleAttributes::isEmpty() const
{
    return !foreground.isValid() && !background.isValid() && !caret.isValid() && fontSize == 0 &&
           !fontSizeIsRelative && fontFamily.isEmpty() && !italic && !bold && !underlined && !through;
}

const HGStyleAttributes *HGStyleSheet::attributesForType(pmh_element_type type) const
{
    for (const ElementRule &r : elements) {
        if (r.type == type)
            return &r.attributes;
    }
    return nullptr;
}

bool HGStyleSheet::hasAnyRule() const
{
    return !elements.isEmpty() || !editor.isEmpty() || !editorCurrentLine.isEmpty() || !editorSelection.isEmpty();
}
