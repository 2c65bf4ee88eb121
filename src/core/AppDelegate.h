#pragma once

#include "core/ORVSettingsFile.h"
#include "core/ORVTextViewStateData.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>
#include <QVariantList>
#include <QVariantMap>

#include <map>
#include <memory>
#include <optional>

class MyPreferences;
class ORVDBManager;
class ORVDirWatchingController;
class ORVExternalRecentDocumentManager;
class ORVExternalSourceItemManager;
class ORVExternalSourceList;
class ORVExternalTree;
class ORVLibraryRecentDocumentManager;
class ORVServiceItemRegistry;
class TABFileMonitor;

// The application object: where everything lives and the objects the whole
// program shares. It finds the main library, keeps one ORVDBManager per
// library database and watches the main one for other writers, reads and
// writes the state files of the application support folder, keeps the
// editing positions of documents and the recent document lists, and
// carries settings from one machine to another. Windows are not its
// business: the desktop shell builds on it, and so does the command line.
//
// Shared objects are made on first use and kept until the object ends.
// Paths are absolute local paths ("URL" in the names, as the rest of the
// program calls them); "" stands for "none". Thread: the main thread.
class AppDelegate : public QObject
{
    Q_OBJECT
public:
    // The process's application object, over the user's preferences and
    // folders. Made on first use, kept until exit.
    static AppDelegate *sharedDelegate();

    // An application object over the given preferences (not owned) and
    // application support folder: tests and tools use their own.
    AppDelegate(MyPreferences *prefs, QString applicationSupportDir, QObject *parent = nullptr);
    ~AppDelegate() override;

    // The preferences, with automatic writing turned off: whoever changes
    // them calls synchronize() (the store also writes when it ends).
    MyPreferences *prfs() const { return m_prefs; }
    const QString &applicationSupportURL() const { return m_supportDir; }
    // supportDir/quickNote, made at every call.
    QString libraryQuickNoteLibraryURL() const;

    // ---- The library's location

    // libraryModeMainURL: the preference bookmarkForMainLibrarySaveURL when
    // it resolves; else libraryLocationURL.data when it resolves (its
    // content then goes into the preference); else "" (the first-run state).
    QString libraryModeMainURL();
    // saveTheLibraryLocationURLToDiskWithData: libraryLocationURL.data, atomically.
    bool saveTheLibraryLocationURLToDiskWithData(const QByteArray &bookmarkData);
    // Makes the folder the main library, as the first run does: its
    // bookmark goes to libraryLocationURL.data and to the preference, and
    // the managers of the old library are let go.
    bool setLibraryModeMainURL(const QString &libraryPath, QString *error = nullptr);
    // checkIsLibraryVaidWithURL: both docs and mainlib.db exist ("" is not a library).
    static bool checkIsLibraryVaidWithURL(const QString &libURL);
    // libraryURLByFileURL: the library holding a document file (two folders
    // up from it), when that is a library in use (the main one or one that
    // was opened); "" for any other file.
    QString libraryURLByFileURL(const QString &filePath);
    // Records that a library is in use ("" for the main one); returns its path.
    QString libraryURLStartAccessingSecurityScopedResourceByURL(const QString &libURL);
    void libraryURLStopAllAccessingSecurityScopedResource();
    // Forgets the libraries in use, then takes up the main and the quick note library.
    void clearAndSetupLibrarySecurityScoped();
    QStringList dicLibraryAllAccessingScoped() const;
    // docs/ and metadata/ of a library ("" for the main one), made when missing.
    QString libraryModeDocsURLByLibURL(const QString &libURL);
    QString libraryModeMetaDataURLByLibURL(const QString &libURL);

    // ---- Database managers

    // libraryModeDBManagerWithURL:isReload: for a library ("" for the main
    // one): the kept manager, or a new one when asked to reload. Null when
    // there is no such library or its mainlib.db is missing. The first
    // manager made also starts watching its database for other writers.
    std::shared_ptr<ORVDBManager> libraryModeDBManagerWithURLIsReload(const QString &libURL, bool isReload);
    std::shared_ptr<ORVDBManager> libraryModeDBManagerByURL(const QString &libURL);
    std::shared_ptr<ORVDBManager> libraryModeMainDBManager();
    // A fresh manager for the main library (its caches start empty).
    std::shared_ptr<ORVDBManager> reloadTheMainLibrary();
    // Set when the watched database changed; cleared when the windows are told.
    bool isNeedToReloadLibraryCategories() const { return m_isNeedToReloadLibraryCategories; }

    // reloadUncategoriesDocumentToLibraryWithURL: the stray document pass
    // (see ORVLibraryFolder::registerStrayDocuments) for a library ("" for
    // the main one), at most once in 10 seconds; the end of the launch
    // counts as a run. Returns how many it registered, 0 when it did not run.
    int reloadUncategoriesDocumentToLibraryWithURL(const QString &libURL);
    qint64 lastReloadUncategoryDocumentsToLibTimeInterval() const { return m_lastStrayPassMs; }
    void setLastReloadUncategoryDocumentsToLibTimeInterval(qint64 msSinceEpoch) { m_lastStrayPassMs = msSinceEpoch; }
    // The document a library window shows first: of docs/, the .md file with
    // the smallest number; when there is none, a new one holding "# " (the
    // stray pass registers it later). "" when docs/ cannot be written.
    QString libraryModeFirstDocumentURLByLibURL(const QString &libURL);

