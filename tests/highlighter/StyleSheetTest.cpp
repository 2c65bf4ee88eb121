// Editor themes: the style sheet format, its error texts, the shipped
// themes, and how a theme is found and falls back.
#include "highlight/HGEditorThemes.h"
#include "highlight/HGStyleSheetParser.h"
#include "highlight/pmh_parser/pmh_parser.h"
#include "support/TestEnv.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

namespace {

QList<HGStyleSheetError> errorsOf(const QString &text, HGStyleSheet *sheet = nullptr)
{
    QList<HGStyleSheetError> errors;
    const HGStyleSheet parsed = HGStyleSheetParser::parse(text, [&](const HGStyleSheetError &e) { errors << e; });
    if (sheet)
        *sheet = parsed;
    return errors;
}

QString shippedThemesFolder()
{
    return QDir(qEnvironmentVariable("ORVO_SOURCE_DIR")).filePath(QStringLiteral("resources/PreviewAsset/EditorThemes"));
}

} // namespace

TEST(StyleSheetParser, ReadsEveryAttributeForm)
{
    HGStyleSheet sheet;
    const auto errors = errorsOf(QStringLiteral("# a comment\n"
                                                "editor\n"
                                                "  foreground: 101112\n"
                                                "  background = #fdf6e3\n"
                                                "  caret-color: 80ff0000\n"
                                                "editor-current-line\n"
                                                "background-color: eee8d5\n"
                                                "\n"
                                                "h1\n"
                                                "color: cb4b16\n"
                                                "font-size: +6\n"
                                                "font-style: bold, underlined\n"
                                                "   # comments inside a rule\n"
                                                "CODE\n"
                                                "foreground-color: 2aa198\n"
                                                "font-family: \"DejaVu Sans Mono\"\n"
                                                "font-size: 13pt\n"
                                                "font-style: italic through\n"
                                                "H1\n"
                                                "background: 000000\n"),
                                 &sheet);
    EXPECT_TRUE(errors.isEmpty());
    EXPECT_EQ(sheet.editor.foreground, QColor(0x10, 0x11, 0x12));
    EXPECT_EQ(sheet.editor.background, QColor(0xfd, 0xf6, 0xe3));
    EXPECT_EQ(sheet.editor.caret, QColor(0xff, 0, 0, 0x80)) << "eight digits are ARGB";
    EXPECT_EQ(sheet.editorCurrentLine.background, QColor(0xee, 0xe8, 0xd5));
    ASSERT_EQ(sheet.elements.size(), 2);
    const HGStyleAttributes *h1 = sheet.attributesForType(pmh_H1);
    ASSERT_NE(h1, nullptr);
    EXPECT_EQ(h1->foreground, QColor(0xcb, 0x4b, 0x16));
    EXPECT_EQ(h1->background, QColor(0, 0, 0)) << "a rule given twice adds to itself";
    EXPECT_TRUE(h1->fontSizeIsRelative);
    EXPECT_EQ(h1->fontSize, 6);
    EXPECT_TRUE(h1->bold && h1->underlined && !h1->italic);
    const HGStyleAttributes *code = sheet.attributesForType(pmh_CODE);
    ASSERT_NE(code, nullptr);
    EXPECT_EQ(code->fontFamily, QStringLiteral("DejaVu Sans Mono"));
    EXPECT_FALSE(code->fontSizeIsRelative);
    EXPECT_EQ(code->fontSize, 13);
    EXPECT_TRUE(code->italic && code->through);
}

