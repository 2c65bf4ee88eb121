#pragma once

#include "highlight/HGStyleSheet.h"

#include <QList>
#include <QString>
#include <QStringList>

// The editor's themes: style sheet files named "<name>.style", looked up in
// the user's EditorThemes folder first and then among those shipped with the
// program, so that a user's file of the same name replaces a shipped one.
class HGEditorThemes
{
public:
    // A theme as loaded, with what went wrong on the way.
    struct LoadedTheme {
        QString name;
        QString path;                    // "" when no file was found
        HGStyleSheet sheet;
        QList<HGStyleSheetError> errors; // the file's faults (line 0: about the file itself)
        bool fellBackToDefault = false;  // the built-in theme stands in, in full or in part
    };

    static QString fileExtension() { return QStringLiteral("style"); }

    // The folders searched, in order. Tests may replace them.
    static QStringList searchFolders();
    static void setSearchFoldersForTesting(const QStringList &folders);

    // Every theme name found, user themes first, each name once, sorted
    // within each folder.
    static QStringList availableThemeNames();
    // The file of `name`, or "" when no folder holds it.
    static QString pathOfTheme(const QString &name);

    // Loads `name`. A missing or unreadable file gives the built-in theme
    // with an error saying why. A file with faults gives its valid rules
    // laid over the built-in theme, so nothing it failed to say is left
    // unstyled, and its errors.
    static LoadedTheme loadTheme(const QString &name);

    // The built-in theme, a light one; it needs no file.
    static HGStyleSheet defaultStyleSheet();
    static QString defaultStyleSheetText();
};
