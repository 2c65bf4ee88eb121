// The library's tree: fixed entries, tags under "Inbox", counts, the
// debounced recount, and the category editing that patches it.
#include "LibraryFixture.h"

#include "core/ORVLibraryRecentDocumentManager.h"
#include "core/ORVNotificationCenter.h"
#include "library/ORVCategoryEditor.h"
#include "library/ORVLibraryNotifications.h"
#include "library/ORVLibraryTree.h"

#include <QEventLoop>
#include <QTimer>

namespace {

class Tree : public LibraryFixture
{
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        recent = std::make_unique<ORVLibraryRecentDocumentManager>(dir.filePath(QStringLiteral("support")));
        tree = std::make_unique<ORVLibraryTree>(manager, recent.get());
    }

    ORVCatTreeItemPtr child(const QString &name) const
    {
        for (const auto &c : tree->root()->children)
            if (c->name == name)
                return c;
        return nullptr;
    }

    // Waits (without sleeping) for the recount's notification.
    bool waitForRecount()
    {
        QEventLoop loop;
        bool seen = false;
        ORVNotificationCenter::defaultCenter()->addObserver(kORVLibraryCategoryTreeNeedToUpdateNotification, &loop,
                                                            [&](const ORVNotification &) {
                                                                seen = true;
                                                                loop.quit();
                                                            });
        QTimer::singleShot(5000, &loop, &QEventLoop::quit);
        loop.exec();
        return seen;
    }

    std::unique_ptr<ORVLibraryRecentDocumentManager> recent;
    std::unique_ptr<ORVLibraryTree> tree;
};

} // namespace

TEST_F(Tree, FixedEntriesComeFirstWithTagsUnderInboxAndCountsLeaveTheTrashOut)
{
    const ORVDBCat top = addCat(QStringLiteral("Garden"), 0, 10);
    const ORVDBCat beans = addCat(QStringLiteral("Beans"), top.uuid(), 1);
    const ORVDBCat peas = addCat(QStringLiteral("Peas"), top.uuid(), 2);
    const ORVDBCat other = addCat(QStringLiteral("Other"), 0, 11);
    const ORVDBArticle both = addDoc("# both", {beans.uuid(), peas.uuid()});
    addDoc("# beans", {beans.uuid()});
    addDoc("# top", {top.uuid()});
    const ORVDBArticle trashed = addDoc("# gone", {beans.uuid(), other.uuid()}, 1700000000, 1700000000, 0);
    addDoc("# loose");
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(both, {QStringLiteral("green"), QStringLiteral("Apple")}));
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(trashed, {QStringLiteral("zebra")}));
    recent->addItem(ORVLibraryRecentDocumentManager::itemWithLibNameUUID(QStringLiteral("main"), both.uuid()));

    tree->fetchLibraryTreeData();
    const ORVCatTreeItemPtr root = tree->root();
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, QStringLiteral("LIBRARY"));
    EXPECT_EQ(root->catType, ORVCatType::Root);
    QStringList order;
    for (const auto &c : root->sortedChildren())
        order << QStringLiteral("%1:%2").arg(c->name).arg(c->itemCount);
    EXPECT_EQ(order, QStringList({"Inbox:4", "Recent:1", "Uncategorized:1", "Trash:1", "Garden:3", "Other:0"}));
    for (const auto &c : root->children)
        EXPECT_EQ(c->parent, root.get());

    // The top counts its sub-categories' documents, the one in two of them once.
    const ORVCatTreeItemPtr garden = tree->categoryItemWithUUID(top.uuid());
    ASSERT_TRUE(garden);
    EXPECT_EQ(tree->categoryItemWithUUID(beans.uuid())->itemCount, 2);
    EXPECT_EQ(tree->categoryItemWithUUID(peas.uuid())->itemCount, 1);

    // Tags of normal documents only, by name without regard to case.
    QStringList tags;
    for (const auto &t : tree->libraryTreeInboxItem()->sortedChildren())
        tags << QStringLiteral("%1:%2:%3").arg(t->name).arg(t->itemCount).arg(t->catType);
    EXPECT_EQ(tags, QStringList({"Apple:1:99", "green:1:99"}));
    EXPECT_EQ(tree->recentCatTreeItem()->itemCount, 1);
}

