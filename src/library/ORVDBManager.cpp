#include "library/ORVDBManager.h"

#include "core/ORVNotificationCenter.h"
#include "library/ORVLibraryNotifications.h"

#include <QLoggingCategory>
#include <QSet>

#include <algorithm>

Q_LOGGING_CATEGORY(lcLibraryStore, "orvo.library.store", QtWarningMsg)

namespace {

// Categories nest a few levels in practice; a chain deeper than this can
// only come from a damaged `pid` column, and walking stops there rather than
// exhaust the stack.
constexpr int kMaxCategoryDepth = 512;

QString idList(const QList<qint64> &ids)
{
    QStringList parts;
    parts.reserve(ids.size());
    for (qint64 id : ids)
        parts << QString::number(id);
    return parts.join(QLatin1Char(','));
}

} // namespace

ORVDBManager::ORVDBManager(QString dbPath) : m_dbPath(std::move(dbPath)), m_db(m_dbPath) {}

ORVDBManager::~ORVDBManager() = default;

QString ORVDBManager::schemaStatement()
{
    return QStringLiteral(
        "BEGIN;\n"
        "CREATE TABLE cat (id INTEGER primary key autoincrement, pid INTEGER, uuid INTEGER, name TEXT, "
        "docName TEXT, catType INTEGER, sort INTEGER, sortType INTEGER, siteURL TEXT, siteSkinName TEXT, "
        "siteLastBuildDate INTEGER, siteBuildPath TEXT, siteFavicon TEXT, siteLogo TEXT, siteDateFormat TEXT, "
        "sitePageSize INTEGER, siteListTextNum INTEGER, siteName TEXT, siteDes TEXT, siteShareCode TEXT, "
        "siteHeader TEXT, siteOther TEXT, siteMainMenuData TEXT, siteExtDef TEXT, siteExtValue TEXT, "
        "sitePostExtDef TEXT, siteEnableLaTeX INTEGER, siteEnableChart INTEGER);\n"
        "CREATE UNIQUE INDEX cat_uuid_idx ON cat (uuid);\n"
        "CREATE TABLE article (id INTEGER primary key autoincrement, uuid INTEGER, type INTEGER, state INTEGER, "
        "sort INTEGER, dateAdd INTEGER, dateModif INTEGER, dateArt INTEGER, docName TEXT, otherMedia TEXT, "
        "buildResource TEXT, postExtValue TEXT);\n"
        "CREATE UNIQUE INDEX article_uuid_idx ON article (uuid);\n"
        "CREATE TABLE cat_article (id INTEGER primary key autoincrement, rid INTEGER, aid INTEGER);\n"
        "CREATE TABLE tag (id INTEGER primary key autoincrement, name TEXT);\n"
        "CREATE TABLE tag_article (id INTEGER primary key autoincrement, rid INTEGER, aid INTEGER);\n"
        "COMMIT;");
}

template <typename R, typename Body>
R ORVDBManager::withDB(FMDatabase *given, R fallback, Body &&body)
{
    if (given)
        return body(*given);
    // The manager never makes the file: without OpenCreate a database that
    // vanished stays missing instead of coming back empty.
    if (m_openDepth == 0 && !m_db.openWithFlags(FMDatabase::OpenReadWrite))
        return fallback;
    ++m_openDepth;
    R result = body(m_db);
    if (--m_openDepth == 0)
        m_db.close();
    return result;
}

bool ORVDBManager::withSharedDatabaseOpen(const std::function<void(FMDatabase &db)> &body)
{
    return withDB(nullptr, false, [&](FMDatabase &db) {
        body(db);
        return true;
    });
}

bool ORVDBManager::performInTransaction(const std::function<void(FMDatabase &db)> &body)
{
    return withDB(nullptr, false, [&](FMDatabase &db) {
        if (m_transactionDepth > 0) {
            body(db);
            return true;
        }
        if (!db.executeUpdate(QStringLiteral("BEGIN")))
            return false;
        ++m_transactionDepth;
        body(db);
        --m_transactionDepth;
        if (db.executeUpdate(QStringLiteral("COMMIT")))
            return true;
        qCWarning(lcLibraryStore, "commit failed: %s", qPrintable(db.lastErrorMessage()));
        db.executeUpdate(QStringLiteral("ROLLBACK"));
        return false;
    });
}

// ---- flags

bool ORVDBManager::isRefetchUUIDCatsMap() const
{
    std::lock_guard g(m_cacheLock);
    return m_isRefetchUUIDCatsMap;
}

bool ORVDBManager::isRefetchArticleCatsMap() const
{
    std::lock_guard g(m_cacheLock);
    return m_isRefetchArticleCatsMap;
}

bool ORVDBManager::isRefetchArticleTagsMap() const
{
    std::lock_guard g(m_cacheLock);
    return m_isRefetchArticleTagsMap;
}

bool ORVDBManager::isRefetchCats() const
{
    std::lock_guard g(m_cacheLock);
    return m_isRefetchCats;
}

void ORVDBManager::setAllRefetchFlags()
{
    std::lock_guard g(m_cacheLock);
    m_isRefetchUUIDCatsMap = m_isRefetchArticleCatsMap = m_isRefetchArticleTagsMap = true;
    markCatsChanged();
    m_allHasArticlesTagsCacheObj.reset();
}

void ORVDBManager::markCatsChanged()
{
    std::lock_guard g(m_cacheLock);
    m_isRefetchCats = true;
    m_isRefetchCatTree = true;
}

void ORVDBManager::postArticleCategoryDidChange()
{
    ORVNotificationCenter::defaultCenter()->postNotification(kORVLibraryArticleCategoryDidChangeNotification, nullptr,
                                                             {{QStringLiteral("dbURL"), m_dbPath}});
}

// ---- categories: reading

