#pragma once

#include "library/ORVBaseTreeItem.h"

#include <QList>
#include <QString>

#include <memory>

class ORVDBCat;
class ORVCatTreeItem;
using ORVCatTreeItemPtr = std::shared_ptr<ORVCatTreeItem>;

// An entry of the library's tree: a database category (`uuid` above 1000),
// a tag (`catType` 99, `uuid` the tag id), or a fixed entry (ids up to 999).
//
// A parent owns its children; `parent` is a plain back pointer, valid while
// the parent lives. A tree is built on one thread and then handed over
// whole; it is not safe to change from two threads at once.
class ORVCatTreeItem : public ORVBaseTreeItem
{
public:
    qint64 uuid = 0;
    QString libName; // "main" for the library
    qint64 sort = 0;
    QList<ORVCatTreeItemPtr> children;
    ORVCatTreeItem *parent = nullptr;

    // An entry made from a row: name, kind, uuid and sort, no children.
    static ORVCatTreeItemPtr itemWithDBCat(const ORVDBCat &cat, const QString &libName);

    // `children` ordered by `sort` ascending (stable for equal sorts).
    QList<ORVCatTreeItemPtr> sortedChildren() const;
    // True when it has a parent and is a database category.
    bool isHaveDBParent() const;
    // Makes a child from a row, with this entry as parent and this libName.
    ORVCatTreeItemPtr addChildrenWithDBCat(const ORVDBCat &cat);
    // Appends an existing entry as a child and sets its parent.
    void addChild(const ORVCatTreeItemPtr &child);
    // Takes the child out of `children`; it keeps living while referenced.
    ORVCatTreeItemPtr removeChild(const ORVCatTreeItem *child);
};