TEST_F(Tree, ChangesAreRecountedOnceAfterTheDelayAndOnlyFixedEntriesWhenNotAll)
{
    const ORVDBCat cat = addCat(QStringLiteral("Notes"));
    const ORVDBArticle a = addDoc("# a", {cat.uuid()});
    const ORVDBArticle b = addDoc("# b");
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(a, {QStringLiteral("t")}));
    tree->fetchLibraryTreeData();
    ASSERT_EQ(child(QStringLiteral("Notes"))->itemCount, 1);

    // Several changes of one action: one pending recount, counts unchanged until it runs.
    int recounts = 0;
    QObject context;
    ORVNotificationCenter::defaultCenter()->addObserver(kORVLibraryCategoryTreeNeedToUpdateNotification, &context,
                                                        [&](const ORVNotification &) { ++recounts; });
    ASSERT_TRUE(manager->updateDBArticleWithCatIIDS(b, {cat.uuid()}));
    ASSERT_TRUE(manager->updateDBArticleWithState(a, ORVDBArticle::StateTrash));
    EXPECT_TRUE(tree->isRecountPending());
    EXPECT_EQ(child(QStringLiteral("Notes"))->itemCount, 1);
    ASSERT_TRUE(waitForRecount());
    EXPECT_EQ(recounts, 1);
    EXPECT_EQ(child(QStringLiteral("Notes"))->itemCount, 1); // b came, a left for the trash
    EXPECT_EQ(child(QStringLiteral("Trash"))->itemCount, 1);
    EXPECT_EQ(child(QStringLiteral("Uncategorized"))->itemCount, 0);
    EXPECT_EQ(child(QStringLiteral("Inbox"))->itemCount, 1);
    // The tag lost its only normal document but keeps its count until a rebuild.
    ASSERT_EQ(tree->libraryTreeInboxItem()->children.size(), 1);
    EXPECT_EQ(tree->libraryTreeInboxItem()->children.first()->itemCount, 1);

    // A partial recount leaves categories alone; a full one asked for
    // before a partial one stays full. (A link written behind the store's
    // back posts nothing, so only the calls below schedule.)
    const ORVDBArticle c = addDoc("# c");
    exec(QStringLiteral("INSERT INTO cat_article (aid, rid) VALUES (?, ?)"), {c.uuid(), cat.uuid()});
    tree->updateLibraryCategoryWithAllCats(false);
    tree->timerLibraryCategoriesDidChangedFire();
    EXPECT_EQ(child(QStringLiteral("Inbox"))->itemCount, 2);
    EXPECT_EQ(child(QStringLiteral("Notes"))->itemCount, 1);
    tree->updateLibraryCategoryWithAllCats(true);
    tree->updateLibraryCategoryWithAllCats(false);
    tree->timerLibraryCategoriesDidChangedFire();
    EXPECT_EQ(child(QStringLiteral("Notes"))->itemCount, 2);
    EXPECT_FALSE(tree->isRecountPending());
}

