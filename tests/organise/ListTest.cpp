// Filling the document list for every kind of entry, in every order, and
// grouped by sub-categories.
#include "LibraryFixture.h"

#include "core/ORVLibraryRecentDocumentManager.h"
#include "library/ORVLibraryListController.h"
#include "library/ORVLibraryTree.h"

namespace {

class List : public LibraryFixture
{
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        recent = std::make_unique<ORVLibraryRecentDocumentManager>(dir.filePath(QStringLiteral("support")));
        tree = std::make_unique<ORVLibraryTree>(manager, recent.get());
        list = std::make_unique<ORVLibraryListController>(manager, lib, recent.get(), tree.get());
    }

    QList<ORVLibraryListDataItem> fetch(qint64 uuid, bool isTag = false, qint64 within = 0)
    {
        QList<ORVLibraryListDataItem> rows = list->fetchListDataByCatUUIDIsFetchTagInCurrentCatUUID(uuid, isTag, within);
        ORVLibraryListController::setupTitlesOfItems(rows);
        return rows;
    }
    QStringList fetchTitles(qint64 uuid, bool isTag = false, qint64 within = 0) { return titles(fetch(uuid, isTag, within)); }

    std::unique_ptr<ORVLibraryRecentDocumentManager> recent;
    std::unique_ptr<ORVLibraryTree> tree;
    std::unique_ptr<ORVLibraryListController> list;
};

} // namespace

TEST_F(List, EveryKindOfEntryListsItsOwnDocuments)
{
    const ORVDBCat top = addCat(QStringLiteral("Top"));
    const ORVDBCat sub = addCat(QStringLiteral("Sub"), top.uuid(), 1);
    const ORVDBCat other = addCat(QStringLiteral("Other"), 0, 11);
    const ORVDBArticle inTop = addDoc("# In top", {top.uuid()}, 1700000005);
    const ORVDBArticle inSub = addDoc("# In sub", {sub.uuid()}, 1700000004);
    const ORVDBArticle inOther = addDoc("# In other", {other.uuid()}, 1700000003);
    const ORVDBArticle loose = addDoc("# Loose", {}, 1700000002);
    const ORVDBArticle trashed = addDoc("# Trashed", {top.uuid()}, 1700000001, 1700000001, ORVDBArticle::StateTrash);
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(inSub, {QStringLiteral("green")}));
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(loose, {QStringLiteral("green")}));
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(inOther, {QStringLiteral("green")}));
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(trashed, {QStringLiteral("green")}));
    const qint64 green = manager->getAllItemsTagsCatTreeItem().first()->uuid;

    EXPECT_EQ(fetchTitles(ORVCatType::Inbox), QStringList({"In top", "In sub", "In other", "Loose"}));
    EXPECT_EQ(fetchTitles(top.uuid()), QStringList({"In top", "In sub"})); // with its descendants
    EXPECT_EQ(fetchTitles(sub.uuid()), QStringList({"In sub"}));
    EXPECT_EQ(fetchTitles(ORVCatType::Trash), QStringList({"Trashed"}));
    EXPECT_EQ(fetchTitles(ORVCatType::Uncategorized), QStringList({"Loose"}));
    EXPECT_EQ(fetchTitles(green, true), QStringList({"In sub", "In other", "Loose"}));
    EXPECT_EQ(fetchTitles(green, true, top.uuid()), QStringList({"In sub"}));
    EXPECT_EQ(fetchTitles(green, true, ORVCatType::Uncategorized), QStringList({"Loose"}));
    EXPECT_EQ(titles(list->listDataItemByCatItem(top.uuid())).size(), 1); // only directly in it

    // Rows carry their categories and tags.
    const auto rows = fetch(sub.uuid());
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows.first().cats, QStringList({"Sub"}));
    EXPECT_EQ(rows.first().tags, QStringList({"green"}));
    EXPECT_EQ(rows.first().url, docPath(inSub.uuid()));

    // Recent: in the recent order; gone and trashed documents leave the recent list.
    for (qint64 id : {inOther.uuid(), qint64(17000000009999), trashed.uuid(), inTop.uuid()})
        recent->addItem(ORVLibraryRecentDocumentManager::itemWithLibNameUUID(QStringLiteral("main"), id));
    tree->fetchLibraryTreeData();
    EXPECT_EQ(tree->recentCatTreeItem()->itemCount, 4);
    EXPECT_EQ(fetchTitles(ORVCatType::Recent), QStringList({"In top", "In other"}));
    EXPECT_EQ(recent->itemCount(), 2);
    EXPECT_EQ(tree->recentCatTreeItem()->itemCount, 2);
    EXPECT_EQ(fetchTitles(green, true, ORVCatType::Recent), QStringList({"In other"}));
}

