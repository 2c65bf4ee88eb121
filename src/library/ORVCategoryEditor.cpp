#include "library/ORVCategoryEditor.h"

#include "core/ORVNotificationCenter.h"
#include "core/date_uuid.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryListNotifications.h"
#include "library/ORVLibraryNotifications.h"
#include "library/ORVLibraryTree.h"

namespace {

bool fail(QString *error, const QString &message)
{
    if (error)
        *error = message;
    return false;
}

ORVDBCat rowWithUUID(qint64 uuid)
{
    ORVDBCat cat;
    cat.setUuid(uuid);
    return cat;
}

bool isFixedEntry(qint64 catType)
{
    return catType == ORVCatType::Root || catType == ORVCatType::Trash || catType == ORVCatType::Inbox ||
           catType == ORVCatType::Recent || catType == ORVCatType::Uncategorized;
}

} // namespace

ORVCategoryEditor::ORVCategoryEditor(ORVLibraryTree &tree) : m_tree(tree) {}

void ORVCategoryEditor::postRearrange(bool selected)
{
    QVariantMap info;
    if (selected)
        info.insert(QStringLiteral("selected"), true);
    ORVNotificationCenter::defaultCenter()->postNotification(
        kORVTreeViewControllerTreeControllerRearrangeObjectsNotification, &m_tree, info);
}

ORVCatTreeItemPtr ORVCategoryEditor::newTopCategoryIsStaticSite(bool isStaticSite, const QString &name, QString *error)
{
    const ORVCatTreeItemPtr root = m_tree.root();
    if (!root) {
        fail(error, QStringLiteral("the library's tree is not loaded"));
        return nullptr;
    }
    qint64 highest = 0;
    for (const ORVCatTreeItemPtr &child : root->children)
        highest = std::max(highest, child->sort);
    ORVDBCat cat;
    cat.setUuid(nowDateUUID());
    cat.setPid(0);
    cat.setName(name.isEmpty() ? kNewTopCategoryNameKey : name);
    cat.setCatType(isStaticSite ? ORVCatType::SiteCategory : ORVCatType::TopCategory);
    cat.setSort(highest + 1);
    ORVDBManager &m = *m_tree.manager();
    // The entry is made from the row as stored, not from what was meant.
    const auto stored = m.insertItemDBCat(cat) ? m.itemDBCatWithUUID(cat.uuid()) : std::nullopt;
    if (!stored) {
        fail(error, QStringLiteral("the category could not be added: %1").arg(m.db().lastErrorMessage()));
        return nullptr;
    }
    const ORVCatTreeItemPtr item = root->addChildrenWithDBCat(*stored);
    postRearrange(true);
    return item;
}

ORVCatTreeItemPtr ORVCategoryEditor::newCategoryWithTreeNode(const ORVCatTreeItemPtr &parent, const QString &name,
                                                             QString *error)
{
    if (!parent || !ORVDBCat::checkCatTypeIsDBCatItem(parent->catType)) {
        fail(error, QStringLiteral("Please select parent category !"));
        return nullptr;
    }
    ORVDBCat cat;
    cat.setUuid(nowDateUUID());
    cat.setPid(parent->uuid);
    cat.setName(name.isEmpty() ? kNewChildCategoryNameKey : name);
    cat.setCatType(ORVCatType::SubCategory);
    cat.setSort(parent->children.size() + 1);
    ORVDBManager &m = *m_tree.manager();
    const auto stored = m.insertItemDBCat(cat) ? m.itemDBCatWithUUID(cat.uuid()) : std::nullopt;
    if (!stored) {
        fail(error, QStringLiteral("the category could not be added: %1").arg(m.db().lastErrorMessage()));
        return nullptr;
    }
    const ORVCatTreeItemPtr item = parent->addChildrenWithDBCat(*stored);
    postRearrange(true);
    return item;
}

