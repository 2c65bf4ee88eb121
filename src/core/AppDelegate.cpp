#include "core/AppDelegate.h"

#include "core/MyPreferences.h"
#include "core/ORVAppPaths.h"
#include "core/ORVBookmark.h"
#include "core/ORVExternalRecentDocumentManager.h"
#include "core/ORVExternalSourceList.h"
#include "core/ORVLibraryRecentDocumentManager.h"
#include "core/date_uuid.h"
#include "library/ORVDBManager.h"
#include "library/ORVDirWatchingController.h"
#include "library/ORVExternalSourceItemManager.h"
#include "library/ORVExternalTree.h"
#include "library/ORVLibraryFolder.h"
#include "platform/TABFileMonitor.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>

namespace {

// The stray document pass scans docs/ and so runs at most this often; list
// reloads come in bursts when the user clicks through the tree.
constexpr qint64 kStrayPassIntervalMs = 10 * 1000;

// How often the reload flag is looked at. Several writes of one change by
// another program (a sync, a SQLite tool) fall into one reload, and the
// windows reload only when the file is back after a replace.
constexpr int kReloadCheckIntervalMs = 600;

// A path as the maps compare it: absolute, clean, symbolic links resolved
// when the path exists.
QString comparablePath(const QString &path)
{
    if (path.isEmpty())
        return {};
    const QFileInfo fi(path);
    const QString canonical = fi.canonicalFilePath();
    return canonical.isEmpty() ? QDir::cleanPath(fi.absoluteFilePath()) : canonical;
}

} // namespace

AppDelegate *AppDelegate::sharedDelegate()
{
    static AppDelegate *app = new AppDelegate(MyPreferences::sharedInstance(), ORVAppPaths::applicationSupportURL());
    return app;
}

AppDelegate::AppDelegate(MyPreferences *prefs, QString applicationSupportDir, QObject *parent)
    : QObject(parent), m_prefs(prefs), m_supportDir(std::move(applicationSupportDir))
{
    ORVAppPaths::createURLIfNotExist(m_supportDir);
    // Preferences are flushed by their writers and by the store's own end,
    // not after every single change.
    m_prefs->setShouldAutomaticallySynchronize(false);
    m_textViewStateDataDic.reserve(25);
    m_reloadTimer.setInterval(kReloadCheckIntervalMs);
    connect(&m_reloadTimer, &QTimer::timeout, this, &AppDelegate::monitorLibraryNeedTooReloadFire);
}

AppDelegate::~AppDelegate() = default;

QString AppDelegate::statePath(const QString &fileName) const { return QDir(m_supportDir).filePath(fileName); }

QString AppDelegate::libraryQuickNoteLibraryURL() const
{
    return ORVAppPaths::createSubDirectoryWithPath(m_supportDir, QStringLiteral("quickNote"));
}

// ---- location

QString AppDelegate::libraryModeMainURL()
{
    if (const auto path = ORVBookmark::resolveBookmarkData(m_prefs->bookmarkForMainLibrarySaveURL()))
        return comparablePath(*path);
    QFile file(statePath(QStringLiteral("libraryLocationURL.data")));
    if (file.open(QIODevice::ReadOnly)) {
        const QByteArray bookmark = file.readAll();
        if (const auto path = ORVBookmark::resolveBookmarkData(bookmark)) {
            m_prefs->setBookmarkForMainLibrarySaveURL(bookmark);
            const QString main = comparablePath(*path);
            m_dicLibraryAllAccessingScoped.insert(main);
            return main;
        }
    }
    return {};
}

bool AppDelegate::saveTheLibraryLocationURLToDiskWithData(const QByteArray &bookmarkData)
{
    QSaveFile file(statePath(QStringLiteral("libraryLocationURL.data")));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(bookmarkData);
    return file.commit();
}

