// Dropping documents on the tree, dragging categories within it, and the
// manual reorder of a category's list.
#include "LibraryFixture.h"

#include "library/ORVCategoryEditor.h"
#include "library/ORVDocumentDropHandler.h"
#include "library/ORVLibraryListController.h"
#include "library/ORVLibraryTree.h"

namespace {

class Drop : public LibraryFixture
{
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        tree = std::make_unique<ORVLibraryTree>(manager, nullptr);
    }

    QList<qint64> cats(const ORVDBArticle &a) const
    {
        QList<qint64> ids = manager->articleCatsIIDSByArticleUUID(a.uuid());
        std::sort(ids.begin(), ids.end());
        return ids;
    }
    static QList<qint64> sorted(QList<qint64> ids)
    {
        std::sort(ids.begin(), ids.end());
        return ids;
    }
    int state(const ORVDBArticle &a) const { return manager->itemDBArticleWithUUID(a.uuid())->state(); }
    QStringList tagsOf(const ORVDBArticle &a) const { return manager->articleTagsNamesByArticleUUID(a.uuid()); }

    bool drop(const QList<ORVDBArticle> &docs, const ORVCatTreeItem &target, ORVDocumentDropOperation op,
              qint64 shownUUID = ORVCatType::Inbox, bool shownIsTag = false, const QString &shownTag = {})
    {
        QList<ORVLibraryDocDragRecord> records;
        for (const ORVDBArticle &a : docs)
            records.append({a.uuid(), a.state()});
        // Through the drag data, as a drop receives it.
        records = ORVDocumentDropHandler::recordsWithPasteboardData(ORVDocumentDropHandler::pasteboardDataWithRecords(records));
        return ORVDocumentDropHandler(*tree).acceptDocumentsDrop(records, target, op, {shownUUID, shownIsTag, shownTag});
    }
    static ORVCatTreeItem entry(qint64 catType, qint64 uuid, const QString &name = {})
    {
        ORVCatTreeItem item;
        item.catType = catType;
        item.uuid = uuid;
        item.name = name;
        return item;
    }

    std::unique_ptr<ORVLibraryTree> tree;
};

} // namespace

TEST_F(Drop, DocumentsOnCategoriesMoveCopyAndRemoveByModifier)
{
    const ORVDBCat a = addCat(QStringLiteral("A"));
    const ORVDBCat b = addCat(QStringLiteral("B"));
    const ORVDBCat c = addCat(QStringLiteral("C"));
    const ORVDBArticle doc = addDoc("# d", {a.uuid(), c.uuid()});
    const ORVCatTreeItem onB = entry(ORVCatType::TopCategory, b.uuid());

    EXPECT_EQ(ORVDocumentDropHandler::operationWithModifiers(true, true), ORVDocumentDropOperation::Remove);
    EXPECT_EQ(ORVDocumentDropHandler::operationWithModifiers(false, true), ORVDocumentDropOperation::Copy);
    EXPECT_EQ(ORVDocumentDropHandler::operationWithModifiers(false, false), ORVDocumentDropOperation::Move);

    // A move from the list of A: out of A, into B; C stays.
    ASSERT_TRUE(drop({doc}, onB, ORVDocumentDropOperation::Move, a.uuid()));
    EXPECT_EQ(cats(doc), sorted({b.uuid(), c.uuid()}));
    // A copy adds only, and adds once.
    ASSERT_TRUE(drop({doc}, entry(ORVCatType::TopCategory, a.uuid()), ORVDocumentDropOperation::Copy, b.uuid()));
    ASSERT_TRUE(drop({doc}, entry(ORVCatType::TopCategory, a.uuid()), ORVDocumentDropOperation::Copy, b.uuid()));
    EXPECT_EQ(cats(doc), sorted({a.uuid(), b.uuid(), c.uuid()}));
    // The removal takes the target away.
    ASSERT_TRUE(drop({doc}, onB, ORVDocumentDropOperation::Remove, a.uuid()));
    EXPECT_EQ(cats(doc), sorted({a.uuid(), c.uuid()}));
    // A move from a fixed entry or a tag's list only adds.
    ASSERT_TRUE(drop({doc}, onB, ORVDocumentDropOperation::Move, ORVCatType::Inbox));
    EXPECT_EQ(cats(doc), sorted({a.uuid(), b.uuid(), c.uuid()}));

    // Not on the root, Inbox, Recent or Uncategorized.
    for (qint64 kind : {ORVCatType::Root, ORVCatType::Inbox, ORVCatType::Recent, ORVCatType::Uncategorized}) {
        EXPECT_FALSE(ORVDocumentDropHandler::validateDocumentsDrop(entry(kind, kind)));
        EXPECT_FALSE(drop({doc}, entry(kind, kind), ORVDocumentDropOperation::Move));
    }
}

