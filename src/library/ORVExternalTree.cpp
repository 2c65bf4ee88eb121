#include "library/ORVExternalTree.h"

#include "library/ORVListDataItem.h"
#include "library/folderEntries.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>

namespace {

QString joinPath(const QString &dir, const QString &name)
{
    return dir.endsWith(QLatin1Char('/')) ? dir + name : dir + QLatin1Char('/') + name;
}

QString parentPath(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return slash <= 0 ? QStringLiteral("/") : path.left(slash);
}

bool isBelow(const QString &path, const QString &folder)
{
    if (folder.endsWith(QLatin1Char('/')))
        return path.size() > folder.size() && path.startsWith(folder);
    return path.size() > folder.size() && path.startsWith(folder) && path.at(folder.size()) == QLatin1Char('/');
}

// Fills `item` (an entry of `path`) with its documents' count and one entry
// per sub-folder, and returns the sub-folder entries for the caller to fill.
QList<ORVExternalTree::ItemPtr> fillOneLevel(ORVExternalCategoryItem *item, const ORVFolderEntries &entries)
{
    QList<ORVExternalTree::ItemPtr> made;
    item->isMissing = !entries.exists;
    item->itemCount = entries.documents.size();
    for (const QString &name : entries.folders) {
        auto child = std::make_shared<ORVExternalCategoryItem>(name, ORVExternalCategoryItem::kCatTypeFolder,
                                                               joinPath(item->fullPath, name));
        item->addChild(child);
        made.append(child);
    }
    ORVExternalTree::sortFolderChildren(item);
    return made;
}

// Fills `top` and everything below it from the disk.
void fillTree(ORVExternalCategoryItem *top)
{
    QList<ORVExternalTree::ItemPtr> pending = fillOneLevel(top, listFolderEntries(top->fullPath));
    while (!pending.isEmpty()) {
        const ORVExternalTree::ItemPtr item = pending.takeLast();
        pending.append(fillOneLevel(item.get(), listFolderEntries(item->fullPath)));
    }
}

} // namespace

ORVExternalTree::ORVExternalTree()
    : m_foldersRoot(std::make_shared<ORVExternalCategoryItem>(QStringLiteral("FOLDERS"), ORVExternalCategoryItem::kCatTypeRoot))
{
    m_topItems.append(m_foldersRoot);
}

void ORVExternalTree::sortFolderChildren(ORVExternalCategoryItem *item)
{
    if (item->children.size() < 2)
        return;
    QHash<const ORVExternalCategoryItem *, QString> keys;
    for (const auto &c : std::as_const(item->children))
        keys.insert(c.get(), ORVListDataItem::stringByWellToDigitSortString(c->name));
    std::stable_sort(item->children.begin(), item->children.end(), [&](const ItemPtr &a, const ItemPtr &b) {
        const int byKey = QString::compare(keys.value(a.get()), keys.value(b.get()), Qt::CaseInsensitive);
        return byKey != 0 ? byKey < 0 : a->name < b->name;
    });
}

ORVExternalTree::ItemPtr ORVExternalTree::buildFolderItem(const QString &path, const QString &name)
{
    auto item = std::make_shared<ORVExternalCategoryItem>(name, ORVExternalCategoryItem::kCatTypeFolder,
                                                          ORVExternalSourceItem::normalizedFolderPath(path));
    fillTree(item.get());
    return item;
}

ORVExternalTree::ItemPtr ORVExternalTree::buildSourceItem(const std::shared_ptr<ORVExternalSourceItem> &source)
{
    const auto settings = source->settingData();
    auto item = buildFolderItem(source->realURL(), settings ? settings->name : QString());
    item->sourceItem = source;
    return item;
}

void ORVExternalTree::updateExternalTreeDataTopItems(const QList<std::shared_ptr<ORVExternalSourceItem>> &sources)
{
    QHash<QString, ItemPtr> present;
    for (const ItemPtr &entry : std::as_const(m_foldersRoot->children))
        present.insert(entry->fullPath, entry);
    m_foldersRoot->removeAllChildren();
    for (const auto &source : sources) {
        ItemPtr entry = present.take(source->realURL());
        if (entry) {
            entry->sourceItem = source;
            if (const auto settings = source->settingData())
                entry->name = settings->name;
        } else {
            entry = buildSourceItem(source);
        }
        m_foldersRoot->addChild(entry);
    }
    m_foldersRoot->itemCount = m_foldersRoot->children.size();
}

