// The external window and an open file that another program changes.

#include "ShellTestSupport.h"

#include "app/ORVAppShell.h"
#include "app/ORVEditorArea.h"
#include "app/ORVExternalListModel.h"
#include "app/ORVExternalWindow.h"
#include "app/ORVMDTextView.h"
#include "core/AppDelegate.h"
#include "support/TestEnv.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <gtest/gtest.h>

using namespace shelltest;

namespace {

struct ExternalFixture {
    ExternalFixture() : shell(library.app)
    {
        folder = library.dir.filePath(QStringLiteral("notes"));
        QDir().mkpath(folder);
        orvotest::writeFile(file(QStringLiteral("one.md")), "# One\n\nfirst\n");
        window = shell.showExternalModeAction();
        window->addFolders({folder});
    }
    QString file(const QString &name) const { return QDir(folder).filePath(name); }

    LibraryFixture library;
    ORVAppShell shell;
    QString folder;
    ORVExternalWindow *window = nullptr;
};

} // namespace

TEST(ExternalWindowTest, FolderListsItsFilesAndFollowsOtherPrograms)
{
    ExternalFixture f;
    ASSERT_TRUE(f.window->selectFolder(f.folder));
    ASSERT_EQ(f.window->listModel()->rowCount(), 1);
    // A file made by another program shows within the watcher's batch time.
    orvotest::writeFile(f.file(QStringLiteral("two.md")), "# Two\n");
    EXPECT_TRUE(waitFor([&] { return f.window->listModel()->rowOfPath(f.file(QStringLiteral("two.md"))) >= 0; }, 10000));
}

TEST(ExternalWindowTest, AnOpenFileReloadsOrAsksWhenChangedOnDisk)
{
    ExternalFixture f;
    ORVEditorTab *tab = f.window->openDocumentPath(f.file(QStringLiteral("one.md")));
    ASSERT_NE(tab, nullptr);

    // Nothing unsaved: the text follows the disk.
    orvotest::writeFile(f.file(QStringLiteral("one.md")), "# One\n\nchanged elsewhere\n");
    ASSERT_TRUE(waitFor([&] { return tab->textView()->markdownText().contains(QStringLiteral("changed elsewhere")); }));
    EXPECT_FALSE(tab->isModified());

    // Unsaved text here: the tab asks and keeps both until the user says.
    tab->textView()->moveCursor(QTextCursor::End);
    QTest::keyClicks(tab->textView(), QStringLiteral("mine"));
    orvotest::writeFile(f.file(QStringLiteral("one.md")), "# One\n\ntheirs\n");
    ASSERT_TRUE(waitFor([&] { return !tab->messageText().isEmpty(); }));
    EXPECT_TRUE(tab->textView()->markdownText().contains(QStringLiteral("mine")));
    EXPECT_EQ(orvotest::readFile(f.file(QStringLiteral("one.md"))), QByteArray("# One\n\ntheirs\n"));

    // Deleted: the tab says so and keeps the text; saving writes it back.
    ASSERT_TRUE(QFile::remove(f.file(QStringLiteral("one.md"))));
    ASSERT_TRUE(waitFor([&] { return tab->isFileMissing(); }));
    EXPECT_TRUE(tab->textView()->markdownText().contains(QStringLiteral("mine")));
    EXPECT_TRUE(f.window->editorArea()->tabText(f.window->editorArea()->indexOf(tab)).contains(QStringLiteral("deleted")));
    ASSERT_TRUE(tab->save());
    EXPECT_TRUE(orvotest::readFile(f.file(QStringLiteral("one.md"))).contains("mine"));
    EXPECT_FALSE(tab->isFileMissing());
}

TEST(ExternalWindowTest, StateRecordReopensTheTabs)
{
    ExternalFixture f;
    f.window->openDocumentPath(f.file(QStringLiteral("one.md")));
    const QVariantMap state = f.window->theWindowStates();
    EXPECT_EQ(state.value(QStringLiteral("type")).toString(), QStringLiteral("ext"));
    EXPECT_TRUE(state.value(QStringLiteral("currentDocPath")).toString().startsWith(QStringLiteral("base64:")));
    closeAllWindows();
    ORVAppShell shell(f.library.app);
    ASSERT_TRUE(shell.launchWithAppStateData({state}));
    ASSERT_EQ(shell.externalWindows().size(), 1);
    ORVEditorTab *tab = shell.externalWindows().first()->editorArea()->currentEditorTab();
    ASSERT_NE(tab, nullptr);
    EXPECT_EQ(tab->filePath(), f.file(QStringLiteral("one.md")));
}
