#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "core/ORVBookmark.h"
#include "library/FMDatabase.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryFolder.h"
#include "support/TestEnv.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class App : public ::testing::Test
{
protected:
    void SetUp() override
    {
        prefs = std::make_unique<MyPreferences>(home.filePath(QStringLiteral("Orvo.conf")));
        app = std::make_unique<AppDelegate>(prefs.get(), home.filePath(QStringLiteral("support")));
    }

    QString makeLibrary(const QString &name)
    {
        const QString path = QDir(home.path()).filePath(name);
        EXPECT_TRUE(ORVLibraryFolder::libraryModeSetupMainDatabase(path, QStringLiteral("# Welcome")));
        return QFileInfo(path).canonicalFilePath();
    }

    // Runs the event loop until the reload signal comes or the time is up.
    bool waitForReload(int timeoutMs)
    {
        bool reloaded = false;
        QObject context;
        QObject::connect(app.get(), &AppDelegate::doReloadTheLibraryCatTreeAndDocsListData, &context,
                         [&] { reloaded = true; });
        QDeadlineTimer deadline(timeoutMs);
        while (!reloaded && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        return reloaded;
    }

    QTemporaryDir home;
    std::unique_ptr<MyPreferences> prefs;
    std::unique_ptr<AppDelegate> app;
};

} // namespace

TEST_F(App, TheLibraryIsFoundInThePreferenceThenInTheLocationFile)
{
    EXPECT_EQ(app->libraryModeMainURL(), QString()); // first run: no library assumed

    const QString fromFile = makeLibrary(QStringLiteral("lib-a"));
    ASSERT_TRUE(app->saveTheLibraryLocationURLToDiskWithData(ORVBookmark::bookmarkDataWithPath(fromFile)));
    EXPECT_EQ(app->libraryModeMainURL(), fromFile);
    EXPECT_EQ(ORVBookmark::pathInBookmarkData(prefs->bookmarkForMainLibrarySaveURL()).value_or(QString()), fromFile);

    const QString fromPref = makeLibrary(QStringLiteral("lib-b"));
    prefs->setBookmarkForMainLibrarySaveURL(ORVBookmark::bookmarkDataWithPath(fromPref));
    EXPECT_EQ(app->libraryModeMainURL(), fromPref);

    // A bookmark that no longer resolves falls through to the file.
    prefs->setBookmarkForMainLibrarySaveURL(ORVBookmark::bookmarkDataWithPath(home.filePath(QStringLiteral("moved"))));
    EXPECT_EQ(app->libraryModeMainURL(), fromFile);

    ASSERT_TRUE(app->setLibraryModeMainURL(fromPref));
    EXPECT_EQ(app->libraryModeMainURL(), fromPref);
    EXPECT_EQ(orvotest::readFile(home.filePath(QStringLiteral("support/libraryLocationURL.data"))),
              ORVBookmark::bookmarkDataWithPath(fromPref));
}

TEST_F(App, ADocumentBelongsToALibraryInUseOnly)
{
    const QString main = makeLibrary(QStringLiteral("main"));
    const QString other = makeLibrary(QStringLiteral("other"));
    ASSERT_TRUE(app->setLibraryModeMainURL(main));
    EXPECT_EQ(app->libraryURLByFileURL(main + QStringLiteral("/docs/17000000001234.md")), main);
    EXPECT_EQ(app->libraryURLByFileURL(other + QStringLiteral("/docs/17000000001234.md")), QString());
    EXPECT_EQ(app->libraryURLByFileURL(home.filePath(QStringLiteral("notes/20190101.md"))), QString());
    app->libraryURLStartAccessingSecurityScopedResourceByURL(other);
    EXPECT_EQ(app->libraryURLByFileURL(other + QStringLiteral("/docs/17000000001234.md")), other);

    app->clearAndSetupLibrarySecurityScoped();
    EXPECT_EQ(app->dicLibraryAllAccessingScoped(),
              QStringList({main, QFileInfo(app->libraryQuickNoteLibraryURL()).canonicalFilePath()}));
    EXPECT_FALSE(AppDelegate::checkIsLibraryVaidWithURL(QString()));
    EXPECT_TRUE(AppDelegate::checkIsLibraryVaidWithURL(other));
}

