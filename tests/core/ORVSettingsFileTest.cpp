#include "core/MyPreferences.h"
#include "core/ORVBookmark.h"
#include "core/ORVExternalSourceList.h"
#include "core/ORVSettingsFile.h"
#include "platform/ORVMemoryKeyring.h"
#include "support/TestEnv.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// A service list as the publishing and image host managers keep it.
class FakeRegistry : public ORVServiceItemRegistry
{
public:
    explicit FakeRegistry(Kind kind) : kind(kind) {}
    Kind serviceItemKind() const override { return kind; }
    QList<QVariantMap> archivedServiceItems() const override { return items; }
    void addArchivedServiceItem(const QVariantMap &item) override { items << item; }
    bool saveServices() override
    {
        ++saves;
        return true;
    }
    Kind kind;
    QList<QVariantMap> items;
    int saves = 0;
};

class FakeSources : public ORVExternalSourceList
{
public:
    QStringList externalSourcePaths() const override { return paths; }
    void addExternalSourceWithPath(const QString &path, const QByteArray &) override { paths << path; }
    bool saveItems() override { return true; }
    QStringList paths;
};

QVariantMap publishing(qint64 type, const QString &name, const QString &serviceKey, const QString &serviceValue)
{
    return {{QStringLiteral("serviceType"), type},          {QStringLiteral("name"), name},
            {QStringLiteral("serviceKey"), serviceKey},     {QStringLiteral("serviceValue"), serviceValue},
            {QStringLiteral("exString2"), QStringLiteral("")}, {QStringLiteral("blogId"), qint64(11)}};
}

QVariantMap imageHost(qint64 type, const QString &name, const QString &serviceValue, const QString &apiURL)
{
    return {{QStringLiteral("serviceType"), type},
            {QStringLiteral("name"), name},
            {QStringLiteral("serviceValue"), serviceValue},
            {QStringLiteral("apiURL"), apiURL},
            {QStringLiteral("fileDataName"), QStringLiteral("file")},
            {QStringLiteral("responseURLPath"), QStringLiteral("data/url")},
            {QStringLiteral("extData"), QVariantMap{{QStringLiteral("imgSuffix"), QStringLiteral("!w")}}}};
}

// One machine: its preferences, keyring, service lists and sources.
struct Machine {
    explicit Machine(const QTemporaryDir &dir, const QString &name)
        : prefs(dir.filePath(name + QStringLiteral(".conf")))
    {
    }
    ORVSettingsFile file()
    {
        return ORVSettingsFile({&prefs, &keyring, {&pub, &img}, &sources});
    }
    MyPreferences prefs;
    ORVMemoryKeyring keyring;
    FakeRegistry pub{ORVServiceItemRegistry::Kind::Publishing};
    FakeRegistry img{ORVServiceItemRegistry::Kind::ImagesUpload};
    FakeSources sources;
};

} // namespace

