#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>

// What the two recent document lists share: items kept in an archive file in
// the application support folder, read on first access, written by
// saveItems only when something changed, and a notification on each change.
// The two lists differ on purpose in where a new item goes and which item
// leaves when the list is full (see the two subclasses).
//
// Thread: the main thread.
class ORVRecentDocumentManager
{
public:
    virtual ~ORVRecentDocumentManager();

    QVariantList items();
    int itemCount();
    // addItem:. An equal item already in the list moves rather than repeats.
    void addItem(const QVariant &item);
    // Takes an item out (one that no longer exists, say). False when absent.
    bool removeItem(const QVariant &item);
    // Writes the list when it changed since the last write. True when the
    // file is up to date.
    bool saveItems();

    const QString &filePath() const { return m_path; }

protected:
    enum class NewItems { First, Last };
    ORVRecentDocumentManager(QString filePath, QString notificationName, NewItems newItems, int limit);
    void replaceAll(const QVariantList &items);

private:
    void load();
    void changed();

    QString m_path;
    QString m_notification;
    NewItems m_newItems;
    int m_limit;
    bool m_loaded = false;
    bool m_dirty = false;
    QVariantList m_items;
};
