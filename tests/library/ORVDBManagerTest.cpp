#include "core/ORVNotificationCenter.h"
#include "library/FMDatabaseQueue.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryNotifications.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class Store : public ::testing::Test
{
protected:
    void SetUp() override
    {
        path = dir.filePath(QStringLiteral("mainlib.db"));
        FMDatabase db(path);
        ASSERT_TRUE(db.open());
        ASSERT_TRUE(db.executeStatements(ORVDBManager::schemaStatement())) << qPrintable(db.lastErrorMessage());
        db.close();
        manager = std::make_unique<ORVDBManager>(path);
    }

    ORVDBCat cat(qint64 uuid, qint64 pid, const QString &name, qint64 sort = 0, int type = ORVCatType::SubCategory)
    {
        ORVDBCat c;
        c.setUuid(uuid);
        c.setPid(pid);
        c.setName(name);
        c.setSort(sort);
        c.setCatType(pid == 0 && type == ORVCatType::SubCategory ? ORVCatType::TopCategory : type);
        EXPECT_TRUE(manager->insertItemDBCat(c));
        return c;
    }

    ORVDBArticle doc(qint64 uuid, QList<qint64> cats = {}, int state = ORVDBArticle::StateNormal)
    {
        ORVDBArticle a;
        a.setUuid(uuid);
        a.setState(state);
        a.setSort(uuid);
        a.setDateAdd(1700000000);
        a.setDateModif(1700000000);
        a.setDateArt(1700000000);
        EXPECT_TRUE(manager->insertItemDBArticle(a));
        if (!cats.isEmpty()) {
            EXPECT_TRUE(manager->updateDBArticleWithCatIIDS(a, cats));
        }
        return a;
    }

    // One statement on a connection of the test's own, beside the manager's.
    QVariant scalar(const QString &sql, const QVariantList &args = {})
    {
        FMDatabase db(path);
        EXPECT_TRUE(db.open());
        FMResultSet rs = db.executeQuery(sql, args);
        return rs.next() ? rs.objectForColumn(0) : QVariant();
    }
    void exec(const QString &sql, const QVariantList &args = {})
    {
        FMDatabase db(path);
        ASSERT_TRUE(db.open());
        ASSERT_TRUE(db.executeUpdate(sql, args)) << qPrintable(db.lastErrorMessage());
    }

    QList<qint64> uuids(const QList<ORVDBCat> &rows)
    {
        QList<qint64> ids;
        for (const auto &r : rows)
            ids << r.uuid();
        return ids;
    }
    QList<qint64> uuids(const QList<ORVDBArticle> &rows)
    {
        QList<qint64> ids;
        for (const auto &r : rows)
            ids << r.uuid();
        std::sort(ids.begin(), ids.end());
        return ids;
    }

    int notificationsWhile(const std::function<void()> &action)
    {
        int posted = 0;
        QObject context;
        ORVNotificationCenter::defaultCenter()->addObserver(kORVLibraryArticleCategoryDidChangeNotification, &context,
                                                            [&](const ORVNotification &) { ++posted; });
        action();
        return posted;
    }

    QTemporaryDir dir;
    QString path;
    std::unique_ptr<ORVDBManager> manager;
};

struct Column {
    QString name;
    QString type;
};

} // namespace

