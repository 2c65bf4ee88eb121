#include "site/ORVSiteSettings.h"

#include "site/ORVSiteTheme.h"

#include <QJsonArray>
#include <QJsonDocument>

QStringList ORVSiteSettings::keys()
{
    return {QStringLiteral("name"),          QStringLiteral("siteName"),        QStringLiteral("siteURL"),
            QStringLiteral("siteDes"),       QStringLiteral("siteOther"),       QStringLiteral("siteShareCode"),
            QStringLiteral("siteSkinName"),  QStringLiteral("siteDateFormat"),  QStringLiteral("sortType"),
            QStringLiteral("sitePageSize"),  QStringLiteral("siteListTextNum"), QStringLiteral("isEnableLaTeX"),
            QStringLiteral("isEnableChart"), QStringLiteral("siteBuildPath"),   QStringLiteral("siteMainMenuData"),
            QStringLiteral("siteExtValue"),  QStringLiteral("siteFavicon"),     QStringLiteral("siteLastBuildDate")};
}

QList<std::pair<QString, QString>> ORVSiteSettings::dateFormats()
{
    return {{QStringLiteral("2014/10/24"), QStringLiteral("yyyy/MM/dd")},
            {QStringLiteral("2014/10/24 10:24 AM"), QStringLiteral("yyyy/MM/dd HH:mm aa")},
            {QStringLiteral("10/24/2014"), QStringLiteral("MM/dd/yyyy")},
            {QStringLiteral("10/24/2014 10:24 AM"), QStringLiteral("MM/dd/yyyy HH:mm aa")},
            {QStringLiteral("10/24"), QStringLiteral("MM/dd")},
            {QStringLiteral("10/24 10:24 AM"), QStringLiteral("MM/dd H:m aa")}};
}

QJsonObject ORVSiteSettings::settingsOfCat(const ORVDBCat &cat)
{
    return QJsonObject{{QStringLiteral("name"), cat.name()},
                       {QStringLiteral("siteName"), cat.siteName()},
                       {QStringLiteral("siteURL"), cat.siteURL()},
                       {QStringLiteral("siteDes"), cat.siteDes()},
                       {QStringLiteral("siteOther"), cat.siteOther()},
                       {QStringLiteral("siteShareCode"), cat.siteShareCode()},
                       {QStringLiteral("siteSkinName"), cat.siteSkinName()},
                       {QStringLiteral("siteDateFormat"), cat.siteDateFormat()},
                       {QStringLiteral("sortType"), qint64(cat.sortType())},
                       {QStringLiteral("sitePageSize"), cat.sitePageSize()},
                       {QStringLiteral("siteListTextNum"), cat.siteListTextNum()},
                       {QStringLiteral("isEnableLaTeX"), cat.isEnableLaTeX()},
                       {QStringLiteral("isEnableChart"), cat.isEnableChart()},
                       {QStringLiteral("siteBuildPath"), cat.siteBuildPath()},
                       {QStringLiteral("siteMainMenuData"), cat.siteMainMenuData()},
                       {QStringLiteral("siteExtValue"), cat.siteExtValue()},
                       {QStringLiteral("siteFavicon"), cat.siteFavicon()},
                       {QStringLiteral("siteLastBuildDate"), cat.siteLastBuildDate()}};
}

namespace
{

std::optional<bool> parseBoolean(const QString &text)
{
    const QString t = text.trimmed().toLower();
    if (t == u"true" || t == u"1" || t == u"yes" || t == u"on")
        return true;
    if (t == u"false" || t == u"0" || t == u"no" || t == u"off")
        return false;
    return std::nullopt;
}

std::optional<qint64> parseInteger(const QString &text)
{
    bool ok = false;
    const qint64 v = text.trimmed().toLongLong(&ok);
    return ok ? std::optional<qint64>(v) : std::nullopt;
}

} // namespace

