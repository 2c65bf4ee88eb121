#include "library/ORVLibraryListController.h"

#include "core/MyPreferences.h"
#include "core/ORVLibraryRecentDocumentManager.h"
#include "core/ORVNotificationCenter.h"
#include "library/FMDatabaseQueue.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryDocuments.h"
#include "library/ORVLibraryListNotifications.h"
#include "library/ORVLibraryNotifications.h"
#include "library/ORVLibraryTree.h"

#include <QSet>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>

namespace {

// Lists smaller than this read their titles on the calling thread: handing
// a few files to the pool costs more than reading them.
constexpr int kParallelTitleThreshold = 64;

int compareTitles(const ORVLibraryListDataItem &a, const ORVLibraryListDataItem &b)
{
    return a.forSortTitle().compare(b.forSortTitle(), Qt::CaseInsensitive);
}

QList<qint64> articleUUIDs(const QList<ORVDBArticle> &articles)
{
    QList<qint64> ids;
    ids.reserve(articles.size());
    for (const ORVDBArticle &a : articles)
        ids << a.uuid();
    return ids;
}

} // namespace

ORVLibraryListOptions ORVLibraryListOptions::fromPreferences(const MyPreferences *prefs)
{
    ORVLibraryListOptions options;
    if (prefs) {
        options.libraryDefaultSortType = quint64(std::max<qint64>(0, prefs->libraryDefaultSortType()));
        options.isGroupLibDocumentsList = prefs->isGroupLibDocumentsList();
    }
    return options;
}

ORVLibraryListController::ORVLibraryListController(std::shared_ptr<ORVDBManager> manager, QString libraryPath,
                                                   ORVLibraryRecentDocumentManager *recent, ORVLibraryTree *tree,
                                                   QObject *parent)
    : QObject(parent), m_manager(std::move(manager)), m_libraryPath(std::move(libraryPath)), m_recent(recent),
      m_tree(tree)
{
}

ORVLibraryListController::~ORVLibraryListController() = default;

// ---- orders

quint64 ORVLibraryListController::listOrderForCatUUID(qint64 uuid, bool isTag)
{
    if (options.sortTypeOverride)
        return *options.sortTypeOverride;
    if (!isTag && uuid > 1000) {
        // The top category's order rules its whole subtree.
        if (const ORVCatTreeItemPtr top = m_manager->topCatByCatUUID(uuid))
            if (const auto row = m_manager->itemDBCatWithUUID(top->uuid))
                return row->sortType();
    }
    return options.libraryDefaultSortType;
}

bool ORVLibraryListController::isGroupedListForCatUUID(qint64 uuid, bool isTag)
{
    if (isTag || uuid <= 1000)
        return false;
    return options.isGroupLibDocumentsList || listOrderForCatUUID(uuid, isTag) == ORVListOrderType::Manual;
}

void ORVLibraryListController::sortListItems(QList<ORVLibraryListDataItem> &items, quint64 order)
{
    using Item = ORVLibraryListDataItem;
    const auto by = [&](auto less) { std::stable_sort(items.begin(), items.end(), less); };
    // Dates are whole seconds: documents made in one second keep the order
    // they were made in (ids are creation times), in the date's direction.
    const auto newer = [](qint64 a, qint64 b, const Item &x, const Item &y) {
        return a != b ? a > b : x.art.uuid() > y.art.uuid();
    };
    switch (order) {
    case ORVListOrderType::OldestFirst:
        by([&](const Item &a, const Item &b) { return newer(b.addDateSeconds(), a.addDateSeconds(), b, a); });
        break;
    case ORVListOrderType::Manual:
        by([](const Item &a, const Item &b) { return a.sort() > b.sort(); });
        break;
    case ORVListOrderType::TitleAscending:
        by([](const Item &a, const Item &b) { return compareTitles(a, b) < 0; });
        break;
    case ORVListOrderType::TitleDescending:
        by([](const Item &a, const Item &b) { return compareTitles(a, b) > 0; });
        break;
    case ORVListOrderType::ModifiedNewestFirst:
        by([&](const Item &a, const Item &b) { return newer(a.modifDateSeconds(), b.modifDateSeconds(), a, b); });
        break;
    case ORVListOrderType::ModifiedOldestFirst:
        by([&](const Item &a, const Item &b) { return newer(b.modifDateSeconds(), a.modifDateSeconds(), b, a); });
        break;
    default: // 0, and any value no menu offers
        by([&](const Item &a, const Item &b) { return newer(a.addDateSeconds(), b.addDateSeconds(), a, b); });
        break;
    }
}