TEST(ORVSettingsFile, CarriesSettingsLocationsServicesAndSecretsToAnotherMachine)
{
    QTemporaryDir dir;
    Machine from(dir, QStringLiteral("from"));
    from.prefs.setEditorThemeName(QStringLiteral("Custom Theme"));
    from.prefs.setEditorLineSpacing(9);
    from.prefs.setIsSmartypants(true);
    from.prefs.setEditorFontInfo({{QStringLiteral("name"), QStringLiteral("Iosevka")}, {QStringLiteral("size"), 15.5}});
    from.prefs.setEditorFontNamesHistory({QStringLiteral("Iosevka"), QStringLiteral("Menlo")});
    from.prefs.setBackupLastBackupDate(QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC));
    from.prefs.setPreviewDarkCSSName(QStringLiteral("stays here"));
    from.prefs.setIsPublishToEvernoteWithAttachments(true);
    from.prefs.setBookmarkForMainLibrarySaveURL(ORVBookmark::bookmarkDataWithPath(dir.path()));
    from.sources.paths << dir.path();
    from.pub.items = {publishing(10, QStringLiteral("My blog"), QStringLiteral("me"), QStringLiteral("acct-1")),
                      publishing(15, QStringLiteral("Evernote"), QStringLiteral("host"), QStringLiteral("acct-2")),
                      publishing(19, QStringLiteral("Wiz"), QStringLiteral("me@example.com"), QStringLiteral("acct-3"))};
    from.img.items = {imageHost(203, QStringLiteral("Qiniu"), QStringLiteral("acct-4"), QStringLiteral("https://up.qiniu")),
                      imageHost(202, QStringLiteral("Mine"), QString(), QStringLiteral("https://img.example/upload"))};
    ASSERT_TRUE(from.keyring.setPasswordForServiceAccount(QStringLiteral("blog password"), kORVKeyringPublishingService,
                                                          QStringLiteral("acct-1")));
    ASSERT_TRUE(from.keyring.setPasswordForServiceAccount(QStringLiteral("qiniu secret"), kORVKeyringImagesUploadService,
                                                          QStringLiteral("acct-4")));

    const QString path = dir.filePath(QStringLiteral("mine.orvoSettingData"));
    ORVSettingsFile::ExportSummary summary;
    QString error;
    ASSERT_TRUE(from.file().exportToFile(path, &error, &summary)) << qPrintable(error);
    EXPECT_EQ(summary.publishingItems, 3);
    EXPECT_EQ(summary.imagesUploadItems, 2);
    EXPECT_EQ(summary.locations, 1);
    const QByteArray bytes = orvotest::readFile(path);
    EXPECT_FALSE(bytes.contains("blog password"));
    EXPECT_FALSE(bytes.contains("Custom Theme"));
    // The secret stays out of the items at home.
    EXPECT_EQ(from.pub.items[0].value(QStringLiteral("exString2")).toString(), QString());

    Machine to(dir, QStringLiteral("to"));
    to.prefs.setIsPublishToEvernoteWithAttachments(false);
    const ORVSettingsFile::ImportReport report = to.file().importFromFile(path);
    ASSERT_TRUE(report.foundSomething);
    EXPECT_EQ(to.prefs.editorThemeName(), QStringLiteral("Custom Theme"));
    EXPECT_EQ(to.prefs.editorLineSpacing(), 9);
    EXPECT_TRUE(to.prefs.isSmartypants());
    EXPECT_EQ(to.prefs.editorFontName(), QStringLiteral("Iosevka"));
    EXPECT_DOUBLE_EQ(to.prefs.editorFontSize(), 15.5);
    EXPECT_EQ(to.prefs.editorFontNamesHistory().size(), 2);
    EXPECT_EQ(to.prefs.backupLastBackupDate().toSecsSinceEpoch(), 1700000000);
    EXPECT_EQ(to.prefs.previewDarkCSSName(), QStringLiteral("orvo-solarized-dark")); // kept on the machine
    EXPECT_FALSE(to.prefs.isPublishToEvernoteWithAttachments());                       // the leading-space key
    EXPECT_EQ(to.prefs.bookmarkForMainLibrarySaveURL(), ORVBookmark::bookmarkDataWithPath(dir.path()));
    EXPECT_EQ(to.sources.paths, QStringList({dir.path()}));

    ASSERT_EQ(to.pub.items.size(), 2); // Evernote signs in per machine
    EXPECT_EQ(to.pub.items[0].value(QStringLiteral("name")).toString(), QStringLiteral("My blog"));
    EXPECT_EQ(to.pub.items[0].value(QStringLiteral("exString2")).toString(), QString());
    EXPECT_FALSE(to.pub.items[0].contains(QStringLiteral("$class")));
    EXPECT_EQ(to.keyring.passwordForServiceAccount(kORVKeyringPublishingService, QStringLiteral("acct-1")).value_or(QString()),
              QStringLiteral("blog password"));
    ASSERT_EQ(to.img.items.size(), 2);
    EXPECT_FALSE(to.img.items[0].value(QStringLiteral("extData")).toMap().contains(QStringLiteral("savedSecrectKeyVal")));
    EXPECT_EQ(to.img.items[0].value(QStringLiteral("extData")).toMap().value(QStringLiteral("imgSuffix")).toString(),
              QStringLiteral("!w"));
    EXPECT_EQ(to.keyring.passwordForServiceAccount(kORVKeyringImagesUploadService, QStringLiteral("acct-4")).value_or(QString()),
              QStringLiteral("qiniu secret"));
    EXPECT_EQ(report.publishingAdded, 2);
    EXPECT_EQ(report.publishingSkipped, 1);
    EXPECT_EQ(to.pub.saves, 1);
    EXPECT_EQ(to.img.saves, 1);

    // A second import adds nothing.
    const ORVSettingsFile::ImportReport again = to.file().importFromFile(path);
    EXPECT_TRUE(again.foundSomething);
    EXPECT_EQ(to.pub.items.size(), 2);
    EXPECT_EQ(to.img.items.size(), 2);
    EXPECT_EQ(to.sources.paths.size(), 1);
    EXPECT_EQ(again.publishingAdded + again.imagesUploadAdded + again.externalSourcesAdded, 0);
}

