#include "library/ORVExternalSettingData.h"

#include "library/fileNames.h"
#include "library/textEncoding.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonValue>
#include <QSaveFile>

namespace {

const QString kMetaFolder = QStringLiteral(".OrvoMetaData");
const QString kSettingFile = QStringLiteral("setting.json");
const QString kDefaultMediaFolder = QStringLiteral("media");

// JSON numbers arrive as doubles; a key that is absent, or not a
// non-negative whole number, reads as 0.
std::uint64_t unsignedValue(const QJsonValue &v)
{
    if (!v.isDouble())
        return 0;
    const double d = v.toDouble();
    if (!(d >= 0) || d > 9007199254740992.0) // beyond 2^53 a double is no exact integer
        return 0;
    return std::uint64_t(d);
}

QString textValue(const QJsonValue &v) { return v.isString() ? v.toString() : QString(); }

QString orNull(const QString &s) { return s.isNull() ? QStringLiteral("(null)") : s; }

} // namespace

ORVExternalSettingData::ORVExternalSettingData(const QString &folderPath)
    : m_folder(QDir::cleanPath(QFileInfo(folderPath).absoluteFilePath()))
{
    setDefaults();
    fetchNewlerData();
}

void ORVExternalSettingData::setDefaults()
{
    name = fileNameDeletingPathExtension(m_folder);
    mediaFloder = kDefaultMediaFolder;
    fileExtension = QStringLiteral(".md");
    newlinesToBR = 0;
    folderType = kFolderTypeMediaBesideDocument;
    orderBy = 0;
    autoUploadInsertedImage = false;
    autoUploadInsertedImageKey = QString();
}

QString ORVExternalSettingData::settingFilePathForFolder(const QString &folderPath)
{
    return QDir(folderPath).filePath(kMetaFolder + QLatin1Char('/') + kSettingFile);
}

QString ORVExternalSettingData::settingFilePath() const { return settingFilePathForFolder(m_folder); }

bool ORVExternalSettingData::fetchNewlerData(QString *error)
{
    if (error)
        error->clear();
    QFile file(settingFilePath());
    if (!QFileInfo(file.fileName()).isFile())
        return false;
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
        return false;
    }
    const auto decoded = decodeTextWithEncodingDetection(file.readAll());
    if (!decoded) {
        if (error)
            *error = QStringLiteral("%1: not readable as text").arg(file.fileName());
        return false;
    }
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(decoded->text.toUtf8(), &parseError);
    if (!doc.isObject()) {
        if (error)
            *error = QStringLiteral("%1: not a JSON object (%2)")
                         .arg(file.fileName(), parseError.error == QJsonParseError::NoError ? QStringLiteral("wrong type")
                                                                                              : parseError.errorString());
        return false;
    }
    const QJsonObject o = doc.object();
    name = textValue(o.value(QStringLiteral("name")));
    mediaFloder = textValue(o.value(QStringLiteral("mediaFloder")));
    fileExtension = textValue(o.value(QStringLiteral("fileExtension")));
    newlinesToBR = unsignedValue(o.value(QStringLiteral("newlinesToBR")));
    folderType = unsignedValue(o.value(QStringLiteral("folderType")));
    orderBy = unsignedValue(o.value(QStringLiteral("orderBy")));
    autoUploadInsertedImage = o.value(QStringLiteral("autoUploadInsertedImage")).toBool(false);
    autoUploadInsertedImageKey = textValue(o.value(QStringLiteral("autoUploadInsertedImageKey")));
    if (name.isNull())
        name = fileNameDeletingPathExtension(m_folder);
    if (mediaFloder.isNull())
        mediaFloder = kDefaultMediaFolder;
    return true;
}

QJsonObject ORVExternalSettingData::toJson() const
{
    QJsonObject o;
    o.insert(QStringLiteral("name"), name);
    if (!mediaFloder.isNull())
        o.insert(QStringLiteral("mediaFloder"), mediaFloder);
    if (!fileExtension.isNull())
        o.insert(QStringLiteral("fileExtension"), fileExtension);
    o.insert(QStringLiteral("newlinesToBR"), double(newlinesToBR));
    o.insert(QStringLiteral("folderType"), double(folderType));
    o.insert(QStringLiteral("orderBy"), double(orderBy));
    o.insert(QStringLiteral("autoUploadInsertedImage"), autoUploadInsertedImage);
    if (!autoUploadInsertedImageKey.isNull())
        o.insert(QStringLiteral("autoUploadInsertedImageKey"), autoUploadInsertedImageKey);
    return o;
}

