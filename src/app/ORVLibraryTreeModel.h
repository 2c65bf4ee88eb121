#pragma once

#include "library/ORVCatTreeItem.h"

#include <QAbstractItemModel>

#include <functional>

class ORVLibraryTree;

// The library's tree (ORVLibraryTree) as an item model for the tree view:
// the root "LIBRARY" as a header, the fixed entries, tags under "Inbox",
// the categories with their sub-categories, siblings ordered by `sort`.
//
// Items are the tree's own entries (not owned); the model resets when the
// tree is rebuilt or re-sorted and repaints counts when they change. It
// carries drags: categories within the tree, documents from the list onto
// an entry (ORVDocumentDropHandler decides).
//
// Thread: the main thread.
class ORVLibraryTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Role {
        CountRole = Qt::UserRole + 1, // itemCount
        CatTypeRole,
        UUIDRole,
        IsHeaderRole, // the root, drawn as a section title
    };
    static const QString kCategoryMimeType;

    explicit ORVLibraryTreeModel(ORVLibraryTree *tree, QObject *parent = nullptr);

    ORVCatTreeItem *itemForIndex(const QModelIndex &index) const;
    ORVCatTreeItemPtr sharedItemForIndex(const QModelIndex &index) const;
    QModelIndex indexForItem(const ORVCatTreeItem *item) const;
    // The entry with this uuid: a category (above 1000) or a fixed entry;
    // tags are found with `isTag`.
    QModelIndex indexForUUID(qint64 uuid, bool isTag = false) const;
    // What the list shows when the drag starts, for the document drop.
    std::function<void(qint64 &fetchUUID, bool &isFetchTag, QString &tagName)> shownListProvider;

    // Resets after the tree changed its shape.
    void reloadTree();
    // Repaints the counts.
    void refreshCounts();

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

    // The localised name of an entry.
    static QString displayNameOfItem(const ORVCatTreeItem &item);

signals:
    // Categories were moved by a drag; the view selects them again.
    void categoriesMoved(const QList<qint64> &uuids);
    // Documents were dropped on an entry (the list reloads).
    void documentsDropped();
    // A rename or a drop failed; the window tells the user.
    void operationFailed(const QString &message);

private:
    QList<ORVCatTreeItemPtr> childrenOf(const ORVCatTreeItem *item) const;
    ORVCatTreeItemPtr rootItem() const;
    QList<ORVCatTreeItemPtr> categoriesFromMime(const QMimeData *data) const;

    ORVLibraryTree *m_tree;
    // Children ordered by sort, per parent: views ask for rows very often,
    // and the order only changes when the tree does.
    mutable QHash<const ORVCatTreeItem *, QList<ORVCatTreeItemPtr>> m_sortedChildren;
};
