// The shell's parts on their own: state rectangles, list rows while typing,
// the tree's entry rules, row heights, tabs, the quick search and the
// hand-over between two starts.

#include "ShellTestSupport.h"

#include "app/ORVAppShell.h"
#include "app/ORVEditorArea.h"
#include "app/ORVLibraryListModel.h"
#include "app/ORVLibraryTreeModel.h"
#include "app/ORVLibraryWindow.h"
#include "app/ORVMDTextView.h"
#include "app/ORVQuickSearchWindow.h"
#include "app/ORVSingleInstance.h"
#include "app/window_state.h"
#include "core/AppDelegate.h"
#include "core/ORVLibraryRecentDocumentManager.h"
#include "library/ORVDBCat.h"
#include "library/ORVLibraryListController.h"
#include "support/TestEnv.h"

#include <QListWidget>
#include <QMimeData>
#include <QStandardItemModel>
#include <QSignalSpy>
#include <QStyleOptionViewItem>
#include <QTest>
#include <gtest/gtest.h>

using namespace shelltest;

TEST(ShellPartsTest, RectangleStringsRoundTripAndRejectOtherText)
{
    const QRect r(-20, 35, 1280, 800);
    EXPECT_EQ(rectStringWithRect(r), QStringLiteral("{{-20, 35}, {1280, 800}}"));
    EXPECT_EQ(rectWithRectString(rectStringWithRect(r)), r);
    // Fractions (from another platform's records) round to whole pixels.
    EXPECT_EQ(rectWithRectString(QStringLiteral("{{10.4, 20.6}, {300.5, 200}}")), QRect(10, 21, 301, 200));
    for (const char *bad : {"", "{{1, 2}, {3}}", "1 2 3 4", "{{a, b}, {c, d}}", "{{1, 2}, {3, 4}} trailing"})
        EXPECT_FALSE(rectWithRectString(QString::fromLatin1(bad)).has_value()) << bad;
}

TEST(ShellPartsTest, EditedDocumentRowTakesTitleAndSummaryFromTheText)
{
    LibraryFixture fixture;
    const qint64 doc = fixture.addDocument(QStringLiteral("# Old\n"));
    ORVAppShell shell(fixture.app);
    ORVLibraryWindow *window = shell.showLibraryWindow();
    ASSERT_TRUE(waitFor([&] { return window->isTreeViewReady() && window->listModel()->rowOfDocument(doc) >= 0; }));
    ORVLibraryListModel *model = window->listModel();
    const QModelIndex row = model->index(model->rowOfDocument(doc));

    model->updateRowWithText(doc, QStringLiteral("## Only a title"));
    EXPECT_EQ(row.data(ORVLibraryListModel::TitleRole).toString(), QStringLiteral("Only a title"));
    EXPECT_EQ(row.data(ORVLibraryListModel::SummaryRole).toString(), QString());

    model->updateRowWithText(doc, QStringLiteral("# Title\nline one\nline two"));
    EXPECT_EQ(row.data(ORVLibraryListModel::TitleRole).toString(), QStringLiteral("Title"));
    EXPECT_EQ(row.data(ORVLibraryListModel::SummaryRole).toString(), QStringLiteral("line one line two"));

    // Only the start of a long text is looked at.
    const QString longText = QStringLiteral("# T\n") + QString(400, QLatin1Char('x'));
    model->updateRowWithText(doc, longText);
    EXPECT_EQ(row.data(ORVLibraryListModel::SummaryRole).toString().size(), 150 - 4);
}

TEST(ShellPartsTest, TreeEntriesFollowTheirKinds)
{
    LibraryFixture fixture;
    const qint64 cat = fixture.addCategory(QStringLiteral("Drafts"));
    ORVAppShell shell(fixture.app);
    ORVLibraryWindow *window = shell.showLibraryWindow();
    ASSERT_TRUE(waitFor([&] { return window->isTreeViewReady(); }));
    ORVLibraryTreeModel *model = window->treeModel();

    const QModelIndex root = model->index(0, 0);
    EXPECT_TRUE(root.data(ORVLibraryTreeModel::IsHeaderRole).toBool());
    EXPECT_FALSE(model->flags(root) & Qt::ItemIsSelectable);
    // The fixed entries come first, in their order, then the categories.
    QStringList names;
    for (int r = 0; r < model->rowCount(root); ++r)
        names << model->index(r, 0, root).data(Qt::DisplayRole).toString();
    ASSERT_GE(names.size(), 5);
    EXPECT_EQ(names.mid(0, 4), (QStringList{QStringLiteral("Inbox"), QStringLiteral("Recent"),
                                            QStringLiteral("Uncategorized"), QStringLiteral("Trash")}));
    EXPECT_TRUE(names.contains(QStringLiteral("Drafts")));

    const QModelIndex inbox = model->indexForUUID(ORVCatType::Inbox);
    EXPECT_FALSE(model->flags(inbox) & (Qt::ItemIsEditable | Qt::ItemIsDragEnabled));
    const QModelIndex drafts = model->indexForUUID(cat);
    EXPECT_TRUE(model->flags(drafts) & Qt::ItemIsEditable);
    EXPECT_TRUE(model->flags(drafts) & Qt::ItemIsDragEnabled);
    // A rename to nothing is refused and changes nothing.
    EXPECT_FALSE(model->setData(drafts, QStringLiteral("  "), Qt::EditRole));
    EXPECT_EQ(drafts.data(Qt::EditRole).toString(), QStringLiteral("Drafts"));

    // A category cannot go before the fixed entries.
    std::unique_ptr<QMimeData> mime(model->mimeData({drafts}));
    ASSERT_NE(mime, nullptr);
    EXPECT_FALSE(model->canDropMimeData(mime.get(), Qt::MoveAction, 1, 0, root));
    EXPECT_TRUE(model->canDropMimeData(mime.get(), Qt::MoveAction, model->rowCount(root), 0, root));
    EXPECT_FALSE(model->canDropMimeData(mime.get(), Qt::MoveAction, -1, 0, drafts));
}

