#pragma once

#include "library/ORVDBArticle.h"
#include "library/ORVDBManager.h"
#include "library/ORVListDataItem.h"

#include <QDateTime>
#include <QList>
#include <QMetaType>
#include <QStringList>

#include <limits>

// One row of the library's document list: a document (its row of `article`
// with its categories and tags) or a group header standing for a category.
// A plain value; copies are independent. Title and summary are not stored
// anywhere but read from the start of the document's file (see
// document_title.h).
class ORVLibraryListDataItem : public ORVListDataItem
{
public:
    ORVDBArticle art;
    QString content; // summary, or a search snippet; null until read
    QString libName = QStringLiteral("");
    // For a group header the category it stands for; for a document row the
    // group it stands in (0 outside a grouped list).
    qint64 groupCatUUID = 0;
    QStringList cats;       // category names, parallel to catsIIDS
    QList<qint64> catsIIDS; // category uuids
    QStringList tags;       // tag names, parallel to tagsIIDS
    QList<qint64> tagsIIDS; // tag ids

    // LibraryListDataItemWithDBArticle:dbManager:. The categories and tags
    // come from the article maps given (the manager's dicArticleCatsMaps and
    // dicArticleTagsMaps), so that a list of any length costs no query per
    // row; a document missing from a map has none. `url` is the document's
    // file in the library at libraryPath.
    static ORVLibraryListDataItem LibraryListDataItemWithDBArticle(
        const ORVDBArticle &art, const QHash<qint64, ORVDBManager::LinkRecord> &catsMap,
        const QHash<qint64, ORVDBManager::LinkRecord> &tagsMap, const QString &libraryPath);
    // A group header for a category.
    static ORVLibraryListDataItem groupItemWithTitle(const QString &title, qint64 catUUID);

    // The date shown (`dateArt`) and the last change (`dateModif`), made on
    // first read; a stored value below 1001 reads as the moment of that read.
    QDateTime addDate() const;
    QDateTime modifDate() const;
    qint64 addDateSeconds() const;
    qint64 modifDateSeconds() const;
    // The manual position (the article's `sort`).
    qint64 sort() const { return art.sort(); }

    // setupTitleAndContentWithFileURL: reads the start of `url`. The title
    // is always set (empty for a missing file); the summary only while the
    // row has none, so that a search snippet survives.
    void setupTitleAndContentWithFileURL();
    // The same, from a file's start already decoded (readFileContentWith…).
    void setupTitleAndContentWithText(const QString &startOfFile);

    // copy: the article, categories, tags, title and summary; the dates are
    // made again on first read, the group is not carried.
    ORVLibraryListDataItem copy() const;

    // Two rows are equal when they show the same document.
    bool operator==(const ORVLibraryListDataItem &other) const { return art.uuid() == other.art.uuid(); }

private:
    mutable qint64 m_addDate = kNotMade;
    mutable qint64 m_modifDate = kNotMade;
    static constexpr qint64 kNotMade = std::numeric_limits<qint64>::min();
};

Q_DECLARE_METATYPE(ORVLibraryListDataItem)
Q_DECLARE_METATYPE(QList<ORVLibraryListDataItem>)