TEST_F(Drop, TheTrashTakesDocumentsWithAnyModifierAndGivesThemBackWithTheirLinks)
{
    const ORVDBCat a = addCat(QStringLiteral("A"));
    const ORVDBCat b = addCat(QStringLiteral("B"));
    const ORVDBArticle doc = addDoc("# d", {a.uuid()});
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(doc, {QStringLiteral("kept")}));
    for (ORVDocumentDropOperation op : {ORVDocumentDropOperation::Remove, ORVDocumentDropOperation::Copy,
                                        ORVDocumentDropOperation::Move}) {
        ASSERT_TRUE(manager->updateDBArticleWithState(doc, ORVDBArticle::StateNormal));
        ASSERT_TRUE(drop({doc}, entry(ORVCatType::Trash, ORVCatType::Trash), op, a.uuid()));
        EXPECT_EQ(state(doc), ORVDBArticle::StateTrash);
        EXPECT_EQ(cats(doc), QList<qint64>({a.uuid()})); // the links stay
    }
    // From the trash onto a category, even with the removal modifier: back,
    // with the new link and its former ones.
    const ORVDBArticle trashed = *manager->itemDBArticleWithUUID(doc.uuid());
    ASSERT_TRUE(drop({trashed}, entry(ORVCatType::TopCategory, b.uuid()), ORVDocumentDropOperation::Remove,
                     ORVCatType::Trash));
    EXPECT_EQ(state(doc), ORVDBArticle::StateNormal);
    EXPECT_EQ(cats(doc), sorted({a.uuid(), b.uuid()}));
    EXPECT_EQ(tagsOf(doc), QStringList({"kept"}));
}

TEST_F(Drop, DocumentsOnTagsFollowTheSameRulesWithNames)
{
    const ORVDBCat a = addCat(QStringLiteral("A"));
    const ORVDBArticle doc = addDoc("# d", {a.uuid()});
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(doc, {QStringLiteral("old"), QStringLiteral("stay")}));
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(addDoc("# other"), {QStringLiteral("new")}));
    qint64 newID = 0;
    for (const auto &t : manager->getAllItemsTagsCatTreeItem())
        if (t->name == QLatin1String("new"))
            newID = t->uuid;
    const ORVCatTreeItem onNew = entry(ORVCatType::Tag, newID, QStringLiteral("new"));

    // A move from the list of tag "old": "old" goes, "new" comes; categories untouched.
    ASSERT_TRUE(drop({doc}, onNew, ORVDocumentDropOperation::Move, 1, true, QStringLiteral("old")));
    EXPECT_EQ(tagsOf(doc), QStringList({"stay", "new"}));
    EXPECT_EQ(cats(doc), QList<qint64>({a.uuid()}));
    ASSERT_TRUE(drop({doc}, onNew, ORVDocumentDropOperation::Remove, a.uuid()));
    EXPECT_EQ(tagsOf(doc), QStringList({"stay"}));
    // A move from a category's list onto a tag just adds the tag.
    ASSERT_TRUE(drop({doc}, onNew, ORVDocumentDropOperation::Move, a.uuid()));
    EXPECT_EQ(cats(doc), QList<qint64>({a.uuid()}));
    EXPECT_EQ(tagsOf(doc), QStringList({"stay", "new"}));
    // A move from a tag's list onto a category just adds the category.
    const ORVDBCat b = addCat(QStringLiteral("B"));
    ASSERT_TRUE(drop({doc}, entry(ORVCatType::TopCategory, b.uuid()), ORVDocumentDropOperation::Move, newID, true,
                     QStringLiteral("new")));
    EXPECT_EQ(cats(doc), sorted({a.uuid(), b.uuid()}));
    EXPECT_EQ(tagsOf(doc), QStringList({"stay", "new"}));
}