std::optional<ORVDBCat> ORVDBManager::itemDBCatWithUUID(qint64 uuid)
{
    return withDB<std::optional<ORVDBCat>>(nullptr, std::nullopt, [&](FMDatabase &db) -> std::optional<ORVDBCat> {
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT * FROM cat WHERE uuid=?"), {uuid});
        if (rs.next())
            return ORVDBCat::fromResultSet(rs);
        return std::nullopt;
    });
}

QList<ORVDBCat> ORVDBManager::getAllItemsDBCat() { return getAllItemsDBCatWithDB(nullptr); }

QList<ORVDBCat> ORVDBManager::getAllItemsDBCatWithDB(FMDatabase *given)
{
    std::lock_guard g(m_cacheLock);
    if (!m_dbCatsCacheArray.isEmpty() && !m_isRefetchCats)
        return m_dbCatsCacheArray;
    QList<ORVDBCat> rows;
    const bool ok = withDB(given, false, [&](FMDatabase &db) {
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT * FROM cat "));
        if (!rs)
            return false;
        while (rs.next())
            rows << ORVDBCat::fromResultSet(rs);
        return true;
    });
    // A failed read keeps the flag, so that the next call tries again.
    if (ok) {
        m_dbCatsCacheArray = rows;
        m_isRefetchCats = false;
    }
    return rows;
}

QHash<qint64, ORVDBCat> ORVDBManager::dicUUIDCatMaps() { return dicUUIDCatMapsWithDB(nullptr); }

QHash<qint64, ORVDBCat> ORVDBManager::dicUUIDCatMapsWithDB(FMDatabase *db)
{
    std::lock_guard g(m_cacheLock);
    if (m_dicUUIDCatMaps.isEmpty() || m_isRefetchUUIDCatsMap) {
        QHash<qint64, ORVDBCat> map;
        for (const ORVDBCat &c : getAllItemsDBCatWithDB(db))
            map.insert(c.uuid(), c);
        m_dicUUIDCatMaps = map;
        m_isRefetchUUIDCatsMap = false;
    }
    return m_dicUUIDCatMaps;
}

void ORVDBManager::createCatTreeWithItemsParentInArrLevel(const QList<ORVDBCat> &items, ORVCatTreeItem *parent,
                                                          QList<ORVCatTreeItemPtr> &inArr, int level)
{
    if (level > kMaxCategoryDepth)
        return;
    const qint64 parentUUID = parent ? parent->uuid : 0;
    for (const ORVDBCat &row : items) {
        if (row.pid() != parentUUID || row.uuid() == parentUUID)
            continue;
        // A row already on the way down from the top would make a loop.
        bool onPath = false;
        for (const ORVCatTreeItem *p = parent; p; p = p->parent)
            onPath = onPath || p->uuid == row.uuid();
        if (onPath)
            continue;
        ORVCatTreeItemPtr item = ORVCatTreeItem::itemWithDBCat(row, parent ? parent->libName : QStringLiteral("main"));
        if (parent)
            parent->addChild(item);
        else
            inArr.append(item);
        QList<ORVCatTreeItemPtr> unused;
        createCatTreeWithItemsParentInArrLevel(items, item.get(), unused, level + 1);
    }
}

QList<ORVCatTreeItemPtr> ORVDBManager::getAllItemDBCatTree() { return getAllItemDBCatTreeWithDB(nullptr); }

QList<ORVCatTreeItemPtr> ORVDBManager::getAllItemDBCatTreeWithDB(FMDatabase *given)
{
    return withDB(given, QList<ORVCatTreeItemPtr>(), [&](FMDatabase &db) {
        const QList<ORVDBCat> rows = getAllItemsDBCatWithDB(&db);
        const QHash<qint64, qint64> counts = dicCatUUIDArticleCountMapWithDB(&db);
        QList<ORVCatTreeItemPtr> tops;
        createCatTreeWithItemsParentInArrLevel(rows, nullptr, tops, 0);
        for (const ORVCatTreeItemPtr &top : tops)
            updateCatArticleCountWithMapCatTreeItemWithDB(counts, top, &db);
        return tops;
    });
}

void ORVDBManager::updateCatArticleCountWithMapCatTreeItemWithDB(const QHash<qint64, qint64> &countMap,
                                                                 const ORVCatTreeItemPtr &item, FMDatabase *given)
{
    if (!item)
        return;
    if (item->children.isEmpty()) {
        item->itemCount = countMap.value(item->uuid, 0);
        return;
    }
    QList<qint64> ids{item->uuid};
    QList<const ORVCatTreeItem *> stack;
    for (const auto &c : item->children)
        stack << c.get();
    while (!stack.isEmpty()) {
        const ORVCatTreeItem *c = stack.takeLast();
        ids << c->uuid;
        for (const auto &cc : c->children)
            stack << cc.get();
    }
    item->itemCount = countWithDB(
        given,
        QStringLiteral("SELECT COUNT(*) FROM article WHERE uuid IN( SELECT DISTINCT aid FROM cat_article WHERE rid "
                       "IN (%1) ) AND state=1")
            .arg(idList(ids)),
        {});
    for (const auto &c : item->children)
        updateCatArticleCountWithMapCatTreeItemWithDB(countMap, c, given);
}

void ORVDBManager::fetchCatAllChildWithItemsInArrLevel(qint64 parentUUID, const QList<ORVDBCat> &items,
                                                       QList<ORVDBCat> &inArr, int level)
{
    if (level > kMaxCategoryDepth)
        return;
    for (const ORVDBCat &row : items) {
        if (row.pid() != parentUUID || row.uuid() == parentUUID)
            continue;
        // Each row once, even if a damaged `pid` column makes a loop.
        if (std::any_of(inArr.begin(), inArr.end(), [&](const ORVDBCat &c) { return c.uuid() == row.uuid(); }))
            continue;
        inArr << row;
        fetchCatAllChildWithItemsInArrLevel(row.uuid(), items, inArr, level + 1);
    }
}

