#pragma once

#include "library/ORVExternalCategoryItem.h"
#include "library/ORVExternalSourceItem.h"

#include <QList>
#include <QStringList>

#include <memory>

// The external tree (the application's `externalTreeData`): one root entry
// for the user's folders, whose children are the sources, each with its
// sub-folders below it as read from the disk. A folder entry's itemCount is
// the number of documents directly in it.
//
// Sub-folders are ordered by name, numbers by value and case ignored, so
// that "Chapter 2" comes before "chapter 10". Hidden folders and links to folders
// are left out.
//
// Thread: not thread-safe; the application builds and patches it on the
// main thread, or builds one elsewhere and hands it over.
class ORVExternalTree
{
public:
    using ItemPtr = ORVExternalCategoryItemPtr;

    ORVExternalTree();

    // The top entries, roots of groups of sources.
    const QList<ItemPtr> &topItems() const { return m_topItems; }
    // The root whose children are the user's sources.
    ORVExternalCategoryItem *foldersRootItem() const { return m_foldersRoot.get(); }

    // Makes the source entries match `sources`, in their order. The entry of
    // a source that stays is kept as it is; a new source's entry is built
    // from the disk; the entries of sources that went are dropped.
    void updateExternalTreeDataTopItems(const QList<std::shared_ptr<ORVExternalSourceItem>> &sources);

    // Brings the tree in line with the disk after a batch of changed paths:
    // the folders that hold them, and the paths that are folders, are read
    // again (one level; new folders with all that is below them). A source
    // folder among the paths is read again entirely. True when the tree
    // changed.
    bool updateWithChangedPaths(const QStringList &paths);

    // The folder entry of `path`, or null when no source shows it.
    ORVExternalCategoryItem *folderItemForPath(const QString &path) const;
    // The first source entry whose folder holds `path` (a file or folder
    // below it), walking the roots' children in order.
    ItemPtr sourceEntryContainingPath(const QString &path) const;

    // The entry of one folder and everything below it, read from the disk.
    static ItemPtr buildFolderItem(const QString &path, const QString &name);
    // A source's entry: its folder read from the disk, named by its settings.
    static ItemPtr buildSourceItem(const std::shared_ptr<ORVExternalSourceItem> &source);

    // Sorts the entry's children by name as above.
    static void sortFolderChildren(ORVExternalCategoryItem *item);

private:
    // Reads one folder again; new sub-folders are built entirely. True when
    // the entry changed.
    bool rescanFolderItem(ORVExternalCategoryItem *item);
    bool rebuildSourceEntry(ORVExternalCategoryItem *entry);

    ItemPtr m_foldersRoot;
    QList<ItemPtr> m_topItems;
};