TEST_F(Store, SchemaInSqliteMasterIsExactlyTheLibraryFormat)
{
    const QMap<QString, QList<Column>> expected = {
        {QStringLiteral("cat"),
         {{"id", "INTEGER"},          {"pid", "INTEGER"},          {"uuid", "INTEGER"},
          {"name", "TEXT"},           {"docName", "TEXT"},         {"catType", "INTEGER"},
          {"sort", "INTEGER"},        {"sortType", "INTEGER"},     {"siteURL", "TEXT"},
          {"siteSkinName", "TEXT"},   {"siteLastBuildDate", "INTEGER"}, {"siteBuildPath", "TEXT"},
          {"siteFavicon", "TEXT"},    {"siteLogo", "TEXT"},        {"siteDateFormat", "TEXT"},
          {"sitePageSize", "INTEGER"}, {"siteListTextNum", "INTEGER"}, {"siteName", "TEXT"},
          {"siteDes", "TEXT"},        {"siteShareCode", "TEXT"},   {"siteHeader", "TEXT"},
          {"siteOther", "TEXT"},      {"siteMainMenuData", "TEXT"}, {"siteExtDef", "TEXT"},
          {"siteExtValue", "TEXT"},   {"sitePostExtDef", "TEXT"},  {"siteEnableLaTeX", "INTEGER"},
          {"siteEnableChart", "INTEGER"}}},
        {QStringLiteral("article"),
         {{"id", "INTEGER"}, {"uuid", "INTEGER"}, {"type", "INTEGER"}, {"state", "INTEGER"},
          {"sort", "INTEGER"}, {"dateAdd", "INTEGER"}, {"dateModif", "INTEGER"}, {"dateArt", "INTEGER"},
          {"docName", "TEXT"}, {"otherMedia", "TEXT"}, {"buildResource", "TEXT"}, {"postExtValue", "TEXT"}}},
        {QStringLiteral("cat_article"), {{"id", "INTEGER"}, {"rid", "INTEGER"}, {"aid", "INTEGER"}}},
        {QStringLiteral("tag"), {{"id", "INTEGER"}, {"name", "TEXT"}}},
        {QStringLiteral("tag_article"), {{"id", "INTEGER"}, {"rid", "INTEGER"}, {"aid", "INTEGER"}}},
    };

    FMDatabase db(path);
    ASSERT_TRUE(db.open());
    QStringList tables, indexes;
    FMResultSet master = db.executeQuery(QStringLiteral("SELECT type, name, tbl_name, sql FROM sqlite_master"));
    while (master.next()) {
        const QString name = master.stringForColumn(QStringLiteral("name"));
        if (master.stringForColumn(QStringLiteral("type")) == QLatin1String("table")) {
            tables << name;
            // Every table of ours counts its ids with AUTOINCREMENT.
            if (name != QLatin1String("sqlite_sequence")) {
                EXPECT_TRUE(master.stringForColumn(QStringLiteral("sql")).contains(QStringLiteral("autoincrement")));
            }
        } else {
            indexes << name;
        }
    }
    tables.sort();
    indexes.sort();
    EXPECT_EQ(tables, QStringList({"article", "cat", "cat_article", "sqlite_sequence", "tag", "tag_article"}));
    EXPECT_EQ(indexes, QStringList({"article_uuid_idx", "cat_uuid_idx"}));

    for (auto it = expected.begin(); it != expected.end(); ++it) {
        FMResultSet info = db.executeQuery(QStringLiteral("PRAGMA table_info(%1)").arg(it.key()));
        int i = 0;
        while (info.next()) {
            ASSERT_LT(i, it.value().size()) << qPrintable(it.key());
            EXPECT_EQ(info.stringForColumn(QStringLiteral("name")), it.value()[i].name) << qPrintable(it.key());
            EXPECT_EQ(info.stringForColumn(QStringLiteral("type")), it.value()[i].type) << qPrintable(it.key());
            EXPECT_EQ(info.intForColumn(QStringLiteral("pk")), i == 0 ? 1 : 0);
            ++i;
        }
        EXPECT_EQ(i, it.value().size()) << qPrintable(it.key());
    }
    for (const auto &[index, table] : {std::pair{"cat_uuid_idx", "cat"}, std::pair{"article_uuid_idx", "article"}}) {
        FMResultSet list = db.executeQuery(QStringLiteral("PRAGMA index_list(%1)").arg(QLatin1String(table)));
        bool found = false;
        while (list.next()) {
            if (list.stringForColumn(QStringLiteral("name")) == QLatin1String(index)) {
                found = true;
                EXPECT_EQ(list.intForColumn(QStringLiteral("unique")), 1);
            }
        }
        EXPECT_TRUE(found) << index;
        FMResultSet cols = db.executeQuery(QStringLiteral("PRAGMA index_info(%1)").arg(QLatin1String(index)));
        ASSERT_TRUE(cols.next());
        EXPECT_EQ(cols.stringForColumn(QStringLiteral("name")), QStringLiteral("uuid"));
        EXPECT_FALSE(cols.next());
    }
    EXPECT_EQ(db.userVersion(), 0u); // the store sets no version
}

