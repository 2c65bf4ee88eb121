#pragma once

#include "core/ORVRecentDocumentManager.h"

inline const QString kORVExternalRecentDocumentManagerItemsDidChanged =
    QStringLiteral("kORVExternalRecentDocumentManagerItemsDidChanged");

// Recently opened files outside the library, oldest first. Items are paths.
// File: externalRecentDocumentItems.data. There is no "remove all".
class ORVExternalRecentDocumentManager : public ORVRecentDocumentManager
{
public:
    // The list keeps this many; a new item pushes the oldest (first) out.
    static constexpr int kMaximumItems = 150;

    explicit ORVExternalRecentDocumentManager(const QString &applicationSupportDir);
};
