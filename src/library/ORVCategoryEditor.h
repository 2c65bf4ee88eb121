#pragma once

#include "library/ORVCatTreeItem.h"

#include <QString>

class ORVLibraryTree;

// Changes to the categories and tags of a library's tree: new, renamed and
// deleted categories, deleted tags, the site kind, a category's order, and
// dragging categories within the tree. The database changes first; the tree
// entries are patched in place only when it succeeded, and the tree's
// notifications follow.
//
// The names given to new categories when the user gives none are the keys
// "Category" (top) and "Untitled" (child).
//
// Thread: the tree's thread.
class ORVCategoryEditor
{
public:
    // A new top category takes this name when none is given.
    static inline const QString kNewTopCategoryNameKey = QStringLiteral("Category");
    // A new child category takes this name when none is given.
    static inline const QString kNewChildCategoryNameKey = QStringLiteral("Untitled");
    // Siblings numbered by a drag start here, above the fixed entries (1 to
    // 4) and the first category (10).
    static constexpr qint64 kFirstDraggedSort = 80;

    explicit ORVCategoryEditor(ORVLibraryTree &tree);

    // newTopCategoryIsStaticSite: kind 11 (a site) or 12, after the last
    // entry of the root (its sort plus 1). Null, with a reason, without a
    // tree or when the row cannot be written.
    ORVCatTreeItemPtr newTopCategoryIsStaticSite(bool isStaticSite, const QString &name = {},
                                                 QString *error = nullptr);
    // newCategoryWithTreeNode: a child (kind 13) of a database category,
    // after its present children. With any other parent: null and the
    // reason "Please select parent category !".
    ORVCatTreeItemPtr newCategoryWithTreeNode(const ORVCatTreeItemPtr &parent, const QString &name = {},
                                              QString *error = nullptr);
    // Renames a database category.
    bool renameCategory(const ORVCatTreeItemPtr &item, const QString &name, QString *error = nullptr);
    // setToSiteCategory: / setToLibCategory: a top category becomes a site
    // (11) or a plain category (12); ORVCatEditSiteChangeCatTypeOn/Off-
    // Notification follows. Categories below the top cannot be sites.
    bool setToSiteCategory(const ORVCatTreeItemPtr &item, QString *error = nullptr);
    bool setToLibCategory(const ORVCatTreeItemPtr &item, QString *error = nullptr);
    // The order of a category's documents: stored on its top category,
    // whose order rules the subtree; kORVCatSortDidChangedNotification
    // carries the top's "uuid" and "sortType".
    bool setCategoryListOrder(qint64 catUUID, quint64 sortType, QString *error = nullptr);

    // deleteCategoryMenuAction: deletes a database category with all its
    // descendants (their documents stay and may become uncategorized), or a
    // tag (its documents stay). Returns the entry to select next: the
    // parent's first child, or the parent. Null, with the reason "Please
    // select a category !", for any other entry.
    ORVCatTreeItemPtr deleteCategoryOrTag(const ORVCatTreeItemPtr &item, QString *error = nullptr);

    // outlineView:validateDrop:… for categories dragged onto `target`, to
    // the gap before child `childIndex` (-1: onto the entry itself). Not on
    // the fixed entries or tags, not before the fixed entries under the
    // root, not a tag and never into itself or its own subtree.
    static bool validateCategoryDrop(const QList<ORVCatTreeItemPtr> &dragged, const ORVCatTreeItem *target,
                                     int childIndex);
    // outlineView:acceptDrop:… The dragged categories get the new parent
    // and kind (13 below a category; below the root 11 if they were sites,
    // else 12), take their place among the target's children, and the
    // children are numbered from kFirstDraggedSort in their new order.
    bool acceptCategoryDrop(const QList<ORVCatTreeItemPtr> &dragged, const ORVCatTreeItemPtr &target, int childIndex);

private:
    bool setTopCategoryKind(const ORVCatTreeItemPtr &item, int catType, QString *error);
    void postRearrange(bool selected);

    ORVLibraryTree &m_tree;
};
