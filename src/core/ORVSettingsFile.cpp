#include "core/ORVSettingsFile.h"

#include "core/MyPreferences.h"
#include "core/ORVBookmark.h"
#include "core/ORVExternalSourceList.h"
#include "core/aes128.h"
#include "core/json_archive.h"
#include "platform/ORVKeyring.h"

#include <QFile>
#include <QSaveFile>

namespace {

const QString kClassKey = QStringLiteral("$class");
const QString kSecretKey = QStringLiteral("savedSecrectKeyVal");

// The five location preferences and their names in the settings record.
const QList<QPair<QString, QString>> &locationKeys()
{
    static const QList<QPair<QString, QString>> keys = {
        {QStringLiteral("libURL"), QStringLiteral("bookmarkForMainLibrarySaveURL")},
        {QStringLiteral("siteURL"), QStringLiteral("bookmarkForMainLibraryBuildSiteURL")},
        {QStringLiteral("location1URL"), QStringLiteral("backupLocationBookmark1")},
        {QStringLiteral("location2URL"), QStringLiteral("backupLocationBookmark2")},
        {QStringLiteral("location3URL"), QStringLiteral("backupLocationBookmark3")},
    };
    return keys;
}

QString className(ORVServiceItemRegistry::Kind kind)
{
    return kind == ORVServiceItemRegistry::Kind::Publishing ? QStringLiteral("ORVPublishingServiceItem")
                                                            : QStringLiteral("ORVImagesUploadServiceItem");
}

QString keyringService(ORVServiceItemRegistry::Kind kind)
{
    return kind == ORVServiceItemRegistry::Kind::Publishing ? kORVKeyringPublishingService
                                                            : kORVKeyringImagesUploadService;
}

// Text fields compare as text; a field that is absent matches nothing.
bool sameText(const QVariantMap &a, const QVariantMap &b, const QString &key)
{
    return a.contains(key) && b.contains(key) && a.value(key).toString() == b.value(key).toString();
}

} // namespace

ORVSettingsFile::ORVSettingsFile(Sources sources) : m_sources(std::move(sources)) {}

QByteArray ORVSettingsFile::cipherKey()
{
    // A fixed text of the program; files made by a build with another key
    // cannot be read by this one.
    return QByteArrayLiteral("Orvo.Settings.01");
}

ORVServiceItemRegistry *ORVSettingsFile::registry(ORVServiceItemRegistry::Kind kind) const
{
    for (ORVServiceItemRegistry *r : m_sources.registries)
        if (r && r->serviceItemKind() == kind)
            return r;
    return nullptr;
}

QVariantMap ORVSettingsFile::fetchPreferencesAndLibraryURLsDicData() const
{
    MyPreferences *prefs = m_sources.prefs;
    QVariantMap setting;
    for (const QString &key : MyPreferences::fetchAllPreferencesKeys())
        if (prefs->contains(key)) // " isPublishToEvernoteWithAttachments" never is
            setting.insert(key, prefs->value(key));

    QVariantList external;
    if (m_sources.externalSources)
        for (const QString &path : m_sources.externalSources->externalSourcePaths())
            if (const QByteArray b = ORVBookmark::bookmarkDataWithPath(path); !b.isEmpty())
                external << b;

    QVariantMap record{{QStringLiteral("setting"), setting}, {QStringLiteral("external"), external}};
    for (const auto &[recordKey, prefKey] : locationKeys()) {
        const QByteArray bookmark = prefs->value(prefKey).toByteArray();
        if (!bookmark.isEmpty())
            record.insert(recordKey, bookmark);
    }
    return record;
}

