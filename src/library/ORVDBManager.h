#pragma once

#include "library/FMDatabase.h"
#include "library/ORVCatTreeItem.h"
#include "library/ORVDBArticle.h"
#include "library/ORVDBCat.h"
#include "library/ORVDBTag.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <mutex>
#include <optional>

// The access object of one library database (mainlib.db): its categories,
// documents, tags and the links between them, with the caches that keep list
// building cheap. The text of documents never enters the database.
//
// Connections. The operations without "WithDB" open the manager's shared
// handle, run their statements and close it again, so no handle, statement
// or lock outlives an operation; they belong to the main thread. The
// "…WithDB" forms take a connection that is already open (a worker's
// FMDatabaseQueue on dbURL()) and neither open nor close it; given null they
// act as the plain form. SQLite's file locks order the two connections.
//
// Errors are values: an update yields false, a single-row read nullopt, a
// list read an empty list. Nothing is retried, and a failed step of a
// multi-statement operation does not undo the steps before it.
//
// The manager never makes a database: a missing file stays missing (see
// libraryModeSetupMainDatabase for making one).
//
// Caches. All of them are rebuilt lazily after a write that invalidates
// them (the refetch flags); they are guarded by a lock, so a worker's
// "…WithDB" calls may fill them while the main thread reads.
class ORVDBManager
{
public:
    // A document's categories or tags, as parallel lists.
    struct LinkRecord {
        QList<qint64> uuids;
        QStringList names;
    };

    // initWithDBURL:. `dbPath` is the path of mainlib.db.
    explicit ORVDBManager(QString dbPath);
    ~ORVDBManager();
    ORVDBManager(const ORVDBManager &) = delete;
    ORVDBManager &operator=(const ORVDBManager &) = delete;

    const QString &dbURL() const { return m_dbPath; }
    // The shared handle (closed between operations). Main thread.
    FMDatabase &db() { return m_db; }

    // The schema, run as one script inside BEGIN and COMMIT on a new file.
    static QString schemaStatement();

    // Keeps the shared handle open while `body` runs, so that the plain
    // operations it calls share that one connection instead of each opening
    // the file. False (and body not run) when the database cannot be opened.
    // Main thread, like the plain operations.
    bool withSharedDatabaseOpen(const std::function<void(FMDatabase &db)> &body);
    // The same inside one transaction, for batches of writes (an import of
    // thousands of documents): one disk sync for the batch instead of one
    // per statement. What body's statements did is committed whether or not
    // some of them failed, so that a batch keeps what succeeded; false when
    // the transaction could not be begun or committed (it is then rolled
    // back). Nested calls join the outer transaction.
    bool performInTransaction(const std::function<void(FMDatabase &db)> &body);

    // Refetch flags: set by writes, cleared when the cache is rebuilt.
    bool isRefetchUUIDCatsMap() const;
    bool isRefetchArticleCatsMap() const;
    bool isRefetchArticleTagsMap() const;
    bool isRefetchCats() const;
    // Marks every cache stale (after a change the manager did not make).
    void setAllRefetchFlags();

    // ---- Categories: reading
    std::optional<ORVDBCat> itemDBCatWithUUID(qint64 uuid);
    // All rows of `cat`, from the cache.
    QList<ORVDBCat> getAllItemsDBCat();
    QList<ORVDBCat> getAllItemsDBCatWithDB(FMDatabase *db);
    // The top categories as a tree (children by `pid`), each entry with the
    // count of normal documents in it and its descendants, a document in
    // two of them counted once. libName "main".
    QList<ORVCatTreeItemPtr> getAllItemDBCatTree();
    QList<ORVCatTreeItemPtr> getAllItemDBCatTreeWithDB(FMDatabase *db);
    // Every descendant of a category (not itself): siblings by `sort`
    // ascending, each row before its own children.
    QList<ORVDBCat> allDBCatChildItemsWidthCatUUID(qint64 catUUID);
    // Appends to inArr the ancestors of the category (nearest first, not
    // itself) that are database categories, as found in topCatTree.
    void allDBCatParentItemsWithCatUUIDInTopCatTreeInArr(qint64 catUUID, const ORVCatTreeItemPtr &topCatTree,
                                                         QList<ORVDBCat> &inArr);
    // The top entry (without counts) whose subtree holds the category, or null.
    ORVCatTreeItemPtr topCatByCatUUID(qint64 catUUID);
    // Category uuid to the count of normal documents directly in it.
    QHash<qint64, qint64> dicCatUUIDArticleCountMap();
    QHash<qint64, qint64> dicCatUUIDArticleCountMapWithDB(FMDatabase *db);
    // Whether `name` clashes with another category's or document's site
    // name in the site (top category and its subtree) that holds catUUID.
    // One match alone is the thing itself and does not count.
    bool checkDBCatDocNameIsExistUuid(const QString &name, qint64 catUUID);
    // uuid to row, from the cache.
    QHash<qint64, ORVDBCat> dicUUIDCatMaps();
    QHash<qint64, ORVDBCat> dicUUIDCatMapsWithDB(FMDatabase *db);

