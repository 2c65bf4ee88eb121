#pragma once

#include "library/row_fields.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariantMap>

class FMResultSet;

// Kinds of category (`catType`). Rows of the `cat` table are 11, 12 or 13;
// the others name tree entries that have no row.
namespace ORVCatType {
enum : int {
    Root = 1,          // root entry of a tree
    SiteCategory = 11, // top category that is a static site
    TopCategory = 12,  // top category, general
    SubCategory = 13,  // category below a top category
    Trash = 14,
    Inbox = 15,        // all documents
    Recent = 18,
    Uncategorized = 19,
    ExternalFolder = 50,
    Tag = 99,
};
}

// Orders of a category's documents (`sortType`).
namespace ORVListOrderType {
enum : quint64 {
    NewestFirst = 0,
    OldestFirst = 1,
    Manual = 2,
    TitleAscending = 3,
    TitleDescending = 4,
    ModifiedNewestFirst = 5,
    ModifiedOldestFirst = 6,
};
}

// One row of `cat`: a category. A plain value that belongs to whoever
// fetched it; text getters never yield null.
class ORVDBCat
{
    ORVO_ROW_VALUE(qint64, pid, setPid)
    ORVO_ROW_VALUE(qint64, uuid, setUuid)
    ORVO_ROW_TEXT(name, setName)
    ORVO_ROW_TEXT(docName, setDocName)
    ORVO_ROW_VALUE(int, catType, setCatType)
    ORVO_ROW_VALUE(qint64, sort, setSort)
    ORVO_ROW_VALUE(quint64, sortType, setSortType)
    ORVO_ROW_TEXT(siteURL, setSiteURL)
    ORVO_ROW_TEXT(siteSkinName, setSiteSkinName)
    ORVO_ROW_VALUE(qint64, siteLastBuildDate, setSiteLastBuildDate)
    ORVO_ROW_TEXT(siteBuildPath, setSiteBuildPath)
    ORVO_ROW_TEXT(siteFavicon, setSiteFavicon)
    ORVO_ROW_TEXT(siteLogo, setSiteLogo)
    ORVO_ROW_TEXT(siteDateFormat, setSiteDateFormat)
    ORVO_ROW_VALUE(int, sitePageSize, setSitePageSize)
    ORVO_ROW_VALUE(int, siteListTextNum, setSiteListTextNum)
    ORVO_ROW_TEXT(siteName, setSiteName)
    ORVO_ROW_TEXT(siteDes, setSiteDes)
    ORVO_ROW_TEXT(siteShareCode, setSiteShareCode)
    ORVO_ROW_TEXT(siteHeader, setSiteHeader)
    ORVO_ROW_TEXT(siteOther, setSiteOther)
    ORVO_ROW_TEXT(siteMainMenuData, setSiteMainMenuData)
    ORVO_ROW_TEXT(siteExtDef, setSiteExtDef)
    ORVO_ROW_TEXT(siteExtValue, setSiteExtValue)
    ORVO_ROW_TEXT(sitePostExtDef, setSitePostExtDef)
    ORVO_ROW_VALUE(bool, isEnableLaTeX, setIsEnableLaTeX)
    ORVO_ROW_VALUE(bool, isEnableChart, setIsEnableChart)

public:
    // The row the result set stands on (columns by name).
    static ORVDBCat fromResultSet(const FMResultSet &rs);
    // Every column but `id`, by name, for the named parameters of INSERT
    // and UPDATE.
    QVariantMap parameterDictionary() const;

    // The last build's time; the present moment when the stored value is
    // below 1001 (never built).
    QDateTime siteLastBuildDateNSDate() const;

    // checkCatTypeIsEditable:. False for the fixed entries (root, Trash,
    // Inbox, Recent, Uncategorized).
    static bool checkCatTypeIsEditable(qint64 catType);
    // checkCatTypeIsDBCatItem:. A kind that has a row in `cat` (11, 12, 13).
    static bool checkCatTypeIsDBCatItem(qint64 catType);
    // listOrderTypesSorted: the orders in the menu's order.
    static QList<quint64> listOrderTypesSorted();
    // dicListOrderTypeTagNameMaps: order to the key of its label.
    static QString listOrderTypeTagName(quint64 sortType);
};