TEST(StyleSheetParser, EachFaultHasItsTextAndTheRestApplies)
{
    const struct {
        const char *sheet;
        int line;
        const char *message;
    } cases[] = {
        {"H1\n\nH2\ncolor: ff0000", 1, "No style attributes defined for style rule 'H1'"},
        {"H1\n  colour ff0000", 2,
         "Invalid attribute definition: str does not contain an assignment operator (: or =): 'colour ff0000'"},
        {"H1\nfont-size: big", 2, "Value 'big' is invalid for attribute 'font-size'"},
        {"H1\nfont-size: -3", 0, ""},
        {"H1\nfont-size: 0", 2, "Value '0' is invalid for attribute 'font-size'"},
        {"H1\nfont-style: wobbly", 2, "Value 'wobbly' is invalid for attribute 'font-style'"},
        {"H1\ncolor: 12345", 2, "Invalid color value '12345' for attribute 'color'"},
        {"H1\nbackground: 00ff00zz", 2, "Invalid color value '00ff00zz' for attribute 'background'"},
        {"HEADING\ncolor: ff0000", 1, "Style rule 'HEADING' is not an element type or editor rule"},
        {"H1\nshadow: 1", 2, "Unknown attribute 'shadow'"},
        {"color: ff0000\nH1\ncolor: 00ff00", 1, "Attribute definition outside of any style rule: 'color: ff0000'"},
    };
    for (const auto &c : cases) {
        HGStyleSheet sheet;
        const auto errors = errorsOf(QString::fromUtf8(c.sheet), &sheet);
        if (*c.message == 0) {
            EXPECT_TRUE(errors.isEmpty()) << c.sheet; // a relative size below zero is a valid change
            continue;
        }
        ASSERT_EQ(errors.size(), 1) << c.sheet;
        EXPECT_EQ(errors.first().message.toStdString(), c.message);
        EXPECT_EQ(errors.first().line, c.line) << c.sheet;
    }
    HGStyleSheet sheet;
    errorsOf(QStringLiteral("H1\ncolor: nonsense\nfont-style: bold\nEMPH\ncolor: 00ff00\nBOGUS\ncolor: 000000"), &sheet);
    ASSERT_NE(sheet.attributesForType(pmh_H1), nullptr) << "a rule with one bad value keeps its good ones";
    EXPECT_TRUE(sheet.attributesForType(pmh_H1)->bold);
    EXPECT_FALSE(sheet.attributesForType(pmh_H1)->foreground.isValid());
    ASSERT_NE(sheet.attributesForType(pmh_EMPH), nullptr);
    EXPECT_EQ(sheet.elements.size(), 2) << "an unknown rule goes nowhere";
}

TEST(StyleSheetParser, ColoursAreRGBOrARGB)
{
    EXPECT_EQ(HGStyleSheetParser::colorFromARGBColor(QStringLiteral("ff0000")), QColor(255, 0, 0));
    EXPECT_EQ(HGStyleSheetParser::colorFromARGBColor(QStringLiteral("#00Ff00")), QColor(0, 255, 0));
    EXPECT_EQ(HGStyleSheetParser::colorFromARGBColor(QStringLiteral("400000ff")), QColor(0, 0, 255, 0x40));
    for (const char *bad : {"", "fff", "fffff", "1234567", "gg0000", "#", "123456789"})
        EXPECT_FALSE(HGStyleSheetParser::colorFromARGBColor(QString::fromLatin1(bad)).isValid()) << bad;
}

TEST(EditorThemes, ShippedThemesAreCompleteAndClean)
{
    const QStringList names = QDir(shippedThemesFolder()).entryList({QStringLiteral("*.style")}, QDir::Files);
    ASSERT_GE(names.size(), 4);
    int dark = 0;
    for (const QString &file : names) {
        HGStyleSheet sheet;
        const auto errors = errorsOf(QString::fromUtf8(orvotest::readFile(shippedThemesFolder() + QLatin1Char('/') + file)), &sheet);
        EXPECT_TRUE(errors.isEmpty()) << file.toStdString() << ": " << (errors.isEmpty() ? "" : errors.first().message.toStdString());
        for (int t = 0; t < pmh_NUM_LANG_TYPES; ++t)
            EXPECT_NE(sheet.attributesForType(pmh_element_type(t)), nullptr)
                << file.toStdString() << " has no rule for " << pmh_element_name_from_type(pmh_element_type(t));
        ASSERT_TRUE(sheet.editor.background.isValid() && sheet.editor.foreground.isValid()) << file.toStdString();
        // Text must stand out from its ground.
        EXPECT_GT(qAbs(sheet.editor.background.lightness() - sheet.editor.foreground.lightness()), 90) << file.toStdString();
        dark += sheet.editor.background.lightness() < 128;
    }
    EXPECT_GE(dark, 2) << "light and dark themes both ship";
    for (const char *required : {"solarized-light.style", "Tomorrow.style"})
        EXPECT_TRUE(names.contains(QString::fromLatin1(required))) << required;
    EXPECT_TRUE(errorsOf(HGEditorThemes::defaultStyleSheetText()).isEmpty());
}

