#pragma once

#include "library/ORVBaseTreeItem.h"
#include "library/ORVExternalSourceItem.h"

#include <QJsonObject>
#include <QList>

#include <memory>

class ORVExternalCategoryItem;
using ORVExternalCategoryItemPtr = std::shared_ptr<ORVExternalCategoryItem>;

// An entry of the external tree: a group root (catType 1), or a folder on
// disk (catType 50) with its absolute `fullPath`. The entry of a source
// folder (a child of a root) holds its `sourceItem`; entries below it reach
// the source, and so the folder settings, through their parents.
//
// A parent owns its children; `parent` is a plain back pointer, cleared when
// the child is taken out or the parent goes (an open document may keep an
// entry alive after the tree dropped it).
class ORVExternalCategoryItem : public ORVBaseTreeItem
{
public:
    static constexpr qint64 kCatTypeRoot = 1;
    static constexpr qint64 kCatTypeFolder = 50;

    ORVExternalCategoryItem(const QString &name, qint64 catType, const QString &fullPath = QString());
    ~ORVExternalCategoryItem() override;
    ORVExternalCategoryItem(const ORVExternalCategoryItem &) = delete;
    ORVExternalCategoryItem &operator=(const ORVExternalCategoryItem &) = delete;

    QString fullPath;
    std::shared_ptr<ORVExternalSourceItem> sourceItem;
    // The folder is not on disk (a source on a drive that is not mounted, a
    // folder deleted while watched): the entry stays, empty.
    bool isMissing = false;
    QList<ORVExternalCategoryItemPtr> children;
    ORVExternalCategoryItem *parent = nullptr;

    // Appends a child and sets its parent.
    void addChild(const ORVExternalCategoryItemPtr &child);
    // Takes a child out (its parent pointer cleared); it lives on while held.
    ORVExternalCategoryItemPtr removeChild(const ORVExternalCategoryItem *child);
    void removeAllChildren();

    std::shared_ptr<ORVExternalSourceItem> owningSourceItem() const;
    // The settings of the source this entry belongs to; null outside one.
    std::shared_ptr<ORVExternalSettingData> settingData() const;

    ORVExternalCategoryItem *childFolderWithName(const QString &name) const;

    // The entry and its children with the keys "name", "itemCount",
    // "children", "catType" and "fullPath" ("isMissing" when set).
    QJsonObject archive() const;
};