TEST_F(App, OneManagerPerDatabaseUntilAReloadIsAsked)
{
    EXPECT_EQ(app->libraryModeMainDBManager(), nullptr);
    const QString main = makeLibrary(QStringLiteral("main"));
    ASSERT_TRUE(app->setLibraryModeMainURL(main));
    const auto first = app->libraryModeMainDBManager();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(app->libraryModeDBManagerByURL(main), first);
    EXPECT_EQ(first->dbURL(), main + QStringLiteral("/mainlib.db"));
    const auto fresh = app->reloadTheMainLibrary();
    EXPECT_NE(fresh, first);
    EXPECT_EQ(app->libraryModeMainDBManager(), fresh);

    EXPECT_EQ(app->libraryModeDBManagerByURL(home.filePath(QStringLiteral("nothing here"))), nullptr);
    EXPECT_FALSE(QFileInfo::exists(home.filePath(QStringLiteral("nothing here/mainlib.db"))));
}

TEST_F(App, AnotherWriterMakesTheWindowsReloadOnceTheFileIsBack)
{
    const QString main = makeLibrary(QStringLiteral("main"));
    ASSERT_TRUE(app->setLibraryModeMainURL(main));
    const auto manager = app->libraryModeMainDBManager();
    ASSERT_EQ(manager->getAllItemsDBCat().size(), 1); // cached now

    {
        FMDatabase other(manager->dbURL());
        ASSERT_TRUE(other.open());
        ASSERT_TRUE(other.executeUpdate(QStringLiteral("INSERT INTO cat (uuid, pid, name, catType, sort) VALUES (5, 0, 'From a tool', 12, 11)")));
    }
    EXPECT_TRUE(waitForReload(5000));
    EXPECT_FALSE(app->isNeedToReloadLibraryCategories());
    EXPECT_EQ(manager->getAllItemsDBCat().size(), 2); // the caches were let go

    // While the file is away (a replace in two steps) nothing reloads.
    const QString aside = main + QStringLiteral("/mainlib.db.aside");
    ASSERT_TRUE(QFile::rename(manager->dbURL(), aside));
    EXPECT_FALSE(waitForReload(1500));
    ASSERT_TRUE(QFile::rename(aside, manager->dbURL()));
    EXPECT_TRUE(waitForReload(5000));

    // After a change of library the watch follows the new one.
    const QString next = makeLibrary(QStringLiteral("next"));
    ASSERT_TRUE(app->setLibraryModeMainURL(next));
    const auto nextManager = app->libraryModeMainDBManager();
    {
        FMDatabase other(manager->dbURL());
        ASSERT_TRUE(other.open());
        ASSERT_TRUE(other.executeUpdate(QStringLiteral("DELETE FROM cat WHERE uuid=5")));
    }
    EXPECT_FALSE(waitForReload(1500)); // the old library is no longer watched
    {
        FMDatabase other(nextManager->dbURL());
        ASSERT_TRUE(other.open());
        ASSERT_TRUE(other.executeUpdate(QStringLiteral("DELETE FROM cat")));
    }
    EXPECT_TRUE(waitForReload(5000));
}

TEST_F(App, TheStrayPassRunsAtMostOnceInTenSeconds)
{
    const QString main = makeLibrary(QStringLiteral("main"));
    ASSERT_TRUE(app->setLibraryModeMainURL(main));
    ASSERT_TRUE(orvotest::writeFile(main + QStringLiteral("/docs/17000000001111.md"), "# by hand"));
    EXPECT_EQ(app->reloadUncategoriesDocumentToLibraryWithURL(QString()), 1);
    ASSERT_TRUE(orvotest::writeFile(main + QStringLiteral("/docs/17000000002222.md"), "# synced"));
    EXPECT_EQ(app->reloadUncategoriesDocumentToLibraryWithURL(QString()), 0);
    app->setLastReloadUncategoryDocumentsToLibTimeInterval(QDateTime::currentMSecsSinceEpoch() - 10001);
    EXPECT_EQ(app->reloadUncategoriesDocumentToLibraryWithURL(QString()), 1);

    ASSERT_TRUE(orvotest::writeFile(main + QStringLiteral("/docs/17000000003333.md"), "# later"));
    app->setLastReloadUncategoryDocumentsToLibTimeInterval(0);
    app->applicationDidFinishLaunching(); // the launch counts as a run
    EXPECT_EQ(app->reloadUncategoriesDocumentToLibraryWithURL(QString()), 0);
}

