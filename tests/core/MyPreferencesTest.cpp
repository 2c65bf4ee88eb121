#include "core/MyPreferences.h"
#include "core/ORVNotificationCenter.h"
#include "support/TestEnv.h"

#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct PrefsFile {
    QTemporaryDir dir;
    QString path() const { return dir.filePath(QStringLiteral("Orvo.conf")); }
};

} // namespace

TEST(MyPreferences, TableHasEveryKeyOnceWithTheExportedSubset)
{
    const auto &keys = MyPreferences::allKeys();
    EXPECT_EQ(keys.size(), 87u);
    QSet<QString> seen;
    for (const auto &k : keys) {
        EXPECT_FALSE(seen.contains(k.name)) << qPrintable(k.name);
        seen.insert(k.name);
    }

    const QStringList exported = MyPreferences::fetchAllPreferencesKeys();
    EXPECT_EQ(exported.size(), 70);
    EXPECT_TRUE(exported.contains(QStringLiteral(" isPublishToEvernoteWithAttachments")));
    EXPECT_FALSE(exported.contains(QStringLiteral("isPublishToEvernoteWithAttachments")));
    for (const char *local : {"updateIncludesPreReleases", "bookmarkForMainLibrarySaveURL", "previewDarkCSSName",
                              "backupLocationBookmark3", "isThemeNotMatchMacOSSystem", "exportPDFStyleTagVal",
                              "imageCombineSettingHeight", "skipedUpdateVersionNumber"})
        EXPECT_FALSE(exported.contains(QString::fromLatin1(local))) << local;
}

TEST(MyPreferences, FirstRunWritesDefaultsAndExplicitZeros)
{
    PrefsFile f;
    MyPreferences prefs(f.path());
    EXPECT_EQ(prefs.editorThemeName(), "solarized-light");
    EXPECT_EQ(prefs.editorDarkThemeName(), "Tomorrow");
    EXPECT_EQ(prefs.editorFontName(), "Menlo");
    EXPECT_DOUBLE_EQ(prefs.editorFontSize(), 16.0);
    EXPECT_EQ(prefs.editorTextInsetsV(), 60);
    EXPECT_EQ(prefs.editorContentMaxWidth(), 700);
    EXPECT_EQ(prefs.documentListDateformat(), "yyyy/M/d H:m aa");
    EXPECT_TRUE(prefs.isRenderTOC());
    EXPECT_TRUE(prefs.isTranslateNewlineToBRtags());
    EXPECT_FALSE(prefs.isSmartypants());
    // Written explicitly, to their zero value.
    EXPECT_TRUE(prefs.contains(QStringLiteral("isSmartypants")));
    EXPECT_TRUE(prefs.contains(QStringLiteral("typewriterScrollingState")));
    // Never written: reads as zero and is absent from the store.
    EXPECT_EQ(prefs.backupPerMinutes(), 0);
    EXPECT_FALSE(prefs.contains(QStringLiteral("backupPerMinutes")));
    EXPECT_FALSE(prefs.firstVersionInstalled().isEmpty());
    EXPECT_EQ(prefs.firstVersionInstalled(), prefs.lastVersionInstalled());
}

TEST(MyPreferences, RepairRestoresOnlyTheKeysThatMustNeverBeEmpty)
{
    PrefsFile f;
    {
        MyPreferences prefs(f.path());
        prefs.setEditorLineSpacing(9);
        prefs.setEditorThemeName(QStringLiteral("Custom"));
    }
    {
        QSettings raw(f.path(), QSettings::IniFormat);
        raw.remove(QStringLiteral("editorThemeName"));
        raw.remove(QStringLiteral("editorLineSpacing"));
        raw.remove(QStringLiteral("editorFontInfo"));
        raw.setValue(QStringLiteral("editorContentMaxWidth"), 0);
    }
    MyPreferences prefs(f.path());
    EXPECT_EQ(prefs.editorThemeName(), "solarized-light");
    EXPECT_EQ(prefs.editorFontName(), "Menlo");
    EXPECT_EQ(prefs.editorContentMaxWidth(), 700);
    // Not on the repair list: stays 0 rather than going back to 4.
    EXPECT_EQ(prefs.editorLineSpacing(), 0);
}