QList<ORVDBCat> ORVDBManager::allDBCatChildItemsWidthCatUUID(qint64 catUUID)
{
    QList<ORVDBCat> rows = getAllItemsDBCat();
    std::stable_sort(rows.begin(), rows.end(), [](const ORVDBCat &a, const ORVDBCat &b) { return a.sort() < b.sort(); });
    QList<ORVDBCat> children;
    fetchCatAllChildWithItemsInArrLevel(catUUID, rows, children, 0);
    // The category itself can turn up when the links loop back to it.
    children.removeIf([&](const ORVDBCat &c) { return c.uuid() == catUUID; });
    return children;
}

QList<qint64> ORVDBManager::catAndDescendantUUIDs(qint64 catUUID)
{
    QList<qint64> ids{catUUID};
    for (const ORVDBCat &c : allDBCatChildItemsWidthCatUUID(catUUID))
        ids << c.uuid();
    return ids;
}

bool ORVDBManager::checkTheCatUUIDInTopCatTreeIsHave(qint64 catUUID, const ORVCatTreeItem *topCatTree)
{
    if (!topCatTree)
        return false;
    if (topCatTree->uuid == catUUID)
        return true;
    for (const auto &c : topCatTree->children)
        if (checkTheCatUUIDInTopCatTreeIsHave(catUUID, c.get()))
            return true;
    return false;
}

bool ORVDBManager::checkCatIsHasChildWithCatTheChildIsHas(const ORVCatTreeItem *cat, const ORVCatTreeItem *theChild)
{
    if (!cat || !theChild)
        return false;
    for (const auto &c : cat->children)
        if (c.get() == theChild || c->uuid == theChild->uuid || checkCatIsHasChildWithCatTheChildIsHas(c.get(), theChild))
            return true;
    return false;
}

ORVCatTreeItemPtr ORVDBManager::fetchTreeItemWithCatUUIDInTopCatTreeOutItem(qint64 catUUID,
                                                                            const ORVCatTreeItemPtr &topCatTree)
{
    if (!topCatTree)
        return nullptr;
    if (topCatTree->uuid == catUUID)
        return topCatTree;
    for (const auto &c : topCatTree->children)
        if (ORVCatTreeItemPtr found = fetchTreeItemWithCatUUIDInTopCatTreeOutItem(catUUID, c))
            return found;
    return nullptr;
}

void ORVDBManager::allDBCatParentItemsWithCatUUIDInTopCatTreeInArr(qint64 catUUID,
                                                                   const ORVCatTreeItemPtr &topCatTree,
                                                                   QList<ORVDBCat> &inArr)
{
    const ORVCatTreeItemPtr item = fetchTreeItemWithCatUUIDInTopCatTreeOutItem(catUUID, topCatTree);
    if (!item)
        return;
    const QHash<qint64, ORVDBCat> rows = dicUUIDCatMaps();
    for (const ORVCatTreeItem *p = item->parent; p; p = p->parent) {
        if (!ORVDBCat::checkCatTypeIsDBCatItem(p->catType))
            continue;
        const auto it = rows.constFind(p->uuid);
        if (it != rows.constEnd())
            inArr << *it;
    }
}

ORVCatTreeItemPtr ORVDBManager::topCatByCatUUID(qint64 catUUID)
{
    std::lock_guard g(m_cacheLock);
    if (m_catTreeItemCacheArrObj.isEmpty() || m_isRefetchCatTree) {
        QList<ORVCatTreeItemPtr> tops;
        createCatTreeWithItemsParentInArrLevel(getAllItemsDBCat(), nullptr, tops, 0);
        m_catTreeItemCacheArrObj = tops;
        m_isRefetchCatTree = false;
    }
    for (const ORVCatTreeItemPtr &top : m_catTreeItemCacheArrObj)
        if (checkTheCatUUIDInTopCatTreeIsHave(catUUID, top.get()))
            return top;
    return nullptr;
}

QHash<qint64, qint64> ORVDBManager::countMapWithDB(FMDatabase *given, const QString &sql)
{
    return withDB(given, QHash<qint64, qint64>(), [&](FMDatabase &db) {
        QHash<qint64, qint64> map;
        FMResultSet rs = db.executeQuery(sql);
        while (rs.next())
            map.insert(rs.longLongIntForColumn(0), rs.longLongIntForColumn(1));
        return map;
    });
}

QHash<qint64, qint64> ORVDBManager::dicCatUUIDArticleCountMap() { return dicCatUUIDArticleCountMapWithDB(nullptr); }

QHash<qint64, qint64> ORVDBManager::dicCatUUIDArticleCountMapWithDB(FMDatabase *db)
{
    return countMapWithDB(db, QStringLiteral("SELECT c.rid,count(c.aid) FROM cat_article as c LEFT JOIN article as a "
                                             "WHERE a.uuid=c.aid AND a.state=1 GROUP BY rid"));
}

bool ORVDBManager::checkDBCatDocNameIsExistUuid(const QString &name, qint64 catUUID)
{
    const ORVCatTreeItemPtr top = topCatByCatUUID(catUUID);
    QList<qint64> ids = catAndDescendantUUIDs(top ? top->uuid : catUUID);
    if (!ids.contains(catUUID))
        ids << catUUID;
    const QString list = idList(ids);
    const qint64 count1 = countWithDB(
        nullptr, QStringLiteral("SELECT COUNT(*) FROM cat WHERE uuid IN(%1) AND (docName LIKE ? OR name LIKE ?)").arg(list),
        {name, name});
    if (count1 > 1)
        return true;
    const qint64 count2 = countWithDB(nullptr,
                                      QStringLiteral("SELECT COUNT(*) FROM article WHERE uuid IN( SELECT DISTINCT aid "
                                                     "FROM cat_article WHERE rid IN (%1)) AND docName LIKE ?")
                                          .arg(list),
                                      {name});
    return count2 > 1 || (count1 == 1 && count2 == 1);
}

