#pragma once

#include "library/row_fields.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVariantMap>

class FMResultSet;

// One row of `article`: a library document. Its text is not here but in
// docs/<uuid>.md. A plain value that belongs to whoever fetched it; text
// getters never yield null.
class ORVDBArticle
{
    ORVO_ROW_VALUE(qint64, uuid, setUuid)
    ORVO_ROW_VALUE(int, type, setType)   // 0 a post, 1 a page of a site
    ORVO_ROW_VALUE(int, state, setState) // 1 normal, 0 in the trash
    ORVO_ROW_VALUE(qint64, sort, setSort)
    ORVO_ROW_VALUE(qint64, dateAdd, setDateAdd)     // seconds since 1970
    ORVO_ROW_VALUE(qint64, dateModif, setDateModif) // seconds since 1970
    ORVO_ROW_VALUE(qint64, dateArt, setDateArt)     // seconds since 1970
    ORVO_ROW_TEXT(docName, setDocName)
    ORVO_ROW_TEXT(otherMedia, setOtherMedia)
    ORVO_ROW_TEXT(buildResource, setBuildResource)
    ORVO_ROW_TEXT(postExtValue, setPostExtValue)

public:
    enum State { StateTrash = 0, StateNormal = 1 };

    static ORVDBArticle fromResultSet(const FMResultSet &rs);
    // Every column but `id`, by name, for INSERT and UPDATE.
    QVariantMap parameterDictionary() const;

    // The dates as times; a stored value below 1001 reads as the present moment.
    QDateTime dateAddNSDate() const;
    QDateTime dateModifNSDate() const;
    QDateTime dateArtNSDate() const;

    // `otherMedia` holds the files the document refers to outside its own
    // media folder, paths relative to docs/, as base64 of a JSON array of
    // strings ("" when there are none). Undecodable content reads as none.
    QStringList otherMediaPaths() const;
    void setOtherMediaPaths(const QStringList &paths);

    // A document made now: `uuid` from nowDateUUID, type 0, state 1, `sort`
    // equal to `uuid`, `dateAdd` the present whole seconds, `dateModif` and
    // `dateArt` equal to it.
    static ORVDBArticle newDocumentArticle();
};

// The present moment for a stored date below 1001, the stored seconds otherwise.
QDateTime orvoDateFromStoredSeconds(qint64 seconds);
// The same as seconds since 1970, without making a local time (which reads
// the time zone each time: too slow for a list of thousands of rows).
qint64 orvoSecondsFromStoredSeconds(qint64 seconds);
