#pragma once

#include "core/ORVRecentDocumentManager.h"

#include <QVariantMap>

inline const QString kORVLibraryRecentDocumentManagerItemsDidChanged =
    QStringLiteral("kORVLibraryRecentDocumentManagerItemsDidChanged");

// The library's recently opened documents ("Recent" in the tree), newest
// first. Items are records {"libName": "main", "uuid": <document id>}. File:
// libraryRecentDocumentItemsV201.data.
class ORVLibraryRecentDocumentManager : public ORVRecentDocumentManager
{
public:
    // The list keeps this many; a new item pushes the oldest (last) out.
    static constexpr int kMaximumItems = 350;

    explicit ORVLibraryRecentDocumentManager(const QString &applicationSupportDir);

    static QVariantMap itemWithLibNameUUID(const QString &libName, qint64 uuid);

    // Empties the list and writes it at once.
    bool removeAllItems();
};