// ---- categories: writing

bool ORVDBManager::insertItemDBCat(const ORVDBCat &cat)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        return db.executeUpdateWithParameterDictionary(
            QStringLiteral(
                "INSERT INTO cat (pid, uuid, name, docName, catType, sort, sortType, siteURL, siteSkinName, "
                "siteLastBuildDate, siteBuildPath, siteFavicon, siteLogo, siteDateFormat, sitePageSize, "
                "siteListTextNum, siteName, siteDes, siteShareCode, siteHeader, siteOther, siteMainMenuData, "
                "siteExtDef, siteExtValue, sitePostExtDef, siteEnableLaTeX, siteEnableChart) VALUES (:pid, :uuid, "
                ":name, :docName, :catType, :sort, :sortType, :siteURL, :siteSkinName, :siteLastBuildDate, "
                ":siteBuildPath, :siteFavicon, :siteLogo, :siteDateFormat, :sitePageSize, :siteListTextNum, "
                ":siteName, :siteDes, :siteShareCode, :siteHeader, :siteOther, :siteMainMenuData, :siteExtDef, "
                ":siteExtValue, :sitePostExtDef, :siteEnableLaTeX, :siteEnableChart)"),
            cat.parameterDictionary());
    });
    std::lock_guard g(m_cacheLock);
    markCatsChanged();
    m_isRefetchUUIDCatsMap = m_isRefetchArticleCatsMap = true;
    return ok;
}

bool ORVDBManager::saveItemDBCat(const ORVDBCat &cat)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        return db.executeUpdateWithParameterDictionary(
            QStringLiteral(
                "UPDATE cat SET pid = :pid, name = :name, docName = :docName, catType = :catType, sort = :sort, "
                "sortType = :sortType, siteURL = :siteURL, siteSkinName = :siteSkinName, siteLastBuildDate = "
                ":siteLastBuildDate, siteBuildPath = :siteBuildPath, siteFavicon = :siteFavicon, siteLogo = "
                ":siteLogo, siteDateFormat = :siteDateFormat, sitePageSize = :sitePageSize, siteListTextNum = "
                ":siteListTextNum, siteName = :siteName, siteDes = :siteDes, siteShareCode = :siteShareCode, "
                "siteHeader = :siteHeader, siteOther = :siteOther, siteMainMenuData = :siteMainMenuData, siteExtDef "
                "= :siteExtDef, siteExtValue = :siteExtValue, sitePostExtDef = :sitePostExtDef, siteEnableLaTeX = "
                ":siteEnableLaTeX, siteEnableChart = :siteEnableChart WHERE uuid = :uuid"),
            cat.parameterDictionary());
    });
    std::lock_guard g(m_cacheLock);
    markCatsChanged();
    m_isRefetchUUIDCatsMap = m_isRefetchArticleCatsMap = true;
    return ok;
}

bool ORVDBManager::updateDBCatWithCatType(const ORVDBCat &cat, int catType)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        return db.executeUpdateWithParameterDictionary(QStringLiteral("UPDATE cat SET catType = :catType WHERE uuid = :uuid"),
                                                       {{QStringLiteral("catType"), catType},
                                                        {QStringLiteral("uuid"), cat.uuid()}});
    });
    markCatsChanged();
    return ok;
}

bool ORVDBManager::updateDBCatWithSort(const ORVDBCat &cat, qint64 sort)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        return db.executeUpdateWithParameterDictionary(QStringLiteral("UPDATE cat SET sort = :sort WHERE uuid = :uuid"),
                                                       {{QStringLiteral("sort"), sort},
                                                        {QStringLiteral("uuid"), cat.uuid()}});
    });
    markCatsChanged();
    return ok;
}

bool ORVDBManager::updateDBCatWithPID(const ORVDBCat &cat, qint64 pid)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        return db.executeUpdateWithParameterDictionary(QStringLiteral("UPDATE cat SET pid = :pid WHERE uuid = :uuid"),
                                                       {{QStringLiteral("pid"), pid},
                                                        {QStringLiteral("uuid"), cat.uuid()}});
    });
    markCatsChanged();
    if (ok)
        postArticleCategoryDidChange();
    return ok;
}

bool ORVDBManager::updateCatTreeParentParentCat(const ORVCatTreeItemPtr &item, ORVCatTreeItem *parentCat)
{
    if (!item || !parentCat)
        return false;
    ORVDBCat cat;
    cat.setUuid(item->uuid);
    if (!updateDBCatWithPID(cat, parentCat->uuid))
        return false;
    ORVCatTreeItemPtr keep = item;
    if (item->parent)
        item->parent->removeChild(item.get());
    parentCat->addChild(keep);
    return true;
}

bool ORVDBManager::deleteDBCatAndAllChildItem(const ORVDBCat &cat)
{
    const QString list = idList(catAndDescendantUUIDs(cat.uuid()));
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        const bool cats = db.executeUpdate(QStringLiteral("DELETE FROM cat WHERE uuid in (%1)").arg(list));
        const bool links = db.executeUpdate(QStringLiteral("DELETE FROM cat_article WHERE rid IN (%1)").arg(list));
        return cats && links;
    });
    setAllRefetchFlags();
    return ok;
}

// ---- documents: reading

QList<ORVDBArticle> ORVDBManager::articlesWithDB(FMDatabase *given, const QString &sql, const QVariantList &arguments)
{
    return withDB(given, QList<ORVDBArticle>(), [&](FMDatabase &db) {
        QList<ORVDBArticle> rows;
        FMResultSet rs = db.executeQuery(sql, arguments);
        while (rs.next())
            rows << ORVDBArticle::fromResultSet(rs);
        return rows;
    });
}

