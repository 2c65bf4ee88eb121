#include "library/ORVLibraryListDataItem.h"

#include "library/document_title.h"
#include "library/ORVLibraryFolder.h"

ORVLibraryListDataItem ORVLibraryListDataItem::LibraryListDataItemWithDBArticle(
    const ORVDBArticle &art, const QHash<qint64, ORVDBManager::LinkRecord> &catsMap,
    const QHash<qint64, ORVDBManager::LinkRecord> &tagsMap, const QString &libraryPath)
{
    ORVLibraryListDataItem item;
    item.art = art;
    item.url = ORVLibraryFolder::documentPath(libraryPath, art.uuid());
    const auto cats = catsMap.constFind(art.uuid());
    if (cats != catsMap.constEnd()) {
        item.cats = cats->names;
        item.catsIIDS = cats->uuids;
    }
    const auto tags = tagsMap.constFind(art.uuid());
    if (tags != tagsMap.constEnd()) {
        item.tags = tags->names;
        item.tagsIIDS = tags->uuids;
    }
    return item;
}

ORVLibraryListDataItem ORVLibraryListDataItem::groupItemWithTitle(const QString &title, qint64 catUUID)
{
    ORVLibraryListDataItem item;
    item.isGroup = true;
    item.setTitle(title);
    item.groupCatUUID = catUUID;
    return item;
}

qint64 ORVLibraryListDataItem::addDateSeconds() const
{
    if (m_addDate == kNotMade)
        m_addDate = orvoSecondsFromStoredSeconds(art.dateArt());
    return m_addDate;
}

qint64 ORVLibraryListDataItem::modifDateSeconds() const
{
    if (m_modifDate == kNotMade)
        m_modifDate = orvoSecondsFromStoredSeconds(art.dateModif());
    return m_modifDate;
}

QDateTime ORVLibraryListDataItem::addDate() const { return QDateTime::fromSecsSinceEpoch(addDateSeconds()); }

QDateTime ORVLibraryListDataItem::modifDate() const { return QDateTime::fromSecsSinceEpoch(modifDateSeconds()); }

void ORVLibraryListDataItem::setupTitleAndContentWithFileURL()
{
    setupTitleAndContentWithText(readFileContentWithPathMaxLineLenth(url));
}

void ORVLibraryListDataItem::setupTitleAndContentWithText(const QString &startOfFile)
{
    const ORVDocumentTitleAndSummary text = documentTitleAndSummaryWithContent(startOfFile);
    setTitle(text.title.isNull() ? QStringLiteral("") : text.title);
    if (content.isEmpty())
        content = text.summary.isNull() ? QStringLiteral("") : text.summary;
}

ORVLibraryListDataItem ORVLibraryListDataItem::copy() const
{
    ORVLibraryListDataItem item;
    item.art = art;
    item.url = url;
    item.libName = libName;
    item.cats = cats;
    item.catsIIDS = catsIIDS;
    item.tags = tags;
    item.tagsIIDS = tagsIIDS;
    item.setTitle(title());
    item.content = content;
    return item;
}