TEST_F(Drop, CategoriesTakeTheirNewParentsKindAndSiblingsAreNumberedFrom80)
{
    const ORVDBCat site = addCat(QStringLiteral("Site"), 0, 10, ORVCatType::SiteCategory);
    const ORVDBCat plain = addCat(QStringLiteral("Plain"), 0, 11);
    const ORVDBCat sub = addCat(QStringLiteral("Sub"), plain.uuid(), 1);
    const ORVDBCat last = addCat(QStringLiteral("Last"), 0, 12);
    tree->fetchLibraryTreeData();
    ORVCategoryEditor editor(*tree);
    const auto item = [&](const ORVDBCat &c) { return tree->categoryItemWithUUID(c.uuid()); };
    const auto row = [&](const ORVDBCat &c) { return *manager->itemDBCatWithUUID(c.uuid()); };
    const ORVCatTreeItemPtr root = tree->root();

    // Never before the fixed entries, onto a fixed entry or tag, or into its own subtree.
    EXPECT_FALSE(ORVCategoryEditor::validateCategoryDrop({item(site)}, root.get(), 3));
    EXPECT_TRUE(ORVCategoryEditor::validateCategoryDrop({item(site)}, root.get(), 4));
    EXPECT_TRUE(ORVCategoryEditor::validateCategoryDrop({item(site)}, root.get(), -1));
    EXPECT_FALSE(ORVCategoryEditor::validateCategoryDrop({item(plain)}, item(sub).get(), -1));
    EXPECT_FALSE(ORVCategoryEditor::validateCategoryDrop({item(plain)}, item(plain).get(), -1));
    EXPECT_FALSE(ORVCategoryEditor::validateCategoryDrop({item(plain)}, tree->libraryTreeInboxItem().get(), -1));
    EXPECT_FALSE(ORVCategoryEditor::validateCategoryDrop({tree->libraryTreeInboxItem()}, item(plain).get(), -1));

    // A site moved below a category becomes a plain sub-category.
    ASSERT_TRUE(editor.acceptCategoryDrop({item(site)}, item(plain), -1));
    EXPECT_EQ(row(site).catType(), ORVCatType::SubCategory);
    EXPECT_EQ(row(site).pid(), plain.uuid());
    EXPECT_EQ(item(site)->parent, item(plain).get());
    EXPECT_EQ(row(sub).sort(), 80);
    EXPECT_EQ(row(site).sort(), 81);
    // Back at the top it is a plain top category: the site kind is gone.
    ASSERT_TRUE(editor.acceptCategoryDrop({item(site)}, root, 4));
    EXPECT_EQ(row(site).catType(), ORVCatType::TopCategory);
    EXPECT_EQ(row(site).pid(), 0);
    // The root's categories numbered in their new order; the fixed entries keep 1 to 4.
    QStringList order;
    for (const auto &c : root->sortedChildren())
        order << QStringLiteral("%1:%2").arg(c->name).arg(c->sort);
    EXPECT_EQ(order, QStringList({"Inbox:1", "Recent:2", "Uncategorized:3", "Trash:4", "Site:80", "Plain:81", "Last:82"}));
    EXPECT_EQ(row(last).sort(), 82);

    // A real site keeps its kind at the top level; moving down one place
    // counts the gap as shown (before it was taken out).
    ASSERT_TRUE(editor.setToSiteCategory(item(site)));
    ASSERT_TRUE(editor.acceptCategoryDrop({item(site)}, root, 6)); // the gap between Plain and Last
    EXPECT_EQ(row(site).catType(), ORVCatType::SiteCategory);
    order.clear();
    for (const auto &c : root->sortedChildren())
        if (c->uuid > 1000)
            order << c->name;
    EXPECT_EQ(order, QStringList({"Plain", "Site", "Last"}));
}