qint64 ORVDBManager::countWithDB(FMDatabase *given, const QString &sql, const QVariantList &arguments)
{
    return withDB(given, qint64(0), [&](FMDatabase &db) {
        FMResultSet rs = db.executeQuery(sql, arguments);
        return rs.next() ? rs.longLongIntForColumn(0) : qint64(0);
    });
}

std::optional<ORVDBArticle> ORVDBManager::itemDBArticleWithUUID(qint64 uuid)
{
    return itemDBArticleWithUUIDWithDb(uuid, nullptr);
}

std::optional<ORVDBArticle> ORVDBManager::itemDBArticleWithUUIDWithDb(qint64 uuid, FMDatabase *given)
{
    const QList<ORVDBArticle> rows = articlesWithDB(given, QStringLiteral("SELECT * FROM article WHERE uuid=?"), {uuid});
    if (rows.isEmpty())
        return std::nullopt;
    return rows.first();
}

QList<ORVDBArticle> ORVDBManager::getAllItemsDBArticleWithSort(quint64)
{
    return articlesWithDB(nullptr, QStringLiteral("SELECT * FROM article WHERE state=? ") + orderByStringBySortType(0),
                          {ORVDBArticle::StateNormal});
}

qint64 ORVDBManager::getAllItemsDBArticleCount() { return getAllItemsDBArticleCountWithDB(nullptr); }

qint64 ORVDBManager::getAllItemsDBArticleCountWithDB(FMDatabase *db)
{
    return countWithDB(db, QStringLiteral("SELECT COUNT(*) FROM article WHERE state=? "), {ORVDBArticle::StateNormal});
}

QList<ORVDBArticle> ORVDBManager::getTrashItemsDBArticleWithSort(quint64)
{
    return articlesWithDB(nullptr, QStringLiteral("SELECT * FROM article WHERE state=?"), {ORVDBArticle::StateTrash});
}

qint64 ORVDBManager::getTrashItemsDBArticleCount() { return getTrashItemsDBArticleCountWithDB(nullptr); }

qint64 ORVDBManager::getTrashItemsDBArticleCountWithDB(FMDatabase *db)
{
    return countWithDB(db, QStringLiteral("SELECT COUNT(*) FROM article WHERE state=? "), {ORVDBArticle::StateTrash});
}

QList<ORVDBArticle> ORVDBManager::getUnCatsItemsDBArticleWithSort(quint64)
{
    return articlesWithDB(
        nullptr,
        QStringLiteral("SELECT * FROM article WHERE uuid NOT IN( SELECT DISTINCT aid FROM cat_article ) AND state=?"),
        {ORVDBArticle::StateNormal});
}

qint64 ORVDBManager::getUnCatsItemsDBArticleCount() { return getUnCatsItemsDBArticleCountWithDB(nullptr); }

qint64 ORVDBManager::getUnCatsItemsDBArticleCountWithDB(FMDatabase *db)
{
    return countWithDB(
        db,
        QStringLiteral(
            "SELECT COUNT(*) FROM article WHERE uuid NOT IN( SELECT DISTINCT aid FROM cat_article ) AND state=?"),
        {ORVDBArticle::StateNormal});
}

QList<ORVDBArticle> ORVDBManager::getItemsDBArticleOnlyInCatID(qint64 catID)
{
    return articlesWithDB(
        nullptr,
        QStringLiteral("SELECT * FROM article WHERE uuid IN( SELECT DISTINCT aid FROM cat_article WHERE rid = %1 ) "
                       "AND state=1")
            .arg(catID),
        {});
}

QList<ORVDBArticle> ORVDBManager::getItemsDBArticleWithCatIDSort(qint64 catID, quint64)
{
    return articlesWithDB(
        nullptr,
        QStringLiteral("SELECT * FROM article WHERE uuid IN( SELECT DISTINCT aid FROM cat_article WHERE rid IN (%1) ) "
                       "AND state=1")
            .arg(idList(catAndDescendantUUIDs(catID))),
        {});
}

QList<ORVDBArticle> ORVDBManager::getItemsDBArticleWithTagIDSort(qint64 tagID, quint64)
{
    return articlesWithDB(
        nullptr,
        QStringLiteral("SELECT * FROM article WHERE uuid IN( SELECT DISTINCT aid FROM tag_article WHERE rid=%1 ) AND "
                       "state=1")
            .arg(tagID),
        {});
}

QList<ORVDBArticle> ORVDBManager::getItemsDBArticleWithArtUUIDs(const QList<qint64> &uuids)
{
    return getItemsDBArticleWithArtUUIDsWithDB(uuids, nullptr);
}

QList<ORVDBArticle> ORVDBManager::getItemsDBArticleWithArtUUIDsWithDB(const QList<qint64> &uuids, FMDatabase *db)
{
    if (uuids.isEmpty())
        return {};
    return articlesWithDB(db, QStringLiteral("SELECT * FROM article WHERE state=? AND uuid IN (%1)").arg(idList(uuids)),
                          {ORVDBArticle::StateNormal});
}

QList<qint64> ORVDBManager::articleCatsIIDSWithDB(FMDatabase *given, qint64 articleUUID)
{
    return withDB(given, QList<qint64>(), [&](FMDatabase &db) {
        QList<qint64> ids;
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT rid FROM cat_article WHERE aid=?"), {articleUUID});
        while (rs.next())
            ids << rs.longLongIntForColumn(0);
        return ids;
    });
}

QList<qint64> ORVDBManager::articleCatsIIDSByArticleUUID(qint64 articleUUID)
{
    return articleCatsIIDSWithDB(nullptr, articleUUID);
}

