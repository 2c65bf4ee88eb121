#include "library/ORVLibraryTree.h"

#include "core/ORVLibraryRecentDocumentManager.h"
#include "core/ORVNotificationCenter.h"
#include "library/FMDatabaseQueue.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryNotifications.h"

#include <QFutureWatcher>
#include <QtConcurrent/QtConcurrentRun>

namespace {

ORVCatTreeItemPtr fixedItem(const QString &nameKey, qint64 catType, qint64 sort, qint64 count, ORVCatTreeItem *root)
{
    auto item = std::make_shared<ORVCatTreeItem>();
    item->name = nameKey;
    item->catType = catType;
    item->uuid = catType;
    item->sort = sort;
    item->itemCount = count;
    item->libName = QStringLiteral("main");
    item->parent = root;
    return item;
}

ORVCatTreeItemPtr findCategory(const QList<ORVCatTreeItemPtr> &items, qint64 uuid)
{
    for (const ORVCatTreeItemPtr &item : items) {
        if (!ORVDBCat::checkCatTypeIsDBCatItem(item->catType))
            continue;
        if (ORVCatTreeItemPtr found = ORVDBManager::fetchTreeItemWithCatUUIDInTopCatTreeOutItem(uuid, item))
            return found;
    }
    return nullptr;
}

} // namespace

ORVLibraryTree::ORVLibraryTree(std::shared_ptr<ORVDBManager> manager, ORVLibraryRecentDocumentManager *recent,
                               QObject *parent)
    : QObject(parent), m_manager(std::move(manager)), m_recent(recent)
{
    m_recountTimer.setSingleShot(true);
    m_recountTimer.setInterval(kRecountDelayMs);
    connect(&m_recountTimer, &QTimer::timeout, this, &ORVLibraryTree::timerLibraryCategoriesDidChangedFire);
    // libraryCategoryDidChangeNotfication: every change of a document's
    // state or links, or of a category's parent, in this library.
    ORVNotificationCenter::defaultCenter()->addObserver(
        kORVLibraryArticleCategoryDidChangeNotification, this, [this](const ORVNotification &n) {
            if (m_manager && n.userInfo.value(QStringLiteral("dbURL")).toString() == m_manager->dbURL())
                updateLibraryCategoryWithAllCats(true);
        });
}

ORVLibraryTree::~ORVLibraryTree() = default;

qint64 ORVLibraryTree::recentItemCount() const { return m_recent ? m_recent->itemCount() : 0; }

ORVCatTreeItemPtr ORVLibraryTree::buildLibraryTreeWithDB(ORVDBManager &manager, FMDatabase *db, qint64 recentCount)
{
    ORVCatTreeItemPtr root;
    // One connection for the whole build: a dozen queries, each would
    // otherwise open and close the file.
    const auto build = [&](FMDatabase *conn) {
        const QList<ORVCatTreeItemPtr> tops = manager.getAllItemDBCatTreeWithDB(conn);
        root = std::make_shared<ORVCatTreeItem>();
        root->name = kORVLibraryTreeRootNameKey;
        root->catType = ORVCatType::Root;
        root->uuid = 0;
        root->libName = QStringLiteral("main");
        root->sort = 0;
        ORVCatTreeItem *r = root.get();
        const ORVCatTreeItemPtr inbox = fixedItem(kORVLibraryTreeInboxNameKey, ORVCatType::Inbox, 1,
                                                  manager.getAllItemsDBArticleCountWithDB(conn), r);
        const ORVCatTreeItemPtr recent = fixedItem(kORVLibraryTreeRecentNameKey, ORVCatType::Recent, 2, recentCount, r);
        const ORVCatTreeItemPtr uncategorized =
            fixedItem(kORVLibraryTreeUncategorizedNameKey, ORVCatType::Uncategorized, 3,
                      manager.getUnCatsItemsDBArticleCountWithDB(conn), r);
        const ORVCatTreeItemPtr trash = fixedItem(kORVLibraryTreeTrashNameKey, ORVCatType::Trash, 4,
                                                  manager.getTrashItemsDBArticleCountWithDB(conn), r);
        for (const ORVCatTreeItemPtr &tag : manager.getAllItemsTagsCatTreeItemWithDB(conn))
            inbox->addChild(tag);
        for (const ORVCatTreeItemPtr &item : {inbox, recent, uncategorized, trash})
            root->addChild(item);
        for (const ORVCatTreeItemPtr &top : tops)
            root->addChild(top);
    };
    if (db)
        build(db);
    else
        manager.withSharedDatabaseOpen([&](FMDatabase &conn) { build(&conn); });
    return root;
}