bool ORVExternalSettingData::saveData(QString *error)
{
    const QString metaDir = QDir(m_folder).filePath(kMetaFolder);
    const QFileInfo metaInfo(metaDir);
    if (metaInfo.exists() && !metaInfo.isDir()) {
        if (!QFile::remove(metaDir)) {
            if (error)
                *error = QStringLiteral("cannot remove the file %1 that stands where the settings folder goes").arg(metaDir);
            return false;
        }
    }
    if (!QDir().mkpath(metaDir)) {
        if (error)
            *error = QStringLiteral("cannot create the folder %1").arg(metaDir);
        return false;
    }
    QSaveFile file(settingFilePath());
    if (!file.open(QIODevice::WriteOnly)) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
        return false;
    }
    file.write(QJsonDocument(toJson()).toJson(QJsonDocument::Indented));
    if (!file.commit()) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
        return false;
    }
    return true;
}

QString ORVExternalSettingData::description() const
{
    return QStringLiteral("(mediaFolder:%1, fileExt:%2, newlineBR:%3, folderType:%4, orderBy:%5)")
        .arg(orNull(mediaFloder), orNull(fileExtension))
        .arg(newlinesToBR)
        .arg(folderType)
        .arg(orderBy);
}

const QStringList &ORVExternalSettingData::allKeys()
{
    static const QStringList keys{
        QStringLiteral("name"),         QStringLiteral("mediaFloder"), QStringLiteral("fileExtension"),
        QStringLiteral("newlinesToBR"), QStringLiteral("folderType"),  QStringLiteral("orderBy"),
        QStringLiteral("autoUploadInsertedImage"), QStringLiteral("autoUploadInsertedImageKey"),
    };
    return keys;
}

bool ORVExternalSettingData::setValueFromText(const QString &key, const QString &text, QString *error)
{
    const auto fail = [&](const QString &message) {
        if (error)
            *error = message;
        return false;
    };
    if (key == QLatin1String("name"))
        name = text;
    else if (key == QLatin1String("mediaFloder"))
        mediaFloder = text;
    else if (key == QLatin1String("fileExtension"))
        fileExtension = text;
    else if (key == QLatin1String("autoUploadInsertedImageKey"))
        autoUploadInsertedImageKey = text;
    else if (key == QLatin1String("autoUploadInsertedImage")) {
        const QString t = text.trimmed().toLower();
        if (t == QLatin1String("true") || t == QLatin1String("yes") || t == QLatin1String("1"))
            autoUploadInsertedImage = true;
        else if (t == QLatin1String("false") || t == QLatin1String("no") || t == QLatin1String("0"))
            autoUploadInsertedImage = false;
        else
            return fail(QStringLiteral("%1 takes a boolean (true or false), not \"%2\"").arg(key, text));
    } else if (key == QLatin1String("newlinesToBR") || key == QLatin1String("folderType") ||
               key == QLatin1String("orderBy")) {
        bool ok = false;
        const qulonglong v = text.trimmed().toULongLong(&ok);
        if (!ok || text.trimmed().startsWith(QLatin1Char('-')))
            return fail(QStringLiteral("%1 takes an unsigned integer, not \"%2\"").arg(key, text));
        (key == QLatin1String("newlinesToBR") ? newlinesToBR : key == QLatin1String("folderType") ? folderType : orderBy) = v;
    } else {
        return fail(QStringLiteral("unknown setting \"%1\" (one of: %2)").arg(key, allKeys().join(QStringLiteral(", "))));
    }
    return true;
}

bool ORVExternalSettingData::unsetValue(const QString &key, QString *error)
{
    if (key == QLatin1String("mediaFloder"))
        mediaFloder = QString();
    else if (key == QLatin1String("fileExtension"))
        fileExtension = QString();
    else if (key == QLatin1String("autoUploadInsertedImageKey"))
        autoUploadInsertedImageKey = QString();
    else {
        if (error)
            *error = QStringLiteral("only mediaFloder, fileExtension and autoUploadInsertedImageKey can be unset, not \"%1\"").arg(key);
        return false;
    }
    return true;
}
