#include "site/ORVSiteBuildController.h"

#include "core/MyPreferences.h"
#include "core/ORVAppPaths.h"
#include "core/ORVBookmark.h"
#include "library/ORVDBManager.h"
#include "site/ORVSiteBuilder.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>

namespace
{

QString lockPath(qint64 catUUID)
{
    return QDir(ORVAppPaths::applicationCacheDirURL()).filePath(QStringLiteral("site-building-%1.lock").arg(catUUID));
}

} // namespace

QString ORVSiteBuildController::libraryModeBuildSiteURLByLibURL(const QString &)
{
    const QByteArray chosen = MyPreferences::sharedInstance()->bookmarkForMainLibraryBuildSiteURL();
    if (const auto path = ORVBookmark::pathInBookmarkData(chosen)) {
        if (QFileInfo(*path).isDir())
            return *path;
    }
    return ORVAppPaths::applicationThemesDirectoryDefaultSiteOutput();
}

bool ORVSiteBuildController::siteIsBuilding(qint64 catUUID)
{
    QLockFile lock(lockPath(catUUID));
    if (!lock.tryLock(0))
        return true;
    lock.unlock();
    return false;
}

ORVSiteBuildController::Result ORVSiteBuildController::buildSiteByType(
    const std::shared_ptr<ORVDBManager> &dbManager, const QString &libURL, qint64 catUUID, int type,
    const QString &outputBaseURL)
{
    Result result;
    if (!dbManager) {
        result.message = QStringLiteral("the library can't be opened");
        return result;
    }
    const ORVCatTreeItemPtr top = dbManager->topCatByCatUUID(catUUID);
    if (!top) {
        result.message = QStringLiteral("there is no category %1").arg(catUUID);
        return result;
    }
    if (top->catType != ORVCatType::SiteCategory) {
        result.message = QStringLiteral("the category \"%1\" is not a site (make its top category a site first)")
                             .arg(top->name);
        return result;
    }
    QLockFile lock(lockPath(top->uuid));
    lock.setStaleLockTime(0); // a build may take long; only a dead process's lock is stale
    if (!lock.tryLock(0)) {
        result.message = QStringLiteral("the site \"%1\" is being built already").arg(top->name);
        return result;
    }
    const QString base = outputBaseURL.isEmpty() ? libraryModeBuildSiteURLByLibURL(libURL) : outputBaseURL;
    ORVSiteBuilder builder(dbManager, libURL, top->uuid, base);
    if (!builder.isValid()) {
        result.message = QStringLiteral("the site's category %1 can't be read").arg(top->uuid);
        return result;
    }
    result.started = true;
    const bool ok = builder.buildSiteWithType(type);
    result.outputURL = builder.outputURL();
    result.warnings = builder.warnings();
    result.writtenFiles = builder.writtenFileCount();
    result.copiedMedia = builder.copiedMediaCount();
    if (!builder.errorArray().isEmpty())
        result.message = builder.errorArray().first().description();
    result.succeeded = ok && builder.errorArray().isEmpty();

    // The build's date is stored whether it failed or not, as whole seconds.
    if (std::optional<ORVDBCat> row = dbManager->itemDBCatWithUUID(top->uuid)) {
        row->setSiteLastBuildDate(QDateTime::currentSecsSinceEpoch());
        dbManager->saveItemDBCat(*row);
    }
    return result;
}