TEST_F(Drop, TheManualReorderNumbersRowsDownTheListAndChangesGroups)
{
    ORVDBCat top = addCat(QStringLiteral("Top"));
    const ORVDBCat sub = addCat(QStringLiteral("Sub"), top.uuid(), 1);
    const ORVDBArticle x = addDoc("# x", {top.uuid()}, 1700000003);
    const ORVDBArticle y = addDoc("# y", {top.uuid()}, 1700000002);
    const ORVDBArticle z = addDoc("# z", {sub.uuid()}, 1700000001);
    ORVLibraryListController list(manager, lib, nullptr, tree.get());

    // Not in the manual order: the user is asked first, nothing moves.
    list.fetchAndReloadListDataByCatUUID(top.uuid());
    EXPECT_EQ(list.tableViewAcceptDropRow({1}, 3), ORVLibraryListController::ReorderResult::NeedsManualOrder);
    ASSERT_TRUE(list.setTopCategoryToManualOrder());
    EXPECT_EQ(manager->itemDBCatWithUUID(top.uuid())->sortType(), ORVListOrderType::Manual);
    // Manual, by `sort` descending: x, y were made first so their sort (= uuid) is lower.
    ASSERT_EQ(uuids(list.listContent), QList<qint64>({-top.uuid(), y.uuid(), x.uuid(), -sub.uuid(), z.uuid()}));

    // Drag y (row 1) to the end, below the group "Sub": it changes category.
    ASSERT_EQ(list.tableViewAcceptDropRow({1}, 5), ORVLibraryListController::ReorderResult::Done);
    EXPECT_EQ(manager->articleCatsIIDSByArticleUUID(y.uuid()), QList<qint64>({sub.uuid()}));
    EXPECT_EQ(uuids(list.listContent), QList<qint64>({-top.uuid(), x.uuid(), -sub.uuid(), z.uuid(), y.uuid()}));
    // N rows: position P gets N + 1000 - P, group rows holding their place.
    EXPECT_EQ(manager->itemDBArticleWithUUID(x.uuid())->sort(), 5 + 1000 - 1);
    EXPECT_EQ(manager->itemDBArticleWithUUID(z.uuid())->sort(), 5 + 1000 - 3);
    EXPECT_EQ(manager->itemDBArticleWithUUID(y.uuid())->sort(), 5 + 1000 - 4);

    // Drag z and y (rows 3, 4) to the top group's head: both back into Top, in their order.
    ASSERT_EQ(list.tableViewAcceptDropRow({4, 3}, 1), ORVLibraryListController::ReorderResult::Done);
    EXPECT_EQ(uuids(list.listContent), QList<qint64>({-top.uuid(), z.uuid(), y.uuid(), x.uuid(), -sub.uuid()}));
    EXPECT_EQ(manager->articleCatsIIDSByArticleUUID(z.uuid()), QList<qint64>({top.uuid()}));

    // Lists other than categories are never reordered.
    list.fetchAndReloadListDataByCatUUID(ORVCatType::Inbox);
    EXPECT_EQ(list.tableViewAcceptDropRow({0}, 2), ORVLibraryListController::ReorderResult::NotAvailable);
}