TEST(ShellPartsTest, RowHeightsFollowTheDisplayType)
{
    ORVLibraryListDelegate delegate;
    QStyleOptionViewItem option;
    option.rect = QRect(0, 0, 300, 10);
    QStandardItemModel model;
    auto *doc = new QStandardItem;
    doc->setData(false, ORVLibraryListModel::IsGroupRole);
    auto *group = new QStandardItem;
    group->setData(true, ORVLibraryListModel::IsGroupRole);
    model.appendRow(doc);
    model.appendRow(group);
    QList<int> heights;
    for (int type : {0, 1, 2}) {
        delegate.setDisplayType(type);
        heights << delegate.sizeHint(option, model.index(0, 0)).height();
    }
    EXPECT_GT(heights[0], heights[1]);
    EXPECT_GT(heights[1], heights[2]);
    EXPECT_LT(delegate.sizeHint(option, model.index(1, 0)).height(), heights[2]);
}

TEST(ShellPartsTest, TabsAreOnePerFileAndAskBeforeLosingText)
{
    LibraryFixture fixture;
    const QString a = fixture.dir.filePath(QStringLiteral("a.md"));
    const QString b = fixture.dir.filePath(QStringLiteral("b.md"));
    orvotest::writeFile(a, "# A\n");
    orvotest::writeFile(b, "# B\n");
    ORVEditorArea area(fixture.app);
    ORVEditorTab *first = area.openDocument(a);
    EXPECT_EQ(area.openDocument(a), first);
    area.openDocument(b);
    EXPECT_EQ(area.count(), 2);
    EXPECT_EQ(area.tabForPath(a), first);

    QTest::keyClicks(first->textView(), QStringLiteral("more "));
    ASSERT_TRUE(first->isModified());
    EXPECT_TRUE(area.tabText(area.indexOf(first)).startsWith(QStringLiteral("•")));
    {
        DialogAnswerer answerer; // "Save" is the default answer
        EXPECT_TRUE(area.closeEditorTab(first));
        EXPECT_EQ(answerer.texts().size(), 1);
    }
    EXPECT_EQ(area.count(), 1);
    EXPECT_EQ(orvotest::readFile(a), QByteArray("more # A\n"));

    // Closing for a trash or a deletion saves without asking.
    ORVEditorTab *second = area.tabForPath(b);
    QTest::keyClicks(second->textView(), QStringLiteral("x"));
    area.closeTabsOfPaths({b});
    EXPECT_EQ(area.count(), 0);
    EXPECT_EQ(orvotest::readFile(b), QByteArray("x# B\n"));
}

TEST(ShellPartsTest, QuickSearchListsRecentDocumentsThenMatches)
{
    LibraryFixture fixture;
    const qint64 seen = fixture.addDocument(QStringLiteral("# Seen lately\n\nabout otters\n"));
    const qint64 other = fixture.addDocument(QStringLiteral("# Other\n\nabout badgers\n"));
    fixture.app->libraryRecentDocumentManager()->removeAllItems();
    fixture.app->libraryRecentDocumentManager()->addItem(
        ORVLibraryRecentDocumentManager::itemWithLibNameUUID(QStringLiteral("main"), seen));
    ORVAppShell shell(fixture.app);
    ORVQuickSearchWindow *quick = shell.showQuickSearch();
    ASSERT_GE(quick->results()->count(), 1);
    EXPECT_EQ(quick->results()->item(0)->text(), QStringLiteral("Seen lately"));

    QSignalSpy changed(quick, &ORVQuickSearchWindow::resultsChanged);
    quick->searchNow(QStringLiteral("badgers"));
    ASSERT_TRUE(waitFor([&] { return quick->results()->count() == 1 && quick->results()->item(0)->text() == QStringLiteral("Other"); }));
    ASSERT_TRUE(quick->openRow(0));
    ASSERT_EQ(shell.libraryWindows().size(), 1);
    ASSERT_NE(shell.libraryWindows().first()->editorArea()->currentEditorTab(), nullptr);
    EXPECT_EQ(shell.libraryWindows().first()->editorArea()->currentEditorTab()->document()->libraryDocumentUUID(), other);
}

TEST(ShellPartsTest, ASecondStartHandsItsArgumentsToTheFirst)
{
    QTemporaryDir support;
    ORVSingleInstance first(support.path());
    ORVSingleInstance second(support.path());
    ORVSingleInstance elsewhere(support.filePath(QStringLiteral("other")));
    EXPECT_FALSE(second.sendToRunningInstance({QStringLiteral("nobody")}, 200));
    ASSERT_TRUE(first.listen());
    QSignalSpy received(&first, &ORVSingleInstance::argumentsReceived);
    EXPECT_FALSE(elsewhere.sendToRunningInstance({QStringLiteral("x")}, 200));
    ASSERT_TRUE(second.sendToRunningInstance({QStringLiteral("/tmp/a.md"), QStringLiteral("orvolib://123456")}));
    ASSERT_TRUE(received.wait(5000));
    EXPECT_EQ(received.first().first().toStringList(),
              (QStringList{QStringLiteral("/tmp/a.md"), QStringLiteral("orvolib://123456")}));
}
