// The library window bound to the library's cores: new documents, typing and
// saving, trash and put back with the counts, drops on the tree, search.

#include "ShellTestSupport.h"

#include "app/ORVAppShell.h"
#include "app/ORVEditorArea.h"
#include "app/ORVLibraryListModel.h"
#include "app/ORVLibraryTreeModel.h"
#include "app/ORVLibraryWindow.h"
#include "app/ORVMDTextView.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "library/ORVDBCat.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryListController.h"
#include "library/ORVLibraryTree.h"
#include "support/TestEnv.h"

#include <QApplication>
#include <QLineEdit>
#include <QListView>
#include <QMimeData>
#include <QTest>
#include <QTreeView>
#include <gtest/gtest.h>

using namespace shelltest;

namespace {

class LibraryWindowTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        shell = std::make_unique<ORVAppShell>(fixture.app);
    }
    ORVLibraryWindow *open()
    {
        window = shell->showLibraryWindow();
        EXPECT_TRUE(waitFor([&] { return window->isTreeViewReady(); }));
        return window;
    }
    qint64 countOf(qint64 catType) const
    {
        const auto item = window->libraryTree()->fixedItemWithCatType(catType);
        return item ? item->itemCount : -1;
    }
    QList<qint64> listedUUIDs() const
    {
        QList<qint64> ids;
        for (const auto &row : window->listController()->listContent)
            if (!row.isGroup)
                ids << row.art.uuid();
        return ids;
    }

    LibraryFixture fixture;
    std::unique_ptr<ORVAppShell> shell;
    ORVLibraryWindow *window = nullptr;
};

} // namespace

TEST_F(LibraryWindowTest, NewDocumentAppearsAndItsFileFollowsTypingAndSaving)
{
    open();
    const int before = window->listModel()->rowCount();
    ORVEditorTab *tab = window->newDocument();
    ASSERT_NE(tab, nullptr);
    const qint64 uuid = tab->document()->libraryDocumentUUID();
    ASSERT_GT(uuid, 0);
    EXPECT_EQ(window->listModel()->rowCount(), before + 1);
    EXPECT_TRUE(listedUUIDs().contains(uuid));
    EXPECT_EQ(orvotest::readFile(fixture.docPath(uuid)), QByteArray("# "));
    // The cursor stands behind the heading mark.
    EXPECT_EQ(tab->textView()->textCursor().position(), 2);

    QTest::keyClicks(tab->textView(), QStringLiteral("Harbour notes"));
    // The row shows the new title before anything is saved.
    const int row = window->listModel()->rowOfDocument(uuid);
    ASSERT_GE(row, 0);
    EXPECT_EQ(window->listModel()->index(row).data(ORVLibraryListModel::TitleRole).toString(),
              QStringLiteral("Harbour notes"));
    EXPECT_TRUE(tab->isModified());

    QTest::keyClick(window, Qt::Key_S, Qt::ControlModifier);
    EXPECT_FALSE(tab->isModified());
    EXPECT_EQ(orvotest::readFile(fixture.docPath(uuid)), QByteArray("# Harbour notes"));

    QTest::keyClicks(tab->textView(), QStringLiteral(" and more"));
    QString error;
    ASSERT_TRUE(tab->save(&error)) << error.toStdString();
    EXPECT_EQ(orvotest::readFile(fixture.docPath(uuid)), QByteArray("# Harbour notes and more"));
}

TEST_F(LibraryWindowTest, NewDocumentInACategoryBelongsToIt)
{
    const qint64 cat = fixture.addCategory(QStringLiteral("Travel"));
    open();
    ASSERT_TRUE(window->selectTreeEntry(cat));
    ORVEditorTab *tab = window->newDocument();
    ASSERT_NE(tab, nullptr);
    const qint64 uuid = tab->document()->libraryDocumentUUID();
    EXPECT_TRUE(fixture.app->libraryModeMainDBManager()->articleCatsIIDSByArticleUUID(uuid).contains(cat));
    EXPECT_TRUE(listedUUIDs().contains(uuid));
}

