#include "highlight/HGMarkdownHighlightingStyle.h"

HGMarkdownHighlightingStyle::HGMarkdownHighlightingStyle(pmh_element_type type, const QTextCharFormat &add,
                                                         const QList<int> &remove, int traits)
    : elementType(type), attributesToAdd(add), attributesToRemove(remove), fontTraitsToAdd(traits)
{
}

HGMarkdownHighlightingStyle HGMarkdownHighlightingStyle::initWithStyleAttributesBaseFont(pmh_element_type type,
                                                                                        const HGStyleAttributes &a,
                                                                                        const QFont &baseFont)
{
    HGMarkdownHighlightingStyle s;
    s.elementType = type;
    if (a.foreground.isValid())
        s.attributesToAdd.setForeground(a.foreground);
    if (a.background.isValid())
        s.attributesToAdd.setBackground(a.background);
    if (a.underlined)
        s.attributesToAdd.setFontUnderline(true);
    if (a.through)
        s.attributesToAdd.setFontStrikeOut(true);
    if (a.italic)
        s.fontTraitsToAdd |= ItalicTrait;
    if (a.bold)
        s.fontTraitsToAdd |= BoldTrait;

    const double baseSize = baseFont.pointSizeF() > 0 ? baseFont.pointSizeF() : 12.0;
    double size = a.fontSizeIsRelative ? baseSize + a.fontSize : a.fontSize;
    // A relative size never shrinks text below what stays legible.
    constexpr double kSmallestRelativeSize = 6;
    if (a.fontSizeIsRelative)
        size = qMax(kSmallestRelativeSize, size);
    if (size > 0 && !qFuzzyCompare(size, baseSize))
        s.fontInformationSize = size;
    if (!a.fontFamily.isEmpty() && a.fontFamily != baseFont.family())
        s.fontInformationName = a.fontFamily;
    return s;
}

QTextCharFormat HGMarkdownHighlightingStyle::format() const
{
    QTextCharFormat f = attributesToAdd;
    for (int property : attributesToRemove)
        f.clearProperty(property);
    if (fontTraitsToAdd & ItalicTrait)
        f.setFontItalic(true);
    if (fontTraitsToAdd & BoldTrait)
        f.setFontWeight(QFont::Bold);
    if (fontInformationSize > 0)
        f.setFontPointSize(fontInformationSize);
    if (!fontInformationName.isEmpty())
        f.setFontFamilies({fontInformationName});
    return f;
}