void ORVLibraryTree::takeOverTree(const ORVCatTreeItemPtr &root)
{
    m_libraryCatsTreeContent.clear();
    m_libraryTreeInboxItem.reset();
    m_recentCatTreeItem.reset();
    if (root) {
        m_libraryCatsTreeContent << root;
        m_libraryTreeInboxItem = fixedItemWithCatType(ORVCatType::Inbox);
        m_recentCatTreeItem = fixedItemWithCatType(ORVCatType::Recent);
    }
    emit treeDidLoad();
}

void ORVLibraryTree::fetchLibraryTreeData()
{
    if (!m_libraryCatsTreeContent.isEmpty() || !m_manager)
        return;
    takeOverTree(buildLibraryTreeWithDB(*m_manager, nullptr, recentItemCount()));
}

void ORVLibraryTree::fetchLibraryTreeDataWithCompletion(const std::function<void()> &completion)
{
    if (!m_libraryCatsTreeContent.isEmpty() || !m_manager) {
        if (completion)
            completion();
        return;
    }
    if (completion)
        m_pendingCompletions << completion;
    if (m_loading)
        return;
    m_loading = true;
    const std::shared_ptr<ORVDBManager> manager = m_manager;
    const qint64 recentCount = recentItemCount();
    auto *watcher = new QFutureWatcher<ORVCatTreeItemPtr>(this);
    connect(watcher, &QFutureWatcher<ORVCatTreeItemPtr>::finished, this, [this, watcher] {
        m_loading = false;
        takeOverTree(watcher->result());
        watcher->deleteLater();
        const auto completions = std::exchange(m_pendingCompletions, {});
        for (const auto &c : completions)
            c();
    });
    watcher->setFuture(QtConcurrent::run([manager, recentCount] {
        ORVCatTreeItemPtr root;
        // A worker never uses the manager's shared handle: it has its own.
        FMDatabaseQueue queue(manager->dbURL(), FMDatabase::OpenReadWrite);
        queue.inDatabase([&](FMDatabase *db) {
            if (db)
                root = buildLibraryTreeWithDB(*manager, db, recentCount);
        });
        return root;
    }));
}

void ORVLibraryTree::clearLibraryTreeData()
{
    m_libraryCatsTreeContent.clear();
    m_libraryTreeInboxItem.reset();
    m_recentCatTreeItem.reset();
}

ORVCatTreeItemPtr ORVLibraryTree::root() const
{
    return m_libraryCatsTreeContent.isEmpty() ? nullptr : m_libraryCatsTreeContent.first();
}

ORVCatTreeItemPtr ORVLibraryTree::fixedItemWithCatType(qint64 catType) const
{
    const ORVCatTreeItemPtr r = root();
    if (!r)
        return nullptr;
    for (const ORVCatTreeItemPtr &child : r->children)
        if (child->catType == catType && child->uuid < 1000)
            return child;
    return nullptr;
}

ORVCatTreeItemPtr ORVLibraryTree::categoryItemWithUUID(qint64 uuid) const
{
    const ORVCatTreeItemPtr r = root();
    return r ? findCategory(r->children, uuid) : nullptr;
}