TEST(ORVSettingsFile, AFileOfAnotherKeyOrOfOtherBytesChangesNothing)
{
    QTemporaryDir dir;
    Machine from(dir, QStringLiteral("from"));
    from.prefs.setEditorThemeName(QStringLiteral("Theirs"));
    from.pub.items = {publishing(10, QStringLiteral("Blog"), QStringLiteral("me"), QStringLiteral("acct"))};
    const QString foreign = dir.filePath(QStringLiteral("foreign.orvoSettingData"));
    ASSERT_TRUE(from.file().exportToFile(foreign, nullptr, nullptr, "another build's key"));

    Machine to(dir, QStringLiteral("to"));
    const QVariantMap before = to.prefs.dictionaryRepresentation();
    for (const QByteArray &content : {orvotest::readFile(foreign), QByteArray("plain text, not ours"), QByteArray()}) {
        const ORVSettingsFile::ImportReport report = to.file().importFromData(content);
        EXPECT_FALSE(report.foundSomething);
        EXPECT_EQ(to.prefs.dictionaryRepresentation(), before);
        EXPECT_TRUE(to.pub.items.isEmpty());
        EXPECT_EQ(to.pub.saves, 0);
    }
    const ORVSettingsFile::ImportReport missing = to.file().importFromFile(dir.filePath(QStringLiteral("absent")));
    EXPECT_FALSE(missing.foundSomething);
    EXPECT_FALSE(missing.warnings.isEmpty());
}

TEST(ORVSettingsFile, ItemsOfAListThisBuildLacksAreLeftAside)
{
    QTemporaryDir dir;
    Machine from(dir, QStringLiteral("from"));
    from.pub.items = {publishing(10, QStringLiteral("Blog"), QStringLiteral("me"), QStringLiteral("acct"))};
    const QString path = dir.filePath(QStringLiteral("s.orvoSettingData"));
    ASSERT_TRUE(from.file().exportToFile(path));

    MyPreferences prefs(dir.filePath(QStringLiteral("bare.conf")));
    ORVMemoryKeyring keyring;
    ORVSettingsFile bare({&prefs, &keyring, {}, nullptr});
    const ORVSettingsFile::ImportReport report = bare.importFromFile(path);
    EXPECT_TRUE(report.foundSomething);
    EXPECT_EQ(report.itemsWithoutRegistry, 1);
}

TEST(ORVSettingsFile, ServiceMatchingRules)
{
    const QVariantMap blog = publishing(10, QStringLiteral("Blog"), QStringLiteral("me"), QStringLiteral("acct-1"));
    const QVariantMap wiz = publishing(19, QStringLiteral("Wiz"), QStringLiteral("me@example.com"), QStringLiteral("acct-2"));
    for (qint64 evernote : {15, 16})
        EXPECT_TRUE(ORVSettingsFile::isHavePublishServiceItemPublishArr(
            publishing(evernote, QStringLiteral("E"), QStringLiteral("h"), QStringLiteral("x")), {}));
    EXPECT_TRUE(ORVSettingsFile::isHavePublishServiceItemPublishArr(
        publishing(12, QStringLiteral("Other name"), QStringLiteral("x"), QStringLiteral("acct-1")), {blog}));
    EXPECT_FALSE(ORVSettingsFile::isHavePublishServiceItemPublishArr(
        publishing(10, QStringLiteral("Blog"), QStringLiteral("me"), QStringLiteral("acct-9")), {blog}));
    // WizNote: name and account name decide, not the keyring account.
    EXPECT_TRUE(ORVSettingsFile::isHavePublishServiceItemPublishArr(
        publishing(19, QStringLiteral("Wiz"), QStringLiteral("me@example.com"), QStringLiteral("new")), {wiz}));
    EXPECT_FALSE(ORVSettingsFile::isHavePublishServiceItemPublishArr(
        publishing(19, QStringLiteral("Wiz"), QStringLiteral("you@example.com"), QStringLiteral("acct-2")), {wiz}));

    const QVariantMap custom = imageHost(202, QStringLiteral("Mine"), QString(), QStringLiteral("https://a/upload"));
    EXPECT_TRUE(ORVSettingsFile::isHaveImagesUploadItemImgItem({custom}, custom));
    QVariantMap otherField = custom;
    otherField.insert(QStringLiteral("responseURLPath"), QStringLiteral("url"));
    EXPECT_FALSE(ORVSettingsFile::isHaveImagesUploadItemImgItem({custom}, otherField));
    const QVariantMap qiniu = imageHost(203, QStringLiteral("Q"), QStringLiteral("key"), QStringLiteral("https://q"));
    QVariantMap renamed = qiniu;
    renamed.insert(QStringLiteral("name"), QStringLiteral("Renamed"));
    EXPECT_TRUE(ORVSettingsFile::isHaveImagesUploadItemImgItem({qiniu}, renamed));
    QVariantMap noAccount = qiniu;
    noAccount.remove(QStringLiteral("serviceValue"));
    EXPECT_FALSE(ORVSettingsFile::isHaveImagesUploadItemImgItem({noAccount}, noAccount));
}
