#include "library/ORVDBArticle.h"

#include "core/date_uuid.h"
#include "library/FMResultSet.h"

#include <QJsonArray>
#include <QJsonDocument>

qint64 orvoSecondsFromStoredSeconds(qint64 seconds)
{
    // Values this small were never real dates (unset fields read as 0).
    return seconds < 1001 ? QDateTime::currentSecsSinceEpoch() : seconds;
}

QDateTime orvoDateFromStoredSeconds(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(orvoSecondsFromStoredSeconds(seconds));
}

ORVDBArticle ORVDBArticle::fromResultSet(const FMResultSet &rs)
{
    ORVDBArticle a;
    a.m_uuid = rs.longLongIntForColumn(QStringLiteral("uuid"));
    a.m_type = rs.intForColumn(QStringLiteral("type"));
    a.m_state = rs.intForColumn(QStringLiteral("state"));
    a.m_sort = rs.longLongIntForColumn(QStringLiteral("sort"));
    a.m_dateAdd = rs.longLongIntForColumn(QStringLiteral("dateAdd"));
    a.m_dateModif = rs.longLongIntForColumn(QStringLiteral("dateModif"));
    a.m_dateArt = rs.longLongIntForColumn(QStringLiteral("dateArt"));
    a.m_docName = rs.stringForColumn(QStringLiteral("docName"));
    a.m_otherMedia = rs.stringForColumn(QStringLiteral("otherMedia"));
    a.m_buildResource = rs.stringForColumn(QStringLiteral("buildResource"));
    a.m_postExtValue = rs.stringForColumn(QStringLiteral("postExtValue"));
    return a;
}

QVariantMap ORVDBArticle::parameterDictionary() const
{
    return {
        {QStringLiteral("type"), type()},
        {QStringLiteral("uuid"), uuid()},
        {QStringLiteral("state"), state()},
        {QStringLiteral("sort"), sort()},
        {QStringLiteral("dateAdd"), dateAdd()},
        {QStringLiteral("dateModif"), dateModif()},
        {QStringLiteral("dateArt"), dateArt()},
        {QStringLiteral("docName"), docName()},
        {QStringLiteral("otherMedia"), otherMedia()},
        {QStringLiteral("buildResource"), buildResource()},
        {QStringLiteral("postExtValue"), postExtValue()},
    };
}

QDateTime ORVDBArticle::dateAddNSDate() const { return orvoDateFromStoredSeconds(dateAdd()); }
QDateTime ORVDBArticle::dateModifNSDate() const { return orvoDateFromStoredSeconds(dateModif()); }
QDateTime ORVDBArticle::dateArtNSDate() const { return orvoDateFromStoredSeconds(dateArt()); }

QStringList ORVDBArticle::otherMediaPaths() const
{
    if (otherMedia().isEmpty())
        return {};
    // Line breaks inside the base64 (some encoders wrap at 64 characters)
    // are skipped by the lenient decoder.
    const QJsonDocument doc = QJsonDocument::fromJson(QByteArray::fromBase64(otherMedia().toLatin1()));
    QStringList paths;
    for (const QJsonValue &v : doc.array())
        if (v.isString())
            paths << v.toString();
    return paths;
}

void ORVDBArticle::setOtherMediaPaths(const QStringList &paths)
{
    if (paths.isEmpty()) {
        setOtherMedia(QStringLiteral(""));
        return;
    }
    const QByteArray json = QJsonDocument(QJsonArray::fromStringList(paths)).toJson(QJsonDocument::Compact);
    setOtherMedia(QString::fromLatin1(json.toBase64()));
}

ORVDBArticle ORVDBArticle::newDocumentArticle()
{
    ORVDBArticle a;
    a.setUuid(nowDateUUID());
    a.setType(0);
    a.setState(StateNormal);
    a.setSort(a.uuid());
    a.setDateAdd(QDateTime::currentSecsSinceEpoch());
    a.setDateModif(a.dateAdd());
    a.setDateArt(a.dateAdd());
    return a;
}
