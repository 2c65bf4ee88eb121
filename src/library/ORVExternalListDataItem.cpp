#include "library/ORVExternalListDataItem.h"

#include "library/document_title.h"
#include "library/fileNames.h"
#include "library/folderEntries.h"

#include <QFile>
#include <QUrl>

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

namespace {
// How much of a file a row shows.
constexpr int kContentMaxLines = 5;
constexpr int kContentMaxLength = 200;
} // namespace

ORVExternalListDataItem::ORVExternalListDataItem(const QString &path) : realPath(path)
{
    fileName = path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    url = QUrl::fromLocalFile(path).toString();
    setTitle(fileNameDeletingPathExtension(fileName));
}

ORVExternalListDataItem::Ptr ORVExternalListDataItem::itemWithRealPath(const QString &realPath)
{
    auto item = std::make_shared<ORVExternalListDataItem>(realPath);
    item->updateData();
    return item;
}

ORVExternalListDataItem::Ptr ORVExternalListDataItem::initNoContentWithRealPath(const QString &realPath)
{
    auto item = std::make_shared<ORVExternalListDataItem>(realPath);
    item->updateAttributes();
    return item;
}

void ORVExternalListDataItem::updateAttributes()
{
    // statx gives the creation time where the file system keeps one. Dates
    // stay in UTC: a conversion to local time per file costs more than the
    // rest of reading a row.
    struct statx st;
    if (statx(AT_FDCWD, QFile::encodeName(realPath).constData(), AT_STATX_SYNC_AS_STAT,
              STATX_BTIME | STATX_MTIME | STATX_SIZE, &st) != 0) {
        creationDate = modificationDate = QDateTime();
        fileSize = 0;
        return;
    }
    const auto toDate = [](const struct statx_timestamp &t) {
        return QDateTime::fromMSecsSinceEpoch(t.tv_sec * 1000 + t.tv_nsec / 1000000, Qt::UTC);
    };
    modificationDate = toDate(st.stx_mtime);
    creationDate = (st.stx_mask & STATX_BTIME) ? toDate(st.stx_btime) : modificationDate;
    fileSize = qint64(st.stx_size);
}

void ORVExternalListDataItem::updateData()
{
    updateAttributes();
    content = readFileContentWithPathMaxLineLenth(realPath, kContentMaxLines, kContentMaxLength);
    // Lines of a file written on Windows end in "\r\n": one space each too.
    content.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    content.replace(QLatin1Char('\n'), QLatin1Char(' '));
}

QJsonObject ORVExternalListDataItem::toJson() const
{
    return QJsonObject{
        {QStringLiteral("realPath"), realPath},
        {QStringLiteral("fileName"), fileName},
        {QStringLiteral("title"), title()},
        {QStringLiteral("content"), content},
        {QStringLiteral("creationDate"), creationDate.toString(Qt::ISODateWithMs)},
        {QStringLiteral("modificationDate"), modificationDate.toString(Qt::ISODateWithMs)},
        {QStringLiteral("fileSize"), fileSize},
    };
}

void ORVExternalListDataItem::sortListDataItems(QList<Ptr> &items, qint64 orderBy)
{
    const auto byTitle = [](const Ptr &a, const Ptr &b) {
        return QString::compare(a->forSortTitle(), b->forSortTitle(), Qt::CaseInsensitive);
    };
    const auto byDate = [](const QDateTime &a, const QDateTime &b) { return a < b ? -1 : (b < a ? 1 : 0); };
    std::function<int(const Ptr &, const Ptr &)> compare;
    switch (orderBy) {
    case 1: compare = [&](const Ptr &a, const Ptr &b) { return byDate(a->creationDate, b->creationDate); }; break;
    case 2:
    case 3: compare = byTitle; break;
    case 4: compare = [&](const Ptr &a, const Ptr &b) { return byTitle(b, a); }; break;
    case 5: compare = [&](const Ptr &a, const Ptr &b) { return byDate(b->modificationDate, a->modificationDate); }; break;
    case 6: compare = [&](const Ptr &a, const Ptr &b) { return byDate(a->modificationDate, b->modificationDate); }; break;
    default: compare = [&](const Ptr &a, const Ptr &b) { return byDate(b->creationDate, a->creationDate); }; break;
    }
    std::sort(items.begin(), items.end(), [&](const Ptr &a, const Ptr &b) {
        const int c = compare(a, b);
        return c != 0 ? c < 0 : a->realPath < b->realPath;
    });
}

QList<ORVExternalListDataItem::Ptr> ORVExternalListDataItem::listDataItemsInFolder(const QString &folder, qint64 orderBy,
                                                                                   bool withContent)
{
    const ORVFolderEntries entries = listFolderEntries(folder);
    QList<Ptr> items;
    items.reserve(entries.documents.size());
    const QString prefix = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    for (const QString &name : entries.documents)
        items.append(withContent ? itemWithRealPath(prefix + name) : initNoContentWithRealPath(prefix + name));
    sortListDataItems(items, orderBy);
    return items;
}
