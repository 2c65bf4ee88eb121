#pragma once

#include "library/ORVListDataItem.h"

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <memory>

// One file of an external folder, as a list row. Its title is the file name
// without extension; `content` is the head of the file on one line.
// Two rows are equal when their realPath are equal.
class ORVExternalListDataItem : public ORVListDataItem
{
public:
    using Ptr = std::shared_ptr<ORVExternalListDataItem>;

    // A row with attributes and content (`updateData`).
    static Ptr itemWithRealPath(const QString &realPath);
    // A row with the attributes only (`initNoContentWithRealPath:`).
    static Ptr initNoContentWithRealPath(const QString &realPath);

    explicit ORVExternalListDataItem(const QString &realPath);

    // Reads the attributes, then the first 5 lines of the file, stopping
    // once the text is longer than 200 characters; every line end of it
    // ("\n" or "\r\n") becomes " ".
    void updateData();
    // Creation date, modification date (both UTC) and size from the file
    // system. A file system that keeps no creation date gives the
    // modification date; a file that cannot be read gives invalid dates.
    void updateAttributes();

    QString realPath;
    QString fileName;
    QString content;
    QDateTime creationDate;
    QDateTime modificationDate;
    qint64 fileSize = 0;

    bool operator==(const ORVExternalListDataItem &other) const { return realPath == other.realPath; }

    QJsonObject toJson() const;

    // The order values of a list (those of the library's lists): 0 newest
    // first, 1 oldest first (by creation), 3 title ascending, 4 title
    // descending, 5 last modified first, 6 last modified last. 2 (a manual
    // order, which files do not have) is by title ascending, any other value
    // newest first. Ties go by path, so an order is always the same.
    static void sortListDataItems(QList<Ptr> &items, qint64 orderBy);

    // The rows of the documents directly in `folder`, sorted by `orderBy`;
    // with `withContent` each row's content is read as well.
    static QList<Ptr> listDataItemsInFolder(const QString &folder, qint64 orderBy, bool withContent);
};