TEST_F(List, InboxAndUncategorizedTakeInStrayFilesFirst)
{
    addDoc("# Known");
    ASSERT_TRUE(orvotest::writeFile(docs() + QStringLiteral("/17100000000000.md"), "# Synced"));
    int passes = 0;
    list->reloadUncategoriesDocuments = [&] {
        ++passes;
        ORVLibraryFolder::registerStrayDocuments(*manager, lib);
    };
    EXPECT_EQ(fetchTitles(ORVCatType::Trash).size(), 0);
    EXPECT_EQ(passes, 0);
    EXPECT_TRUE(fetchTitles(ORVCatType::Uncategorized).contains(QStringLiteral("Synced")));
    EXPECT_EQ(fetchTitles(ORVCatType::Inbox).size(), 2);
    EXPECT_EQ(passes, 2);
}

TEST_F(List, TheSevenOrdersSortByTheirKeysAndNumbersInTitlesByValue)
{
    // title, date shown, last change
    const ORVDBArticle a = addDoc("# Part 10", {}, 1700000300, 1700000100);
    const ORVDBArticle b = addDoc("# part 9", {}, 1700000100, 1700000300);
    const ORVDBArticle c = addDoc("# Part 1", {}, 1700000200, 1700000200);
    ASSERT_TRUE(manager->updateDBArticleWithSort(a, 5));
    ASSERT_TRUE(manager->updateDBArticleWithSort(b, 7));
    ASSERT_TRUE(manager->updateDBArticleWithSort(c, 6));
    const QList<QPair<quint64, QStringList>> expected = {
        {ORVListOrderType::NewestFirst, {"Part 10", "Part 1", "part 9"}},
        {ORVListOrderType::OldestFirst, {"part 9", "Part 1", "Part 10"}},
        {ORVListOrderType::Manual, {"part 9", "Part 1", "Part 10"}},
        {ORVListOrderType::TitleAscending, {"Part 1", "part 9", "Part 10"}},
        {ORVListOrderType::TitleDescending, {"Part 10", "part 9", "Part 1"}},
        {ORVListOrderType::ModifiedNewestFirst, {"part 9", "Part 1", "Part 10"}},
        {ORVListOrderType::ModifiedOldestFirst, {"Part 10", "Part 1", "part 9"}},
        {42, {"Part 10", "Part 1", "part 9"}}, // no such order: newest first
    };
    for (const auto &[order, titlesInOrder] : expected) {
        list->options.libraryDefaultSortType = order;
        EXPECT_EQ(fetchTitles(ORVCatType::Inbox), titlesInOrder) << order;
    }
    // Ordering by title reads the titles; the others leave them unread.
    list->options.libraryDefaultSortType = ORVListOrderType::TitleAscending;
    EXPECT_FALSE(list->fetchListDataByCatUUIDIsFetchTagInCurrentCatUUID(ORVCatType::Inbox, false, 0).first().title().isNull());
    list->options.libraryDefaultSortType = ORVListOrderType::NewestFirst;
    EXPECT_TRUE(list->fetchListDataByCatUUIDIsFetchTagInCurrentCatUUID(ORVCatType::Inbox, false, 0).first().title().isNull());
}