void ORVLibraryListController::setupTitlesOfItems(QList<ORVLibraryListDataItem> &items)
{
    const auto read = [](ORVLibraryListDataItem &item) {
        if (!item.isGroup && item.title().isEmpty())
            item.setupTitleAndContentWithFileURL();
    };
    if (items.size() < kParallelTitleThreshold) {
        for (ORVLibraryListDataItem &item : items)
            read(item);
        return;
    }
    QtConcurrent::blockingMap(items, read);
}

QList<ORVLibraryListDataItem> ORVLibraryListController::groupListItems(const QList<ORVLibraryListDataItem> &rows,
                                                                     qint64 catUUID, const QString &catName,
                                                                     const QList<ORVDBCat> &descendants, quint64 order)
{
    QHash<qint64, QList<ORVLibraryListDataItem>> buckets;
    for (const ORVDBCat &d : descendants)
        buckets.insert(d.uuid(), {});
    QList<ORVLibraryListDataItem> own;
    for (const ORVLibraryListDataItem &row : rows) {
        bool placed = false;
        // A link stored twice still shows the document once in its group.
        QSet<qint64> seen;
        for (qint64 id : row.catsIIDS) {
            const auto bucket = buckets.find(id);
            if (bucket == buckets.end() || seen.contains(id))
                continue;
            seen.insert(id);
            ORVLibraryListDataItem copy = row.copy();
            copy.groupCatUUID = id;
            bucket->append(copy);
            placed = true;
        }
        if (!placed)
            own << row;
    }
    QList<ORVLibraryListDataItem> grouped;
    grouped.reserve(rows.size() + descendants.size() + 1);
    sortListItems(own, order);
    grouped << ORVLibraryListDataItem::groupItemWithTitle(catName, catUUID);
    for (ORVLibraryListDataItem &row : own) {
        row.groupCatUUID = catUUID;
        grouped << row;
    }
    for (const ORVDBCat &d : descendants) {
        QList<ORVLibraryListDataItem> &bucket = buckets[d.uuid()];
        sortListItems(bucket, order);
        grouped << ORVLibraryListDataItem::groupItemWithTitle(d.name(), d.uuid());
        grouped << bucket;
    }
    return grouped;
}

// ---- fetching

QList<ORVLibraryListDataItem> ORVLibraryListController::itemsWithArticles(const QList<ORVDBArticle> &articles)
{
    const auto cats = m_manager->dicArticleCatsMaps();
    const auto tags = m_manager->dicArticleTagsMaps();
    QList<ORVLibraryListDataItem> items;
    items.reserve(articles.size());
    for (const ORVDBArticle &a : articles)
        items << ORVLibraryListDataItem::LibraryListDataItemWithDBArticle(a, cats, tags, m_libraryPath);
    return items;
}

QList<ORVDBArticle> ORVLibraryListController::recentArticles()
{
    if (!m_recent)
        return {};
    const QVariantList records = m_recent->items();
    QList<ORVDBArticle> found;
    QVariantList stale;
    FMDatabaseQueue queue(m_manager->dbURL(), FMDatabase::OpenReadWrite);
    queue.inDatabase([&](FMDatabase *db) {
        if (!db)
            return;
        for (const QVariant &record : records) {
            const qint64 uuid = record.toMap().value(QStringLiteral("uuid")).toLongLong();
            const auto art = uuid < 1 ? std::nullopt : m_manager->itemDBArticleWithUUIDWithDb(uuid, db);
            if (!art || art->state() == ORVDBArticle::StateTrash)
                stale << record;
            else
                found << *art;
        }
    });
    for (const QVariant &record : std::as_const(stale))
        m_recent->removeItem(record);
    if (!stale.isEmpty())
        m_recent->saveItems();
    if (m_tree && m_tree->recentCatTreeItem() && m_tree->recentCatTreeItem()->itemCount != found.size()) {
        m_tree->setRecentCount(found.size());
        m_tree->updateLibraryCategoryWithAllCats(false);
    }
    return found;
}

