#include "library/ORVExternalSettingData.h"
#include "library/textEncoding.h"
#include "support/TestEnv.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using orvotest::readFile;
using orvotest::writeFile;

namespace {

class ExternalSettingData : public ::testing::Test
{
protected:
    QTemporaryDir tmp;
    QString folder() const { return tmp.filePath(QStringLiteral("my.notes")); }
    QString settingFile() const { return folder() + QStringLiteral("/.OrvoMetaData/setting.json"); }
    void SetUp() override { ASSERT_TRUE(QDir().mkpath(folder())); }
};

void expectDefaults(const ORVExternalSettingData &s)
{
    EXPECT_EQ(s.name, QStringLiteral("my")); // the folder's name without extension
    EXPECT_EQ(s.mediaFloder, QStringLiteral("media"));
    EXPECT_EQ(s.fileExtension, QStringLiteral(".md"));
    EXPECT_EQ(s.newlinesToBR, 0u);
    EXPECT_EQ(s.folderType, 10u);
    EXPECT_EQ(s.orderBy, 0u);
    EXPECT_FALSE(s.autoUploadInsertedImage);
    EXPECT_TRUE(s.autoUploadInsertedImageKey.isNull());
}

} // namespace

TEST_F(ExternalSettingData, FolderWithoutFileHasDefaultsAndGetsTheFileOnFirstSave)
{
    ORVExternalSettingData s(folder());
    expectDefaults(s);
    EXPECT_FALSE(QFileInfo::exists(settingFile()));
    EXPECT_EQ(s.description(), QStringLiteral("(mediaFolder:media, fileExt:.md, newlineBR:0, folderType:10, orderBy:0)"));

    ASSERT_TRUE(s.saveData());
    const QByteArray bytes = readFile(settingFile());
    EXPECT_TRUE(bytes.contains("\n    \"folderType\": 10")) << bytes.constData(); // pretty-printed
    const QJsonObject o = QJsonDocument::fromJson(bytes).object();
    EXPECT_FALSE(o.contains(QStringLiteral("autoUploadInsertedImageKey"))); // null text is left out
    EXPECT_EQ(o.value(QStringLiteral("mediaFloder")).toString(), QStringLiteral("media"));
}

TEST_F(ExternalSettingData, RoundTripKeepsEveryField)
{
    ORVExternalSettingData s(folder());
    s.name = QString::fromUtf8("Carnet d'\xC3\xA9t\xC3\xA9");
    s.mediaFloder = QStringLiteral("assets");
    s.fileExtension = QStringLiteral(".markdown");
    s.newlinesToBR = 2;
    s.folderType = 11;
    s.orderBy = 5;
    s.autoUploadInsertedImage = true;
    s.autoUploadInsertedImageKey = QStringLiteral("host-1");
    ASSERT_TRUE(s.saveData());
    EXPECT_TRUE(readFile(settingFile()).contains("\xC3\xA9t\xC3\xA9")); // UTF-8, not escaped

    ORVExternalSettingData again(folder());
    EXPECT_EQ(again.toJson(), s.toJson());
    EXPECT_EQ(again.description(),
              QStringLiteral("(mediaFolder:assets, fileExt:.markdown, newlineBR:2, folderType:11, orderBy:5)"));
}

TEST_F(ExternalSettingData, AbsentKeysReadAsNullAndZeroOverTheDefaults)
{
    ASSERT_TRUE(writeFile(settingFile(), R"({"name": "Named"})"));
    ORVExternalSettingData s(folder());
    EXPECT_EQ(s.name, QStringLiteral("Named"));
    EXPECT_EQ(s.folderType, 0u); // not 10: the file decides
    EXPECT_TRUE(s.fileExtension.isNull());
    EXPECT_EQ(s.mediaFloder, QStringLiteral("media")); // null media folder comes back
    EXPECT_EQ(s.description(), QStringLiteral("(mediaFolder:media, fileExt:(null), newlineBR:0, folderType:0, orderBy:0)"));

    // Without a name the folder's is used; values of the wrong type read as absent.
    ASSERT_TRUE(writeFile(settingFile(), R"({"orderBy": "3", "newlinesToBR": -1, "folderType": 11})"));
    ORVExternalSettingData t(folder());
    EXPECT_EQ(t.name, QStringLiteral("my"));
    EXPECT_EQ(t.orderBy, 0u);
    EXPECT_EQ(t.newlinesToBR, 0u);
    EXPECT_EQ(t.folderType, 11u);

    // A file saved from that leaves the null extension out.
    ASSERT_TRUE(t.saveData());
    EXPECT_FALSE(QJsonDocument::fromJson(readFile(settingFile())).object().contains(QStringLiteral("fileExtension")));
}

