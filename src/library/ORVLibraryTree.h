#pragma once

#include "library/ORVCatTreeItem.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

class FMDatabase;
class ORVDBManager;
class ORVLibraryRecentDocumentManager;

// Names of the fixed entries of the library's tree (their display texts are
// these keys, localised by the view).
inline const QString kORVLibraryTreeRootNameKey = QStringLiteral("LIBRARY");
inline const QString kORVLibraryTreeInboxNameKey = QStringLiteral("Inbox");
inline const QString kORVLibraryTreeRecentNameKey = QStringLiteral("Recent");
inline const QString kORVLibraryTreeUncategorizedNameKey = QStringLiteral("Uncategorized");
inline const QString kORVLibraryTreeTrashNameKey = QStringLiteral("Trash");

// The library's tree as the user sees it: a root ("LIBRARY", kind 1, uuid
// 0) holding the four fixed entries "Inbox" (15), "Recent" (18),
// "Uncategorized" (19) and "Trash" (14) with sort 1 to 4, the library's tags
// as children of "Inbox", and then the top categories with their
// sub-categories. Every entry carries the count shown beside it.
//
// The tree is built once and then patched: counts by the debounced recount,
// tags by updateLibraryTreeTagsData, new and moved categories in place (see
// ORVCategoryEditor). A reload from outside builds it again.
//
// Counts follow the library: every kORVLibraryArticleCategoryDidChange-
// Notification of this library's database schedules a full recount 0.6 s
// later, so that the many changes of one user action make one pass; the
// recount posts kORVLibraryCategoryTreeNeedToUpdateNotification.
//
// Thread: the object's thread (the main thread). Loading may run on the
// global pool; its result is taken over on the object's thread.
class ORVLibraryTree : public QObject
{
    Q_OBJECT
public:
    // The recount waits this long after the last change: the changes of one
    // user action (a drop of many documents) arrive within it.
    static constexpr int kRecountDelayMs = 600;

    // `recent` (not owned, may be null) gives the count of "Recent".
    ORVLibraryTree(std::shared_ptr<ORVDBManager> manager, ORVLibraryRecentDocumentManager *recent,
                   QObject *parent = nullptr);
    ~ORVLibraryTree() override;

    const std::shared_ptr<ORVDBManager> &manager() const { return m_manager; }

    // fetchLibraryTreeDataWithCompletion:. When the tree is built already the
    // completion runs at once; otherwise the tree is built on the global
    // pool with a connection of its own and taken over, and the completion
    // run, on this object's thread.
    void fetchLibraryTreeDataWithCompletion(const std::function<void()> &completion);
    // The same, built on the calling thread (the command line, tests).
    void fetchLibraryTreeData();
    // Drops the tree, so that the next fetch builds it again.
    void clearLibraryTreeData();

    // The whole tree with its counts, on `db` (a worker's connection, or
    // null for the manager's own). `recentCount` is the count of "Recent".
    static ORVCatTreeItemPtr buildLibraryTreeWithDB(ORVDBManager &manager, FMDatabase *db, qint64 recentCount);

    // libraryCatsTreeContent: the root alone, or empty before the first fetch.
    const QList<ORVCatTreeItemPtr> &libraryCatsTreeContent() const { return m_libraryCatsTreeContent; }
    ORVCatTreeItemPtr root() const;
    ORVCatTreeItemPtr libraryTreeInboxItem() const { return m_libraryTreeInboxItem; }
    ORVCatTreeItemPtr recentCatTreeItem() const { return m_recentCatTreeItem; }
    // A fixed entry (14, 15, 18, 19) by its kind.
    ORVCatTreeItemPtr fixedItemWithCatType(qint64 catType) const;
    // A database category anywhere in the tree, or null.
    ORVCatTreeItemPtr categoryItemWithUUID(qint64 uuid) const;
    // A tag entry under "Inbox" by id, or null. Only tags that some normal
    // document carries are entries.
    ORVCatTreeItemPtr tagItemWithID(qint64 tagID) const;

    // updateLibraryTreeTagsData: rebuilds the children of "Inbox" from the
    // database and posts the re-sort notification with "selected" true.
    void updateLibraryTreeTagsData();

    // updateLibraryCategoryWithAllCats:. Schedules the recount (see the class
    // comment); with isAll the categories are counted too, otherwise only
    // the fixed entries and tags. A pending full recount stays full when a
    // partial one is asked for before it runs.
    void updateLibraryCategoryWithAllCats(bool isAll);
    bool isRecountPending() const { return m_recountTimer.isActive(); }
    // timerLibraryCategoriesDidChangedFire: the recount itself.
    void timerLibraryCategoriesDidChangedFire();

    // What "Recent" shows changed (the list found stale items, or the
    // recent list was emptied): its count becomes `count`.
    void setRecentCount(qint64 count);

signals:
    // The tree was built (or rebuilt) and its content replaced.
    void treeDidLoad();

private:
    void takeOverTree(const ORVCatTreeItemPtr &root);
    qint64 recentItemCount() const;

    std::shared_ptr<ORVDBManager> m_manager;
    ORVLibraryRecentDocumentManager *m_recent;
    QList<ORVCatTreeItemPtr> m_libraryCatsTreeContent;
    ORVCatTreeItemPtr m_libraryTreeInboxItem;
    ORVCatTreeItemPtr m_recentCatTreeItem;
    QTimer m_recountTimer;
    bool m_recountIsAll = false;
    bool m_loading = false;
    QList<std::function<void()>> m_pendingCompletions;
};