TEST_F(List, TheTopCategorysOrderRulesItsSubtreeAndGroupsTheManualOrder)
{
    ORVDBCat top = addCat(QStringLiteral("Top"), 0, 10);
    const ORVDBCat s1 = addCat(QStringLiteral("S1"), top.uuid(), 2);
    const ORVDBCat s2 = addCat(QStringLiteral("S2"), top.uuid(), 1);
    const ORVDBCat s2child = addCat(QStringLiteral("S2 child"), s2.uuid(), 1);
    addDoc("# Own b", {top.uuid()}, 1700000001);
    addDoc("# Own a", {top.uuid()}, 1700000002);
    addDoc("# Twice", {s1.uuid(), s2child.uuid()}, 1700000003);
    addDoc("# In S1", {s1.uuid()}, 1700000004);
    top.setSortType(ORVListOrderType::TitleAscending);
    ASSERT_TRUE(manager->saveItemDBCat(top));
    list->options.libraryDefaultSortType = ORVListOrderType::NewestFirst; // not used for categories

    EXPECT_EQ(fetchTitles(s1.uuid()), QStringList({"In S1", "Twice"})); // the top's order, in a sub-category
    EXPECT_FALSE(list->isGroupedListForCatUUID(top.uuid(), false));

    // Grouped: the category's own rows, then each descendant by sort, depth first;
    // the document in two of them shows in both.
    list->options.isGroupLibDocumentsList = true;
    const QList<ORVLibraryListDataItem> rows = fetch(top.uuid());
    EXPECT_EQ(titles(rows), QStringList({"== Top", "Own a", "Own b", "== S2", "== S2 child", "Twice", "== S1", "In S1",
                                         "Twice"}));
    EXPECT_EQ(rows.at(5).groupCatUUID, s2child.uuid());
    EXPECT_EQ(rows.at(8).groupCatUUID, s1.uuid());
    EXPECT_EQ(rows.at(1).groupCatUUID, top.uuid());
    EXPECT_EQ(rows.at(0).groupCatUUID, top.uuid());

    // The manual order groups even without the preference; tags and fixed entries never group.
    list->options.isGroupLibDocumentsList = false;
    top.setSortType(ORVListOrderType::Manual);
    ASSERT_TRUE(manager->saveItemDBCat(top));
    EXPECT_TRUE(list->isGroupedListForCatUUID(s1.uuid(), false));
    EXPECT_EQ(fetchTitles(s1.uuid()).first(), QStringLiteral("== S1"));
    EXPECT_FALSE(list->isGroupedListForCatUUID(ORVCatType::Inbox, false));
}

TEST_F(List, ARowWhoseFileIsGoneHasAnEmptyTitleAndBreaksNothing)
{
    const ORVDBArticle gone = addDoc("# Gone", {}, 1700000002);
    addDoc("# Here", {}, 1700000001);
    ASSERT_TRUE(QFile::remove(docPath(gone.uuid())));
    list->options.libraryDefaultSortType = ORVListOrderType::TitleAscending;
    const auto rows = fetch(ORVCatType::Inbox);
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows.first().title(), QString());
    EXPECT_EQ(rows.first().content, QString());
    EXPECT_EQ(rows.last().title(), QStringLiteral("Here"));
    // An empty first line is an empty title too; the summary is what follows.
    const ORVDBArticle blank = addDoc("\nbody text\nmore");
    ORVLibraryListDataItem row = ORVLibraryListDataItem::LibraryListDataItemWithDBArticle(blank, {}, {}, lib);
    row.setupTitleAndContentWithFileURL();
    EXPECT_EQ(row.title(), QString());
    EXPECT_EQ(row.content, QStringLiteral("body text more"));
    // A summary already there (a search snippet) survives a title read.
    row.content = QStringLiteral("snippet");
    row.setupTitleAndContentWithFileURL();
    EXPECT_EQ(row.content, QStringLiteral("snippet"));
}