bool AppDelegate::setLibraryModeMainURL(const QString &libraryPath, QString *error)
{
    const QString path = comparablePath(libraryPath);
    const QByteArray bookmark = ORVBookmark::bookmarkDataWithPath(path);
    if (bookmark.isEmpty() || !saveTheLibraryLocationURLToDiskWithData(bookmark)) {
        if (error)
            *error = QStringLiteral("cannot write %1").arg(statePath(QStringLiteral("libraryLocationURL.data")));
        return false;
    }
    m_prefs->setBookmarkForMainLibrarySaveURL(bookmark);
    if (!m_prefs->synchronize()) {
        if (error)
            *error = QStringLiteral("cannot write the preferences to %1").arg(m_prefs->settingsFilePath());
        return false;
    }
    // As when the user switches libraries: the old managers go, the new
    // library is taken up.
    forgetLibraryManagers();
    clearAndSetupLibrarySecurityScoped();
    return true;
}

void AppDelegate::forgetLibraryManagers()
{
    m_dicLibraryDBManager.clear();
    delete m_mainDBFileMonitor;
    m_mainDBFileMonitor = nullptr;
    m_reloadTimer.stop();
    m_isNeedToReloadLibraryCategories = false;
}

bool AppDelegate::checkIsLibraryVaidWithURL(const QString &libURL)
{
    return !libURL.isEmpty() && ORVLibraryFolder::checkIsLibraryWithURL(libURL);
}

QString AppDelegate::resolvedLibraryPath(const QString &libURL)
{
    return libURL.isEmpty() ? libraryModeMainURL() : comparablePath(libURL);
}

QString AppDelegate::libraryURLByFileURL(const QString &filePath)
{
    if (filePath.isEmpty())
        return {};
    const QString candidate = comparablePath(QFileInfo(QFileInfo(filePath).absolutePath()).absolutePath());
    if (m_dicLibraryAllAccessingScoped.contains(candidate))
        return candidate;
    const QString main = libraryModeMainURL();
    return !main.isEmpty() && main == candidate ? main : QString();
}

QString AppDelegate::libraryURLStartAccessingSecurityScopedResourceByURL(const QString &libURL)
{
    const QString path = resolvedLibraryPath(libURL);
    if (!path.isEmpty())
        m_dicLibraryAllAccessingScoped.insert(path);
    return path;
}

void AppDelegate::libraryURLStopAllAccessingSecurityScopedResource() { m_dicLibraryAllAccessingScoped.clear(); }

void AppDelegate::clearAndSetupLibrarySecurityScoped()
{
    libraryURLStopAllAccessingSecurityScopedResource();
    libraryURLStartAccessingSecurityScopedResourceByURL(QString());
    libraryURLStartAccessingSecurityScopedResourceByURL(libraryQuickNoteLibraryURL());
}

QStringList AppDelegate::dicLibraryAllAccessingScoped() const
{
    QStringList paths(m_dicLibraryAllAccessingScoped.begin(), m_dicLibraryAllAccessingScoped.end());
    paths.sort();
    return paths;
}

QString AppDelegate::libraryModeDocsURLByLibURL(const QString &libURL)
{
    const QString path = resolvedLibraryPath(libURL);
    return path.isEmpty() ? QString() : ORVLibraryFolder::libraryModeDocsURLByLibURL(path);
}

QString AppDelegate::libraryModeMetaDataURLByLibURL(const QString &libURL)
{
    const QString path = resolvedLibraryPath(libURL);
    return path.isEmpty() ? QString() : ORVLibraryFolder::libraryModeMetaDataURLByLibURL(path);
}

// ---- managers