bool ORVCategoryEditor::renameCategory(const ORVCatTreeItemPtr &item, const QString &name, QString *error)
{
    if (!item || !ORVDBCat::checkCatTypeIsDBCatItem(item->catType))
        return fail(error, QStringLiteral("Please select a category !"));
    if (name.trimmed().isEmpty())
        return fail(error, QStringLiteral("a category needs a name"));
    ORVDBManager &m = *m_tree.manager();
    auto row = m.itemDBCatWithUUID(item->uuid);
    if (!row)
        return fail(error, QStringLiteral("there is no category %1").arg(item->uuid));
    row->setName(name);
    if (!m.saveItemDBCat(*row))
        return fail(error, QStringLiteral("the category could not be renamed: %1").arg(m.db().lastErrorMessage()));
    item->name = name;
    postRearrange(false);
    return true;
}

bool ORVCategoryEditor::setTopCategoryKind(const ORVCatTreeItemPtr &item, int catType, QString *error)
{
    if (!item || !ORVDBCat::checkCatTypeIsDBCatItem(item->catType))
        return fail(error, QStringLiteral("Please select a category !"));
    if (item->catType == ORVCatType::SubCategory)
        return fail(error, QStringLiteral("only a top category can be a site; %1 lies below another category")
                               .arg(item->uuid));
    if (!m_tree.manager()->updateDBCatWithCatType(rowWithUUID(item->uuid), catType))
        return fail(error, QStringLiteral("the category could not be changed: %1")
                               .arg(m_tree.manager()->db().lastErrorMessage()));
    item->catType = catType;
    ORVNotificationCenter::defaultCenter()->postNotification(catType == ORVCatType::SiteCategory
                                                                 ? ORVCatEditSiteChangeCatTypeOnNotification
                                                                 : ORVCatEditSiteChangeCatTypeOffNotification,
                                                             &m_tree, {{QStringLiteral("uuid"), item->uuid}});
    return true;
}

bool ORVCategoryEditor::setToSiteCategory(const ORVCatTreeItemPtr &item, QString *error)
{
    return setTopCategoryKind(item, ORVCatType::SiteCategory, error);
}

bool ORVCategoryEditor::setToLibCategory(const ORVCatTreeItemPtr &item, QString *error)
{
    return setTopCategoryKind(item, ORVCatType::TopCategory, error);
}

bool ORVCategoryEditor::setCategoryListOrder(qint64 catUUID, quint64 sortType, QString *error)
{
    ORVDBManager &m = *m_tree.manager();
    if (!ORVDBCat::listOrderTypesSorted().contains(sortType))
        return fail(error, QStringLiteral("there is no order %1").arg(sortType));
    const ORVCatTreeItemPtr top = m.topCatByCatUUID(catUUID);
    auto row = top ? m.itemDBCatWithUUID(top->uuid) : std::nullopt;
    if (!row)
        return fail(error, QStringLiteral("there is no category %1").arg(catUUID));
    row->setSortType(sortType);
    if (!m.saveItemDBCat(*row))
        return fail(error, QStringLiteral("the order could not be stored: %1").arg(m.db().lastErrorMessage()));
    ORVNotificationCenter::defaultCenter()->postNotification(
        kORVCatSortDidChangedNotification, &m_tree,
        {{QStringLiteral("uuid"), row->uuid()}, {QStringLiteral("sortType"), sortType}});
    return true;
}

