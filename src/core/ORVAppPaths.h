#pragma once

#include <QString>

// Where everything lives. Each accessor computes its path once and keeps it
// for the process; paths are absolute local paths (the names keep "URL" as
// the rest of the program calls them). Folders marked "created" are made,
// with their parents, when missing.
//
// The user's folders follow the XDG variables: application support is
// $XDG_DATA_HOME/Orvo, caches $XDG_CACHE_HOME/Orvo, documents the user's
// documents folder. Resources are read-only and found, in order, in
// $ORVO_RESOURCES_DIR, or ../share/orvo beside the running binary (the build
// tree and an installed prefix have the same layout).
class ORVAppPaths
{
public:
    // Sets the application and organisation names that the folders above
    // derive from. Every main (app, command line, tests) calls it first.
    static void initApplicationIdentity();

    static QString applicationSupportURL();                    // created
    static QString applicationCacheDirURL();                   // created
    static QString applicationCacheEpubExportDirURL();         // caches/epubExport, created
    static QString applicationShellExecuteLogsDir();           // support/site_publish_logs, created
    static QString libraryModeMainDirectorySystemDefaultURL(); // documents/mainlib, created; "" on failure
    static QString libraryQuickNoteLibraryURL();               // support/quickNote, created at every call
    static QString applicationThemesDirectory();               // documents/themes, created
    static QString applicationThemesDirectoryEditorThemes();   // themes/EditorThemes, created
    static QString applicationThemesDirectoryPreviewCSS();     // themes/PreviewCSS, created
    static QString applicationThemesDirectorySiteThemes();     // themes/SiteThemes, created
    static QString applicationThemesDirectoryDefaultSiteOutput(); // themes/Site, created

    static QString applicationResourcesURL();                      // share/orvo, read-only
    static QString previewAssetFullPath();                         // resources/PreviewAsset
    static QString innerPreviewCSSFolderURL();                     // PreviewAsset/previewCSS
    static QString applicationThemesDirectoryEditorThemesInBundle(); // PreviewAsset/EditorThemes
    static QString applicationThemesDirectorySiteThemesInBundle();   // PreviewAsset/SiteThemes

    // Makes the folder and its parents when missing; false when it cannot.
    static bool createURLIfNotExist(const QString &path);
    // parent/sub, created when missing; "" when it cannot be made.
    static QString createSubDirectoryWithPath(const QString &parent, const QString &subDirectory);
};
