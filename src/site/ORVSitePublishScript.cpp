#include "site/ORVSitePublishScript.h"

#include "core/json_archive.h"

#include <QDir>
#include <QVariantMap>

QString ORVSitePublishScript::fileNameForCategory(qint64 catUUID)
{
    return QStringLiteral("publish-sh-%1.data").arg(catUUID);
}

std::optional<ORVSitePublishScript> ORVSitePublishScript::readFromMetadataFolder(const QString &metadataFolder,
                                                                                 qint64 catUUID)
{
    const std::optional<QVariant> root = readArchiveFile(QDir(metadataFolder).filePath(fileNameForCategory(catUUID)));
    if (!root || root->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap map = root->toMap();
    ORVSitePublishScript script;
    script.beforeAction = map.value(QStringLiteral("beforeAction")).toLongLong();
    script.sh = map.value(QStringLiteral("sh")).toString();
    script.isShow = map.value(QStringLiteral("isShow")).toBool();
    return script;
}

bool ORVSitePublishScript::writeToMetadataFolder(const QString &metadataFolder, qint64 catUUID) const
{
    const QVariantMap map{{QStringLiteral("beforeAction"), beforeAction},
                          {QStringLiteral("sh"), sh},
                          {QStringLiteral("isShow"), isShow}};
    return writeArchiveFile(QDir(metadataFolder).filePath(fileNameForCategory(catUUID)), map);
}

QString ORVSitePublishScript::scriptByReplacingPlaceholders(const QString &script, const QDateTime &now,
                                                            const QString &input)
{
    QString out = script;
    out.replace(QLatin1String("{{year}}"), now.toString(QStringLiteral("yyyy")));
    out.replace(QLatin1String("{{month}}"), now.toString(QStringLiteral("MM")));
    out.replace(QLatin1String("{{day}}"), now.toString(QStringLiteral("dd")));
    out.replace(QLatin1String("{{time}}"), now.toString(QStringLiteral("HH:mm:ss")));
    out.replace(QLatin1String("{{input}}"), input);
    return out;
}

QString ORVSitePublishScript::sampleScript()
{
    return QStringLiteral(
        "#!/bin/sh\n\n# Please set the name and email. \n# Because Orvo can't get your github global setting.\n\n"
        "git config user.name \"Your github name\"\ngit config user.email \"Your github email\"\n\n"
        "git add --ignore-removal .\ngit commit -m \"{{year}}-{{month}}-{{day}} {{time}}\"\n"
        "git push -u origin master\n");
}