TEST_F(Store, CategoryWritesShowInTheCachesAtOnce)
{
    cat(2000, 0, QStringLiteral("Top"), 10);
    EXPECT_EQ(uuids(manager->getAllItemsDBCat()), QList<qint64>({2000}));
    EXPECT_FALSE(manager->isRefetchCats());

    ORVDBCat c = *manager->itemDBCatWithUUID(2000);
    c.setName(QStringLiteral("Renamed"));
    c.setSiteName(QStringLiteral("My site"));
    c.setSortType(ORVListOrderType::Manual);
    c.setIsEnableChart(true);
    ASSERT_TRUE(manager->saveItemDBCat(c));
    EXPECT_TRUE(manager->isRefetchCats());
    EXPECT_EQ(manager->getAllItemsDBCat().first().name(), QStringLiteral("Renamed"));
    EXPECT_EQ(manager->dicUUIDCatMaps().value(2000).siteName(), QStringLiteral("My site"));
    const ORVDBCat back = *manager->itemDBCatWithUUID(2000);
    EXPECT_EQ(back.sortType(), quint64(ORVListOrderType::Manual));
    EXPECT_TRUE(back.isEnableChart());
    EXPECT_FALSE(back.isEnableLaTeX());

    ASSERT_TRUE(manager->updateDBCatWithSort(c, 77));
    ASSERT_TRUE(manager->updateDBCatWithCatType(c, ORVCatType::SiteCategory));
    EXPECT_EQ(manager->getAllItemsDBCat().first().sort(), 77);
    EXPECT_EQ(manager->getAllItemsDBCat().first().catType(), ORVCatType::SiteCategory);

    // Moving a category under another is a change listeners recount for.
    cat(3000, 0, QStringLiteral("Other"), 11);
    EXPECT_EQ(manager->topCatByCatUUID(3000)->uuid, 3000);
    EXPECT_EQ(notificationsWhile([&] { ASSERT_TRUE(manager->updateDBCatWithPID(*manager->itemDBCatWithUUID(3000), 2000)); }), 1);
    EXPECT_EQ(manager->topCatByCatUUID(3000)->uuid, 2000);

    // A second row with the same uuid is refused by the unique index.
    ORVDBCat dup;
    dup.setUuid(2000);
    EXPECT_FALSE(manager->insertItemDBCat(dup));
}

TEST_F(Store, TreeCountsADocumentOnceAndSiblingsFollowSort)
{
    cat(1001, 0, QStringLiteral("A"), 10);
    cat(1002, 1001, QStringLiteral("B"), 2);
    cat(1003, 1001, QStringLiteral("C"), 1);
    cat(1004, 1003, QStringLiteral("D"), 5);
    cat(1005, 0, QStringLiteral("E"), 11);
    doc(5001, {1002, 1003}); // in two subcategories
    doc(5002, {1004});
    doc(5003, {1002}, ORVDBArticle::StateTrash);

    EXPECT_EQ(uuids(manager->allDBCatChildItemsWidthCatUUID(1001)), QList<qint64>({1003, 1004, 1002}));
    EXPECT_TRUE(manager->allDBCatChildItemsWidthCatUUID(1005).isEmpty());

    const QList<ORVCatTreeItemPtr> tops = manager->getAllItemDBCatTree();
    ASSERT_EQ(tops.size(), 2);
    const ORVCatTreeItemPtr a = tops[0]->uuid == 1001 ? tops[0] : tops[1];
    EXPECT_EQ(a->itemCount, 2); // 5001 once, 5002 through D; the trashed one not at all
    EXPECT_EQ(a->libName, QStringLiteral("main"));
    const auto children = a->sortedChildren();
    ASSERT_EQ(children.size(), 2);
    EXPECT_EQ(children[0]->uuid, 1003);
    EXPECT_EQ(children[0]->itemCount, 2);
    EXPECT_EQ(children[1]->itemCount, 1);
    EXPECT_EQ(children[0]->children.first()->parent, children[0].get());

    EXPECT_EQ(uuids(manager->getItemsDBArticleWithCatIDSort(1001, 0)), QList<qint64>({5001, 5002}));
    EXPECT_EQ(uuids(manager->getItemsDBArticleOnlyInCatID(1001)), QList<qint64>());
    EXPECT_EQ(manager->dicCatUUIDArticleCountMap().value(1002), 1);

    QList<ORVDBCat> ancestors;
    manager->allDBCatParentItemsWithCatUUIDInTopCatTreeInArr(1004, a, ancestors);
    EXPECT_EQ(uuids(ancestors), QList<qint64>({1003, 1001}));
}

