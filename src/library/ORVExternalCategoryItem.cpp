#include "library/ORVExternalCategoryItem.h"

#include <QJsonArray>

ORVExternalCategoryItem::ORVExternalCategoryItem(const QString &name, qint64 catType, const QString &fullPath)
    : fullPath(fullPath)
{
    this->name = name;
    this->catType = catType;
}

ORVExternalCategoryItem::~ORVExternalCategoryItem() { removeAllChildren(); }

void ORVExternalCategoryItem::addChild(const ORVExternalCategoryItemPtr &child)
{
    child->parent = this;
    children.append(child);
}

ORVExternalCategoryItemPtr ORVExternalCategoryItem::removeChild(const ORVExternalCategoryItem *child)
{
    for (qsizetype i = 0; i < children.size(); ++i) {
        if (children.at(i).get() == child) {
            ORVExternalCategoryItemPtr taken = children.takeAt(i);
            taken->parent = nullptr;
            return taken;
        }
    }
    return nullptr;
}

void ORVExternalCategoryItem::removeAllChildren()
{
    for (const auto &c : std::as_const(children))
        c->parent = nullptr;
    children.clear();
}

std::shared_ptr<ORVExternalSourceItem> ORVExternalCategoryItem::owningSourceItem() const
{
    for (const ORVExternalCategoryItem *item = this; item; item = item->parent) {
        if (item->sourceItem)
            return item->sourceItem;
    }
    return nullptr;
}

std::shared_ptr<ORVExternalSettingData> ORVExternalCategoryItem::settingData() const
{
    const auto source = owningSourceItem();
    return source ? source->settingData() : nullptr;
}

ORVExternalCategoryItem *ORVExternalCategoryItem::childFolderWithName(const QString &childName) const
{
    for (const auto &c : children) {
        if (c->name == childName)
            return c.get();
    }
    return nullptr;
}

QJsonObject ORVExternalCategoryItem::archive() const
{
    QJsonArray kids;
    for (const auto &c : children)
        kids.append(c->archive());
    QJsonObject o{
        {QStringLiteral("name"), name},
        {QStringLiteral("itemCount"), itemCount},
        {QStringLiteral("children"), kids},
        {QStringLiteral("catType"), catType},
        {QStringLiteral("fullPath"), fullPath},
    };
    if (isMissing)
        o.insert(QStringLiteral("isMissing"), true);
    return o;
}
