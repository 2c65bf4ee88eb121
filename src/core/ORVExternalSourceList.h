#pragma once

#include <QByteArray>
#include <QStringList>

// The folders the user added as external sources, as the settings file
// sees them: it exports their locations and, on import, adds the ones this
// machine does not have yet. The external source manager implements this
// and registers with AppDelegate::registerExternalSourceList. Thread: main.
class ORVExternalSourceList
{
public:
    virtual ~ORVExternalSourceList() = default;

    // The `realURL` path of every source.
    virtual QStringList externalSourcePaths() const = 0;
    // Adds a source for the folder (its bookmark given) at the end.
    virtual void addExternalSourceWithPath(const QString &path, const QByteArray &bookmarkData) = 0;
    // saveItems. False when the list could not be written.
    virtual bool saveItems() = 0;
};
