#include "library/ORVDBCat.h"

#include "library/FMResultSet.h"
#include "library/ORVDBArticle.h"

ORVDBCat ORVDBCat::fromResultSet(const FMResultSet &rs)
{
    ORVDBCat c;
    c.m_pid = rs.longLongIntForColumn(QStringLiteral("pid"));
    c.m_uuid = rs.longLongIntForColumn(QStringLiteral("uuid"));
    c.m_name = rs.stringForColumn(QStringLiteral("name"));
    c.m_docName = rs.stringForColumn(QStringLiteral("docName"));
    c.m_catType = rs.intForColumn(QStringLiteral("catType"));
    c.m_sort = rs.longLongIntForColumn(QStringLiteral("sort"));
    c.m_sortType = quint64(rs.longLongIntForColumn(QStringLiteral("sortType")));
    c.m_siteURL = rs.stringForColumn(QStringLiteral("siteURL"));
    c.m_siteSkinName = rs.stringForColumn(QStringLiteral("siteSkinName"));
    c.m_siteLastBuildDate = rs.longLongIntForColumn(QStringLiteral("siteLastBuildDate"));
    c.m_siteBuildPath = rs.stringForColumn(QStringLiteral("siteBuildPath"));
    c.m_siteFavicon = rs.stringForColumn(QStringLiteral("siteFavicon"));
    c.m_siteLogo = rs.stringForColumn(QStringLiteral("siteLogo"));
    c.m_siteDateFormat = rs.stringForColumn(QStringLiteral("siteDateFormat"));
    c.m_sitePageSize = rs.intForColumn(QStringLiteral("sitePageSize"));
    c.m_siteListTextNum = rs.intForColumn(QStringLiteral("siteListTextNum"));
    c.m_siteName = rs.stringForColumn(QStringLiteral("siteName"));
    c.m_siteDes = rs.stringForColumn(QStringLiteral("siteDes"));
    c.m_siteShareCode = rs.stringForColumn(QStringLiteral("siteShareCode"));
    c.m_siteHeader = rs.stringForColumn(QStringLiteral("siteHeader"));
    c.m_siteOther = rs.stringForColumn(QStringLiteral("siteOther"));
    c.m_siteMainMenuData = rs.stringForColumn(QStringLiteral("siteMainMenuData"));
    c.m_siteExtDef = rs.stringForColumn(QStringLiteral("siteExtDef"));
    c.m_siteExtValue = rs.stringForColumn(QStringLiteral("siteExtValue"));
    c.m_sitePostExtDef = rs.stringForColumn(QStringLiteral("sitePostExtDef"));
    c.m_isEnableLaTeX = rs.boolForColumn(QStringLiteral("siteEnableLaTeX"));
    c.m_isEnableChart = rs.boolForColumn(QStringLiteral("siteEnableChart"));
    return c;
}

QVariantMap ORVDBCat::parameterDictionary() const
{
    return {
        {QStringLiteral("pid"), pid()},
        {QStringLiteral("uuid"), uuid()},
        {QStringLiteral("name"), name()},
        {QStringLiteral("docName"), docName()},
        {QStringLiteral("catType"), catType()},
        {QStringLiteral("sort"), sort()},
        {QStringLiteral("sortType"), sortType()},
        {QStringLiteral("siteURL"), siteURL()},
        {QStringLiteral("siteSkinName"), siteSkinName()},
        {QStringLiteral("siteLastBuildDate"), siteLastBuildDate()},
        {QStringLiteral("siteBuildPath"), siteBuildPath()},
        {QStringLiteral("siteFavicon"), siteFavicon()},
        {QStringLiteral("siteLogo"), siteLogo()},
        {QStringLiteral("siteDateFormat"), siteDateFormat()},
        {QStringLiteral("sitePageSize"), sitePageSize()},
        {QStringLiteral("siteListTextNum"), siteListTextNum()},
        {QStringLiteral("siteName"), siteName()},
        {QStringLiteral("siteDes"), siteDes()},
        {QStringLiteral("siteShareCode"), siteShareCode()},
        {QStringLiteral("siteHeader"), siteHeader()},
        {QStringLiteral("siteOther"), siteOther()},
        {QStringLiteral("siteMainMenuData"), siteMainMenuData()},
        {QStringLiteral("siteExtDef"), siteExtDef()},
        {QStringLiteral("siteExtValue"), siteExtValue()},
        {QStringLiteral("sitePostExtDef"), sitePostExtDef()},
        {QStringLiteral("siteEnableLaTeX"), isEnableLaTeX()},
        {QStringLiteral("siteEnableChart"), isEnableChart()},
    };
}

QDateTime ORVDBCat::siteLastBuildDateNSDate() const { return orvoDateFromStoredSeconds(siteLastBuildDate()); }

bool ORVDBCat::checkCatTypeIsEditable(qint64 catType)
{
    switch (catType) {
    case ORVCatType::Root:
    case ORVCatType::Trash:
    case ORVCatType::Inbox:
    case ORVCatType::Recent:
    case ORVCatType::Uncategorized:
        return false;
    default:
        return true;
    }
}

bool ORVDBCat::checkCatTypeIsDBCatItem(qint64 catType)
{
    return catType == ORVCatType::SiteCategory || catType == ORVCatType::TopCategory ||
           catType == ORVCatType::SubCategory;
}

QList<quint64> ORVDBCat::listOrderTypesSorted() { return {0, 1, 4, 3, 5, 6, 2}; }

QString ORVDBCat::listOrderTypeTagName(quint64 sortType)
{
    switch (sortType) {
    case ORVListOrderType::NewestFirst: return QStringLiteral("Category Sort Newest on Top");
    case ORVListOrderType::OldestFirst: return QStringLiteral("Category Sort Oldest on Top");
    case ORVListOrderType::Manual: return QStringLiteral("Category Sort Custom");
    case ORVListOrderType::TitleAscending: return QStringLiteral("Category Sort Title ASC");
    case ORVListOrderType::TitleDescending: return QStringLiteral("Category Sort Title DESC");
    case ORVListOrderType::ModifiedNewestFirst: return QStringLiteral("Category Sort Modif Date DESC");
    case ORVListOrderType::ModifiedOldestFirst: return QStringLiteral("Category Sort Modif Date ASC");
    default: return QString();
    }
}