TEST_F(ExternalSettingData, UnreadableFilesLeaveTheDefaults)
{
    for (const QByteArray &bad : {QByteArray("{not json"), QByteArray("[1, 2]"), QByteArray("caf\xE9 {}")}) {
        SCOPED_TRACE(bad.constData());
        ASSERT_TRUE(writeFile(settingFile(), bad));
        ORVExternalSettingData s(folder());
        expectDefaults(s);
        QString error;
        EXPECT_FALSE(s.fetchNewlerData(&error));
        EXPECT_TRUE(error.contains(QStringLiteral("setting.json"))) << qPrintable(error);
    }
    // A folder in place of the file is no settings file either.
    QFile::remove(settingFile());
    ASSERT_TRUE(QDir().mkpath(settingFile()));
    ORVExternalSettingData s(folder());
    expectDefaults(s);
}

TEST_F(ExternalSettingData, FileInAnotherUnicodeEncodingIsRead)
{
    const QString json = QStringLiteral("{\"name\": \"\u65e5\u8a18\", \"orderBy\": 4}");
    ASSERT_TRUE(writeFile(settingFile(), *encodeStringWithEncoding(json, ORVStringEncoding::UTF16LittleEndian, true)));
    ORVExternalSettingData s(folder());
    EXPECT_EQ(s.name, QStringLiteral("\u65e5\u8a18"));
    EXPECT_EQ(s.orderBy, 4u);
    // and is written back as UTF-8
    ASSERT_TRUE(s.saveData());
    EXPECT_TRUE(readFile(settingFile()).contains("\xE6\x97\xA5"));
}

TEST_F(ExternalSettingData, PlainFileInPlaceOfTheFolderIsReplacedOnSave)
{
    ASSERT_TRUE(writeFile(folder() + QStringLiteral("/.OrvoMetaData"), "in the way"));
    ORVExternalSettingData s(folder());
    expectDefaults(s);
    s.orderBy = 3;
    QString error;
    ASSERT_TRUE(s.saveData(&error)) << qPrintable(error);
    EXPECT_TRUE(QFileInfo(folder() + QStringLiteral("/.OrvoMetaData")).isDir());
    EXPECT_EQ(ORVExternalSettingData(folder()).orderBy, 3u);
}

TEST_F(ExternalSettingData, TextSettersCheckTypes)
{
    ORVExternalSettingData s(folder());
    QString error;
    EXPECT_TRUE(s.setValueFromText(QStringLiteral("folderType"), QStringLiteral("11"), &error));
    EXPECT_EQ(s.folderType, 11u);
    EXPECT_TRUE(s.setValueFromText(QStringLiteral("autoUploadInsertedImage"), QStringLiteral("yes")));
    EXPECT_TRUE(s.autoUploadInsertedImage);
    EXPECT_FALSE(s.setValueFromText(QStringLiteral("orderBy"), QStringLiteral("-1"), &error));
    EXPECT_FALSE(s.setValueFromText(QStringLiteral("orderBy"), QStringLiteral("three"), &error));
    EXPECT_FALSE(s.setValueFromText(QStringLiteral("autoUploadInsertedImage"), QStringLiteral("maybe"), &error));
    EXPECT_FALSE(s.setValueFromText(QStringLiteral("mediaFolder"), QStringLiteral("x"), &error)); // the key is mediaFloder
    EXPECT_TRUE(error.contains(QStringLiteral("mediaFloder")));
    EXPECT_TRUE(s.unsetValue(QStringLiteral("fileExtension")));
    EXPECT_TRUE(s.fileExtension.isNull());
    EXPECT_FALSE(s.unsetValue(QStringLiteral("orderBy")));
}