QStringList ORVDBManager::articleTagsNamesWithDB(FMDatabase *given, qint64 articleUUID)
{
    return withDB(given, QStringList(), [&](FMDatabase &db) {
        QList<qint64> tagIDs;
        {
            FMResultSet rs = db.executeQuery(
                QStringLiteral("SELECT aid,rid FROM tag_article WHERE aid=? ORDER BY id ASC"), {articleUUID});
            while (rs.next())
                tagIDs << rs.longLongIntForColumn(QStringLiteral("rid"));
        }
        if (tagIDs.isEmpty())
            return QStringList();
        QHash<qint64, QString> names;
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT id,name FROM tag WHERE id IN (%1)").arg(idList(tagIDs)));
        while (rs.next())
            names.insert(rs.longLongIntForColumn(0), rs.stringForColumn(1));
        QStringList ordered;
        for (qint64 id : tagIDs)
            if (names.contains(id) && !ordered.contains(names.value(id)))
                ordered << names.value(id);
        return ordered;
    });
}

QStringList ORVDBManager::articleTagsNamesByArticleUUID(qint64 articleUUID)
{
    return articleTagsNamesWithDB(nullptr, articleUUID);
}

bool ORVDBManager::isCatArticleExsitByCatUUIDArticleUUID(qint64 catUUID, qint64 articleUUID)
{
    return withDB(nullptr, false, [&](FMDatabase &db) {
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT id FROM cat_article WHERE rid=? AND aid=?"),
                                         {catUUID, articleUUID});
        return rs.next();
    });
}

bool ORVDBManager::isTagArticleExsitByTagUUIDArticleUUID(qint64 tagUUID, qint64 articleUUID)
{
    return withDB(nullptr, false, [&](FMDatabase &db) {
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT id FROM tag_article WHERE rid=? AND aid=?"),
                                         {tagUUID, articleUUID});
        return rs.next();
    });
}

QString ORVDBManager::orderByStringBySortType(quint64) { return QString(); }

// ---- documents: writing

namespace {

const QString kInsertArticle = QStringLiteral(
    "INSERT INTO article (type, uuid, state, sort, dateAdd, dateModif, dateArt, docName, otherMedia, buildResource, "
    "postExtValue) VALUES (:type, :uuid, :state, :sort, :dateAdd, :dateModif, :dateArt, :docName, :otherMedia, "
    ":buildResource, :postExtValue)");

} // namespace

bool ORVDBManager::insertItemDBArticle(const ORVDBArticle &art) { return insertItemDBArticleWithDB(art, nullptr); }

bool ORVDBManager::insertItemDBArticleWithDB(const ORVDBArticle &art, FMDatabase *given)
{
    return withDB(given, false, [&](FMDatabase &db) {
        return db.executeUpdateWithParameterDictionary(kInsertArticle, art.parameterDictionary());
    });
}

bool ORVDBManager::insertItemDBArticleWithCatIIDS(const ORVDBArticle &art, const QList<qint64> &catIIDS)
{
    QList<qint64> unique;
    for (qint64 id : catIIDS)
        if (!unique.contains(id))
            unique << id;
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        if (!db.executeUpdateWithParameterDictionary(kInsertArticle, art.parameterDictionary()))
            return false;
        bool all = true;
        for (qint64 id : std::as_const(unique))
            all = db.executeUpdate(QStringLiteral("INSERT INTO cat_article (aid, rid) VALUES (?, ?)"), {art.uuid(), id}) &&
                  all;
        return all;
    });
    if (!unique.isEmpty()) {
        {
            std::lock_guard g(m_cacheLock);
            m_isRefetchArticleCatsMap = true;
        }
        postArticleCategoryDidChange();
    }
    return ok;
}

bool ORVDBManager::saveItemDBArticle(const ORVDBArticle &art)
{
    return withDB(nullptr, false, [&](FMDatabase &db) {
        return db.executeUpdateWithParameterDictionary(
            QStringLiteral("UPDATE article SET type = :type, state = :state, sort = :sort, dateAdd = :dateAdd, "
                           "dateModif = :dateModif, dateArt = :dateArt, docName = :docName, otherMedia = :otherMedia, "
                           "buildResource = :buildResource, postExtValue = :postExtValue WHERE uuid = :uuid"),
            art.parameterDictionary());
    });
}

bool ORVDBManager::updateDBArticleWithState(const ORVDBArticle &art, int state)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        return db.executeUpdateWithParameterDictionary(
            QStringLiteral("UPDATE article SET state = :state WHERE uuid = :uuid"),
            {{QStringLiteral("state"), state}, {QStringLiteral("uuid"), art.uuid()}});
    });
    if (ok)
        postArticleCategoryDidChange();
    return ok;
}

bool ORVDBManager::updateDBArticleWithSort(const ORVDBArticle &art, qint64 sort)
{
    return withDB(nullptr, false, [&](FMDatabase &db) {
        return db.executeUpdateWithParameterDictionary(
            QStringLiteral("UPDATE article SET sort = :sort WHERE uuid = :uuid"),
            {{QStringLiteral("sort"), sort}, {QStringLiteral("uuid"), art.uuid()}});
    });
}

bool ORVDBManager::updateDBArticleWithCatIIDS(const ORVDBArticle &art, const QList<qint64> &catIIDS)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        const QList<qint64> present = articleCatsIIDSWithDB(&db, art.uuid());
        QList<qint64> toAdd;
        for (qint64 id : catIIDS)
            if (!present.contains(id) && !toAdd.contains(id))
                toAdd << id;
        QList<qint64> toRemove;
        for (qint64 id : present)
            if (!catIIDS.contains(id) && !toRemove.contains(id))
                toRemove << id;
        bool all = true;
        if (!toRemove.isEmpty())
            all = db.executeUpdate(QStringLiteral("DELETE FROM cat_article WHERE aid=%1 AND rid IN (%2)")
                                       .arg(art.uuid())
                                       .arg(idList(toRemove))) &&
                  all;
        for (qint64 id : toAdd)
            all = db.executeUpdate(QStringLiteral("INSERT INTO cat_article (aid, rid) VALUES (?, ?)"), {art.uuid(), id}) &&
                  all;
        return all;
    });
    {
        std::lock_guard g(m_cacheLock);
        m_isRefetchArticleCatsMap = true;
    }
    postArticleCategoryDidChange();
    return ok;
}

