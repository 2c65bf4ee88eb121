#pragma once

#include "library/ORVDBCat.h"
#include "library/ORVLibraryListDataItem.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>

class MyPreferences;
class ORVDBManager;
class ORVLibraryRecentDocumentManager;
class ORVLibraryTree;

// The settings a list is made with.
struct ORVLibraryListOptions {
    // The order of "Inbox", "Recent"'s neighbours and tags (a `sortType`
    // value); a category list takes its top category's order instead.
    quint64 libraryDefaultSortType = ORVListOrderType::NewestFirst;
    // Category lists are grouped by sub-category (they always are in the
    // manual order).
    bool isGroupLibDocumentsList = false;
    // An order for this list alone, in place of the one above or the top
    // category's (the command line's --sort); nothing is stored.
    std::optional<quint64> sortTypeOverride;

    static ORVLibraryListOptions fromPreferences(const MyPreferences *prefs);
};

// The document list of a library window, without the window: which entry
// of the tree it shows, its rows in order, and the actions on its rows
// (move to the trash, put back, final deletion, empty trash, the manual
// reorder by dragging, the link text). The desktop list view binds to it;
// the command line drives it directly.
//
// Thread: the object's thread (the main thread).
class ORVLibraryListController : public QObject
{
    Q_OBJECT
public:
    // `recent` (may be null) is the library's recent list; `tree` (may be
    // null) is told when counts change outside the notifications.
    ORVLibraryListController(std::shared_ptr<ORVDBManager> manager, QString libraryPath,
                             ORVLibraryRecentDocumentManager *recent, ORVLibraryTree *tree, QObject *parent = nullptr);
    ~ORVLibraryListController() override;

    ORVLibraryListOptions options;
    // reloadUncategoriesDocumentToLibraryWithURL: the stray document pass,
    // run before the lists of "Inbox", "Uncategorized" and other fixed
    // entries. The application object's is limited to once in 10 s.
    std::function<void()> reloadUncategoriesDocuments;

    // ---- What the list shows (the last fetchAndReload…)
    qint64 fetchUUID = 15; // "Inbox"
    bool isFetchTag = false;
    QString fetchTagName;
    qint64 fetchInCatUUID = 0;
    QList<ORVLibraryListDataItem> listContent;
    QStringList searchHighlightKeys;

    // The order a list uses: the override, else for a category (uuid above
    // 1000) its top category's `sortType`, else libraryDefaultSortType.
    quint64 listOrderForCatUUID(qint64 uuid, bool isFetchTag);
    // Whether the list of this entry is grouped by sub-categories.
    bool isGroupedListForCatUUID(qint64 uuid, bool isFetchTag);

    // fetchListDataByCatUUID:isFetchTag:inCurrentCatUUID:. The rows of a
    // tree entry, ordered, and grouped where that applies:
    //   uuid above 1000: the category with all its descendants;
    //   14 the trash, 19 uncategorized, 18 recent (in the recent order,
    //   stale entries leave the recent list), anything else all documents;
    //   isFetchTag: the documents of tag `uuid`, limited to those also in
    //   inCurrentCatUUID when that is a category, 19 or 18.
    // Titles are read only where the order needs them (3 and 4).
    QList<ORVLibraryListDataItem> fetchListDataByCatUUIDIsFetchTagInCurrentCatUUID(qint64 uuid, bool isFetchTag,
                                                                                 qint64 inCurrentCatUUID);
    // The same, remembered as what the list shows, into listContent.
    void fetchAndReloadListDataByCatUUIDIsFetchTagInCurrentCatUUID(qint64 uuid, bool isFetchTag,
                                                                  qint64 inCurrentCatUUID);
    void fetchAndReloadListDataByCatUUID(qint64 uuid);
    // Again with the remembered values.
    void fetchAndReloadListData();
    // Every document in the trash.
    QList<ORVDBArticle> allTrashArticles();
    // listDataItemByCatItem: only the documents directly in a category.
    QList<ORVLibraryListDataItem> listDataItemByCatItem(qint64 catUUID);

    // ---- Helpers on rows (usable without a controller)
    // Sorts document rows by one of the seven orders; equal keys keep their
    // order. Unknown orders sort as 0 (newest first).
    static void sortListItems(QList<ORVLibraryListDataItem> &items, quint64 order);
    // Reads the title and summary of every document row that has no title
    // yet, several files at once.
    static void setupTitlesOfItems(QList<ORVLibraryListDataItem> &items);
    // The rows of a category grouped: a group row for the category and its
    // own rows, then for each descendant (in `descendants`' order) a group
    // row and the rows linked to it; a document in two descendants shows in
    // both. Each part sorted by `order`.
    static QList<ORVLibraryListDataItem> groupListItems(const QList<ORVLibraryListDataItem> &rows, qint64 catUUID,
                                                        const QString &catName, const QList<ORVDBCat> &descendants,
                                                        quint64 order);
    // copyNoteLinkMenuAction: "[title](orvolib://uuid)" for each document
    // row, one per line.
    static QString noteLinkTextWithItems(const QList<ORVLibraryListDataItem> &items);

    // ---- Actions on rows (the selection)
    // moveToTrashAction: state 0 for each document; those that changed
    // leave listContent. Returns their uuids (their tabs close).
    QList<qint64> moveToTrashAction(const QList<ORVLibraryListDataItem> &selected);
    // putBackAction: state 1; the document is back in all its categories.
    QList<qint64> putBackAction(const QList<ORVLibraryListDataItem> &selected);
    // deleteAction: the final deletion of the selected documents that are in
    // the trash (see ORVLibraryDocuments::deleteDBArticlesWithArray).
    QList<qint64> deleteAction(const QList<ORVLibraryListDataItem> &selected);
    // emptyTrashAction, once the user agreed: the final deletion of the
    // whole trash. Returns the deleted uuids.
    QList<qint64> emptyTrashAction();

    // tableView:acceptDrop:row:dropOperation: for rows dragged within the
    // list (row indexes of listContent) to the gap before `row`.
    enum class ReorderResult {
        NotAvailable,     // the list shows no category: nothing happens
        NeedsManualOrder, // the top category is not in the manual order: ask
                          // (then setTopCategoryToManualOrder); nothing moved
        Done,
    };
    ReorderResult tableViewAcceptDropRow(const QList<int> &draggedRows, int row);
    // The answer "OK" to NeedsManualOrder: the top category of the shown
    // category takes the manual order, and the list reloads.
    bool setTopCategoryToManualOrder();

signals:
    // listContent was replaced or changed.
    void listContentDidChange();

private:
    QList<ORVLibraryListDataItem> itemsWithArticles(const QList<ORVDBArticle> &articles);
    QList<ORVDBArticle> recentArticles();
    void removeRowsOfDocuments(const QList<qint64> &uuids);
    void postReload();

    std::shared_ptr<ORVDBManager> m_manager;
    QString m_libraryPath;
    ORVLibraryRecentDocumentManager *m_recent;
    ORVLibraryTree *m_tree;
};