TEST_F(LibraryWindowTest, TrashAndPutBackUpdateListsAndCounts)
{
    const qint64 a = fixture.addDocument(QStringLiteral("# Alpha\n"));
    const qint64 b = fixture.addDocument(QStringLiteral("# Beta\n"));
    open();
    ASSERT_TRUE(waitFor([&] { return listedUUIDs().contains(a) && listedUUIDs().contains(b); }));
    const qint64 inbox = countOf(ORVCatType::Inbox);
    ASSERT_EQ(countOf(ORVCatType::Trash), 0);

    // A document open in a tab leaves it when trashed, its text saved.
    ORVEditorTab *tab = window->openLibraryDocument(a);
    tab->textView()->moveCursor(QTextCursor::End);
    QTest::keyClicks(tab->textView(), QStringLiteral("last words"));
    ASSERT_TRUE(window->selectDocument(a));
    window->moveSelectedToTrash();
    EXPECT_FALSE(listedUUIDs().contains(a));
    EXPECT_EQ(window->editorArea()->tabForPath(fixture.docPath(a)), nullptr);
    EXPECT_TRUE(orvotest::readFile(fixture.docPath(a)).endsWith("last words"));
    EXPECT_TRUE(waitFor([&] { return countOf(ORVCatType::Trash) == 1 && countOf(ORVCatType::Inbox) == inbox - 1; }));

    ASSERT_TRUE(window->selectTreeEntry(ORVCatType::Trash));
    EXPECT_EQ(listedUUIDs(), QList<qint64>{a});
    ASSERT_TRUE(window->selectDocument(a));
    window->putBackSelected();
    EXPECT_TRUE(listedUUIDs().isEmpty());
    EXPECT_TRUE(waitFor([&] { return countOf(ORVCatType::Trash) == 0 && countOf(ORVCatType::Inbox) == inbox; }));

    // Final deletion asks, and takes only what is in the trash.
    ASSERT_TRUE(window->selectTreeEntry(ORVCatType::Inbox));
    ASSERT_TRUE(window->selectDocument(b));
    window->moveSelectedToTrash();
    ASSERT_TRUE(window->selectTreeEntry(ORVCatType::Trash));
    {
        DialogAnswerer answerer; // "Empty Trash?" defaults to Cancel
        window->emptyTrash();
        EXPECT_EQ(answerer.texts(), QStringList{QStringLiteral("Empty Trash cannot be restored.")});
    }
    EXPECT_EQ(listedUUIDs(), QList<qint64>{b});
    window->emptyTrash(true);
    EXPECT_TRUE(listedUUIDs().isEmpty());
    EXPECT_FALSE(fixture.app->libraryModeMainDBManager()->itemDBArticleWithUUID(b).has_value());
}

TEST_F(LibraryWindowTest, DraggingADocumentOntoACategoryLinksItAndCountsIt)
{
    const qint64 cat = fixture.addCategory(QStringLiteral("Poems"));
    const qint64 doc = fixture.addDocument(QStringLiteral("# Ode\n"));
    open();
    ASSERT_TRUE(waitFor([&] { return listedUUIDs().contains(doc); }));
    const int row = window->listModel()->rowOfDocument(doc);
    std::unique_ptr<QMimeData> mime(window->listModel()->mimeData({window->listModel()->index(row)}));
    ASSERT_NE(mime, nullptr);
    const QModelIndex target = window->treeModel()->indexForUUID(cat);
    ASSERT_TRUE(target.isValid());
    ASSERT_TRUE(window->treeModel()->canDropMimeData(mime.get(), Qt::MoveAction, -1, 0, target));
    // Not between entries, and not on "Inbox".
    EXPECT_FALSE(window->treeModel()->canDropMimeData(mime.get(), Qt::MoveAction, 0, 0, target));
    EXPECT_FALSE(window->treeModel()->canDropMimeData(mime.get(), Qt::MoveAction, -1, 0,
                                                      window->treeModel()->indexForUUID(ORVCatType::Inbox)));
    window->treeModel()->dropMimeData(mime.get(), Qt::MoveAction, -1, 0, target);
    EXPECT_TRUE(fixture.app->libraryModeMainDBManager()->articleCatsIIDSByArticleUUID(doc).contains(cat));
    EXPECT_TRUE(waitFor([&] {
        const auto item = window->libraryTree()->categoryItemWithUUID(cat);
        return item && item->itemCount == 1;
    }));
    ASSERT_TRUE(window->selectTreeEntry(cat));
    EXPECT_TRUE(listedUUIDs().contains(doc));

    // Onto Trash the document goes to the trash.
    std::unique_ptr<QMimeData> again(window->listModel()->mimeData({window->listModel()->index(0)}));
    window->treeModel()->dropMimeData(again.get(), Qt::MoveAction, -1, 0,
                                      window->treeModel()->indexForUUID(ORVCatType::Trash));
    EXPECT_EQ(fixture.app->libraryModeMainDBManager()->itemDBArticleWithUUID(doc)->state(), 0);
}