qint64 ORVDBManager::lastTagIDLikeName(FMDatabase &db, const QString &name)
{
    qint64 id = 0;
    FMResultSet rs = db.executeQuery(QStringLiteral("SELECT id,name FROM tag WHERE name LIKE ?"), {name});
    while (rs.next())
        id = rs.longLongIntForColumn(QStringLiteral("id")); // the last row wins
    return id;
}

bool ORVDBManager::updateDBArticleWithTagNames(const ORVDBArticle &art, const QStringList &tagNames)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        const QStringList present = articleTagsNamesWithDB(&db, art.uuid());
        bool all = true;
        for (const QString &name : present) {
            if (tagNames.contains(name))
                continue;
            const qint64 tagID = lastTagIDLikeName(db, name);
            if (tagID > 0)
                all = db.executeUpdate(QStringLiteral("DELETE FROM tag_article WHERE aid=? AND rid=?"),
                                       {art.uuid(), tagID}) &&
                      all;
        }
        QStringList added;
        for (const QString &name : tagNames) {
            if (present.contains(name) || added.contains(name))
                continue;
            added << name;
            qint64 tagID = lastTagIDLikeName(db, name);
            if (tagID == 0) {
                {
                    std::lock_guard g(m_cacheLock);
                    m_allHasArticlesTagsCacheObj.reset();
                }
                if (!db.executeUpdate(QStringLiteral("INSERT INTO tag (name) VALUES (?)"), {name})) {
                    all = false;
                    continue;
                }
                FMResultSet rs = db.executeQuery(QStringLiteral("SELECT last_insert_rowid() FROM tag"));
                tagID = rs.next() ? rs.longLongIntForColumn(0) : 0;
            }
            if (tagID > 0)
                all = db.executeUpdate(QStringLiteral("INSERT INTO tag_article (aid, rid) VALUES (?, ?)"),
                                       {art.uuid(), tagID}) &&
                      all;
        }
        return all;
    });
    std::lock_guard g(m_cacheLock);
    m_isRefetchArticleTagsMap = true;
    return ok;
}

bool ORVDBManager::updateDBArticleWithNewTagID(const ORVDBArticle &art, qint64 tagID)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        return db.executeUpdate(QStringLiteral("INSERT INTO tag_article (aid, rid) VALUES (?, ?)"), {art.uuid(), tagID});
    });
    std::lock_guard g(m_cacheLock);
    m_isRefetchArticleTagsMap = true;
    return ok;
}

bool ORVDBManager::deleteDBArticle(const ORVDBArticle &art)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        const bool row = db.executeUpdate(QStringLiteral("DELETE FROM article WHERE uuid=?"), {art.uuid()});
        const bool cats = db.executeUpdate(QStringLiteral("DELETE FROM cat_article WHERE aid=?"), {art.uuid()});
        const bool tags = db.executeUpdate(QStringLiteral("DELETE FROM tag_article WHERE aid=?"), {art.uuid()});
        return row && cats && tags;
    });
    std::lock_guard g(m_cacheLock);
    m_isRefetchArticleCatsMap = m_isRefetchArticleTagsMap = true;
    return ok;
}

// ---- tags

ORVDBTag ORVDBManager::itemDBTagWithUUID(qint64 tagID)
{
    return withDB(nullptr, ORVDBTag(), [&](FMDatabase &db) {
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT * FROM tag WHERE id=?"), {tagID});
        if (!rs.next())
            return ORVDBTag();
        const QString name = rs.stringForColumn(QStringLiteral("name"));
        return ORVDBTag(rs.longLongIntForColumn(QStringLiteral("id")), name.isNull() ? QStringLiteral("") : name);
    });
}

bool ORVDBManager::saveItemDBTag(const ORVDBTag &tag)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        return db.executeUpdateWithParameterDictionary(QStringLiteral("UPDATE tag SET name = :name WHERE id = :uuid"),
                                                       {{QStringLiteral("name"), tag.name()},
                                                        {QStringLiteral("uuid"), tag.uuid()}});
    });
    std::lock_guard g(m_cacheLock);
    m_isRefetchArticleTagsMap = true;
    return ok;
}

bool ORVDBManager::deleteDBTag(const ORVDBTag &tag)
{
    const bool ok = withDB(nullptr, false, [&](FMDatabase &db) {
        const bool row = db.executeUpdate(QStringLiteral("DELETE FROM tag WHERE id=?"), {tag.uuid()});
        const bool links = db.executeUpdate(QStringLiteral("DELETE FROM tag_article WHERE rid=?"), {tag.uuid()});
        return row && links;
    });
    std::lock_guard g(m_cacheLock);
    m_isRefetchArticleTagsMap = true;
    m_allHasArticlesTagsCacheObj.reset();
    return ok;
}

qint64 ORVDBManager::tagUUIDByTagName(const QString &name)
{
    return withDB(nullptr, qint64(0), [&](FMDatabase &db) {
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT id FROM article WHERE name=?"), {name});
        return rs.next() ? rs.longLongIntForColumn(0) : qint64(0);
    });
}

QHash<qint64, qint64> ORVDBManager::dicTagUUIDArticleCountMap() { return dicTagUUIDArticleCountMapWithDB(nullptr); }