TEST_F(Store, MovingATreeEntryChangesItsRowAndItsPlaceInTheTree)
{
    cat(1001, 0, QStringLiteral("A"), 10);
    cat(1002, 1001, QStringLiteral("B"), 1);
    cat(1003, 0, QStringLiteral("C"), 11);
    QList<ORVCatTreeItemPtr> tops = manager->getAllItemDBCatTree();
    std::sort(tops.begin(), tops.end(), [](const auto &x, const auto &y) { return x->sort < y->sort; });
    ASSERT_EQ(tops.size(), 2);
    const ORVCatTreeItemPtr b = tops[0]->children.first();
    EXPECT_TRUE(ORVDBManager::checkCatIsHasChildWithCatTheChildIsHas(tops[0].get(), b.get()));

    EXPECT_EQ(notificationsWhile([&] { ASSERT_TRUE(manager->updateCatTreeParentParentCat(b, tops[1].get())); }), 1);
    EXPECT_TRUE(tops[0]->children.isEmpty());
    ASSERT_EQ(tops[1]->children.size(), 1);
    EXPECT_EQ(tops[1]->children.first(), b);
    EXPECT_EQ(b->parent, tops[1].get());
    EXPECT_FALSE(ORVDBManager::checkCatIsHasChildWithCatTheChildIsHas(tops[0].get(), b.get()));
    EXPECT_EQ(manager->itemDBCatWithUUID(1002)->pid(), 1003);
    EXPECT_EQ(manager->topCatByCatUUID(1002)->uuid, 1003);
    EXPECT_EQ(ORVDBManager::fetchTreeItemWithCatUUIDInTopCatTreeOutItem(1002, tops[1]), b);
}

TEST_F(Store, ADamagedParentColumnNeitherHangsNorRepeats)
{
    cat(1001, 1002, QStringLiteral("loop a"));
    cat(1002, 1001, QStringLiteral("loop b"));
    cat(1003, 1003, QStringLiteral("own parent"));
    cat(1004, 0, QStringLiteral("fine"));
    EXPECT_EQ(uuids(manager->allDBCatChildItemsWidthCatUUID(1001)), QList<qint64>({1002}));
    EXPECT_TRUE(manager->allDBCatChildItemsWidthCatUUID(1003).isEmpty());
    EXPECT_EQ(manager->getAllItemDBCatTree().size(), 1);
    EXPECT_EQ(manager->topCatByCatUUID(1002), nullptr);
    EXPECT_TRUE(manager->deleteDBCatAndAllChildItem(*manager->itemDBCatWithUUID(1001)));
    EXPECT_EQ(uuids(manager->getAllItemsDBCat()), QList<qint64>({1003, 1004}));
}