    // ---- Categories: writing (each marks the category caches stale)
    bool insertItemDBCat(const ORVDBCat &cat);
    bool saveItemDBCat(const ORVDBCat &cat);
    bool updateDBCatWithCatType(const ORVDBCat &cat, int catType);
    bool updateDBCatWithSort(const ORVDBCat &cat, qint64 sort);
    // Posts kORVLibraryArticleCategoryDidChangeNotification on success.
    bool updateDBCatWithPID(const ORVDBCat &cat, qint64 pid);
    // updateDBCatWithPID with the new parent's uuid (0 for the root), and on
    // success moves the entry into the new parent's children.
    bool updateCatTreeParentParentCat(const ORVCatTreeItemPtr &item, ORVCatTreeItem *parentCat);
    // Deletes the category and its descendants and their links; their
    // documents stay (and may become uncategorized).
    bool deleteDBCatAndAllChildItem(const ORVDBCat &cat);

    // ---- Documents: reading. The sort arguments are accepted and ignored:
    // lists are ordered in memory by their users.
    std::optional<ORVDBArticle> itemDBArticleWithUUID(qint64 uuid);
    std::optional<ORVDBArticle> itemDBArticleWithUUIDWithDb(qint64 uuid, FMDatabase *db);
    QList<ORVDBArticle> getAllItemsDBArticleWithSort(quint64 sortType);
    qint64 getAllItemsDBArticleCount();
    qint64 getAllItemsDBArticleCountWithDB(FMDatabase *db);
    QList<ORVDBArticle> getTrashItemsDBArticleWithSort(quint64 sortType);
    qint64 getTrashItemsDBArticleCount();
    qint64 getTrashItemsDBArticleCountWithDB(FMDatabase *db);
    QList<ORVDBArticle> getUnCatsItemsDBArticleWithSort(quint64 sortType);
    qint64 getUnCatsItemsDBArticleCount();
    qint64 getUnCatsItemsDBArticleCountWithDB(FMDatabase *db);
    QList<ORVDBArticle> getItemsDBArticleOnlyInCatID(qint64 catID);
    // Normal documents in the category or any of its descendants.
    QList<ORVDBArticle> getItemsDBArticleWithCatIDSort(qint64 catID, quint64 sortType);
    QList<ORVDBArticle> getItemsDBArticleWithTagIDSort(qint64 tagID, quint64 sortType);
    QList<ORVDBArticle> getItemsDBArticleWithArtUUIDs(const QList<qint64> &uuids);
    QList<ORVDBArticle> getItemsDBArticleWithArtUUIDsWithDB(const QList<qint64> &uuids, FMDatabase *db);
    QList<qint64> articleCatsIIDSByArticleUUID(qint64 articleUUID);
    // Tag names in the order the links were made.
    QStringList articleTagsNamesByArticleUUID(qint64 articleUUID);
    bool isCatArticleExsitByCatUUIDArticleUUID(qint64 catUUID, qint64 articleUUID);
    bool isTagArticleExsitByTagUUIDArticleUUID(qint64 tagUUID, qint64 articleUUID);
    // No statement sorts: always "".
    static QString orderByStringBySortType(quint64 sortType);

    // ---- Documents: writing
    bool insertItemDBArticle(const ORVDBArticle &art);
    bool insertItemDBArticleWithDB(const ORVDBArticle &art, FMDatabase *db);
    // A new document's row and its categories in one go: a document that
    // was never stored has no links to compare with, so none are read (on
    // an import of thousands, reading them would scan `cat_article` once per
    // document). Posts kORVLibraryArticleCategoryDidChangeNotification when
    // it has categories. False when the row or a link could not be written.
    bool insertItemDBArticleWithCatIIDS(const ORVDBArticle &art, const QList<qint64> &catIIDS);
    bool saveItemDBArticle(const ORVDBArticle &art);
    // Posts kORVLibraryArticleCategoryDidChangeNotification on success.
    bool updateDBArticleWithState(const ORVDBArticle &art, int state);
    bool updateDBArticleWithSort(const ORVDBArticle &art, qint64 sort);
    // Makes the document's categories exactly catIIDS: links to remove go in
    // one statement, new ones one by one, unchanged ones keep their rows.
    // Posts kORVLibraryArticleCategoryDidChangeNotification.
    bool updateDBArticleWithCatIIDS(const ORVDBArticle &art, const QList<qint64> &catIIDS);
    // Makes the document's tags exactly tagNames, making missing tags. Names
    // are found with LIKE (case-insensitive in ASCII, "%" and "_" are
    // wildcards); the last matching tag wins.
    bool updateDBArticleWithTagNames(const ORVDBArticle &art, const QStringList &tagNames);
    bool updateDBArticleWithNewTagID(const ORVDBArticle &art, qint64 tagID);
    // Deletes the row and its category and tag links (the tags themselves
    // stay until getAllDbTags sweeps them). True only if all three succeed.
    bool deleteDBArticle(const ORVDBArticle &art);

