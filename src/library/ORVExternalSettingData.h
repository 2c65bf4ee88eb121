#pragma once

#include <QJsonObject>
#include <QString>

#include <cstdint>

// The settings of one external folder, kept inside the folder itself in
// ".OrvoMetaData/setting.json" (pretty-printed JSON, UTF-8), so that they
// travel with the folder when another tool syncs it.
//
// Text fields may be null, which is not the same as empty: a null
// `fileExtension` or `autoUploadInsertedImageKey` is left out of the file,
// and a settings file that lacks a key reads as null text or 0.
class ORVExternalSettingData
{
public:
    // What folderType means: where inserted media goes.
    static constexpr std::uint64_t kFolderTypeMediaBesideDocument = 10; // in the document's own folder
    static constexpr std::uint64_t kFolderTypeMediaAtSourceRoot = 11;   // in the source folder

    // Sets the defaults and reads the folder's settings file when there is
    // one (`initWithFileURL:`). `folderPath` is the source folder.
    explicit ORVExternalSettingData(const QString &folderPath);

    // Reads the settings file again. True when it was read; false when it is
    // missing, unreadable or not a JSON object, in which case the fields are
    // left as they were (`error` says which, "" for a missing file).
    bool fetchNewlerData(QString *error = nullptr);
    // Writes the settings file atomically, making ".OrvoMetaData" first (a
    // plain file of that name is removed). False with the system's reason.
    bool saveData(QString *error = nullptr);

    QString externalFolderURL() const { return m_folder; }
    QString settingFilePath() const;
    static QString settingFilePathForFolder(const QString &folderPath);

    QString name;
    QString mediaFloder;
    QString fileExtension;
    std::uint64_t newlinesToBR = 0;
    std::uint64_t folderType = kFolderTypeMediaBesideDocument;
    std::uint64_t orderBy = 0;
    bool autoUploadInsertedImage = false;
    QString autoUploadInsertedImageKey;

    // The serialised form: the keys of the file, without the null ones that
    // are left out.
    QJsonObject toJson() const;
    // "(mediaFolder:media, fileExt:.md, newlineBR:0, folderType:10, orderBy:0)";
    // a null text prints as "(null)".
    QString description() const;

    // Sets one key from command-line text, checked against the key's type:
    // unsigned integers in decimal, booleans as true/false/yes/no/1/0.
    // False with a reason for an unknown key or a bad value.
    bool setValueFromText(const QString &key, const QString &text, QString *error = nullptr);
    // Makes a text key null (left out of the file); false for other keys.
    bool unsetValue(const QString &key, QString *error = nullptr);
    // The keys in the order of the table that describes them.
    static const QStringList &allKeys();

private:
    void setDefaults();

    QString m_folder;
};