QVariantList ORVSettingsFile::exportArray(ExportSummary *summary) const
{
    ExportSummary local;
    ExportSummary &s = summary ? *summary : local;
    const QVariantMap record = fetchPreferencesAndLibraryURLsDicData();
    s.settings = int(record.value(QStringLiteral("setting")).toMap().size());
    s.externalSources = int(record.value(QStringLiteral("external")).toList().size());
    s.locations = 0;
    for (const auto &[recordKey, prefKey] : locationKeys())
        s.locations += record.contains(recordKey) ? 1 : 0;

    QVariantList array{record};
    for (const auto kind : {ORVServiceItemRegistry::Kind::Publishing, ORVServiceItemRegistry::Kind::ImagesUpload}) {
        ORVServiceItemRegistry *r = registry(kind);
        if (!r)
            continue;
        for (QVariantMap item : r->archivedServiceItems()) {
            const QString account = item.value(QStringLiteral("serviceValue")).toString();
            QString why;
            const std::optional<QString> secret =
                account.isEmpty() || !m_sources.keyring
                    ? std::nullopt
                    : m_sources.keyring->passwordForServiceAccount(keyringService(kind), account, &why);
            if (!why.isEmpty())
                s.warnings << QStringLiteral("the secret of \"%1\" could not be read: %2")
                                  .arg(item.value(QStringLiteral("name")).toString(), why);
            if (secret && !secret->isEmpty()) {
                if (kind == ORVServiceItemRegistry::Kind::Publishing) {
                    item.insert(QStringLiteral("exString2"), *secret);
                } else {
                    QVariantMap ext = item.value(QStringLiteral("extData")).toMap();
                    ext.insert(kSecretKey, *secret);
                    item.insert(QStringLiteral("extData"), ext);
                }
            }
            item.insert(kClassKey, className(kind));
            array << item;
            (kind == ORVServiceItemRegistry::Kind::Publishing ? s.publishingItems : s.imagesUploadItems) += 1;
        }
    }
    return array;
}

bool ORVSettingsFile::exportToFile(const QString &path, QString *error, ExportSummary *summary,
                                   const QByteArray &key) const
{
    const std::optional<QByteArray> sealed =
        AES128EncryptedDataWithKey(archivedDataWithRootObject(exportArray(summary)), key);
    if (!sealed) {
        if (error)
            *error = QStringLiteral("the settings could not be enciphered");
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*sealed) != sealed->size() || !file.commit()) {
        if (error)
            *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

ORVSettingsFile::ImportReport ORVSettingsFile::importFromFile(const QString &path, const QByteArray &key)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ImportReport report;
        report.warnings << QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return report;
    }
    return importFromData(file.readAll(), key);
}

ORVSettingsFile::ImportReport ORVSettingsFile::importFromData(const QByteArray &fileData, const QByteArray &key)
{
    ImportReport report;
    const std::optional<QByteArray> plain = AES128DecryptedDataWithKey(fileData, key);
    const std::optional<QVariant> root = plain ? unarchiveObjectWithData(*plain) : std::nullopt;
    if (!root || root->typeId() != QMetaType::QVariantList)
        return report;
    const QVariantList array = root->toList();
    // Only a file whose elements are all ours counts: a stray array that
    // happens to decipher is not applied halfway.
    for (const QVariant &element : array)
        if (element.typeId() != QMetaType::QVariantMap)
            return report;

    for (const QVariant &element : array) {
        const QVariantMap map = element.toMap();
        const QString cls = map.value(kClassKey).toString();
        if (cls == className(ORVServiceItemRegistry::Kind::Publishing)) {
            importServiceItem(ORVServiceItemRegistry::Kind::Publishing, map, report);
        } else if (cls == className(ORVServiceItemRegistry::Kind::ImagesUpload)) {
            importServiceItem(ORVServiceItemRegistry::Kind::ImagesUpload, map, report);
        } else if (map.contains(QStringLiteral("setting"))) {
            settingPreferencesAndLibraryURLsDataByDic(map, report);
        } else {
            continue;
        }
        report.foundSomething = true;
    }
    if (!report.foundSomething)
        return report;
    for (ORVServiceItemRegistry *r : m_sources.registries)
        if (r && !r->saveServices())
            report.warnings << QStringLiteral("the %1 list could not be saved")
                                   .arg(r->serviceItemKind() == ORVServiceItemRegistry::Kind::Publishing
                                            ? QStringLiteral("publishing")
                                            : QStringLiteral("image host"));
    if (!m_sources.prefs->synchronize())
        report.warnings << QStringLiteral("the preferences could not be written to %1")
                               .arg(m_sources.prefs->settingsFilePath());
    return report;
}

