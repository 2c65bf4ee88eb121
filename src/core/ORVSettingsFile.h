#pragma once

#include "core/ORVServiceItemRegistry.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

class MyPreferences;
class ORVExternalSourceList;
class ORVKeyring;

// The settings file ("*.orvoSettingData"): every exported preference, the
// library, site and backup locations, the external sources, and the
// configured publishing targets and image hosts with their secrets, to move
// one's set-up to another machine.
//
// Content: AES-128-ECB/PKCS#7 (see aes128.h) of an archive (json_archive.h)
// of one array: first the settings record, a map with "setting", "external",
// "libURL", "siteURL", "location1URL".."location3URL"; then each service item
// as its field map plus "$class" ("ORVPublishingServiceItem" or
// "ORVImagesUploadServiceItem"), a publishing item carrying its secret in
// "exString2", an image host in "extData"/"savedSecrectKeyVal".
//
// Thread: main (it reads and writes the preferences and the keyring).
class ORVSettingsFile
{
public:
    struct Sources {
        MyPreferences *prefs = nullptr;
        ORVKeyring *keyring = nullptr;
        QList<ORVServiceItemRegistry *> registries; // at most one of each kind
        ORVExternalSourceList *externalSources = nullptr;
    };

    struct ExportSummary {
        int settings = 0;
        int locations = 0;
        int externalSources = 0;
        int publishingItems = 0;
        int imagesUploadItems = 0;
        QStringList warnings; // secrets the keyring would not give, for instance
    };

    struct ImportReport {
        bool foundSomething = false; // false: not a settings file of ours, or made with another key
        int settings = 0;
        int locations = 0;
        int externalSourcesAdded = 0;
        int publishingAdded = 0;
        int publishingSkipped = 0; // present already, or never imported (Evernote)
        int imagesUploadAdded = 0;
        int imagesUploadSkipped = 0;
        int itemsWithoutRegistry = 0; // service items this build has no list for
        QStringList warnings;
    };

    explicit ORVSettingsFile(Sources sources);

    // The fixed key text of settings and services files.
    static QByteArray cipherKey();
    static QString fileExtension() { return QStringLiteral("orvoSettingData"); }

    // fetchPreferencesAndLibraryURLsDicData: the settings record.
    QVariantMap fetchPreferencesAndLibraryURLsDicData() const;
    // The whole array, secrets included.
    QVariantList exportArray(ExportSummary *summary = nullptr) const;
    // exportAllSettingAction: writes the file atomically.
    bool exportToFile(const QString &path, QString *error = nullptr, ExportSummary *summary = nullptr,
                      const QByteArray &key = cipherKey()) const;

    // importAllSettingAction: reads, deciphers and applies a file. Nothing
    // changes when nothing is found; the caller tells the user to restart.
    ImportReport importFromFile(const QString &path, const QByteArray &key = cipherKey());
    ImportReport importFromData(const QByteArray &fileData, const QByteArray &key = cipherKey());
    // settingPreferencesAndLibraryURLsDataByDic: applies a settings record.
    void settingPreferencesAndLibraryURLsDataByDic(const QVariantMap &record, ImportReport &report);

    // Whether an imported item is already configured. Publishing: Evernote
    // (15, 16) always counts as present, so it is never imported; a present
    // WizNote item (19) matches on name and serviceKey, any other on
    // serviceValue.
    static bool isHavePublishServiceItemPublishArr(const QVariantMap &item, const QList<QVariantMap> &publishArr);
    // Image hosts: a present custom host (202) matches on name, apiURL,
    // fileDataName and responseURLPath, any other on serviceValue.
    static bool isHaveImagesUploadItemImgItem(const QList<QVariantMap> &imgItems, const QVariantMap &imgItem);

private:
    ORVServiceItemRegistry *registry(ORVServiceItemRegistry::Kind kind) const;
    void importServiceItem(ORVServiceItemRegistry::Kind kind, QVariantMap item, ImportReport &report);

    Sources m_sources;
};