ORVCatTreeItemPtr ORVCategoryEditor::deleteCategoryOrTag(const ORVCatTreeItemPtr &item, QString *error)
{
    const bool isTag = item && item->catType == ORVCatType::Tag;
    if (!item || (!isTag && !ORVDBCat::checkCatTypeIsDBCatItem(item->catType))) {
        fail(error, QStringLiteral("Please select a category !"));
        return nullptr;
    }
    ORVDBManager &m = *m_tree.manager();
    const bool ok = isTag ? m.deleteDBTag(ORVDBTag(item->uuid, item->name))
                          : m.deleteDBCatAndAllChildItem(rowWithUUID(item->uuid));
    if (!ok) {
        fail(error, QStringLiteral("%1 could not be deleted: %2")
                        .arg(isTag ? QStringLiteral("the tag") : QStringLiteral("the category"), m.db().lastErrorMessage()));
        return nullptr;
    }
    ORVCatTreeItem *parent = item->parent;
    ORVCatTreeItemPtr next;
    if (parent) {
        parent->removeChild(item.get());
        const QList<ORVCatTreeItemPtr> siblings = parent->sortedChildren();
        if (!siblings.isEmpty())
            next = siblings.first();
        else if (parent == m_tree.root().get())
            next = m_tree.root();
        else if (parent == m_tree.libraryTreeInboxItem().get())
            next = m_tree.libraryTreeInboxItem();
        else
            next = m_tree.categoryItemWithUUID(parent->uuid);
    }
    postRearrange(false);
    ORVNotificationCenter::defaultCenter()->postNotification(kORVLibraryCategoryItemDidChangedNotification, &m_tree,
                                                             {{QStringLiteral("uuid"), item->uuid}});
    // Documents of a deleted category may now have none.
    m_tree.updateLibraryCategoryWithAllCats(false);
    return next ? next : m_tree.root();
}

bool ORVCategoryEditor::validateCategoryDrop(const QList<ORVCatTreeItemPtr> &dragged, const ORVCatTreeItem *target,
                                             int childIndex)
{
    if (!target || dragged.isEmpty())
        return false;
    if (target->catType != ORVCatType::Root && !ORVDBCat::checkCatTypeIsDBCatItem(target->catType))
        return false; // the fixed entries, tags, anything not of the library
    // Categories stay below the four fixed entries.
    if (target->catType == ORVCatType::Root && childIndex >= 0 && childIndex < 4)
        return false;
    for (const ORVCatTreeItemPtr &item : dragged) {
        if (!item || item->catType == ORVCatType::Tag || isFixedEntry(item->catType))
            return false;
        if (item.get() == target || ORVDBManager::checkCatIsHasChildWithCatTheChildIsHas(item.get(), target))
            return false;
    }
    return true;
}

bool ORVCategoryEditor::acceptCategoryDrop(const QList<ORVCatTreeItemPtr> &dragged, const ORVCatTreeItemPtr &target,
                                           int childIndex)
{
    if (!validateCategoryDrop(dragged, target.get(), childIndex))
        return false;
    ORVDBManager &m = *m_tree.manager();
    QList<ORVCatTreeItemPtr> list = target->sortedChildren();
    const bool toRoot = target->catType == ORVCatType::Root;
    for (const ORVCatTreeItemPtr &item : dragged) {
        if (!m.updateCatTreeParentParentCat(item, target.get()))
            return false;
        const int kind = !toRoot ? ORVCatType::SubCategory
                                 : (item->catType == ORVCatType::SiteCategory ? ORVCatType::SiteCategory
                                                                              : ORVCatType::TopCategory);
        if (!m.updateDBCatWithCatType(rowWithUUID(item->uuid), kind))
            return false;
        item->catType = kind;
    }
    // The gap is counted in the list as it was shown: dragged entries taken
    // out above it move it up.
    int at = childIndex;
    for (const ORVCatTreeItemPtr &item : dragged) {
        const qsizetype i = list.indexOf(item);
        if (i < 0)
            continue;
        if (childIndex >= 0 && i < childIndex)
            --at;
        list.removeAt(i);
    }
    if (childIndex < 0 || list.isEmpty()) {
        list << dragged;
    } else {
        at = std::clamp(at, 0, int(list.size()));
        for (qsizetype i = 0; i < dragged.size(); ++i)
            list.insert(at + i, dragged.at(i));
    }
    bool all = true;
    m.withSharedDatabaseOpen([&](FMDatabase &) {
        qint64 sort = kFirstDraggedSort;
        for (const ORVCatTreeItemPtr &item : std::as_const(list)) {
            if (item->uuid < 1000)
                continue; // the fixed entries keep 1 to 4
            all = m.updateDBCatWithSort(rowWithUUID(item->uuid), sort) && all;
            item->sort = sort++;
        }
    });
    ORVNotificationCenter::defaultCenter()->postNotification(kORVTreeViewControllerReloadOutlineViewNotification,
                                                             &m_tree);
    return all;
}
