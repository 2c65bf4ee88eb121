// Start-up, quitting and the state between runs.

#include "ShellTestSupport.h"

#include "app/ORVAppShell.h"
#include "app/ORVEditorArea.h"
#include "app/ORVExternalWindow.h"
#include "library/ORVExternalSourceItemManager.h"
#include "app/ORVFirstRunWizard.h"
#include "app/ORVLibraryListModel.h"
#include "app/ORVLibraryWindow.h"
#include "app/ORVMDTextView.h"
#include "app/ORVPreferencesWindow.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "library/ORVLibraryFolder.h"
#include "support/TestEnv.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTest>
#include <gtest/gtest.h>

using namespace shelltest;

namespace {

ORVLibraryWindow *startAndWaitForLibraryWindow(ORVAppShell &shell)
{
    shell.start();
    ORVLibraryWindow *window = nullptr;
    waitFor([&] {
        window = shell.libraryWindows().value(0);
        return window && window->isTreeViewReady();
    });
    return window;
}

} // namespace

TEST(StartupTest, FirstRunMakesTheLibraryAndOpensItsWindow)
{
    LibraryFixture fixture; // for the cleanup; the wizard picks another folder
    AppDelegate *app = fixture.app;
    app->prfs()->setIsAppInstalled(false);
    const QString lib = fixture.dir.filePath(QStringLiteral("chosen/mylib"));

    ORVAppShell shell(app);
    shell.start();
    ORVFirstRunWizard *wizard = nullptr;
    for (QWidget *w : QApplication::topLevelWidgets())
            if ((wizard = qobject_cast<ORVFirstRunWizard *>(w)))
                break;
    ASSERT_NE(wizard, nullptr);
    EXPECT_TRUE(shell.libraryWindows().isEmpty());
    ASSERT_TRUE(wizard->setLibraryLocation(lib));
    // Choosing is not making: the folder appears when the user starts.
    EXPECT_FALSE(QFileInfo::exists(lib));
    QString error;
    ASSERT_TRUE(wizard->startToUse(&error)) << error.toStdString();
    EXPECT_TRUE(ORVLibraryFolder::checkIsLibraryWithURL(lib));
    EXPECT_TRUE(app->prfs()->isAppInstalled());
    EXPECT_EQ(QFileInfo(app->libraryModeMainURL()).absoluteFilePath(), QFileInfo(lib).absoluteFilePath());

    ORVLibraryWindow *window = nullptr;
    ASSERT_TRUE(waitFor([&] {
        window = shell.libraryWindows().value(0);
        return window && window->isTreeViewReady() && window->listModel()->rowCount() > 0;
    }));
    EXPECT_EQ(window->libraryPath(), app->libraryModeMainURL());
    // The welcome document is in the Inbox.
    EXPECT_EQ(window->listModel()->rowCount(), 1);
}

