#include "library/ORVCatTreeItem.h"

#include "library/ORVDBCat.h"

#include <algorithm>

ORVCatTreeItemPtr ORVCatTreeItem::itemWithDBCat(const ORVDBCat &cat, const QString &libName)
{
    auto item = std::make_shared<ORVCatTreeItem>();
    item->name = cat.name();
    item->catType = cat.catType();
    item->uuid = cat.uuid();
    item->sort = cat.sort();
    item->libName = libName;
    return item;
}

QList<ORVCatTreeItemPtr> ORVCatTreeItem::sortedChildren() const
{
    QList<ORVCatTreeItemPtr> sorted = children;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const ORVCatTreeItemPtr &a, const ORVCatTreeItemPtr &b) { return a->sort < b->sort; });
    return sorted;
}

bool ORVCatTreeItem::isHaveDBParent() const { return parent && uuid > 1000; }

ORVCatTreeItemPtr ORVCatTreeItem::addChildrenWithDBCat(const ORVDBCat &cat)
{
    ORVCatTreeItemPtr child = itemWithDBCat(cat, libName);
    addChild(child);
    return child;
}

void ORVCatTreeItem::addChild(const ORVCatTreeItemPtr &child)
{
    child->parent = this;
    children.append(child);
}

ORVCatTreeItemPtr ORVCatTreeItem::removeChild(const ORVCatTreeItem *child)
{
    const auto it = std::find_if(children.begin(), children.end(),
                                 [&](const ORVCatTreeItemPtr &c) { return c.get() == child; });
    if (it == children.end())
        return nullptr;
    ORVCatTreeItemPtr taken = *it;
    children.erase(it);
    taken->parent = nullptr;
    return taken;
}
