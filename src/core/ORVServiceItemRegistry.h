#pragma once

#include <QList>
#include <QString>
#include <QVariantMap>

// A configured list of services whose items travel in the settings file:
// the publishing targets and the image hosts. Their managers implement this
// and register with AppDelegate::registerServiceItemRegistry when they are
// made; the settings export and import then carry their items, with the
// secrets from the keyring. Without a registered list the settings file
// carries preferences and locations only, and import leaves service items
// in a file aside (and says so).
//
// Items are exchanged as their archive: field name to value over the item's
// `mutableKeys` (serviceType, name, serviceValue, ...). Thread: main.
class ORVServiceItemRegistry
{
public:
    enum class Kind {
        Publishing,   // ORVPublishingServiceItem, keyring service "OrvoPublishingService"
        ImagesUpload, // ORVImagesUploadServiceItem, keyring service "OrvoImagesUploadService"
    };

    virtual ~ORVServiceItemRegistry() = default;

    virtual Kind serviceItemKind() const = 0;
    // Every item in the user's order, without secrets (they stay in the keyring).
    virtual QList<QVariantMap> archivedServiceItems() const = 0;
    // addServiceItem: of an imported item. Its secret is already in the
    // keyring and out of the record.
    virtual void addArchivedServiceItem(const QVariantMap &item) = 0;
    // saveServices. False when the list could not be written.
    virtual bool saveServices() = 0;
};