TEST(EditorThemes, UserFolderFirstThenShippedAndFallbacks)
{
    QTemporaryDir user;
    QTemporaryDir shipped;
    orvotest::writeFile(shipped.filePath(QStringLiteral("calm.style")), "H1\ncolor: 111111\n");
    orvotest::writeFile(shipped.filePath(QStringLiteral("plain.style")), "H2\ncolor: 222222\n");
    orvotest::writeFile(user.filePath(QStringLiteral("calm.style")), "H1\ncolor: 333333\n");
    orvotest::writeFile(user.filePath(QStringLiteral("broken.style")), "H1\ncolor: zz\nEMPH\ncolor: 444444\n");
    orvotest::writeFile(user.filePath(QStringLiteral("empty.style")), "# nothing here\n");
    HGEditorThemes::setSearchFoldersForTesting({user.path(), shipped.path()});

    EXPECT_EQ(HGEditorThemes::availableThemeNames(),
              (QStringList{QStringLiteral("broken"), QStringLiteral("calm"), QStringLiteral("empty"), QStringLiteral("plain")}));

    const auto calm = HGEditorThemes::loadTheme(QStringLiteral("calm"));
    EXPECT_EQ(calm.path, user.filePath(QStringLiteral("calm.style"))) << "the user's file wins";
    EXPECT_EQ(calm.sheet.attributesForType(pmh_H1)->foreground, QColor(0x33, 0x33, 0x33));
    EXPECT_TRUE(calm.errors.isEmpty());
    EXPECT_FALSE(calm.fellBackToDefault);
    EXPECT_EQ(calm.sheet.attributesForType(pmh_EMPH), nullptr) << "a clean theme is taken as written";

    const auto plain = HGEditorThemes::loadTheme(QStringLiteral("plain"));
    EXPECT_EQ(plain.path, shipped.filePath(QStringLiteral("plain.style")));

    const HGStyleSheet builtIn = HGEditorThemes::defaultStyleSheet();
    const auto broken = HGEditorThemes::loadTheme(QStringLiteral("broken"));
    ASSERT_EQ(broken.errors.size(), 1);
    EXPECT_EQ(broken.errors.first().line, 2);
    EXPECT_TRUE(broken.fellBackToDefault);
    EXPECT_EQ(broken.sheet.attributesForType(pmh_EMPH)->foreground, QColor(0x44, 0x44, 0x44)) << "its valid rules still apply";
    EXPECT_EQ(broken.sheet.attributesForType(pmh_CODE)->foreground, builtIn.attributesForType(pmh_CODE)->foreground);

    const auto missing = HGEditorThemes::loadTheme(QStringLiteral("nowhere"));
    EXPECT_TRUE(missing.path.isEmpty());
    ASSERT_EQ(missing.errors.size(), 1);
    EXPECT_EQ(missing.errors.first().message, QStringLiteral("Editor theme 'nowhere' was not found"));
    EXPECT_EQ(missing.sheet.editor.background, builtIn.editor.background);

    const auto empty = HGEditorThemes::loadTheme(QStringLiteral("empty"));
    EXPECT_TRUE(empty.fellBackToDefault);
    EXPECT_EQ(empty.errors.size(), 1);
    EXPECT_TRUE(HGEditorThemes::loadTheme(QStringLiteral("../calm")).path.isEmpty()) << "names are no paths";
    HGEditorThemes::setSearchFoldersForTesting({});
}