TEST_F(Store, DeletingACategoryTakesItsSubtreeAndLinksButNotItsDocuments)
{
    cat(1001, 0, QStringLiteral("A"));
    cat(1002, 1001, QStringLiteral("B"));
    cat(1003, 1002, QStringLiteral("C"));
    cat(1004, 0, QStringLiteral("Keep"));
    doc(5001, {1003, 1004});
    doc(5002, {1001});
    EXPECT_EQ(manager->dicArticleCatsMaps().value(5001).uuids.size(), 2);
    EXPECT_EQ(manager->getUnCatsItemsDBArticleCount(), 0);

    ASSERT_TRUE(manager->deleteDBCatAndAllChildItem(*manager->itemDBCatWithUUID(1001)));
    EXPECT_EQ(uuids(manager->getAllItemsDBCat()), QList<qint64>({1004}));
    EXPECT_EQ(scalar(QStringLiteral("SELECT COUNT(*) FROM cat_article WHERE rid IN (1001,1002,1003)")).toInt(), 0);
    EXPECT_EQ(manager->getAllItemsDBArticleCount(), 2);
    EXPECT_EQ(uuids(manager->getUnCatsItemsDBArticleWithSort(0)), QList<qint64>({5002}));
    EXPECT_EQ(manager->dicArticleCatsMaps().value(5001).names, QStringList({"Keep"}));
    EXPECT_FALSE(manager->dicArticleCatsMaps().contains(5002));
}

TEST_F(Store, TrashedDocumentsLeaveTheCountsButKeepTheirLinks)
{
    cat(1001, 0, QStringLiteral("A"));
    const ORVDBArticle a = doc(5001, {1001});
    doc(5002);
    doc(5003);
    EXPECT_EQ(notificationsWhile([&] { ASSERT_TRUE(manager->updateDBArticleWithState(a, ORVDBArticle::StateTrash)); }), 1);

    EXPECT_EQ(manager->getAllItemsDBArticleCount(), 2);
    EXPECT_EQ(manager->getTrashItemsDBArticleCount(), 1);
    EXPECT_EQ(manager->getUnCatsItemsDBArticleCount(), 2);
    EXPECT_EQ(uuids(manager->getTrashItemsDBArticleWithSort(0)), QList<qint64>({5001}));
    EXPECT_EQ(uuids(manager->getAllItemsDBArticleWithSort(0)), QList<qint64>({5002, 5003}));
    EXPECT_TRUE(manager->getItemsDBArticleWithCatIDSort(1001, 0).isEmpty());
    EXPECT_EQ(uuids(manager->getItemsDBArticleWithArtUUIDs({5001, 5002, 9999})), QList<qint64>({5002}));
    EXPECT_TRUE(manager->isCatArticleExsitByCatUUIDArticleUUID(1001, 5001));
    EXPECT_EQ(manager->dicCatUUIDArticleCountMap().value(1001, 0), 0);

    // Putting it back needs nothing but the state.
    ASSERT_TRUE(manager->updateDBArticleWithState(a, ORVDBArticle::StateNormal));
    EXPECT_EQ(uuids(manager->getItemsDBArticleWithCatIDSort(1001, 0)), QList<qint64>({5001}));
}

TEST_F(Store, ReplacingCategoriesTouchesOnlyTheDifference)
{
    cat(1001, 0, QStringLiteral("A"));
    cat(1002, 0, QStringLiteral("B"));
    cat(1003, 0, QStringLiteral("C"));
    const ORVDBArticle a = doc(5001, {1001, 1002});
    EXPECT_EQ(manager->dicArticleCatsMaps().value(5001).uuids.size(), 2);
    const qint64 keptRow = scalar(QStringLiteral("SELECT id FROM cat_article WHERE rid=1002")).toLongLong();

    EXPECT_EQ(notificationsWhile([&] { ASSERT_TRUE(manager->updateDBArticleWithCatIIDS(a, {1002, 1003, 1003})); }), 1);
    QList<qint64> now = manager->articleCatsIIDSByArticleUUID(5001);
    std::sort(now.begin(), now.end());
    EXPECT_EQ(now, QList<qint64>({1002, 1003}));
    EXPECT_EQ(scalar(QStringLiteral("SELECT id FROM cat_article WHERE rid=1002")).toLongLong(), keptRow);
    EXPECT_EQ(scalar(QStringLiteral("SELECT COUNT(*) FROM cat_article")).toInt(), 2);

    QStringList names = manager->dicArticleCatsMaps().value(5001).names;
    names.sort();
    EXPECT_EQ(names, QStringList({"B", "C"}));

    ASSERT_TRUE(manager->updateDBArticleWithCatIIDS(a, {}));
    EXPECT_FALSE(manager->dicArticleCatsMaps().contains(5001));
    EXPECT_EQ(manager->getUnCatsItemsDBArticleCount(), 1);
}

