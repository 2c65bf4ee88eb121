// AppDelegate: the settings file.
#include "core/AppDelegate.h"

#include "platform/ORVKeyring.h"

void AppDelegate::registerServiceItemRegistry(ORVServiceItemRegistry::Kind kind, ORVServiceItemRegistry *registry)
{
    if (registry)
        m_serviceRegistries.insert(int(kind), registry);
    else
        m_serviceRegistries.remove(int(kind));
}

void AppDelegate::registerExternalSourceList(ORVExternalSourceList *list) { m_externalSourceList = list; }

ORVSettingsFile AppDelegate::settingsFile() const
{
    ORVSettingsFile::Sources sources;
    sources.prefs = m_prefs;
    sources.keyring = ORVKeyring::sharedKeyring();
    sources.registries = m_serviceRegistries.values();
    sources.externalSources = m_externalSourceList;
    return ORVSettingsFile(sources);
}

bool AppDelegate::exportAllSettingAction(const QString &path, QString *error, ORVSettingsFile::ExportSummary *summary)
{
    return settingsFile().exportToFile(path, error, summary);
}

ORVSettingsFile::ImportReport AppDelegate::importAllSettingAction(const QString &path)
{
    ORVSettingsFile::ImportReport report = settingsFile().importFromFile(path);
    if (report.locations > 0) {
        // The library may have moved: the next use finds it anew.
        forgetLibraryManagers();
        clearAndSetupLibrarySecurityScoped();
    }
    return report;
}

QString AppDelegate::preferencesImportSuccessMessage()
{
    return QStringLiteral("Preferences import is successfully! Orvo will quit, please restart Orvo again.");
}