bool ORVSiteSettings::setValueForKey(ORVDBCat &cat, const QString &key, const QString &value, QString *error)
{
    const auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return false;
    };
    if (key.startsWith(QLatin1String("ext."))) {
        const QString name = key.mid(4);
        if (name.isEmpty())
            return fail(QStringLiteral("ext. needs a variable name, as ext.tagline"));
        QJsonObject values = QJsonDocument::fromJson(cat.siteExtValue().toUtf8()).object();
        values.insert(name, value);
        cat.setSiteExtValue(QString::fromUtf8(QJsonDocument(values).toJson(QJsonDocument::Compact)));
        return true;
    }
    const auto text = [&](void (ORVDBCat::*setter)(const QString &)) {
        (cat.*setter)(value);
        return true;
    };
    if (key == u"name") {
        if (value.trimmed().isEmpty())
            return fail(QStringLiteral("a category's name can't be empty"));
        return text(&ORVDBCat::setName);
    }
    if (key == u"siteName")
        return text(&ORVDBCat::setSiteName);
    if (key == u"siteURL")
        return text(&ORVDBCat::setSiteURL);
    if (key == u"siteDes")
        return text(&ORVDBCat::setSiteDes);
    if (key == u"siteOther")
        return text(&ORVDBCat::setSiteOther);
    if (key == u"siteShareCode")
        return text(&ORVDBCat::setSiteShareCode);
    if (key == u"siteFavicon")
        return text(&ORVDBCat::setSiteFavicon);
    if (key == u"siteDateFormat")
        return text(&ORVDBCat::setSiteDateFormat);
    if (key == u"siteSkinName") {
        if (!value.isEmpty() && ORVSiteTheme::themePathWithName(value).isEmpty())
            return fail(QStringLiteral("there is no theme \"%1\" (see 'orvo site themes')").arg(value));
        return text(&ORVDBCat::setSiteSkinName);
    }
    if (key == u"siteBuildPath") {
        if (value.contains(QLatin1Char('/')) || value.contains(QLatin1Char('\\')) || value == u"." ||
            value == u"..")
            return fail(QStringLiteral("the build path is one folder name, without \"/\""));
        return text(&ORVDBCat::setSiteBuildPath);
    }
    if (key == u"isEnableLaTeX" || key == u"isEnableChart") {
        const auto b = parseBoolean(value);
        if (!b)
            return fail(QStringLiteral("%1 is true or false").arg(key));
        key == u"isEnableLaTeX" ? cat.setIsEnableLaTeX(*b) : cat.setIsEnableChart(*b);
        return true;
    }
    if (key == u"sortType") {
        const auto n = parseInteger(value);
        if (!n || *n < 0 || *n > 6)
            return fail(QStringLiteral("sortType is a number from 0 to 6"));
        cat.setSortType(quint64(*n));
        return true;
    }
    if (key == u"sitePageSize") {
        const auto n = parseInteger(value);
        if (!n || *n < 0 || *n > 100000)
            return fail(QStringLiteral("sitePageSize is a number of posts, 0 for all on one page"));
        cat.setSitePageSize(int(*n));
        return true;
    }
    if (key == u"siteListTextNum") {
        const auto n = parseInteger(value);
        if (!n || *n < 1 || *n > 1000000)
            return fail(QStringLiteral("siteListTextNum is a number of characters above 0"));
        cat.setSiteListTextNum(int(*n));
        return true;
    }
    if (key == u"siteMainMenuData") {
        if (value.trimmed().isEmpty()) {
            cat.setSiteMainMenuData(QString(QLatin1String("")));
            return true;
        }
        QJsonParseError parseError;
        const QJsonDocument doc = QJsonDocument::fromJson(value.toUtf8(), &parseError);
        if (!doc.isArray())
            return fail(QStringLiteral("the menu is a JSON array of {\"name\", \"url\", \"className\", \"target\"}"));
        for (const QJsonValue &v : doc.array()) {
            const QJsonObject o = v.toObject();
            if (o.value(QLatin1String("name")).toString().isEmpty())
                return fail(QStringLiteral("Please fill Name!"));
            if (o.value(QLatin1String("url")).toString().isEmpty())
                return fail(QStringLiteral("Please Fill URL!"));
        }
        cat.setSiteMainMenuData(QString::fromUtf8(doc.toJson(QJsonDocument::Compact)));
        return true;
    }
    if (key == u"siteExtValue") {
        const QJsonDocument doc = QJsonDocument::fromJson(value.toUtf8());
        if (!doc.isObject())
            return fail(QStringLiteral("siteExtValue is a JSON object of variable names to texts"));
        cat.setSiteExtValue(QString::fromUtf8(doc.toJson(QJsonDocument::Compact)));
        return true;
    }
    if (key == u"siteLastBuildDate")
        return fail(QStringLiteral("siteLastBuildDate is set by the build"));
    return fail(QStringLiteral("unknown setting \"%1\"; the settings are: %2").arg(key, keys().join(QStringLiteral(", "))));
}