    // ---- Launch and quit (the parts that are not windows)

    // After launch: the stray pass clock starts, the editing positions are read.
    void applicationDidFinishLaunching();
    // Losing focus: the recent lists and the editing positions are written.
    void applicationDidResignActive();
    // Quitting: the window states, the editing positions, the recent lists.
    void applicationWillTerminate(const QVariantList &windowStates);

    // ---- State files of the application support folder

    bool saveAppStateDataWithDataArray(const QVariantList &windowStates);
    // nullopt when the file is missing or unreadable.
    std::optional<QVariantList> fetchAppStateData() const;
    bool saveLibraryLastWindowState(const QVariantMap &state);
    QVariantMap fetchLibraryLastWindowState() const; // an empty record if none
    bool saveExternalLastWindowState(const QVariantMap &state);
    QVariantMap fetchExternalLastWindowState() const;
    // fileURLWithBase64DocPath: "base64:<bookmark>" resolves the bookmark
    // ("" when it does not), any other text is a plain path.
    static QString fileURLWithBase64DocPath(const QString &docPath);
    // The "base64:" form of a path, for window state records.
    static QString base64DocPathWithFileURL(const QString &filePath);

    // ---- Editing positions (textViewStateData.data)

    // addTextViewStateData:stateData:, by document key (its path).
    void addTextViewStateDataStateData(const QString &key, const ORVTextViewStateData &state);
    std::optional<ORVTextViewStateData> getTextViewStateByURL(const QString &key) const;
    // Reads the file, ages every entry by one start and writes it back.
    void readTextViewStateDataFromDisk();
    bool saveTextViewStateDataToDisk();

    // ---- Recent documents

    ORVLibraryRecentDocumentManager *libraryRecentDocumentManager();
    ORVExternalRecentDocumentManager *externalRecentDocumentManager();

    // ---- External folders

    // externalSourceItemManager: the user's sources (externalSourceItems.data),
    // made on first use and registered as the settings file's list of sources.
    ORVExternalSourceItemManager *externalSourceItemManager();
    // externalTreeData: the external tree, built from the sources on first
    // use; its source entries follow the list of sources from then on.
    ORVExternalTree *externalTreeData();
    // updateExternalTreeDataTopItems: the tree's source entries follow the list.
    void updateExternalTreeDataTopItems();
    // setupExternalSourceWatching: changes made by other programs in the
    // sources patch the tree, a batch at a time. Once is enough.
    void setupExternalSourceWatching();

    // fetchWelcomeContent: the welcome text resource, or "# Welcome to Orvo!".
    static QString fetchWelcomeContent();

    // ---- Settings file

    // The managers of publishing targets, image hosts and external sources
    // register here when they are made (not owned; they outlive this object
    // or unregister by registering null).
    void registerServiceItemRegistry(ORVServiceItemRegistry::Kind kind, ORVServiceItemRegistry *registry);
    void registerExternalSourceList(ORVExternalSourceList *list);
    ORVSettingsFile settingsFile() const;
    // exportAllSettingAction: to a file the user chose.
    bool exportAllSettingAction(const QString &path, QString *error = nullptr,
                                ORVSettingsFile::ExportSummary *summary = nullptr);
    // importAllSettingAction: from a file the user chose. Afterwards the
    // application ends (preferencesImportSuccessAlert), so that nothing
    // running has to take in new settings.
    ORVSettingsFile::ImportReport importAllSettingAction(const QString &path);
    // The message the user sees after an import.
    static QString preferencesImportSuccessMessage();

signals:
    // doReloadTheLibraryCatTreeAndDocsListDataAction: another writer changed
    // the watched library database (after it settled, and only while it
    // exists); library windows reload their tree and lists.
    void doReloadTheLibraryCatTreeAndDocsListData();

private:
    QString statePath(const QString &fileName) const;
    QString resolvedLibraryPath(const QString &libURL);
    // On a change of library: the managers go, and the watch moves to the
    // database of the next manager made.
    void forgetLibraryManagers();
    void monitorLibraryNeedTooReloadFire();

    MyPreferences *m_prefs;
    QString m_supportDir;

    std::map<QString, std::shared_ptr<ORVDBManager>> m_dicLibraryDBManager; // mainlib.db path to manager
    QSet<QString> m_dicLibraryAllAccessingScoped;
    TABFileMonitor *m_mainDBFileMonitor = nullptr;
    QTimer m_reloadTimer;
    bool m_isNeedToReloadLibraryCategories = false;
    qint64 m_lastStrayPassMs = 0;

    QHash<QString, ORVTextViewStateData> m_textViewStateDataDic;
    std::unique_ptr<ORVLibraryRecentDocumentManager> m_libraryRecentDocumentManager;
    std::unique_ptr<ORVExternalRecentDocumentManager> m_externalRecentDocumentManager;

    // In this order, so that the watching goes before what it watches.
    std::unique_ptr<ORVExternalSourceItemManager> m_externalSourceItemManager;
    std::unique_ptr<ORVExternalTree> m_externalTreeData;
    std::unique_ptr<ORVDirWatchingController> m_dirWatchingController;

    QHash<int, ORVServiceItemRegistry *> m_serviceRegistries;
    ORVExternalSourceList *m_externalSourceList = nullptr;
};