TEST_F(Store, TagNamesMatchWithLikeAndTheLastMatchWins)
{
    const ORVDBArticle a = doc(5001);
    const ORVDBArticle b = doc(5002);
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(a, {QStringLiteral("Swift"), QStringLiteral("abc")}));
    EXPECT_EQ(manager->articleTagsNamesByArticleUUID(5001), QStringList({"Swift", "abc"}));

    // Case-insensitive in ASCII, and "_" in a given name is a wildcard: no new tags here.
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(b, {QStringLiteral("swift"), QStringLiteral("a_c")}));
    EXPECT_EQ(scalar(QStringLiteral("SELECT COUNT(*) FROM tag")).toInt(), 2);
    EXPECT_EQ(manager->articleTagsNamesByArticleUUID(5002), QStringList({"Swift", "abc"}));
    EXPECT_EQ(manager->dicArticleTagsMaps().value(5002).names, QStringList({"Swift", "abc"}));

    // Two tags of one name: the last row's id is the one linked.
    exec(QStringLiteral("INSERT INTO tag (id, name) VALUES (10, 'dup'), (11, 'DUP')"));
    const ORVDBArticle c = doc(5003);
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(c, {QStringLiteral("dup")}));
    EXPECT_EQ(scalar(QStringLiteral("SELECT rid FROM tag_article WHERE aid=5003")).toLongLong(), 11);

    // Removing a tag from a document keeps the tag itself.
    const qint64 swift = scalar(QStringLiteral("SELECT id FROM tag WHERE name='Swift'")).toLongLong();
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(a, {QStringLiteral("abc")}));
    EXPECT_FALSE(manager->isTagArticleExsitByTagUUIDArticleUUID(swift, 5001));
    EXPECT_EQ(manager->itemDBTagWithUUID(swift).name(), QStringLiteral("Swift"));
    EXPECT_EQ(manager->dicArticleTagsMaps().value(5001).names, QStringList({"abc"}));

    ASSERT_TRUE(manager->updateDBArticleWithNewTagID(a, swift));
    EXPECT_TRUE(manager->dicArticleTagsMaps().value(5001).names.contains(QStringLiteral("Swift")));
    EXPECT_EQ(uuids(manager->getItemsDBArticleWithTagIDSort(swift, 0)), QList<qint64>({5001, 5002}));

    EXPECT_EQ(manager->tagUUIDByTagName(QStringLiteral("Swift")), 0); // looks in the wrong table, always 0
    const ORVDBTag unknown = manager->itemDBTagWithUUID(999);
    EXPECT_EQ(unknown.uuid(), 0);
    EXPECT_FALSE(unknown.name().isNull());
}