QList<ORVLibraryListDataItem> ORVLibraryListController::fetchListDataByCatUUIDIsFetchTagInCurrentCatUUID(
    qint64 uuid, bool isTag, qint64 inCurrentCatUUID)
{
    const quint64 order = listOrderForCatUUID(uuid, isTag);
    QList<ORVDBArticle> articles;
    bool sorted = true;
    if (isTag) {
        articles = m_manager->getItemsDBArticleWithTagIDSort(uuid, order);
        if (inCurrentCatUUID > 0) {
            QList<ORVDBArticle> place;
            if (inCurrentCatUUID > 1000)
                place = m_manager->getItemsDBArticleWithCatIDSort(inCurrentCatUUID, order);
            else if (inCurrentCatUUID == ORVCatType::Uncategorized)
                place = m_manager->getUnCatsItemsDBArticleWithSort(order);
            else if (inCurrentCatUUID == ORVCatType::Recent)
                place = recentArticles();
            if (inCurrentCatUUID > 1000 || inCurrentCatUUID == ORVCatType::Uncategorized ||
                inCurrentCatUUID == ORVCatType::Recent) {
                const QList<qint64> ids = articleUUIDs(place);
                const QSet<qint64> keep(ids.begin(), ids.end());
                articles.removeIf([&](const ORVDBArticle &a) { return !keep.contains(a.uuid()); });
            }
        }
    } else if (uuid > 1000) {
        articles = m_manager->getItemsDBArticleWithCatIDSort(uuid, order);
    } else if (uuid == ORVCatType::Trash) {
        articles = m_manager->getTrashItemsDBArticleWithSort(order);
    } else if (uuid == ORVCatType::Uncategorized) {
        if (reloadUncategoriesDocuments)
            reloadUncategoriesDocuments();
        articles = m_manager->getUnCatsItemsDBArticleWithSort(order);
    } else if (uuid == ORVCatType::Recent) {
        articles = recentArticles();
        sorted = false; // the recent order is the list's own
    } else {
        if (reloadUncategoriesDocuments)
            reloadUncategoriesDocuments();
        articles = m_manager->getAllItemsDBArticleWithSort(order);
    }

    QList<ORVLibraryListDataItem> items = itemsWithArticles(articles);
    if (!sorted)
        return items;
    if (order == ORVListOrderType::TitleAscending || order == ORVListOrderType::TitleDescending)
        setupTitlesOfItems(items); // the order needs every title at once
    if (isGroupedListForCatUUID(uuid, isTag)) {
        const auto cat = m_manager->itemDBCatWithUUID(uuid);
        return groupListItems(items, uuid, cat ? cat->name() : QString(),
                              m_manager->allDBCatChildItemsWidthCatUUID(uuid), order);
    }
    sortListItems(items, order);
    return items;
}

void ORVLibraryListController::fetchAndReloadListDataByCatUUIDIsFetchTagInCurrentCatUUID(qint64 uuid, bool isTag,
                                                                                         qint64 inCurrentCatUUID)
{
    fetchUUID = uuid;
    isFetchTag = isTag;
    fetchInCatUUID = inCurrentCatUUID;
    fetchTagName = isTag ? m_manager->itemDBTagWithUUID(uuid).name() : QString();
    listContent = fetchListDataByCatUUIDIsFetchTagInCurrentCatUUID(uuid, isTag, inCurrentCatUUID);
    emit listContentDidChange();
}

