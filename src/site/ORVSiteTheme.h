#pragma once

#include <QString>
#include <QStringList>

// A site theme: a folder of templates and assets, found by name among the
// user's themes (SiteThemes in the themes folder) and then among the themes
// shipped with the application (PreviewAsset/SiteThemes). A plain value over
// a folder path; reading never changes the folder.
class ORVSiteTheme
{
public:
    // The theme used when none is named or the named one is missing.
    static QString defaultThemeName() { return QStringLiteral("site-medium-like"); }

    // The two places themes live. The user's folder is made on first use.
    static QString userThemesDirectory();
    static QString shippedThemesDirectory();
    // Theme names in a folder: each entry that is a folder and whose name
    // doesn't begin with ".", sorted.
    static QStringList themeNamesInDirectory(const QString &directory);

    // The folder of the named theme: the user's first, then the shipped
    // one; "" when neither holds it.
    static QString themePathWithName(const QString &name);
    // The theme a site uses: the named one when it exists, else the
    // default (which may itself be missing on a broken installation: the
    // result is then "").
    static QString themePathForSkinName(const QString &skinName);

    // The build options the theme asks for in extensions/config.json.
    struct Config {
        bool isCreateCategoriesPages = true;
        bool isCreateTagsPages = false;
        bool isCreateTreeVars = true;
        bool isCreateArchivesVarsToIndex = false;
    };

    explicit ORVSiteTheme(QString path) : m_path(std::move(path)) {}
    const QString &path() const { return m_path; }

    // A file of the theme as text ("" when missing or unreadable), with its
    // encoding detected. The name must stay inside the theme: one that
    // climbs out with ".." or is absolute reads as missing.
    QString readFile(const QString &name) const;
    bool hasFile(const QString &name) const;
    // readSkinContentByFileName: readFile, then each
    // "<!-- include(name) -->" replaced by that file of the theme, read the
    // same way but with its own includes left as they are (one level deep);
    // a name that doesn't exist leaves the comment standing.
    QString readSkinContentByFileName(const QString &name) const;
    // setupSiteConfigVars: the defaults, overridden key by key by the
    // booleans of extensions/config.json when it parses as an object.
    Config config() const;

private:
    QString filePath(const QString &name) const; // "" when outside the theme
    QString m_path;
};