void ORVSettingsFile::importServiceItem(ORVServiceItemRegistry::Kind kind, QVariantMap item, ImportReport &report)
{
    const bool publishing = kind == ORVServiceItemRegistry::Kind::Publishing;
    ORVServiceItemRegistry *r = registry(kind);
    if (!r) {
        ++report.itemsWithoutRegistry;
        return;
    }
    item.remove(kClassKey);
    const QList<QVariantMap> present = r->archivedServiceItems();
    const bool have = publishing ? isHavePublishServiceItemPublishArr(item, present)
                                 : isHaveImagesUploadItemImgItem(present, item);
    if (have) {
        ++(publishing ? report.publishingSkipped : report.imagesUploadSkipped);
        return;
    }
    QString secret;
    if (publishing) {
        secret = item.value(QStringLiteral("exString2")).toString();
        item.insert(QStringLiteral("exString2"), QStringLiteral(""));
    } else {
        QVariantMap ext = item.value(QStringLiteral("extData")).toMap();
        secret = ext.take(kSecretKey).toString();
        if (item.contains(QStringLiteral("extData")))
            item.insert(QStringLiteral("extData"), ext);
    }
    if (!secret.isEmpty()) {
        const QString account = item.value(QStringLiteral("serviceValue")).toString();
        QString why;
        if (!m_sources.keyring || account.isEmpty() ||
            !m_sources.keyring->setPasswordForServiceAccount(secret, keyringService(kind), account, &why)) {
            // An item without its secret would fail at its first use; better
            // not to add it and say why.
            report.warnings << QStringLiteral("\"%1\" was not added: its secret could not be stored%2")
                                   .arg(item.value(QStringLiteral("name")).toString(),
                                        why.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(why));
            return;
        }
    }
    r->addArchivedServiceItem(item);
    ++(publishing ? report.publishingAdded : report.imagesUploadAdded);
}

void ORVSettingsFile::settingPreferencesAndLibraryURLsDataByDic(const QVariantMap &record, ImportReport &report)
{
    MyPreferences *prefs = m_sources.prefs;
    const QStringList exported = MyPreferences::fetchAllPreferencesKeys();
    const QVariantMap setting = record.value(QStringLiteral("setting")).toMap();
    for (auto it = setting.begin(); it != setting.end(); ++it) {
        // Keys that stay on the machine stay there even if a file names them.
        if (!exported.contains(it.key()))
            continue;
        QString why;
        if (prefs->setValue(it.key(), it.value(), &why))
            ++report.settings;
        else
            report.warnings << why;
    }

    const QVariantList external = record.value(QStringLiteral("external")).toList();
    if (!external.isEmpty() && m_sources.externalSources) {
        QStringList present = m_sources.externalSources->externalSourcePaths();
        for (const QVariant &b : external) {
            const std::optional<QString> path = ORVBookmark::resolveBookmarkData(b.toByteArray());
            if (!path || present.contains(*path))
                continue; // not on this machine, or already a source
            m_sources.externalSources->addExternalSourceWithPath(*path, b.toByteArray());
            present << *path;
            ++report.externalSourcesAdded;
        }
        if (!m_sources.externalSources->saveItems())
            report.warnings << QStringLiteral("the external sources could not be saved");
    } else if (!external.isEmpty()) {
        report.warnings << QStringLiteral("%1 external folders were left aside: this build keeps no external sources")
                               .arg(external.size());
    }

    // The locations are taken as they are, even when they do not resolve
    // here: the next start finds such a library unusable and asks for one.
    for (const auto &[recordKey, prefKey] : locationKeys()) {
        if (!record.contains(recordKey))
            continue;
        prefs->setValue(prefKey, record.value(recordKey).toByteArray());
        ++report.locations;
    }
}

bool ORVSettingsFile::isHavePublishServiceItemPublishArr(const QVariantMap &item, const QList<QVariantMap> &publishArr)
{
    // Evernote (15) and its China service (16) sign in per machine.
    const qint64 type = item.value(QStringLiteral("serviceType")).toLongLong();
    if (type == 15 || type == 16)
        return true;
    for (const QVariantMap &present : publishArr) {
        if (present.value(QStringLiteral("serviceType")).toLongLong() == 19) { // WizNote
            if (sameText(present, item, QStringLiteral("name")) && sameText(present, item, QStringLiteral("serviceKey")))
                return true;
        } else if (sameText(present, item, QStringLiteral("serviceValue"))) {
            return true;
        }
    }
    return false;
}

bool ORVSettingsFile::isHaveImagesUploadItemImgItem(const QList<QVariantMap> &imgItems, const QVariantMap &imgItem)
{
    for (const QVariantMap &present : imgItems) {
        if (present.value(QStringLiteral("serviceType")).toLongLong() == 202) { // custom form host
            if (sameText(present, imgItem, QStringLiteral("name")) && sameText(present, imgItem, QStringLiteral("apiURL")) &&
                sameText(present, imgItem, QStringLiteral("fileDataName")) &&
                sameText(present, imgItem, QStringLiteral("responseURLPath")))
                return true;
        } else if (sameText(present, imgItem, QStringLiteral("serviceValue"))) {
            return true;
        }
    }
    return false;
}