TEST(StartupTest, FirstRunThatCannotMakeTheLibraryStaysOpen)
{
    LibraryFixture fixture;
    AppDelegate *app = fixture.app;
    const QString before = app->libraryModeMainURL();
    app->prfs()->setIsAppInstalled(false);
    // A folder under a plain file can never be made.
    const QString blocker = fixture.dir.filePath(QStringLiteral("plainfile"));
    orvotest::writeFile(blocker, "x");
    ORVFirstRunWizard wizard(app);
    ASSERT_TRUE(wizard.setLibraryLocation(blocker + QStringLiteral("/lib")));
    QString error;
    EXPECT_FALSE(wizard.startToUse(&error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(app->prfs()->isAppInstalled());
    EXPECT_EQ(app->libraryModeMainURL(), before);
}

TEST(StartupTest, AMissingLibraryOpensThePreferencesAndMakesNothing)
{
    LibraryFixture fixture;
    const QString lib = fixture.libraryPath();
    ASSERT_TRUE(QDir(lib).removeRecursively());

    ORVAppShell shell(fixture.app);
    shell.start();
    EXPECT_TRUE(shell.libraryWindows().isEmpty());
    ORVPreferencesWindow *prefs = nullptr;
    for (QWidget *w : QApplication::topLevelWidgets())
        if (auto *p = qobject_cast<ORVPreferencesWindow *>(w); p && p->isVisible())
            prefs = p;
    ASSERT_NE(prefs, nullptr);
    EXPECT_EQ(prefs->currentPane(), QStringLiteral("library"));
    EXPECT_FALSE(prefs->message().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(lib));
}

TEST(StartupTest, QuitAndStartAgainRestoresWindowTabsAndCursor)
{
    LibraryFixture fixture;
    const qint64 first = fixture.addDocument(QStringLiteral("# First\n\nSome words to keep the cursor in.\n"));
    const qint64 second = fixture.addDocument(QStringLiteral("# Second\n\nMore text here.\n"));
    const qint64 category = fixture.addCategory(QStringLiteral("Essays"));
    QRect frame;
    qsizetype tabs = 0;
    {
        ORVAppShell shell(fixture.app);
        ORVLibraryWindow *window = startAndWaitForLibraryWindow(shell);
        ASSERT_NE(window, nullptr);
        window->setGeometry(QRect(40, 50, 1100, 700));
        frame = window->geometry();
        window->openLibraryDocument(first);
        ORVEditorTab *tab = window->openLibraryDocument(second);
        ASSERT_NE(tab, nullptr);
        QTextCursor cursor = tab->textView()->textCursor();
        cursor.setPosition(12);
        tab->textView()->setTextCursor(cursor);
        window->setPaneState(ORVLibraryPaneState::ListEditor);
        ASSERT_TRUE(window->selectTreeEntry(category));
        tabs = window->editorArea()->editorTabs().size();
        ASSERT_TRUE(shell.requestQuit(false));
    }
    closeAllWindows();
    ASSERT_TRUE(QFileInfo::exists(QDir(fixture.app->applicationSupportURL()).filePath(QStringLiteral("AppStateData.data"))));

    // The next start reads the positions from disk, as a new process would.
    fixture.app->readTextViewStateDataFromDisk();
    ORVAppShell shell(fixture.app);
    ORVLibraryWindow *window = startAndWaitForLibraryWindow(shell);
    ASSERT_NE(window, nullptr);
    ASSERT_TRUE(waitFor([&] { return window->editorArea()->editorTabs().size() == tabs; }));
    EXPECT_EQ(window->geometry(), frame);
    EXPECT_EQ(window->paneState(), ORVLibraryPaneState::ListEditor);
    ASSERT_NE(window->selectedTreeItem(), nullptr);
    EXPECT_EQ(window->selectedTreeItem()->uuid, category);
    ORVEditorTab *current = window->editorArea()->currentEditorTab();
    ASSERT_NE(current, nullptr);
    EXPECT_EQ(current->document()->libraryDocumentUUID(), second);
    EXPECT_EQ(current->textView()->textCursor().position(), 12);
}

TEST(StartupTest, ARestoredStateWhoseDocumentsAreGoneFallsBackToAFreshWindow)
{
    LibraryFixture fixture;
    const qint64 doc = fixture.addDocument(QStringLiteral("# Gone soon\n"));
    QVariantMap record{{QStringLiteral("type"), QStringLiteral("lib")},
                       {QStringLiteral("currentDocUUID"), doc},
                       {QStringLiteral("openedTabs"), QVariantList{QVariantMap{{QStringLiteral("artUUID"), doc}}}},
                       {QStringLiteral("winRect"), QStringLiteral("{{0, 0}, {0, 0}}")}};
    ASSERT_TRUE(fixture.app->saveAppStateDataWithDataArray({record}));
    ASSERT_TRUE(QFile::remove(fixture.docPath(doc)));
    ORVAppShell shell(fixture.app);
    EXPECT_FALSE(shell.launchWithAppStateData({record}));
    ORVLibraryWindow *window = startAndWaitForLibraryWindow(shell);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(shell.libraryWindows().size(), 1);
}

TEST(StartupTest, QuittingWithAFailedSaveKeepsTheTextAndDoesNotQuit)
{
    LibraryFixture fixture;
    const qint64 doc = fixture.addDocument(QStringLiteral("# Draft\n"));
    ORVAppShell shell(fixture.app);
    ORVLibraryWindow *window = startAndWaitForLibraryWindow(shell);
    ASSERT_NE(window, nullptr);
    ORVEditorTab *tab = window->openLibraryDocument(doc);
    ASSERT_NE(tab, nullptr);
    tab->textView()->moveCursor(QTextCursor::End);
    QTest::keyClicks(tab->textView(), QStringLiteral("unsaved words"));
    ASSERT_TRUE(tab->isModified());
    // The file's place is taken by a folder: no save can succeed.
    ASSERT_TRUE(QFile::remove(fixture.docPath(doc)));
    ASSERT_TRUE(QDir().mkpath(fixture.docPath(doc)));

    DialogAnswerer answerer;
    EXPECT_FALSE(shell.requestQuit(false));
    EXPECT_FALSE(answerer.texts().isEmpty());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(tab->isModified());
    EXPECT_TRUE(tab->textView()->markdownText().contains(QStringLiteral("unsaved words")));
    EXPECT_FALSE(QFileInfo::exists(QDir(fixture.app->applicationSupportURL()).filePath(QStringLiteral("AppStateData.data"))));
}

TEST(StartupTest, ApplicationLinksAndOpenedFolders)
{
    LibraryFixture fixture;
    const qint64 doc = fixture.addDocument(QStringLiteral("# Linked\n"));
    ORVAppShell shell(fixture.app);
    ORVLibraryWindow *window = startAndWaitForLibraryWindow(shell);
    ASSERT_NE(window, nullptr);

    EXPECT_FALSE(shell.handleURL(QStringLiteral("orvolib://5")));
    EXPECT_FALSE(shell.handleURL(QStringLiteral("orvolib://%1").arg(doc + 1)));
    EXPECT_TRUE(shell.handleURL(QStringLiteral("orvolib://%1").arg(doc)));
    ASSERT_NE(window->editorArea()->currentEditorTab(), nullptr);
    EXPECT_EQ(window->editorArea()->currentEditorTab()->document()->libraryDocumentUUID(), doc);

    const QString folder = fixture.dir.filePath(QStringLiteral("notes"));
    QDir().mkpath(folder);
    orvotest::writeFile(folder + QStringLiteral("/a.md"), "# A\n");
    orvotest::writeFile(folder + QStringLiteral("/picture.png"), "png");
    const qsizetype sourcesBefore = fixture.app->externalSourceItemManager()->items().size();
    shell.openArguments({folder, folder + QStringLiteral("/picture.png")});
    shell.openArguments({folder});
    EXPECT_EQ(fixture.app->externalSourceItemManager()->items().size(), sourcesBefore + 1);
    ASSERT_EQ(shell.externalWindows().size(), 1);
    // The unsupported file opened nothing.
    for (ORVEditorTab *t : shell.externalWindows().first()->editorArea()->editorTabs())
        EXPECT_FALSE(t->filePath().endsWith(QStringLiteral(".png")));
}