std::shared_ptr<ORVDBManager> AppDelegate::libraryModeDBManagerWithURLIsReload(const QString &libURL, bool isReload)
{
    const QString library = resolvedLibraryPath(libURL);
    if (library.isEmpty())
        return nullptr;
    const QString dbPath = ORVLibraryFolder::databasePath(library);
    if (!isReload) {
        const auto it = m_dicLibraryDBManager.find(dbPath);
        if (it != m_dicLibraryDBManager.end())
            return it->second;
    }
    if (!QFileInfo(dbPath).isFile())
        return nullptr;
    auto manager = std::make_shared<ORVDBManager>(dbPath);
    m_dicLibraryDBManager[dbPath] = manager;
    if (!m_mainDBFileMonitor) {
        m_mainDBFileMonitor = new TABFileMonitor(dbPath, this);
        connect(m_mainDBFileMonitor, &TABFileMonitor::didSeeChange, this, [this](TABFileMonitor *, int change) {
            if (change == TABFileMonitor::ContentChanged)
                m_isNeedToReloadLibraryCategories = true;
        });
        m_reloadTimer.start();
    }
    return manager;
}

std::shared_ptr<ORVDBManager> AppDelegate::libraryModeDBManagerByURL(const QString &libURL)
{
    return libraryModeDBManagerWithURLIsReload(libURL, false);
}

std::shared_ptr<ORVDBManager> AppDelegate::libraryModeMainDBManager() { return libraryModeDBManagerByURL(QString()); }

std::shared_ptr<ORVDBManager> AppDelegate::reloadTheMainLibrary()
{
    return libraryModeDBManagerWithURLIsReload(QString(), true);
}

void AppDelegate::monitorLibraryNeedTooReloadFire()
{
    if (!m_isNeedToReloadLibraryCategories || !m_mainDBFileMonitor)
        return;
    const QString dbPath = m_mainDBFileMonitor->filePath();
    // During a replace the file is briefly away: wait until it is back.
    if (!QFileInfo::exists(dbPath))
        return;
    m_isNeedToReloadLibraryCategories = false;
    // What another writer changed is not in the caches.
    const auto it = m_dicLibraryDBManager.find(dbPath);
    if (it != m_dicLibraryDBManager.end())
        it->second->setAllRefetchFlags();
    emit doReloadTheLibraryCatTreeAndDocsListData();
}

int AppDelegate::reloadUncategoriesDocumentToLibraryWithURL(const QString &libURL)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (now - m_lastStrayPassMs < kStrayPassIntervalMs)
        return 0;
    m_lastStrayPassMs = now;
    const std::shared_ptr<ORVDBManager> manager = libraryModeDBManagerByURL(libURL);
    if (!manager)
        return 0;
    return std::max(0, ORVLibraryFolder::registerStrayDocuments(*manager, resolvedLibraryPath(libURL)));
}

QString AppDelegate::libraryModeFirstDocumentURLByLibURL(const QString &libURL)
{
    const QString docs = libraryModeDocsURLByLibURL(libURL);
    if (docs.isEmpty())
        return {};
    QList<QPair<qint64, QString>> numbered;
    for (const QFileInfo &fi : QDir(docs).entryInfoList(QDir::Files)) {
        if (fi.suffix() != QLatin1String("md"))
            continue;
        bool ok = false;
        const qint64 stem = fi.completeBaseName().toLongLong(&ok);
        if (ok)
            numbered.append({stem, fi.absoluteFilePath()});
    }
    if (!numbered.isEmpty())
        return std::min_element(numbered.begin(), numbered.end())->second;
    const QString path = QDir(docs).filePath(QStringLiteral("%1.md").arg(nowDateUUID()));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write("# ");
    return file.commit() ? path : QString();
}

// ---- launch and quit

void AppDelegate::applicationDidFinishLaunching()
{
    m_lastStrayPassMs = QDateTime::currentMSecsSinceEpoch();
    readTextViewStateDataFromDisk();
}

void AppDelegate::applicationDidResignActive()
{
    externalRecentDocumentManager()->saveItems();
    libraryRecentDocumentManager()->saveItems();
    if (m_externalSourceList)
        m_externalSourceList->saveItems();
    saveTextViewStateDataToDisk();
}

void AppDelegate::applicationWillTerminate(const QVariantList &windowStates)
{
    saveAppStateDataWithDataArray(windowStates);
    applicationDidResignActive();
    m_prefs->synchronize();
    libraryURLStopAllAccessingSecurityScopedResource();
}
