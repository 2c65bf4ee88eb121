#include "core/ORVAppPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

QString made(const QString &path) { return ORVAppPaths::createURLIfNotExist(path) ? path : QString(); }

QString documentsFolder()
{
    QString docs = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (docs.isEmpty())
        docs = QDir::homePath() + QStringLiteral("/Documents");
    return docs;
}

} // namespace

void ORVAppPaths::initApplicationIdentity()
{
    // An empty organisation keeps the folders one level deep:
    // ~/.local/share/Orvo and ~/.cache/Orvo.
    QCoreApplication::setOrganizationName(QString());
    QCoreApplication::setApplicationName(QStringLiteral("Orvo"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVO_VERSION));
}

QString ORVAppPaths::applicationSupportURL()
{
    static const QString p = made(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    return p;
}

QString ORVAppPaths::applicationCacheDirURL()
{
    static const QString p = made(QStandardPaths::writableLocation(QStandardPaths::CacheLocation));
    return p;
}

QString ORVAppPaths::applicationCacheEpubExportDirURL()
{
    static const QString p = createSubDirectoryWithPath(applicationCacheDirURL(), QStringLiteral("epubExport"));
    return p;
}

QString ORVAppPaths::applicationShellExecuteLogsDir()
{
    static const QString p =
        createSubDirectoryWithPath(applicationSupportURL(), QStringLiteral("site_publish_logs"));
    return p;
}

QString ORVAppPaths::libraryModeMainDirectorySystemDefaultURL()
{
    static const QString p = createSubDirectoryWithPath(documentsFolder(), QStringLiteral("mainlib"));
    return p;
}

QString ORVAppPaths::libraryQuickNoteLibraryURL()
{
    // Made again at every call: the quick note library may be removed by the
    // user while the program runs.
    return createSubDirectoryWithPath(applicationSupportURL(), QStringLiteral("quickNote"));
}

QString ORVAppPaths::applicationThemesDirectory()
{
    static const QString p = createSubDirectoryWithPath(documentsFolder(), QStringLiteral("themes"));
    return p;
}

QString ORVAppPaths::applicationThemesDirectoryEditorThemes()
{
    static const QString p = createSubDirectoryWithPath(applicationThemesDirectory(), QStringLiteral("EditorThemes"));
    return p;
}

QString ORVAppPaths::applicationThemesDirectoryPreviewCSS()
{
    static const QString p = createSubDirectoryWithPath(applicationThemesDirectory(), QStringLiteral("PreviewCSS"));
    return p;
}

QString ORVAppPaths::applicationThemesDirectorySiteThemes()
{
    static const QString p = createSubDirectoryWithPath(applicationThemesDirectory(), QStringLiteral("SiteThemes"));
    return p;
}

QString ORVAppPaths::applicationThemesDirectoryDefaultSiteOutput()
{
    static const QString p = createSubDirectoryWithPath(applicationThemesDirectory(), QStringLiteral("Site"));
    return p;
}

QString ORVAppPaths::applicationResourcesURL()
{
    static const QString p = [] {
        const QString fromEnv = qEnvironmentVariable("ORVO_RESOURCES_DIR");
        if (!fromEnv.isEmpty())
            return QDir(fromEnv).absolutePath();
        const QString beside = QCoreApplication::applicationDirPath() + QStringLiteral("/../share/orvo");
        return QDir(beside).absolutePath();
    }();
    return p;
}

QString ORVAppPaths::previewAssetFullPath() { return applicationResourcesURL() + QStringLiteral("/PreviewAsset"); }

QString ORVAppPaths::innerPreviewCSSFolderURL() { return previewAssetFullPath() + QStringLiteral("/previewCSS"); }

QString ORVAppPaths::applicationThemesDirectoryEditorThemesInBundle()
{
    return previewAssetFullPath() + QStringLiteral("/EditorThemes");
}

QString ORVAppPaths::applicationThemesDirectorySiteThemesInBundle()
{
    return previewAssetFullPath() + QStringLiteral("/SiteThemes");
}

bool ORVAppPaths::createURLIfNotExist(const QString &path)
{
    if (path.isEmpty())
        return false;
    const QFileInfo fi(path);
    if (fi.isDir())
        return true;
    if (fi.exists())
        return false; // a plain file is in the way
    return QDir().mkpath(path);
}

QString ORVAppPaths::createSubDirectoryWithPath(const QString &parent, const QString &subDirectory)
{
    if (parent.isEmpty())
        return {};
    return made(QDir(parent).filePath(subDirectory));
}
