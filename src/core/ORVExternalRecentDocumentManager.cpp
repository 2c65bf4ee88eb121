#include "core/ORVExternalRecentDocumentManager.h"

#include <QDir>

ORVExternalRecentDocumentManager::ORVExternalRecentDocumentManager(const QString &applicationSupportDir)
    : ORVRecentDocumentManager(QDir(applicationSupportDir).filePath(QStringLiteral("externalRecentDocumentItems.data")),
                               kORVExternalRecentDocumentManagerItemsDidChanged, NewItems::Last, kMaximumItems)
{
}