void ORVLibraryListController::fetchAndReloadListDataByCatUUID(qint64 uuid)
{
    fetchAndReloadListDataByCatUUIDIsFetchTagInCurrentCatUUID(uuid, false, 0);
}

void ORVLibraryListController::fetchAndReloadListData()
{
    fetchAndReloadListDataByCatUUIDIsFetchTagInCurrentCatUUID(fetchUUID, isFetchTag, fetchInCatUUID);
}

QList<ORVDBArticle> ORVLibraryListController::allTrashArticles()
{
    return m_manager->getTrashItemsDBArticleWithSort(0);
}

QList<ORVLibraryListDataItem> ORVLibraryListController::listDataItemByCatItem(qint64 catUUID)
{
    return itemsWithArticles(m_manager->getItemsDBArticleOnlyInCatID(catUUID));
}

QString ORVLibraryListController::noteLinkTextWithItems(const QList<ORVLibraryListDataItem> &items)
{
    QStringList lines;
    for (const ORVLibraryListDataItem &item : items) {
        if (item.isGroup)
            continue;
        ORVLibraryListDataItem row = item;
        if (row.title().isEmpty())
            row.setupTitleAndContentWithFileURL();
        lines << ORVLibraryDocuments::noteLinkText(row.title(), row.art.uuid());
    }
    return lines.join(QLatin1Char('\n'));
}

// ---- actions

void ORVLibraryListController::postReload()
{
    ORVNotificationCenter::defaultCenter()->postNotification(kORVListViewControllerReloadTableViewNotification, this,
                                                             {{QStringLiteral("dbURL"), m_manager->dbURL()}});
    emit listContentDidChange();
}

void ORVLibraryListController::removeRowsOfDocuments(const QList<qint64> &uuids)
{
    const QSet<qint64> gone(uuids.begin(), uuids.end());
    listContent.removeIf([&](const ORVLibraryListDataItem &row) { return !row.isGroup && gone.contains(row.art.uuid()); });
}

namespace {

// The documents of a selection, each once, group rows left out.
QList<ORVDBArticle> selectedArticles(const QList<ORVLibraryListDataItem> &selected)
{
    QList<ORVDBArticle> articles;
    QSet<qint64> seen;
    for (const ORVLibraryListDataItem &row : selected) {
        if (row.isGroup || seen.contains(row.art.uuid()))
            continue;
        seen.insert(row.art.uuid());
        articles << row.art;
    }
    return articles;
}

} // namespace

QList<qint64> ORVLibraryListController::moveToTrashAction(const QList<ORVLibraryListDataItem> &selected)
{
    QList<qint64> done;
    m_manager->performInTransaction([&](FMDatabase &) {
        for (const ORVDBArticle &art : selectedArticles(selected))
            if (m_manager->updateDBArticleWithState(art, ORVDBArticle::StateTrash))
                done << art.uuid();
    });
    removeRowsOfDocuments(done);
    postReload();
    return done;
}

QList<qint64> ORVLibraryListController::putBackAction(const QList<ORVLibraryListDataItem> &selected)
{
    QList<qint64> done;
    m_manager->performInTransaction([&](FMDatabase &) {
        for (const ORVDBArticle &art : selectedArticles(selected))
            if (m_manager->updateDBArticleWithState(art, ORVDBArticle::StateNormal))
                done << art.uuid();
    });
    removeRowsOfDocuments(done);
    postReload();
    return done;
}

QList<qint64> ORVLibraryListController::deleteAction(const QList<ORVLibraryListDataItem> &selected)
{
    ORVLibraryDocuments documents(m_manager, m_libraryPath);
    const QList<qint64> deleted = documents.deleteDBArticlesWithArray(selectedArticles(selected)).deleted;
    removeRowsOfDocuments(deleted);
    postReload();
    if (m_tree)
        m_tree->updateLibraryCategoryWithAllCats(false);
    return deleted;
}