QHash<qint64, qint64> ORVDBManager::dicTagUUIDArticleCountMapWithDB(FMDatabase *db)
{
    return countMapWithDB(db, QStringLiteral("SELECT c.rid,count(c.aid) FROM tag_article as c LEFT JOIN article as a "
                                             "WHERE a.uuid=c.aid AND a.state=1 GROUP BY rid"));
}

QList<ORVCatTreeItemPtr> ORVDBManager::getAllItemsTagsCatTreeItem()
{
    return getAllItemsTagsCatTreeItemWithDBIsLoadAll(nullptr, false);
}

QList<ORVCatTreeItemPtr> ORVDBManager::getAllItemsTagsCatTreeItemWithDB(FMDatabase *db)
{
    return getAllItemsTagsCatTreeItemWithDBIsLoadAll(db, false);
}

QList<ORVCatTreeItemPtr> ORVDBManager::getAllItemsTagsCatTreeItemWithDBIsLoadAll(FMDatabase *given, bool isLoadAll)
{
    return withDB(given, QList<ORVCatTreeItemPtr>(), [&](FMDatabase &db) {
        const QHash<qint64, qint64> counts = dicTagUUIDArticleCountMapWithDB(&db);
        QList<ORVCatTreeItemPtr> items;
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT id,name FROM tag "));
        while (rs.next()) {
            auto item = std::make_shared<ORVCatTreeItem>();
            item->catType = ORVCatType::Tag;
            item->uuid = rs.longLongIntForColumn(0);
            item->sort = item->uuid;
            item->name = rs.stringForColumn(1);
            item->libName = QStringLiteral("main");
            item->itemCount = counts.value(item->uuid, 0);
            if (item->itemCount == 0 && !isLoadAll)
                continue;
            items << item;
        }
        std::stable_sort(items.begin(), items.end(), [](const ORVCatTreeItemPtr &a, const ORVCatTreeItemPtr &b) {
            return a->name.compare(b->name, Qt::CaseInsensitive) < 0;
        });
        for (int i = 0; i < items.size(); ++i)
            items[i]->sort = i + 1;
        return items;
    });
}

QList<ORVDBTag> ORVDBManager::getAllDbTags()
{
    std::lock_guard g(m_cacheLock);
    if (m_allHasArticlesTagsCacheObj)
        return *m_allHasArticlesTagsCacheObj;
    const QList<ORVCatTreeItemPtr> items = getAllItemsTagsCatTreeItemWithDBIsLoadAll(nullptr, true);
    QList<ORVDBTag> tags;
    for (const ORVCatTreeItemPtr &item : items)
        tags << ORVDBTag(item->uuid, item->name);
    m_allHasArticlesTagsCacheObj = tags;
    // The sweep: a tag that no normal document carries goes. Deleting clears
    // the list just kept, so the next call lists again without it.
    for (const ORVCatTreeItemPtr &item : items) {
        if (item->itemCount >= 1)
            continue;
        deleteDBTag(ORVDBTag(item->uuid, item->name));
        qCInfo(lcLibraryStore, "delteDBTag:%lld", static_cast<long long>(item->uuid));
    }
    return tags;
}

// ---- article maps

QHash<qint64, ORVDBManager::LinkRecord> ORVDBManager::fetchArticleCatsMaps(FMDatabase *given)
{
    const QHash<qint64, ORVDBCat> cats = dicUUIDCatMapsWithDB(given);
    return withDB(given, QHash<qint64, LinkRecord>(), [&](FMDatabase &db) {
        QHash<qint64, LinkRecord> map;
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT aid,rid FROM cat_article ORDER BY aid DESC"));
        while (rs.next()) {
            const qint64 rid = rs.longLongIntForColumn(1);
            const auto cat = cats.constFind(rid);
            if (cat == cats.constEnd())
                continue;
            LinkRecord &rec = map[rs.longLongIntForColumn(0)];
            rec.uuids << rid;
            rec.names << cat->name();
        }
        return map;
    });
}

QHash<qint64, ORVDBManager::LinkRecord> ORVDBManager::fetchArticleTagsMaps(FMDatabase *given)
{
    return withDB(given, QHash<qint64, LinkRecord>(), [&](FMDatabase &db) {
        QHash<qint64, QString> tags;
        {
            FMResultSet rs = db.executeQuery(QStringLiteral("SELECT id,name FROM tag "));
            while (rs.next())
                tags.insert(rs.longLongIntForColumn(0), rs.stringForColumn(1));
        }
        QHash<qint64, LinkRecord> map;
        FMResultSet rs = db.executeQuery(QStringLiteral("SELECT aid,rid FROM tag_article ORDER BY aid DESC"));
        while (rs.next()) {
            const qint64 rid = rs.longLongIntForColumn(1);
            const auto tag = tags.constFind(rid);
            if (tag == tags.constEnd())
                continue;
            LinkRecord &rec = map[rs.longLongIntForColumn(0)];
            rec.uuids << rid;
            rec.names << *tag;
        }
        return map;
    });
}

QHash<qint64, ORVDBManager::LinkRecord> ORVDBManager::dicArticleCatsMaps()
{
    std::lock_guard g(m_cacheLock);
    if (m_dicArticleCatsMaps.isEmpty() || m_isRefetchArticleCatsMap) {
        m_dicArticleCatsMaps = fetchArticleCatsMaps(nullptr);
        m_isRefetchArticleCatsMap = false;
    }
    return m_dicArticleCatsMaps;
}

QHash<qint64, ORVDBManager::LinkRecord> ORVDBManager::dicArticleTagsMaps()
{
    std::lock_guard g(m_cacheLock);
    if (m_dicArticleTagsMaps.isEmpty() || m_isRefetchArticleTagsMap) {
        m_dicArticleTagsMaps = fetchArticleTagsMaps(nullptr);
        m_isRefetchArticleTagsMap = false;
    }
    return m_dicArticleTagsMaps;
}