TEST_F(App, TheFirstDocumentShownIsTheSmallestNumberOrANewOne)
{
    const QString main = makeLibrary(QStringLiteral("main"));
    ASSERT_TRUE(app->setLibraryModeMainURL(main));
    const QString docs = main + QStringLiteral("/docs");
    for (const QString &name : QDir(docs).entryList(QDir::Files))
        ASSERT_TRUE(QFile::remove(docs + QLatin1Char('/') + name));
    const QString made = app->libraryModeFirstDocumentURLByLibURL(QString());
    EXPECT_EQ(orvotest::readFile(made), QByteArray("# "));
    EXPECT_TRUE(QFileInfo(made).completeBaseName().toLongLong() > ORVLibraryFolder::kMinimumDocumentUUID);

    ASSERT_TRUE(orvotest::writeFile(docs + QStringLiteral("/17000000000009.md"), "b"));
    ASSERT_TRUE(orvotest::writeFile(docs + QStringLiteral("/17000000000010.md"), "c"));
    ASSERT_TRUE(orvotest::writeFile(docs + QStringLiteral("/5.txt"), "d"));
    EXPECT_EQ(QFileInfo(app->libraryModeFirstDocumentURLByLibURL(QString())).fileName(), QStringLiteral("17000000000009.md"));
}

TEST_F(App, StateFilesRoundTripAndMissingOnesReadEmpty)
{
    EXPECT_FALSE(app->fetchAppStateData().has_value());
    EXPECT_TRUE(app->fetchLibraryLastWindowState().isEmpty());
    const QVariantMap lib{{QStringLiteral("type"), QStringLiteral("lib")},
                          {QStringLiteral("winRect"), QStringLiteral("{{0, 0}, {800, 600}}")},
                          {QStringLiteral("openedTabs"), QVariantList{QVariantMap{{QStringLiteral("artUUID"), qint64(17000000001234)}}}},
                          {QStringLiteral("categoriesState"), QVariantMap{{QStringLiteral("1001"), true}}}};
    const QVariantMap ext{{QStringLiteral("type"), QStringLiteral("ext")},
                          {QStringLiteral("currentDocPath"), AppDelegate::base64DocPathWithFileURL(home.path())}};
    ASSERT_TRUE(app->saveAppStateDataWithDataArray({lib, ext}));
    ASSERT_TRUE(app->saveLibraryLastWindowState(lib));
    ASSERT_TRUE(app->saveExternalLastWindowState(ext));

    AppDelegate later(prefs.get(), app->applicationSupportURL());
    EXPECT_EQ(later.fetchAppStateData().value_or(QVariantList()), QVariantList({lib, ext}));
    EXPECT_EQ(later.fetchLibraryLastWindowState(), lib);
    EXPECT_EQ(AppDelegate::fileURLWithBase64DocPath(later.fetchExternalLastWindowState().value(QStringLiteral("currentDocPath")).toString()),
              home.path());
    EXPECT_EQ(AppDelegate::fileURLWithBase64DocPath(QStringLiteral("/plain/path.md")), QStringLiteral("/plain/path.md"));
    EXPECT_EQ(AppDelegate::fileURLWithBase64DocPath(AppDelegate::base64DocPathWithFileURL(home.filePath(QStringLiteral("gone.md")))),
              QString());

    ASSERT_TRUE(orvotest::writeFile(app->applicationSupportURL() + QStringLiteral("/AppStateData.data"), "garbage"));
    EXPECT_FALSE(later.fetchAppStateData().has_value());
}

TEST_F(App, AnEditingPositionLivesFor365StartsWithoutBeingOpened)
{
    ORVTextViewStateData state(QRectF(0, 120.5, 700, 900), {10, 5}, {3, 400});
    app->addTextViewStateDataStateData(QStringLiteral("/lib/docs/1.md"), state);
    ORVTextViewStateData reopened = state;
    app->addTextViewStateDataStateData(QStringLiteral("/lib/docs/2.md"), reopened);
    ASSERT_TRUE(app->saveTextViewStateDataToDisk());

    for (int start = 1; start <= 365; ++start) {
        AppDelegate launch(prefs.get(), app->applicationSupportURL());
        launch.readTextViewStateDataFromDisk();
        if (start == 200) { // the second document is opened again: its counter starts over
            launch.addTextViewStateDataStateData(QStringLiteral("/lib/docs/2.md"), reopened);
            launch.saveTextViewStateDataToDisk();
        }
    }
    AppDelegate day365(prefs.get(), app->applicationSupportURL());
    day365.readTextViewStateDataFromDisk(); // the 366th start
    EXPECT_FALSE(day365.getTextViewStateByURL(QStringLiteral("/lib/docs/1.md")).has_value());
    const auto kept = day365.getTextViewStateByURL(QStringLiteral("/lib/docs/2.md"));
    ASSERT_TRUE(kept.has_value());
    EXPECT_EQ(kept->activeNumber, 166);
    EXPECT_EQ(kept->selectedRange, (ORVTextRange{10, 5}));
    EXPECT_EQ(kept->visibleRect, QRectF(0, 120.5, 700, 900));
}
