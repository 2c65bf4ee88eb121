#include "highlight/HGStyleSheetParser.h"

#include "highlight/pmh_parser/pmh_parser.h"

#include <QRegularExpression>
#include <QStringList>

namespace {

enum class Target { None, Element, Editor, CurrentLine, Selection };

// What a rule has gathered while its lines are read.
struct OpenRule {
    Target target = Target::None;
    int type = -1;
    QString name;
    int line = 0;
    int attributeLines = 0;
    HGStyleAttributes attributes;
};

QString errorText(const char *format, const QString &a, const QString &b = QString())
{
    QString s = QString::fromLatin1(format);
    const qsizetype first = s.indexOf(QLatin1String("%s"));
    if (first >= 0)
        s.replace(first, 2, a);
    const qsizetype second = s.indexOf(QLatin1String("%s"), first < 0 ? 0 : first + a.size());
    if (second >= 0)
        s.replace(second, 2, b);
    return s;
}

bool parseFontSize(const QString &value, HGStyleAttributes *out)
{
    static const QRegularExpression re(QStringLiteral("^([+-]?)(\\d+(?:\\.\\d+)?)\\s*(?:pt|px)?$"),
                                       QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = re.match(value);
    if (!m.hasMatch())
        return false;
    const double n = m.captured(2).toDouble();
    // Sizes beyond this are typing mistakes, not fonts anyone can read.
    constexpr double kLargestFontSize = 400;
    if (n > kLargestFontSize || (m.capturedLength(1) == 0 && n <= 0))
        return false;
    out->fontSizeIsRelative = m.capturedLength(1) > 0;
    out->fontSize = m.captured(1) == QLatin1String("-") ? -n : n;
    return true;
}

bool parseFontStyle(const QString &value, HGStyleAttributes *out)
{
    const QStringList words = value.split(QRegularExpression(QStringLiteral("[,\\s]+")), Qt::SkipEmptyParts);
    if (words.isEmpty())
        return false;
    HGStyleAttributes parsed;
    for (const QString &w : words) {
        const QString word = w.toLower();
        if (word == QLatin1String("italic"))
            parsed.italic = true;
        else if (word == QLatin1String("bold"))
            parsed.bold = true;
        else if (word == QLatin1String("underlined"))
            parsed.underlined = true;
        else if (word == QLatin1String("through"))
            parsed.through = true;
        else
            return false;
    }
    out->italic = out->italic || parsed.italic;
    out->bold = out->bold || parsed.bold;
    out->underlined = out->underlined || parsed.underlined;
    out->through = out->through || parsed.through;
    return true;
}

} // namespace

QColor HGStyleSheetParser::colorFromARGBColor(const QString &text)
{
    QString hex = text.trimmed();
    if (hex.startsWith(QLatin1Char('#')))
        hex.remove(0, 1);
    if (hex.size() != 6 && hex.size() != 8)
        return {};
    bool ok = false;
    const uint value = hex.toUInt(&ok, 16);
    if (!ok)
        return {};
    QColor c;
    if (hex.size() == 6)
        c.setRgb((value >> 16) & 0xFF, (value >> 8) & 0xFF, value & 0xFF);
    else
        c.setRgb((value >> 16) & 0xFF, (value >> 8) & 0xFF, value & 0xFF, (value >> 24) & 0xFF);
    return c;
}

int HGStyleSheetParser::elementTypeForRuleName(const QString &name)
{
    for (int t = 0; t < pmh_NUM_LANG_TYPES; ++t) {
        if (name.compare(QLatin1String(pmh_element_name_from_type(static_cast<pmh_element_type>(t))),
                         Qt::CaseInsensitive) == 0)
            return t;
    }
    return -1;
}

HGStyleSheet HGStyleSheetParser::parse(const QString &text, const ErrorHandler &onError)
{
    HGStyleSheet sheet;
    const auto report = [&](int line, const QString &message) {
        if (onError)
            onError({line, message});
    };

    OpenRule rule;
    const auto closeRule = [&] {
        if (rule.target == Target::None && rule.name.isEmpty())
            return;
        if (rule.attributeLines == 0)
            report(rule.line, errorText("No style attributes defined for style rule '%s'", rule.name));
        switch (rule.target) {
        case Target::Editor:
            sheet.editor.mergeFrom(rule.attributes);
            break;
        case Target::CurrentLine:
            sheet.editorCurrentLine.mergeFrom(rule.attributes);
            break;
        case Target::Selection:
            sheet.editorSelection.mergeFrom(rule.attributes);
            break;
        case Target::Element: {
            bool merged = false;
            for (HGStyleSheet::ElementRule &r : sheet.elements) {
                if (r.type == rule.type) {
                    r.attributes.mergeFrom(rule.attributes);
                    merged = true;
                }
            }
            if (!merged && !rule.attributes.isEmpty())
                sheet.elements.append({static_cast<pmh_element_type>(rule.type), rule.attributes});
            break;
        }
        case Target::None:
            break;
        }
        rule = OpenRule{};
    };

    const QStringList lines = text.split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i) {
        const int lineNumber = i + 1;
        QString raw = lines.at(i);
        if (raw.endsWith(QLatin1Char('\r')))
            raw.chop(1);
        const QString trimmed = raw.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('#')))
            continue;
        const qsizetype colon = trimmed.indexOf(QLatin1Char(':'));
        const qsizetype equals = trimmed.indexOf(QLatin1Char('='));
        qsizetype op = colon < 0 ? equals : (equals < 0 ? colon : qMin(colon, equals));
        const bool indented = raw.at(0).isSpace();

        if (op < 0 && !indented) {
            // A rule name.
            closeRule();
            rule.name = trimmed;
            rule.line = lineNumber;
            if (trimmed == QLatin1String("editor")) {
                rule.target = Target::Editor;
            } else if (trimmed == QLatin1String("editor-current-line")) {
                rule.target = Target::CurrentLine;
            } else if (trimmed == QLatin1String("editor-selection")) {
                rule.target = Target::Selection;
            } else {
                rule.type = elementTypeForRuleName(trimmed);
                if (rule.type < 0) {
                    report(lineNumber, errorText("Style rule '%s' is not an element type or editor rule", trimmed));
                    // Its attributes are read (and checked) but go nowhere.
                    rule.target = Target::None;
                    rule.attributeLines = 1; // one report for this rule is enough
                } else {
                    rule.target = Target::Element;
                }
            }
            continue;
        }
        if (op < 0) {
            ++rule.attributeLines; // reported here; the rule does not lack attributes too
            report(lineNumber, errorText("Invalid attribute definition: str does not contain an assignment operator (%s): '%s'",
                                         QStringLiteral(": or ="), trimmed));
            continue;
        }
        if (rule.name.isEmpty()) {
            report(lineNumber, errorText("Attribute definition outside of any style rule: '%s'", trimmed));
            continue;
        }
        ++rule.attributeLines;
        const QString name = trimmed.left(op).trimmed().toLower();
        const QString value = trimmed.mid(op + 1).trimmed();
        HGStyleAttributes &a = rule.attributes;
        const auto colour = [&](QColor *into) {
            const QColor c = colorFromARGBColor(value);
            if (!c.isValid())
                report(lineNumber, errorText("Invalid color value '%s' for attribute '%s'", value, name));
            else
                *into = c;
        };
        if (name == QLatin1String("color") || name == QLatin1String("foreground") ||
            name == QLatin1String("foreground-color")) {
            colour(&a.foreground);
        } else if (name == QLatin1String("background") || name == QLatin1String("background-color")) {
            colour(&a.background);
        } else if (name == QLatin1String("caret") || name == QLatin1String("caret-color")) {
            colour(&a.caret);
        } else if (name == QLatin1String("font-size")) {
            if (!parseFontSize(value, &a))
                report(lineNumber, errorText("Value '%s' is invalid for attribute '%s'", value, name));
        } else if (name == QLatin1String("font-family")) {
            QString family = value;
            if (family.size() >= 2 && (family.startsWith(QLatin1Char('"')) || family.startsWith(QLatin1Char('\''))) &&
                family.endsWith(family.at(0)))
                family = family.mid(1, family.size() - 2);
            if (family.isEmpty())
                report(lineNumber, errorText("Value '%s' is invalid for attribute '%s'", value, name));
            else
                a.fontFamily = family;
        } else if (name == QLatin1String("font-style")) {
            if (!parseFontStyle(value, &a))
                report(lineNumber, errorText("Value '%s' is invalid for attribute '%s'", value, name));
        } else {
            report(lineNumber, errorText("Unknown attribute '%s'", name));
        }
    }
    closeRule();
    return sheet;
}