TEST_F(Store, TagSweepDropsTagsWithoutNormalDocumentsOneCallLate)
{
    const ORVDBArticle kept = doc(5001);
    const ORVDBArticle trashed = doc(5002);
    const ORVDBArticle deleted = doc(5003);
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(kept, {QStringLiteral("live")}));
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(trashed, {QStringLiteral("asleep")}));
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(deleted, {QStringLiteral("orphan")}));
    ASSERT_TRUE(manager->updateDBArticleWithState(trashed, ORVDBArticle::StateTrash));
    ASSERT_TRUE(manager->deleteDBArticle(deleted));
    EXPECT_EQ(scalar(QStringLiteral("SELECT COUNT(*) FROM tag_article WHERE aid=5003")).toInt(), 0);
    EXPECT_EQ(scalar(QStringLiteral("SELECT COUNT(*) FROM tag")).toInt(), 3); // tags outlive their documents

    const QList<ORVCatTreeItemPtr> shown = manager->getAllItemsTagsCatTreeItem();
    ASSERT_EQ(shown.size(), 1);
    EXPECT_EQ(shown.first()->name, QStringLiteral("live"));
    EXPECT_EQ(shown.first()->catType, ORVCatType::Tag);
    EXPECT_EQ(manager->getAllItemsTagsCatTreeItemWithDBIsLoadAll(nullptr, true).size(), 3);

    EXPECT_EQ(manager->getAllDbTags().size(), 3); // the pass that deletes still lists them
    EXPECT_EQ(scalar(QStringLiteral("SELECT COUNT(*) FROM tag")).toInt(), 1);
    const QList<ORVDBTag> next = manager->getAllDbTags();
    ASSERT_EQ(next.size(), 1);
    EXPECT_EQ(next.first().name(), QStringLiteral("live"));
    EXPECT_EQ(manager->getAllDbTags(), next); // cached now

    // A new tag clears the cached list.
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(kept, {QStringLiteral("live"), QStringLiteral("new")}));
    EXPECT_EQ(manager->getAllDbTags().size(), 2);
}

TEST_F(Store, TagEntriesSortByNameWithoutRegardToCase)
{
    const ORVDBArticle a = doc(5001);
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(a, {QStringLiteral("beta"), QStringLiteral("Alpha"), QStringLiteral("gamma")}));
    const QList<ORVCatTreeItemPtr> tags = manager->getAllItemsTagsCatTreeItem();
    QStringList names;
    QList<qint64> sorts;
    for (const auto &t : tags) {
        names << t->name;
        sorts << t->sort;
        EXPECT_EQ(t->itemCount, 1);
    }
    EXPECT_EQ(names, QStringList({"Alpha", "beta", "gamma"}));
    EXPECT_EQ(sorts, QList<qint64>({1, 2, 3}));

    ORVDBTag renamed = manager->itemDBTagWithUUID(tags[0]->uuid);
    renamed.setName(QStringLiteral("zeta"));
    ASSERT_TRUE(manager->saveItemDBTag(renamed));
    EXPECT_TRUE(manager->dicArticleTagsMaps().value(5001).names.contains(QStringLiteral("zeta")));
    ASSERT_TRUE(manager->deleteDBTag(renamed));
    EXPECT_FALSE(manager->dicArticleTagsMaps().value(5001).names.contains(QStringLiteral("zeta")));
}

TEST_F(Store, SiteNameClashesCountOtherThingsOnly)
{
    cat(1001, 0, QStringLiteral("Site"), 1, ORVCatType::SiteCategory);
    ORVDBCat news = cat(1002, 1001, QStringLiteral("News"));
    news.setDocName(QStringLiteral("news"));
    ASSERT_TRUE(manager->saveItemDBCat(news));
    cat(1003, 0, QStringLiteral("Elsewhere"));
    ORVDBArticle about = doc(5001, {1002});
    about.setDocName(QStringLiteral("about"));
    ASSERT_TRUE(manager->saveItemDBArticle(about));

    EXPECT_FALSE(manager->checkDBCatDocNameIsExistUuid(QStringLiteral("news"), 1002));  // only itself
    EXPECT_FALSE(manager->checkDBCatDocNameIsExistUuid(QStringLiteral("about"), 1002)); // only the document
    EXPECT_FALSE(manager->checkDBCatDocNameIsExistUuid(QStringLiteral("Elsewhere"), 1002)); // another site

    cat(1004, 1001, QStringLiteral("ABOUT")); // LIKE ignores case: one category and one document
    EXPECT_TRUE(manager->checkDBCatDocNameIsExistUuid(QStringLiteral("about"), 1002));
    cat(1005, 1002, QStringLiteral("more news"));
    ORVDBCat second = *manager->itemDBCatWithUUID(1005);
    second.setDocName(QStringLiteral("NEWS"));
    ASSERT_TRUE(manager->saveItemDBCat(second));
    EXPECT_TRUE(manager->checkDBCatDocNameIsExistUuid(QStringLiteral("news"), 1002));
}

