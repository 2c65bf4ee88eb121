#pragma once

#include <QString>

// What every entry of a tree has, the library's and the external folders'
// alike. The children are kept by each kind of entry with their own type
// (ORVCatTreeItem::children), so that no caller casts.
class ORVBaseTreeItem
{
public:
    virtual ~ORVBaseTreeItem() = default;

    QString name;
    qint64 catType = 0;   // kinds: ORVCatType
    qint64 itemCount = 0; // documents shown beside the entry
};