QList<qint64> ORVLibraryListController::emptyTrashAction()
{
    ORVLibraryDocuments documents(m_manager, m_libraryPath);
    const QList<qint64> deleted = documents.deleteDBArticlesWithArray(allTrashArticles()).deleted;
    removeRowsOfDocuments(deleted);
    if (m_tree)
        m_tree->updateLibraryCategoryWithAllCats(false);
    if (fetchUUID == ORVCatType::Trash && !isFetchTag)
        fetchAndReloadListData();
    else
        postReload();
    return deleted;
}

ORVLibraryListController::ReorderResult ORVLibraryListController::tableViewAcceptDropRow(const QList<int> &draggedRows,
                                                                                        int row)
{
    if (isFetchTag || fetchUUID <= 999)
        return ReorderResult::NotAvailable;
    const ORVCatTreeItemPtr top = m_manager->topCatByCatUUID(fetchUUID);
    const auto topRow = top ? m_manager->itemDBCatWithUUID(top->uuid) : std::nullopt;
    if (!topRow)
        return ReorderResult::NotAvailable;
    if (topRow->sortType() != ORVListOrderType::Manual)
        return ReorderResult::NeedsManualOrder;

    QList<ORVLibraryListDataItem> list = listContent;
    QList<int> rows;
    for (int r : draggedRows)
        if (r >= 0 && r < list.size() && !list.at(r).isGroup && !rows.contains(r))
            rows << r;
    std::sort(rows.begin(), rows.end());
    if (rows.isEmpty())
        return ReorderResult::Done;
    int drop = std::clamp(row, 0, int(list.size()));
    QList<ORVLibraryListDataItem> dragged;
    for (auto it = rows.crbegin(); it != rows.crend(); ++it) {
        dragged.prepend(list.takeAt(*it));
        if (*it < drop)
            --drop; // each row taken out above the gap moves it up
    }
    for (int i = 0; i < dragged.size(); ++i)
        list.insert(drop + i, dragged.at(i));

    // The group of the gap: the nearest group row above it.
    qint64 target = fetchUUID;
    for (int i = drop - 1; i >= 0; --i) {
        if (list.at(i).isGroup) {
            if (list.at(i).groupCatUUID != -1)
                target = list.at(i).groupCatUUID;
            break;
        }
    }

    m_manager->performInTransaction([&](FMDatabase &) {
        for (const ORVLibraryListDataItem &item : std::as_const(dragged)) {
            // From the links as stored now: a document dragged twice (it
            // showed in two groups) must not undo its own first move.
            QList<qint64> cats = m_manager->articleCatsIIDSByArticleUUID(item.art.uuid());
            cats.removeAll(item.groupCatUUID);
            if (target != fetchUUID)
                cats.removeAll(fetchUUID);
            if (!cats.contains(target))
                cats << target;
            m_manager->updateDBArticleWithCatIIDS(item.art, cats);
        }
        // The values fall along the list, so that the descending manual
        // order shows it as it now stands; group rows hold their place.
        const qint64 n = list.size();
        for (qint64 p = 0; p < n; ++p)
            if (!list.at(p).isGroup)
                m_manager->updateDBArticleWithSort(list.at(p).art, n + 1000 - p);
    });
    fetchAndReloadListData();
    return ReorderResult::Done;
}

bool ORVLibraryListController::setTopCategoryToManualOrder()
{
    if (isFetchTag || fetchUUID <= 999)
        return false;
    const ORVCatTreeItemPtr top = m_manager->topCatByCatUUID(fetchUUID);
    auto topRow = top ? m_manager->itemDBCatWithUUID(top->uuid) : std::nullopt;
    if (!topRow)
        return false;
    topRow->setSortType(ORVListOrderType::Manual);
    if (!m_manager->saveItemDBCat(*topRow))
        return false;
    ORVNotificationCenter::defaultCenter()->postNotification(
        kORVCatSortDidChangedNotification, this,
        {{QStringLiteral("uuid"), topRow->uuid()}, {QStringLiteral("sortType"), topRow->sortType()}});
    fetchAndReloadListData();
    return true;
}