ORVExternalTree::ItemPtr ORVExternalTree::sourceEntryContainingPath(const QString &path) const
{
    for (const ItemPtr &top : m_topItems) {
        for (const ItemPtr &entry : top->children) {
            QString prefix = entry->fullPath;
            if (!prefix.endsWith(QLatin1Char('/')))
                prefix += QLatin1Char('/');
            if (path.startsWith(prefix))
                return entry;
        }
    }
    return nullptr;
}

ORVExternalCategoryItem *ORVExternalTree::folderItemForPath(const QString &path) const
{
    for (const ItemPtr &top : m_topItems) {
        for (const ItemPtr &child : top->children) {
            ORVExternalCategoryItem *entry = child.get();
            if (entry->fullPath == path)
                return entry;
            if (!isBelow(path, entry->fullPath))
                continue;
            const QString rel = path.mid(entry->fullPath.size() + (entry->fullPath.endsWith(QLatin1Char('/')) ? 0 : 1));
            ORVExternalCategoryItem *item = entry;
            for (const QString &part : rel.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
                item = item->childFolderWithName(part);
                if (!item)
                    break;
            }
            if (item)
                return item;
        }
    }
    return nullptr;
}

bool ORVExternalTree::rebuildSourceEntry(ORVExternalCategoryItem *entry)
{
    // Rebuilt in place, so that holders of the entry keep a live one.
    entry->removeAllChildren();
    fillTree(entry);
    return true;
}

bool ORVExternalTree::rescanFolderItem(ORVExternalCategoryItem *item)
{
    const ORVFolderEntries entries = listFolderEntries(item->fullPath);
    if (!entries.exists) {
        if (item->sourceItem || !item->parent) {
            const bool changed = !item->isMissing || !item->children.isEmpty() || item->itemCount;
            item->removeAllChildren();
            item->itemCount = 0;
            item->isMissing = true;
            return changed;
        }
        item->parent->removeChild(item);
        return true;
    }
    bool changed = item->isMissing || item->itemCount != entries.documents.size();
    item->isMissing = false;
    item->itemCount = entries.documents.size();
    const QSet<QString> onDisk(entries.folders.cbegin(), entries.folders.cend());
    for (qsizetype i = item->children.size() - 1; i >= 0; --i) {
        if (!onDisk.contains(item->children.at(i)->name)) {
            item->removeChild(item->children.at(i).get());
            changed = true;
        }
    }
    bool added = false;
    for (const QString &name : entries.folders) {
        if (item->childFolderWithName(name))
            continue;
        item->addChild(buildFolderItem(joinPath(item->fullPath, name), name));
        added = true;
    }
    if (added)
        sortFolderChildren(item);
    return changed || added;
}

bool ORVExternalTree::updateWithChangedPaths(const QStringList &paths)
{
    QSet<QString> sourcesToRebuild;
    QSet<QString> foldersToRescan;
    QSet<QString> sourcePaths;
    for (const ItemPtr &entry : std::as_const(m_foldersRoot->children))
        sourcePaths.insert(entry->fullPath);
    for (const QString &path : paths) {
        if (sourcePaths.contains(path)) {
            sourcesToRebuild.insert(path);
            continue;
        }
        // The path may be a folder (changed, gone) and its folder's entry
        // list changed.
        foldersToRescan.insert(path);
        foldersToRescan.insert(parentPath(path));
    }
    bool changed = false;
    for (const QString &path : std::as_const(sourcesToRebuild)) {
        if (ORVExternalCategoryItem *entry = folderItemForPath(path))
            changed |= rebuildSourceEntry(entry);
    }
    // Parents first: a folder that went takes its descendants with it, and
    // a folder that came is read whole with its parent.
    QStringList order(foldersToRescan.cbegin(), foldersToRescan.cend());
    std::sort(order.begin(), order.end(), [](const QString &a, const QString &b) {
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    });
    for (const QString &path : std::as_const(order)) {
        bool underRebuilt = false;
        for (const QString &s : std::as_const(sourcesToRebuild))
            underRebuilt |= isBelow(path, s);
        if (underRebuilt)
            continue;
        if (ORVExternalCategoryItem *item = folderItemForPath(path))
            changed |= rescanFolderItem(item);
    }
    return changed;
}