ORVCatTreeItemPtr ORVLibraryTree::tagItemWithID(qint64 tagID) const
{
    if (!m_libraryTreeInboxItem)
        return nullptr;
    for (const ORVCatTreeItemPtr &tag : m_libraryTreeInboxItem->children)
        if (tag->catType == ORVCatType::Tag && tag->uuid == tagID)
            return tag;
    return nullptr;
}

void ORVLibraryTree::updateLibraryTreeTagsData()
{
    if (!m_libraryTreeInboxItem || !m_manager)
        return;
    QList<ORVCatTreeItemPtr> tags;
    FMDatabaseQueue queue(m_manager->dbURL(), FMDatabase::OpenReadWrite);
    queue.inDatabase([&](FMDatabase *db) {
        if (db)
            tags = m_manager->getAllItemsTagsCatTreeItemWithDB(db);
    });
    for (const ORVCatTreeItemPtr &old : std::as_const(m_libraryTreeInboxItem->children))
        old->parent = nullptr;
    m_libraryTreeInboxItem->children.clear();
    for (const ORVCatTreeItemPtr &tag : tags)
        m_libraryTreeInboxItem->addChild(tag);
    ORVNotificationCenter::defaultCenter()->postNotification(
        kORVTreeViewControllerTreeControllerRearrangeObjectsNotification, this, {{QStringLiteral("selected"), true}});
}

void ORVLibraryTree::updateLibraryCategoryWithAllCats(bool isAll)
{
    // The last request restarts the wait; a full recount asked for earlier
    // is not lost to a partial one asked for later.
    m_recountIsAll = (m_recountTimer.isActive() && m_recountIsAll) || isAll;
    m_recountTimer.start();
}

void ORVLibraryTree::timerLibraryCategoriesDidChangedFire()
{
    m_recountTimer.stop();
    const bool isAll = std::exchange(m_recountIsAll, false);
    const ORVCatTreeItemPtr r = root();
    if (!r || !m_manager)
        return;
    m_manager->withSharedDatabaseOpen([&](FMDatabase &) {
        QHash<qint64, qint64> countMap;
        bool haveCountMap = false;
        for (const ORVCatTreeItemPtr &child : std::as_const(r->children)) {
            switch (child->catType) {
            case ORVCatType::Inbox: {
                child->itemCount = m_manager->getAllItemsDBArticleCount();
                // A tag that lost its last document keeps its old count
                // until the tree is built again.
                QHash<qint64, qint64> tagCounts;
                for (const ORVCatTreeItemPtr &counted : m_manager->getAllItemsTagsCatTreeItem())
                    tagCounts.insert(counted->uuid, counted->itemCount);
                for (const ORVCatTreeItemPtr &tag : std::as_const(child->children))
                    if (const auto it = tagCounts.constFind(tag->uuid); it != tagCounts.constEnd())
                        tag->itemCount = *it;
                break;
            }
            case ORVCatType::Recent:
                break;
            case ORVCatType::Uncategorized:
                child->itemCount = m_manager->getUnCatsItemsDBArticleCount();
                break;
            case ORVCatType::Trash:
                child->itemCount = m_manager->getTrashItemsDBArticleCount();
                break;
            default:
                if (!isAll)
                    break;
                if (!haveCountMap) {
                    countMap = m_manager->dicCatUUIDArticleCountMap();
                    haveCountMap = true;
                }
                m_manager->updateCatArticleCountWithMapCatTreeItemWithDB(countMap, child, nullptr);
            }
        }
    });
    ORVNotificationCenter::defaultCenter()->postNotification(kORVLibraryCategoryTreeNeedToUpdateNotification, this,
                                                             {{QStringLiteral("dbURL"), m_manager->dbURL()}});
}

void ORVLibraryTree::setRecentCount(qint64 count)
{
    if (m_recentCatTreeItem)
        m_recentCatTreeItem->itemCount = count;
}