    // ---- Tags
    // An unknown id yields an empty tag, not nullopt.
    ORVDBTag itemDBTagWithUUID(qint64 tagID);
    bool saveItemDBTag(const ORVDBTag &tag);
    bool deleteDBTag(const ORVDBTag &tag);
    // Looks the name up in `article`, which has no `name` column: the
    // statement fails and the answer is 0 for every name. Tag look-ups by
    // name go through updateDBArticleWithTagNames.
    qint64 tagUUIDByTagName(const QString &name);
    // Tag id to the count of normal documents that carry it.
    QHash<qint64, qint64> dicTagUUIDArticleCountMap();
    QHash<qint64, qint64> dicTagUUIDArticleCountMapWithDB(FMDatabase *db);
    // Tag entries (catType 99, uuid the tag id), by name ascending without
    // regard to case, `sort` their position from 1. Tags without normal
    // documents are left out unless isLoadAll.
    QList<ORVCatTreeItemPtr> getAllItemsTagsCatTreeItem();
    QList<ORVCatTreeItemPtr> getAllItemsTagsCatTreeItemWithDB(FMDatabase *db);
    QList<ORVCatTreeItemPtr> getAllItemsTagsCatTreeItemWithDBIsLoadAll(FMDatabase *db, bool isLoadAll);
    // Every tag, cached. The same pass deletes the tags that no normal
    // document carries; they are still in the list it returns, and the next
    // call lists again without them.
    QList<ORVDBTag> getAllDbTags();

    // ---- A document's categories and tags, for list rows (cached)
    QHash<qint64, LinkRecord> dicArticleCatsMaps();
    QHash<qint64, LinkRecord> dicArticleTagsMaps();

    // ---- Counting categories
    // Sets the entry's itemCount, and its children's: a category without
    // descendants from the map (0 if absent), one with descendants by one
    // query over it and its subtree.
    void updateCatArticleCountWithMapCatTreeItemWithDB(const QHash<qint64, qint64> &countMap,
                                                       const ORVCatTreeItemPtr &item, FMDatabase *db);

    // ---- Walking trees and rows (depth first, by uuid)
    static bool checkTheCatUUIDInTopCatTreeIsHave(qint64 catUUID, const ORVCatTreeItem *topCatTree);
    // Whether theChild lies somewhere below cat.
    static bool checkCatIsHasChildWithCatTheChildIsHas(const ORVCatTreeItem *cat, const ORVCatTreeItem *theChild);
    static ORVCatTreeItemPtr fetchTreeItemWithCatUUIDInTopCatTreeOutItem(qint64 catUUID,
                                                                         const ORVCatTreeItemPtr &topCatTree);
    // Appends every row below parentUUID, each before its own children, in
    // the order of `items`.
    static void fetchCatAllChildWithItemsInArrLevel(qint64 parentUUID, const QList<ORVDBCat> &items,
                                                    QList<ORVDBCat> &inArr, int level);
    // Builds entries for the rows below parentUUID (0: the top categories),
    // appending them to inArr (or to parent's children when given).
    static void createCatTreeWithItemsParentInArrLevel(const QList<ORVDBCat> &items, ORVCatTreeItem *parent,
                                                       QList<ORVCatTreeItemPtr> &inArr, int level);

private:
    template <typename R, typename Body>
    R withDB(FMDatabase *given, R fallback, Body &&body);

    QList<ORVDBArticle> articlesWithDB(FMDatabase *db, const QString &sql, const QVariantList &arguments);
    qint64 countWithDB(FMDatabase *db, const QString &sql, const QVariantList &arguments);
    QHash<qint64, qint64> countMapWithDB(FMDatabase *db, const QString &sql);
    QList<qint64> articleCatsIIDSWithDB(FMDatabase *db, qint64 articleUUID);
    QStringList articleTagsNamesWithDB(FMDatabase *db, qint64 articleUUID);
    qint64 lastTagIDLikeName(FMDatabase &db, const QString &name);
    QList<qint64> catAndDescendantUUIDs(qint64 catUUID);
    QHash<qint64, LinkRecord> fetchArticleCatsMaps(FMDatabase *db);
    QHash<qint64, LinkRecord> fetchArticleTagsMaps(FMDatabase *db);
    void markCatsChanged();
    void postArticleCategoryDidChange();

    QString m_dbPath;
    FMDatabase m_db;
    int m_openDepth = 0; // nesting of plain operations on the shared handle
    int m_transactionDepth = 0;

    mutable std::recursive_mutex m_cacheLock;
    bool m_isRefetchUUIDCatsMap = true;
    bool m_isRefetchArticleCatsMap = true;
    bool m_isRefetchArticleTagsMap = true;
    bool m_isRefetchCats = true;
    bool m_isRefetchCatTree = true; // catTreeItemCacheArrObj; stale whenever isRefetchCats is set
    QList<ORVDBCat> m_dbCatsCacheArray;
    QList<ORVCatTreeItemPtr> m_catTreeItemCacheArrObj;
    QHash<qint64, ORVDBCat> m_dicUUIDCatMaps;
    QHash<qint64, LinkRecord> m_dicArticleCatsMaps;
    QHash<qint64, LinkRecord> m_dicArticleTagsMaps;
    std::optional<QList<ORVDBTag>> m_allHasArticlesTagsCacheObj;
};
