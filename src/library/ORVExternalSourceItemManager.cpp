#include "library/ORVExternalSourceItemManager.h"

#include "core/ORVBookmark.h"
#include "core/ORVNotificationCenter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

ORVExternalSourceItemManager::ORVExternalSourceItemManager(const QString &storeFilePath, QObject *parent)
    : QObject(parent), m_path(storeFilePath)
{
    fetchItems();
}

bool ORVExternalSourceItemManager::fetchItems(QString *error)
{
    QString reason;
    const bool ok = readStore(&reason);
    m_fetchError = reason;
    if (error)
        *error = reason;
    emit itemsChanged();
    ORVNotificationCenter::defaultCenter()->postNotification(kORVExternalSourceItemDidChangeNotification, this);
    return ok;
}

bool ORVExternalSourceItemManager::readStore(QString *error)
{
    m_items.clear();
    m_dirty = false;
    m_storeUnreadable = false;
    QFile file(m_path);
    if (m_path.isEmpty() || !file.exists())
        return true;
    const auto unreadable = [&](const QString &why) {
        m_storeUnreadable = true;
        *error = QStringLiteral("%1: %2").arg(m_path, why);
        return false;
    };
    if (!file.open(QIODevice::ReadOnly))
        return unreadable(file.errorString());
    QJsonParseError parseError{};
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (!doc.isArray())
        return unreadable(QStringLiteral("not a list of sources (%1)")
                              .arg(parseError.error ? parseError.errorString() : QStringLiteral("wrong type")));
    for (const QJsonValue &v : doc.array()) {
        const QJsonObject o = v.toObject();
        const QString path = o.value(QStringLiteral("realURL")).toString();
        const QByteArray bookmark = QByteArray::fromBase64(o.value(QStringLiteral("bookmarkData")).toString().toLatin1());
        if (!path.isEmpty() || !bookmark.isEmpty())
            m_items.append(std::make_shared<ORVExternalSourceItem>(path, bookmark));
    }
    return true;
}

void ORVExternalSourceItemManager::rearrangeItems()
{
    QList<Item> kept;
    QStringList seen;
    for (const Item &item : std::as_const(m_items)) {
        QString path = item->resolveBookmark();
        if (path.isEmpty()) {
            // A bookmark that does not resolve keeps the last known path.
            path = item->realURL();
            if (!path.isEmpty())
                item->setBookmarkData(ORVBookmark::bookmarkDataWithPath(path));
        }
        if (path.isEmpty() || seen.contains(path))
            continue;
        seen.append(path);
        kept.append(item);
    }
    if (kept.size() != m_items.size()) {
        m_items = kept;
        changed();
    }
}

qsizetype ORVExternalSourceItemManager::indexOfPath(const QString &path) const
{
    const QString p = ORVExternalSourceItem::normalizedFolderPath(path);
    for (qsizetype i = 0; i < m_items.size(); ++i) {
        if (m_items.at(i)->realURL() == p)
            return i;
    }
    return -1;
}

ORVExternalSourceItemManager::Item ORVExternalSourceItemManager::itemWithPath(const QString &path) const
{
    const qsizetype i = indexOfPath(path);
    return i < 0 ? nullptr : m_items.at(i);
}

bool ORVExternalSourceItemManager::addItem(const Item &item) { return addItemAtIndex(item, m_items.size()); }

bool ORVExternalSourceItemManager::addItemAtIndex(const Item &item, qsizetype index)
{
    if (!item || item->realURL().isEmpty() || indexOfPath(item->realURL()) >= 0)
        return false;
    if (index < 0 || index > m_items.size())
        index = m_items.size();
    m_items.insert(index, item);
    changed();
    return true;
}

qsizetype ORVExternalSourceItemManager::indexOfItem(const Item &item) const
{
    if (!item)
        return -1;
    const qsizetype i = m_items.indexOf(item);
    return i >= 0 ? i : indexOfPath(item->realURL());
}

bool ORVExternalSourceItemManager::updateItem(const Item &item)
{
    const qsizetype i = indexOfItem(item);
    if (i < 0)
        return false;
    m_items[i] = item;
    changed();
    return true;
}

bool ORVExternalSourceItemManager::removeItem(const Item &item)
{
    const qsizetype i = indexOfItem(item);
    if (i < 0)
        return false;
    m_items.removeAt(i);
    changed();
    return true;
}

bool ORVExternalSourceItemManager::moveItemMoveTo(qsizetype from, qsizetype to)
{
    if (from < 0 || from >= m_items.size() || to < 0 || to >= m_items.size())
        return false;
    if (from != to) {
        m_items.move(from, to);
        changed();
    }
    return true;
}

void ORVExternalSourceItemManager::changed()
{
    m_dirty = true;
    emit itemsChanged();
    ORVNotificationCenter::defaultCenter()->postNotification(kORVExternalSourceItemDidChangeNotification, this);
}

QStringList ORVExternalSourceItemManager::externalSourcePaths() const
{
    QStringList paths;
    for (const Item &item : m_items)
        paths << item->realURL();
    return paths;
}

void ORVExternalSourceItemManager::addExternalSourceWithPath(const QString &path, const QByteArray &bookmarkData)
{
    addItem(std::make_shared<ORVExternalSourceItem>(path, bookmarkData));
}

bool ORVExternalSourceItemManager::saveItems() { return saveItems(nullptr); }

bool ORVExternalSourceItemManager::saveItems(QString *error)
{
    if (!m_dirty || m_path.isEmpty())
        return true;
    const auto fail = [&](const QString &message) {
        if (error)
            *error = message;
        return false;
    };
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    if (m_storeUnreadable) {
        const QString keep = m_path + QStringLiteral(".unreadable");
        QFile::remove(keep);
        if (!QFile::copy(m_path, keep))
            return fail(QStringLiteral("cannot keep a copy of the unreadable %1 before replacing it").arg(m_path));
        m_storeUnreadable = false;
    }
    QJsonArray list;
    for (const Item &item : std::as_const(m_items)) {
        list.append(QJsonObject{
            {QStringLiteral("realURL"), item->realURL()},
            {QStringLiteral("bookmarkData"), QString::fromLatin1(item->bookmarkData().toBase64())},
        });
    }
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("%1: %2").arg(m_path, file.errorString()));
    file.write(QJsonDocument(list).toJson(QJsonDocument::Indented));
    if (!file.commit())
        return fail(QStringLiteral("%1: %2").arg(m_path, file.errorString()));
    m_dirty = false;
    return true;
}
