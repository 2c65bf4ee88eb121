#include "core/ORVRecentDocumentManager.h"

#include "core/ORVNotificationCenter.h"
#include "core/json_archive.h"

ORVRecentDocumentManager::ORVRecentDocumentManager(QString filePath, QString notificationName, NewItems newItems,
                                                   int limit)
    : m_path(std::move(filePath)), m_notification(std::move(notificationName)), m_newItems(newItems), m_limit(limit)
{
}

ORVRecentDocumentManager::~ORVRecentDocumentManager() = default;

void ORVRecentDocumentManager::load()
{
    if (m_loaded)
        return;
    m_loaded = true;
    const std::optional<QVariant> stored = readArchiveFile(m_path);
    if (stored && stored->typeId() == QMetaType::QVariantList)
        m_items = stored->toList();
}

QVariantList ORVRecentDocumentManager::items()
{
    load();
    return m_items;
}

int ORVRecentDocumentManager::itemCount()
{
    load();
    return int(m_items.size());
}

void ORVRecentDocumentManager::changed()
{
    m_dirty = true;
    ORVNotificationCenter::defaultCenter()->postNotification(m_notification);
}

void ORVRecentDocumentManager::addItem(const QVariant &item)
{
    load();
    m_items.removeAll(item);
    if (m_newItems == NewItems::First) {
        m_items.prepend(item);
        while (m_items.size() > m_limit)
            m_items.removeLast();
    } else {
        m_items.append(item);
        while (m_items.size() > m_limit)
            m_items.removeFirst();
    }
    changed();
}

bool ORVRecentDocumentManager::removeItem(const QVariant &item)
{
    load();
    if (m_items.removeAll(item) == 0)
        return false;
    changed();
    return true;
}

void ORVRecentDocumentManager::replaceAll(const QVariantList &items)
{
    load();
    m_items = items;
    changed();
}

bool ORVRecentDocumentManager::saveItems()
{
    if (!m_dirty)
        return true;
    if (!writeArchiveFile(m_path, m_items))
        return false;
    m_dirty = false;
    return true;
}
