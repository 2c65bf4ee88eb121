#pragma once

#include "core/ORVExternalSourceList.h"
#include "library/ORVExternalSourceItem.h"

#include <QList>
#include <QObject>
#include <QString>

#include <memory>

// Posted through ORVNotificationCenter whenever the list of sources changes
// (added, updated, removed, moved or read again).
inline const QString kORVExternalSourceItemDidChangeNotification =
    QStringLiteral("kORVExternalSourceItemDidChangeNotification");

// The list of external sources, kept in one file (externalSourceItems.data
// in the application support folder for the application's manager; any path
// for others). The file is UTF-8 JSON: an array of {"realURL", "bookmarkData"
// (base64)}; the folders' settings live in the folders themselves.
//
// Changes are made in memory and written by saveItems(), which writes only
// when something changed. Two sources never share a folder path.
//
// Thread: the main thread.
class ORVExternalSourceItemManager : public QObject, public ORVExternalSourceList
{
    Q_OBJECT
public:
    using Item = std::shared_ptr<ORVExternalSourceItem>;

    // Reads the list from `storeFilePath` at once (fetchItems). An empty
    // path keeps the list in memory only (a one-off list of folders).
    explicit ORVExternalSourceItemManager(const QString &storeFilePath, QObject *parent = nullptr);

    QString storeFilePath() const { return m_path; }

    // Reads the file again, replacing the list. A missing file is an empty
    // list. False, with the reason, when the file is there but unreadable or
    // not a list of sources; the list is then empty, and the next save first
    // keeps the unreadable file as "<name>.unreadable" so nothing is lost.
    bool fetchItems(QString *error = nullptr);
    // Why the last fetchItems found the file unreadable; "" when it was fine.
    QString fetchError() const { return m_fetchError; }
    // Tidies the list: entries without a path and repeated paths go (the
    // first stays), and each source's path follows its bookmark.
    void rearrangeItems();

    const QList<Item> &items() const { return m_items; }
    // The source whose folder is `path` (compared in normal form), or null.
    Item itemWithPath(const QString &path) const;

    // Appends or inserts a source; false when one has the same folder
    // already. An index out of range appends.
    bool addItem(const Item &item);
    bool addItemAtIndex(const Item &item, qsizetype index);
    // Replaces the source with the same folder (by identity first, then by
    // path); false when there is none.
    bool updateItem(const Item &item);
    bool removeItem(const Item &item);
    bool moveItemMoveTo(qsizetype from, qsizetype to);

    // Writes the list atomically when it changed. False with the system's
    // reason; the list stays in memory.
    bool saveItems(QString *error);

    // As the settings file sees the list: paths, adding one, saving.
    QStringList externalSourcePaths() const override;
    void addExternalSourceWithPath(const QString &path, const QByteArray &bookmarkData) override;
    bool saveItems() override;
    bool isDirty() const { return m_dirty; }

signals:
    void itemsChanged();

private:
    bool readStore(QString *error);
    qsizetype indexOfPath(const QString &path) const;
    // By identity first, then by the folder's path.
    qsizetype indexOfItem(const Item &item) const;
    void changed();

    QString m_path;
    QList<Item> m_items;
    bool m_dirty = false;
    bool m_storeUnreadable = false;
    QString m_fetchError;
};
