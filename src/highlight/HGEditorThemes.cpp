#include "highlight/HGEditorThemes.h"

#include "core/ORVAppPaths.h"
#include "highlight/HGStyleSheetParser.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

namespace {

QStringList &testFolders()
{
    static QStringList folders;
    return folders;
}

// A theme file larger than this is not a theme; reading stops there.
constexpr qint64 kLargestThemeFile = 1024 * 1024;

const char kDefaultTheme[] = R"(# The built-in theme: used when no theme file can be read.
editor
foreground: 3b4045
background: fcfcfa
caret: 1f6feb

editor-current-line
background: f2f1ec

editor-selection
background: cfe1f7

H1
foreground: b8451f
font-style: bold
font-size: +6

H2
foreground: b8451f
font-style: bold
font-size: +4

H3
foreground: b8451f
font-style: bold
font-size: +2

H4
foreground: b8451f
font-style: bold

H5
foreground: b8451f
font-style: bold

H6
foreground: b8451f

EMPH
foreground: 6b4f9e
font-style: italic

STRONG
foreground: 2d3136
font-style: bold

STRIKE
foreground: 8a8f94
font-style: through

MARK
background: fbeeb4

CODE
foreground: 0f7a6c
background: eef1ee

VERBATIM
foreground: 0f7a6c

LINK
foreground: 1f6feb

AUTO_LINK_URL
foreground: 1f6feb
font-style: underlined

AUTO_LINK_EMAIL
foreground: 1f6feb
font-style: underlined

IMAGE
foreground: a0428c

REFERENCE
foreground: 8a8f94

NOTE
foreground: 8a8f94

LIST_BULLET
foreground: c2410c

LIST_ENUMERATOR
foreground: c2410c

BLOCKQUOTE
foreground: 5b6b78

HRULE
foreground: 8a8f94

HTML
foreground: 8a6d3b

HTMLBLOCK
foreground: 8a6d3b

HTML_ENTITY
foreground: 9c5d27

COMMENT
foreground: 9aa0a6
font-style: italic
)";

} // namespace

QStringList HGEditorThemes::searchFolders()
{
    if (!testFolders().isEmpty())
        return testFolders();
    return {ORVAppPaths::applicationThemesDirectoryEditorThemes(),
            ORVAppPaths::applicationThemesDirectoryEditorThemesInBundle()};
}

void HGEditorThemes::setSearchFoldersForTesting(const QStringList &folders) { testFolders() = folders; }

QStringList HGEditorThemes::availableThemeNames()
{
    QStringList names;
    QSet<QString> seen;
    for (const QString &folder : searchFolders()) {
        if (folder.isEmpty())
            continue;
        const QFileInfoList files =
            QDir(folder).entryInfoList({QStringLiteral("*.") + fileExtension()}, QDir::Files | QDir::Readable, QDir::Name);
        for (const QFileInfo &f : files) {
            const QString name = f.completeBaseName();
            if (!seen.contains(name)) {
                seen.insert(name);
                names << name;
            }
        }
    }
    return names;
}

QString HGEditorThemes::pathOfTheme(const QString &name)
{
    if (name.isEmpty() || name.contains(QLatin1Char('/')))
        return {};
    for (const QString &folder : searchFolders()) {
        if (folder.isEmpty())
            continue;
        const QString path = QDir(folder).filePath(name + QLatin1Char('.') + fileExtension());
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}

HGEditorThemes::LoadedTheme HGEditorThemes::loadTheme(const QString &name)
{
    LoadedTheme theme;
    theme.name = name;
    theme.path = pathOfTheme(name);
    if (theme.path.isEmpty()) {
        theme.errors.append({0, QStringLiteral("Editor theme '%1' was not found").arg(name)});
        theme.sheet = defaultStyleSheet();
        theme.fellBackToDefault = true;
        return theme;
    }
    QFile file(theme.path);
    if (!file.open(QIODevice::ReadOnly)) {
        theme.errors.append({0, QStringLiteral("Editor theme '%1' cannot be read: %2").arg(name, file.errorString())});
        theme.sheet = defaultStyleSheet();
        theme.fellBackToDefault = true;
        return theme;
    }
    const QByteArray bytes = file.read(kLargestThemeFile);
    const HGStyleSheet sheet = HGStyleSheetParser::parse(QString::fromUtf8(bytes),
                                                         [&](const HGStyleSheetError &e) { theme.errors.append(e); });
    if (theme.errors.isEmpty() && sheet.hasAnyRule()) {
        theme.sheet = sheet;
        return theme;
    }
    if (!sheet.hasAnyRule() && theme.errors.isEmpty())
        theme.errors.append({0, QStringLiteral("Editor theme '%1' defines no style rule").arg(name)});
    theme.fellBackToDefault = true;
    theme.sheet = defaultStyleSheet();
    theme.sheet.editor.mergeFrom(sheet.editor);
    theme.sheet.editorCurrentLine.mergeFrom(sheet.editorCurrentLine);
    theme.sheet.editorSelection.mergeFrom(sheet.editorSelection);
    for (const HGStyleSheet::ElementRule &rule : sheet.elements) {
        bool replaced = false;
        for (HGStyleSheet::ElementRule &own : theme.sheet.elements) {
            if (own.type == rule.type) {
                own.attributes = rule.attributes;
                replaced = true;
            }
        }
        if (!replaced)
            theme.sheet.elements.append(rule);
    }
    return theme;
}

QString HGEditorThemes::defaultStyleSheetText() { return QString::fromUtf8(kDefaultTheme); }

HGStyleSheet HGEditorThemes::defaultStyleSheet()
{
    static const HGStyleSheet sheet = HGStyleSheetParser::parse(defaultStyleSheetText());
    return sheet;
}
