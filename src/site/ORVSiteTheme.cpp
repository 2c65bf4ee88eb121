#include "site/ORVSiteTheme.h"

#include "core/ORVAppPaths.h"
#include "site/site_text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

QString ORVSiteTheme::userThemesDirectory()
{
    return ORVAppPaths::applicationThemesDirectorySiteThemes();
}

QString ORVSiteTheme::shippedThemesDirectory()
{
    return ORVAppPaths::applicationThemesDirectorySiteThemesInBundle();
}

QStringList ORVSiteTheme::themeNamesInDirectory(const QString &directory)
{
    if (directory.isEmpty())
        return {};
    QStringList names = QDir(directory).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    names.removeIf([](const QString &n) { return n.startsWith(QLatin1Char('.')); });
    return names;
}

QString ORVSiteTheme::themePathWithName(const QString &name)
{
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')) ||
        name == QLatin1String(".") || name == QLatin1String(".."))
        return {};
    for (const QString &base : {userThemesDirectory(), shippedThemesDirectory()}) {
        if (base.isEmpty())
            continue;
        const QString path = QDir(base).filePath(name);
        if (QFileInfo(path).isDir())
            return path;
    }
    return {};
}

QString ORVSiteTheme::themePathForSkinName(const QString &skinName)
{
    if (!skinName.isEmpty()) {
        const QString path = themePathWithName(skinName);
        if (!path.isEmpty())
            return path;
    }
    const QString shipped = shippedThemesDirectory();
    if (shipped.isEmpty())
        return {};
    const QString path = QDir(shipped).filePath(defaultThemeName());
    return QFileInfo(path).isDir() ? path : QString();
}

QString ORVSiteTheme::filePath(const QString &name) const
{
    if (m_path.isEmpty() || name.isEmpty() || QDir::isAbsolutePath(name))
        return {};
    const QString cleaned = QDir::cleanPath(name);
    if (cleaned == QLatin1String("..") || cleaned.startsWith(QLatin1String("../")))
        return {};
    return QDir(m_path).filePath(cleaned);
}

QString ORVSiteTheme::readFile(const QString &name) const
{
    const QString path = filePath(name);
    if (path.isEmpty())
        return {};
    return readSiteTextFile(path).value_or(QString());
}

bool ORVSiteTheme::hasFile(const QString &name) const
{
    const QString path = filePath(name);
    return !path.isEmpty() && QFileInfo(path).isFile();
}

QString ORVSiteTheme::readSkinContentByFileName(const QString &name) const
{
    const QString content = readFile(name);
    if (!content.contains(QLatin1String("<!-- include(")))
        return content;
    static const QRegularExpression include(QStringLiteral("<\\!-- include\\((.+)\\) -->"));
    QString out;
    out.reserve(content.size());
    qsizetype last = 0;
    for (auto it = include.globalMatch(content); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        out += QStringView(content).mid(last, m.capturedStart() - last);
        const QString included = m.captured(1);
        if (hasFile(included))
            out += readFile(included);
        else
            out += m.captured(0);
        last = m.capturedEnd();
    }
    out += QStringView(content).mid(last);
    return out;
}

ORVSiteTheme::Config ORVSiteTheme::config() const
{
    Config config;
    QFile file(filePath(QStringLiteral("extensions/config.json")));
    if (!file.open(QIODevice::ReadOnly))
        return config;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll());
    if (!doc.isObject())
        return config;
    const QJsonObject o = doc.object();
    const auto take = [&o](const char *key, bool &into) {
        const QJsonValue v = o.value(QLatin1String(key));
        if (v.isBool())
            into = v.toBool();
        else if (v.isDouble())
            into = v.toDouble() != 0;
    };
    take("isCreateCategoriesPages", config.isCreateCategoriesPages);
    take("isCreateTagsPages", config.isCreateTagsPages);
    take("isCreateTreeVars", config.isCreateTreeVars);
    take("isCreateArchivesVarsToIndex", config.isCreateArchivesVarsToIndex);
    return config;
}