TEST_F(Tree, TheTreeLoadsOnAWorkerAndRunsEveryWaitingCompletion)
{
    addCat(QStringLiteral("Notes"));
    int completions = 0;
    QEventLoop loop;
    tree->fetchLibraryTreeDataWithCompletion([&] { ++completions; });
    tree->fetchLibraryTreeDataWithCompletion([&] {
        ++completions;
        loop.quit();
    });
    QTimer::singleShot(5000, &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_EQ(completions, 2);
    ASSERT_TRUE(tree->root());
    EXPECT_TRUE(child(QStringLiteral("Notes")));
    // Once loaded, a completion runs at once.
    tree->fetchLibraryTreeDataWithCompletion([&] { ++completions; });
    EXPECT_EQ(completions, 3);
}

TEST_F(Tree, NewCategoriesFollowTheirSiblingsAndAreReadBack)
{
    const ORVDBCat first = addCat(QStringLiteral("Orvo"), 0, 10);
    tree->fetchLibraryTreeData();
    ORVCategoryEditor editor(*tree);
    QString why;
    const ORVCatTreeItemPtr site = editor.newTopCategoryIsStaticSite(true, QString(), &why);
    ASSERT_TRUE(site) << qPrintable(why);
    EXPECT_EQ(site->name, QStringLiteral("Category"));
    EXPECT_EQ(site->catType, ORVCatType::SiteCategory);
    EXPECT_EQ(site->sort, 11);
    EXPECT_EQ(site->parent, tree->root().get());
    const ORVCatTreeItemPtr plain = editor.newTopCategoryIsStaticSite(false, QStringLiteral("Blog"));
    EXPECT_EQ(plain->sort, 12);
    EXPECT_EQ(plain->catType, ORVCatType::TopCategory);

    const ORVCatTreeItemPtr parent = tree->categoryItemWithUUID(first.uuid());
    const ORVCatTreeItemPtr c1 = editor.newCategoryWithTreeNode(parent);
    const ORVCatTreeItemPtr c2 = editor.newCategoryWithTreeNode(parent, QStringLiteral("Two"));
    ASSERT_TRUE(c1 && c2);
    EXPECT_EQ(c1->name, QStringLiteral("Untitled"));
    EXPECT_EQ(c1->catType, ORVCatType::SubCategory);
    EXPECT_EQ(c1->sort, 1);
    EXPECT_EQ(c2->sort, 2);
    EXPECT_EQ(manager->itemDBCatWithUUID(c2->uuid)->pid(), first.uuid());

    EXPECT_FALSE(editor.newCategoryWithTreeNode(tree->libraryTreeInboxItem(), QString(), &why));
    EXPECT_EQ(why, QStringLiteral("Please select parent category !"));

    // Only a top category can be a site.
    EXPECT_FALSE(editor.setToSiteCategory(c1, &why));
    EXPECT_TRUE(editor.setToLibCategory(site));
    EXPECT_EQ(manager->itemDBCatWithUUID(site->uuid)->catType(), ORVCatType::TopCategory);
    EXPECT_TRUE(editor.renameCategory(c1, QStringLiteral("Renamed")));
    EXPECT_EQ(manager->itemDBCatWithUUID(c1->uuid)->name(), QStringLiteral("Renamed"));
}

TEST_F(Tree, DeletingACategoryTakesItsSubtreeAndLeavesItsDocuments)
{
    const ORVDBCat top = addCat(QStringLiteral("Top"), 0, 10);
    const ORVDBCat sub = addCat(QStringLiteral("Sub"), top.uuid(), 1);
    const ORVDBCat keep = addCat(QStringLiteral("Keep"), 0, 11);
    const ORVDBArticle a = addDoc("# a", {sub.uuid()});
    const ORVDBArticle b = addDoc("# b", {sub.uuid(), keep.uuid()});
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(a, {QStringLiteral("x")}));
    tree->fetchLibraryTreeData();
    ORVCategoryEditor editor(*tree);
    QList<qint64> deleted;
    QObject context;
    ORVNotificationCenter::defaultCenter()->addObserver(
        kORVLibraryCategoryItemDidChangedNotification, &context,
        [&](const ORVNotification &n) { deleted << n.userInfo.value(QStringLiteral("uuid")).toLongLong(); });

    const ORVCatTreeItemPtr next = editor.deleteCategoryOrTag(tree->categoryItemWithUUID(top.uuid()));
    ASSERT_TRUE(next);
    EXPECT_EQ(next->name, QStringLiteral("Inbox")); // the root's first child
    EXPECT_EQ(deleted, QList<qint64>({top.uuid()}));
    EXPECT_FALSE(tree->categoryItemWithUUID(sub.uuid()));
    EXPECT_EQ(scalar(QStringLiteral("SELECT COUNT(*) FROM cat WHERE uuid IN (?, ?)"), {top.uuid(), sub.uuid()}).toInt(), 0);
    EXPECT_EQ(manager->articleCatsIIDSByArticleUUID(b.uuid()), QList<qint64>({keep.uuid()}));
    EXPECT_EQ(manager->getUnCatsItemsDBArticleCount(), 1); // a
    EXPECT_TRUE(manager->itemDBArticleWithUUID(a.uuid()));

    const ORVCatTreeItemPtr tag = tree->libraryTreeInboxItem()->children.first();
    EXPECT_EQ(editor.deleteCategoryOrTag(tag), tree->libraryTreeInboxItem()); // no tag left: its parent
    EXPECT_TRUE(manager->articleTagsNamesByArticleUUID(a.uuid()).isEmpty());
    QString why;
    EXPECT_FALSE(editor.deleteCategoryOrTag(tree->fixedItemWithCatType(ORVCatType::Trash), &why));
    EXPECT_EQ(why, QStringLiteral("Please select a category !"));
}
