#include "core/ORVLibraryRecentDocumentManager.h"

#include <QDir>

ORVLibraryRecentDocumentManager::ORVLibraryRecentDocumentManager(const QString &applicationSupportDir)
    : ORVRecentDocumentManager(QDir(applicationSupportDir).filePath(QStringLiteral("libraryRecentDocumentItemsV201.data")),
                               kORVLibraryRecentDocumentManagerItemsDidChanged, NewItems::First, kMaximumItems)
{
}

QVariantMap ORVLibraryRecentDocumentManager::itemWithLibNameUUID(const QString &libName, qint64 uuid)
{
    return {{QStringLiteral("libName"), libName}, {QStringLiteral("uuid"), uuid}};
}

bool ORVLibraryRecentDocumentManager::removeAllItems()
{
    replaceAll({});
    return saveItems();
}