TEST_F(LibraryWindowTest, CategoriesAreMadeRenamedAndDeleted)
{
    open();
    DialogAnswerer answerer;
    ASSERT_TRUE(window->newCategory(false));
    const ORVCatTreeItemPtr made = window->selectedTreeItem();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->catType, ORVCatType::TopCategory);
    const QModelIndex index = window->treeModel()->indexForItem(made.get());
    ASSERT_TRUE(window->treeModel()->setData(index, QStringLiteral("Letters"), Qt::EditRole));
    EXPECT_EQ(fixture.app->libraryModeMainDBManager()->itemDBCatWithUUID(made->uuid)->name(), QStringLiteral("Letters"));
    ASSERT_TRUE(window->newCategory(true));
    const ORVCatTreeItemPtr child = window->selectedTreeItem();
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->catType, ORVCatType::SubCategory);
    EXPECT_EQ(child->parent, made.get());

    ASSERT_TRUE(window->selectTreeEntry(made->uuid));
    window->deleteSelectedCategory(true);
    EXPECT_FALSE(fixture.app->libraryModeMainDBManager()->itemDBCatWithUUID(made->uuid).has_value());
    EXPECT_FALSE(window->treeModel()->indexForUUID(made->uuid).isValid());
    // A fixed entry is no category to delete.
    ASSERT_TRUE(window->selectTreeEntry(ORVCatType::Inbox));
    window->deleteSelectedCategory(true);
    EXPECT_TRUE(answerer.texts().contains(QStringLiteral("Please select a category !")));
}

TEST_F(LibraryWindowTest, SearchShowsMatchesWithTheirKeysMarked)
{
    const qint64 zebra = fixture.addDocument(QStringLiteral("# Stripes\n\nThe zebra crossed the road.\n"));
    fixture.addDocument(QStringLiteral("# Lions\n\nNothing striped here.\n"));
    open();
    QTest::keyClicks(window->searchField(), QStringLiteral("zebra"));
    // The search waits for the typing to pause.
    EXPECT_FALSE(window->isShowingSearchResults());
    ASSERT_TRUE(waitFor([&] { return window->isShowingSearchResults() && listedUUIDs() == QList<qint64>{zebra}; }));
    EXPECT_TRUE(window->listController()->searchHighlightKeys.contains(QStringLiteral("zebra")));
    const QModelIndex row = window->listModel()->index(0);
    EXPECT_TRUE(row.data(ORVLibraryListModel::SummaryRole).toString().contains(QStringLiteral("zebra")));

    // Clearing the field brings the entry's list back.
    window->searchField()->clear();
    ASSERT_TRUE(waitFor([&] { return !window->isShowingSearchResults() && listedUUIDs().size() >= 2; }));
    EXPECT_TRUE(window->listController()->searchHighlightKeys.isEmpty());
}

TEST_F(LibraryWindowTest, ListDisplayTypeAndSortFollowThePreferences)
{
    fixture.addDocument(QStringLiteral("# b title\n"));
    fixture.addDocument(QStringLiteral("# a title\n"));
    open();
    fixture.app->prfs()->setDocumentListDisplayType(2);
    EXPECT_EQ(window->listDelegate()->displayType(), 2);
    fixture.app->prfs()->setLibraryDefaultSortType(ORVListOrderType::TitleAscending);
    QStringList titles;
    for (int r = 0; r < window->listModel()->rowCount(); ++r)
        titles << window->listModel()->index(r).data(ORVLibraryListModel::TitleRole).toString();
    QStringList sorted = titles;
    std::sort(sorted.begin(), sorted.end(),
              [](const QString &x, const QString &y) { return x.compare(y, Qt::CaseInsensitive) < 0; });
    EXPECT_EQ(titles, sorted);
    fixture.app->prfs()->setLibraryDefaultSortType(0);
    fixture.app->prfs()->setDocumentListDisplayType(0);
}
