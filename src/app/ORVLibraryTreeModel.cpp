#include "app/ORVLibraryTreeModel.h"

#include "library/ORVCategoryEditor.h"
#include "library/ORVDBCat.h"
#include "library/ORVDocumentDropHandler.h"
#include "library/ORVLibraryTree.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMimeData>

const QString ORVLibraryTreeModel::kCategoryMimeType = QStringLiteral("application/x-orvo-library-categories");

ORVLibraryTreeModel::ORVLibraryTreeModel(ORVLibraryTree *tree, QObject *parent) : QAbstractItemModel(parent), m_tree(tree)
{
}

QString ORVLibraryTreeModel::displayNameOfItem(const ORVCatTreeItem &item)
{
    switch (item.catType) {
    case ORVCatType::Root:
        return tr("LIBRARY");
    case ORVCatType::Inbox:
        return tr("Inbox");
    case ORVCatType::Recent:
        return tr("Recent");
    case ORVCatType::Uncategorized:
        return tr("Uncategorized");
    case ORVCatType::Trash:
        return tr("Trash");
    default:
        return item.name;
    }
}

ORVCatTreeItemPtr ORVLibraryTreeModel::rootItem() const { return m_tree ? m_tree->root() : nullptr; }

QList<ORVCatTreeItemPtr> ORVLibraryTreeModel::childrenOf(const ORVCatTreeItem *item) const
{
    if (!item) {
        const ORVCatTreeItemPtr root = rootItem();
        return root ? QList<ORVCatTreeItemPtr>{root} : QList<ORVCatTreeItemPtr>{};
    }
    auto it = m_sortedChildren.find(item);
    if (it == m_sortedChildren.end())
        it = m_sortedChildren.insert(item, item->sortedChildren());
    return it.value();
}

ORVCatTreeItem *ORVLibraryTreeModel::itemForIndex(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<ORVCatTreeItem *>(index.internalPointer()) : nullptr;
}

ORVCatTreeItemPtr ORVLibraryTreeModel::sharedItemForIndex(const QModelIndex &index) const
{
    const ORVCatTreeItem *item = itemForIndex(index);
    if (!item)
        return nullptr;
    for (const ORVCatTreeItemPtr &sibling : childrenOf(item->parent))
        if (sibling.get() == item)
            return sibling;
    return nullptr;
}

QModelIndex ORVLibraryTreeModel::indexForItem(const ORVCatTreeItem *item) const
{
    if (!item)
        return {};
    const QList<ORVCatTreeItemPtr> siblings = childrenOf(item->parent);
    for (int row = 0; row < siblings.size(); ++row)
        if (siblings[row].get() == item)
            return createIndex(row, 0, const_cast<ORVCatTreeItem *>(item));
    return {};
}

QModelIndex ORVLibraryTreeModel::indexForUUID(qint64 uuid, bool isTag) const
{
    if (!m_tree)
        return {};
    ORVCatTreeItemPtr item;
    if (isTag)
        item = m_tree->tagItemWithID(uuid);
    else if (uuid > 1000)
        item = m_tree->categoryItemWithUUID(uuid);
    else if (uuid == 0)
        item = rootItem();
    else
        item = m_tree->fixedItemWithCatType(uuid);
    return indexForItem(item.get());
}

void ORVLibraryTreeModel::reloadTree()
{
    beginResetModel();
    m_sortedChildren.clear();
    endResetModel();
}

void ORVLibraryTreeModel::refreshCounts()
{
    // Counts change in place; every visible row repaints.
    std::function<void(const QModelIndex &)> walk = [&](const QModelIndex &parent) {
        const int rows = rowCount(parent);
        if (rows == 0)
            return;
        emit dataChanged(index(0, 0, parent), index(rows - 1, 0, parent), {CountRole, Qt::DisplayRole});
        for (int r = 0; r < rows; ++r)
            walk(index(r, 0, parent));
    };
    walk({});
}

QModelIndex ORVLibraryTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0)
        return {};
    const QList<ORVCatTreeItemPtr> children = childrenOf(itemForIndex(parent));
    if (row >= children.size())
        return {};
    return createIndex(row, 0, children[row].get());
}

QModelIndex ORVLibraryTreeModel::parent(const QModelIndex &child) const
{
    const ORVCatTreeItem *item = itemForIndex(child);
    return item ? indexForItem(item->parent) : QModelIndex();
}

int ORVLibraryTreeModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    return int(childrenOf(itemForIndex(parent)).size());
}

int ORVLibraryTreeModel::columnCount(const QModelIndex &) const { return 1; }

QVariant ORVLibraryTreeModel::data(const QModelIndex &index, int role) const
{
    const ORVCatTreeItem *item = itemForIndex(index);
    if (!item)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return displayNameOfItem(*item);
    case Qt::EditRole:
        return item->name;
    case Qt::ToolTipRole:
        return item->catType == ORVCatType::SiteCategory ? tr("%1 (site)").arg(item->name) : QVariant();
    case CountRole:
        return item->itemCount;
    case CatTypeRole:
        return item->catType;
    case UUIDRole:
        return item->uuid;
    case IsHeaderRole:
        return item->catType == ORVCatType::Root;
    default:
        return {};
    }
}