TEST_F(Store, RowsNeverReadNullTextAndOldDatesReadAsNow)
{
    exec(QStringLiteral("INSERT INTO article (uuid, state, dateAdd, dateArt) VALUES (5001, 1, 1000, 1700000000)"));
    exec(QStringLiteral("INSERT INTO cat (uuid, pid) VALUES (1001, 0)"));
    ORVDBArticle a = *manager->itemDBArticleWithUUID(5001);
    EXPECT_FALSE(a.docName().isNull());
    EXPECT_TRUE(a.docName().isEmpty());
    EXPECT_LE(qAbs(a.dateAddNSDate().secsTo(QDateTime::currentDateTime())), 5);
    EXPECT_LE(qAbs(a.dateModifNSDate().secsTo(QDateTime::currentDateTime())), 5);
    EXPECT_EQ(a.dateArtNSDate().toSecsSinceEpoch(), 1700000000);
    const ORVDBCat c = *manager->itemDBCatWithUUID(1001);
    EXPECT_FALSE(c.name().isNull());
    EXPECT_FALSE(c.siteHeader().isNull());
    EXPECT_LE(qAbs(c.siteLastBuildDateNSDate().secsTo(QDateTime::currentDateTime())), 5);

    ASSERT_TRUE(manager->saveItemDBArticle(a));
    EXPECT_EQ(scalar(QStringLiteral("SELECT typeof(docName) FROM article WHERE uuid=5001")).toString(),
              QStringLiteral("text"));

    a.setOtherMediaPaths({QStringLiteral("media/1/a.png"), QStringLiteral("ü b.jpg")});
    ASSERT_TRUE(manager->saveItemDBArticle(a));
    EXPECT_EQ(manager->itemDBArticleWithUUID(5001)->otherMediaPaths(),
              QStringList({"media/1/a.png", "ü b.jpg"}));
    EXPECT_FALSE(manager->itemDBArticleWithUUID(4242).has_value());
}

TEST_F(Store, WithDBFormsRunOnAWorkersQueueWithoutTheSharedHandle)
{
    cat(1001, 0, QStringLiteral("A"));
    doc(5001, {1001});
    FMDatabaseQueue queue(manager->dbURL(), FMDatabase::OpenReadWrite);
    queue.inDatabase([&](FMDatabase *db) {
        ASSERT_TRUE(db);
        ORVDBArticle b;
        b.setUuid(5002);
        b.setState(1);
        EXPECT_TRUE(manager->insertItemDBArticleWithDB(b, db));
        EXPECT_EQ(manager->getAllItemsDBArticleCountWithDB(db), 2);
        EXPECT_EQ(manager->getUnCatsItemsDBArticleCountWithDB(db), 1);
        EXPECT_EQ(manager->getAllItemDBCatTreeWithDB(db).first()->itemCount, 1);
        EXPECT_TRUE(manager->itemDBArticleWithUUIDWithDb(5002, db).has_value());
        EXPECT_FALSE(manager->db().isOpen());
    });
    // Plain operations close the shared handle behind them.
    EXPECT_EQ(manager->getAllItemsDBArticleCount(), 2);
    EXPECT_FALSE(manager->db().isOpen());
}

TEST_F(Store, AManagerNeverMakesAMissingDatabase)
{
    const QString missing = dir.filePath(QStringLiteral("gone/mainlib.db"));
    ORVDBManager m(missing);
    ORVDBArticle a;
    a.setUuid(5001);
    EXPECT_FALSE(m.insertItemDBArticle(a));
    EXPECT_TRUE(m.getAllItemsDBCat().isEmpty());
    EXPECT_EQ(m.getAllItemsDBArticleCount(), 0);
    EXPECT_FALSE(QFileInfo::exists(missing));
}
