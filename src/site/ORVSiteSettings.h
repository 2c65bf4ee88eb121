#pragma once

#include "library/ORVDBCat.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

// The settings of a site, as the settings screen and `orvo site settings`
// read and write them on the site's category row. Only what the build
// reads is offered; a change is validated here, then the caller saves the
// row (saveItemDBCat).
class ORVSiteSettings
{
public:
    // The keys in the order they are shown: "name", "siteName", "siteURL",
    // "siteDes", "siteOther", "siteShareCode", "siteSkinName",
    // "siteDateFormat", "sortType", "sitePageSize", "siteListTextNum",
    // "isEnableLaTeX", "isEnableChart", "siteBuildPath", "siteMainMenuData",
    // "siteExtValue", "siteFavicon", "siteLastBuildDate" (read only).
    static QStringList keys();

    // The six date patterns the settings offer, each with its example.
    static QList<std::pair<QString, QString>> dateFormats();

    // Every key with its value (texts, numbers, booleans as JSON).
    static QJsonObject settingsOfCat(const ORVDBCat &cat);

    // Sets one key from text, or "ext.NAME" for one site extension value.
    // Checks: the theme must exist; numbers must be integers (the page size
    // not negative, the list text length above 0, since it can't be set
    // back to 0); booleans are "true"/"false"/"1"/"0"/"yes"/"no"/"on"/"off";
    // the order one of 0 to 6; the menu a JSON array of items with a
    // non-empty "name" and "url" (or "" for the default menu); extension
    // values a JSON object; the build path a plain folder name. False with
    // a sentence in *error otherwise, and the row unchanged.
    static bool setValueForKey(ORVDBCat &cat, const QString &key, const QString &value, QString *error);
};