bool ORVLibraryTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !m_tree)
        return false;
    const ORVCatTreeItemPtr item = sharedItemForIndex(index);
    const QString name = value.toString().trimmed();
    if (!item || name.isEmpty() || name == item->name)
        return false;
    QString error;
    if (!ORVCategoryEditor(*m_tree).renameCategory(item, name, &error)) {
        emit operationFailed(error);
        return false;
    }
    emit dataChanged(index, index);
    return true;
}

Qt::ItemFlags ORVLibraryTreeModel::flags(const QModelIndex &index) const
{
    const ORVCatTreeItem *item = itemForIndex(index);
    if (!item)
        return Qt::ItemIsDropEnabled;
    if (item->catType == ORVCatType::Root)
        return Qt::ItemIsEnabled | Qt::ItemIsDropEnabled;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
    if (item->uuid > 1000 && item->catType != ORVCatType::Tag)
        f |= Qt::ItemIsEditable | Qt::ItemIsDragEnabled;
    return f;
}

Qt::DropActions ORVLibraryTreeModel::supportedDropActions() const
{
    return Qt::MoveAction | Qt::CopyAction | Qt::LinkAction;
}

Qt::DropActions ORVLibraryTreeModel::supportedDragActions() const { return Qt::MoveAction; }

QStringList ORVLibraryTreeModel::mimeTypes() const { return {kCategoryMimeType, kORV_LIB_DOC_PASTEBOARD_TYPE}; }

QMimeData *ORVLibraryTreeModel::mimeData(const QModelIndexList &indexes) const
{
    QJsonArray uuids;
    for (const QModelIndex &index : indexes)
        if (const ORVCatTreeItem *item = itemForIndex(index); item && item->uuid > 1000)
            uuids.append(item->uuid);
    if (uuids.isEmpty())
        return nullptr;
    auto *mime = new QMimeData;
    mime->setData(kCategoryMimeType, QJsonDocument(uuids).toJson(QJsonDocument::Compact));
    return mime;
}

QList<ORVCatTreeItemPtr> ORVLibraryTreeModel::categoriesFromMime(const QMimeData *data) const
{
    QList<ORVCatTreeItemPtr> items;
    if (!m_tree || !data->hasFormat(kCategoryMimeType))
        return items;
    const QJsonArray uuids = QJsonDocument::fromJson(data->data(kCategoryMimeType)).array();
    for (const QJsonValue &v : uuids)
        if (ORVCatTreeItemPtr item = m_tree->categoryItemWithUUID(qint64(v.toDouble())))
            items << item;
    return items;
}

bool ORVLibraryTreeModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int row, int,
                                          const QModelIndex &parent) const
{
    const ORVCatTreeItem *target = itemForIndex(parent);
    if (!target || !m_tree)
        return false;
    if (data->hasFormat(kORV_LIB_DOC_PASTEBOARD_TYPE))
        return row < 0 && ORVDocumentDropHandler::validateDocumentsDrop(*target);
    const QList<ORVCatTreeItemPtr> dragged = categoriesFromMime(data);
    return !dragged.isEmpty() && ORVCategoryEditor::validateCategoryDrop(dragged, target, row);
}

bool ORVLibraryTreeModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                       const QModelIndex &parent)
{
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    const ORVCatTreeItemPtr target = sharedItemForIndex(parent);
    if (!target)
        return false;
    if (data->hasFormat(kORV_LIB_DOC_PASTEBOARD_TYPE)) {
        const auto records = ORVDocumentDropHandler::recordsWithPasteboardData(data->data(kORV_LIB_DOC_PASTEBOARD_TYPE));
        const Qt::KeyboardModifiers mods = QGuiApplication::keyboardModifiers();
        const ORVDocumentDropOperation operation =
            ORVDocumentDropHandler::operationWithModifiers(mods & Qt::AltModifier, mods & Qt::ControlModifier);
        ORVDocumentDropHandler::ShownList shown;
        if (shownListProvider)
            shownListProvider(shown.fetchUUID, shown.isFetchTag, shown.fetchTagName);
        if (!ORVDocumentDropHandler(*m_tree).acceptDocumentsDrop(records, *target, operation, shown))
            return false;
        emit documentsDropped();
        // The documents keep their rows in the list; the drag source must
        // not take them out as for a move.
        return false;
    }
    const QList<ORVCatTreeItemPtr> dragged = categoriesFromMime(data);
    QList<qint64> uuids;
    for (const ORVCatTreeItemPtr &item : dragged)
        uuids << item->uuid;
    if (!ORVCategoryEditor(*m_tree).acceptCategoryDrop(dragged, target, row)) {
        emit operationFailed(tr("The categories could not be moved."));
        return false;
    }
    reloadTree();
    emit categoriesMoved(uuids);
    // The tree was rebuilt here; the view must not remove dragged rows.
    return false;
}