TEST(MyPreferences, TypedTextInputIsCheckedAgainstTheKeyType)
{
    PrefsFile f;
    MyPreferences prefs(f.path());
    QString error;
    EXPECT_FALSE(prefs.setValueFromText(QStringLiteral("editorLineSpacing"), QStringLiteral("wide"), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("integer"))) << qPrintable(error);
    EXPECT_EQ(prefs.editorLineSpacing(), 4);

    EXPECT_FALSE(prefs.setValueFromText(QStringLiteral("isRenderTOC"), QStringLiteral("maybe"), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("boolean")));
    EXPECT_FALSE(prefs.setValueFromText(QStringLiteral("editorFontInfo"), QStringLiteral("[1]"), &error));
    EXPECT_FALSE(prefs.setValueFromText(QStringLiteral("noSuchKey"), QStringLiteral("1"), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("unknown")));

    EXPECT_TRUE(prefs.setValueFromText(QStringLiteral("editorLineSpacing"), QStringLiteral("-12"), &error));
    EXPECT_EQ(prefs.editorLineSpacing(), -12);
    EXPECT_TRUE(prefs.setValueFromText(QStringLiteral("isRenderTOC"), QStringLiteral("no"), &error));
    EXPECT_FALSE(prefs.isRenderTOC());
    EXPECT_TRUE(prefs.setValueFromText(QStringLiteral("editorFontInfo"),
                                       QStringLiteral(R"({"name":"DejaVu Sans Mono","size":13})"), &error));
    EXPECT_EQ(prefs.editorFontName(), "DejaVu Sans Mono");
    EXPECT_DOUBLE_EQ(prefs.editorFontSize(), 13.0);
    EXPECT_TRUE(prefs.setValueFromText(QStringLiteral("backupLastBackupDate"), QStringLiteral("2024-02-03T04:05:06Z"), &error));
    EXPECT_EQ(prefs.backupLastBackupDate().toSecsSinceEpoch(), 1706933106);
    EXPECT_TRUE(prefs.setValueFromText(QStringLiteral("bookmarkForMainLibrarySaveURL"), QStringLiteral("L3RtcC94"), &error));
    EXPECT_EQ(prefs.bookmarkForMainLibrarySaveURL(), QByteArray("/tmp/x"));
}

TEST(MyPreferences, ValuesSurviveReopeningAndEveryChangeIsAnnounced)
{
    PrefsFile f;
    QStringList announced;
    QObject context;
    ORVNotificationCenter::defaultCenter()->addObserver(
        PAPreferencesDidChangeNotification, &context,
        [&](const ORVNotification &n) { announced << n.userInfo.value(QStringLiteral("key")).toString(); });
    {
        MyPreferences prefs(f.path());
        announced.clear();
        prefs.setIsEnableMath(false);
        prefs.setEditorFontNamesHistory({QStringLiteral("A"), QStringLiteral("B")});
        prefs.setLibraryDefaultSortType(5);
    }
    EXPECT_EQ(announced, (QStringList{"isEnableMath", "editorFontNamesHistory", "libraryDefaultSortType"}));
    MyPreferences again(f.path());
    EXPECT_FALSE(again.isEnableMath());
    EXPECT_EQ(again.editorFontNamesHistory(), (QVariantList{QStringLiteral("A"), QStringLiteral("B")}));
    EXPECT_EQ(again.libraryDefaultSortType(), 5);
}

TEST(MyPreferences, SharedInstanceUsesTheXdgConfigFolder)
{
    const QString path = MyPreferences::sharedInstance()->settingsFilePath();
    EXPECT_TRUE(path.startsWith(orvotest::tempHome())) << qPrintable(path);
    EXPECT_TRUE(path.endsWith(QStringLiteral("/Orvo/Orvo.conf"))) << qPrintable(path);
}
