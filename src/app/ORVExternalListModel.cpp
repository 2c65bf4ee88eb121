#include "app/ORVExternalListModel.h"

#include "app/ORVLibraryListModel.h"

#include <QFileInfo>
#include <QLocale>
#include <QMimeData>
#include <QUrl>

ORVExternalListModel::ORVExternalListModel(QObject *parent) : QAbstractListModel(parent) {}

QList<ORVExternalListModel::Row> ORVExternalListModel::rowsWithItems(const QList<ORVExternalListDataItem::Ptr> &items)
{
    QList<Row> rows;
    rows.reserve(items.size());
    const QLocale locale;
    for (const ORVExternalListDataItem::Ptr &item : items) {
        Row row;
        row.path = item->realPath;
        row.title = QFileInfo(item->fileName).completeBaseName();
        row.summary = item->content;
        row.dateLine = locale.toString(item->modificationDate.toLocalTime(), QLocale::ShortFormat);
        rows << row;
    }
    return rows;
}

void ORVExternalListModel::setRows(const QList<Row> &rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

int ORVExternalListModel::rowOfPath(const QString &path) const
{
    for (int i = 0; i < m_rows.size(); ++i)
        if (m_rows[i].path == path)
            return i;
    return -1;
}

int ORVExternalListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant ORVExternalListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const Row &row = m_rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case ORVLibraryListModel::TitleRole:
        return row.title;
    case ORVLibraryListModel::SummaryRole:
        return row.summary;
    case ORVLibraryListModel::DateRole:
        return row.dateLine;
    case ORVLibraryListModel::IsGroupRole:
        return false;
    case ORVLibraryListModel::PathRole:
    case Qt::ToolTipRole:
        return row.path;
    default:
        return {};
    }
}

Qt::ItemFlags ORVExternalListModel::flags(const QModelIndex &index) const
{
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled : Qt::NoItemFlags;
}

QStringList ORVExternalListModel::mimeTypes() const { return {QStringLiteral("text/uri-list")}; }

QMimeData *ORVExternalListModel::mimeData(const QModelIndexList &indexes) const
{
    QList<QUrl> urls;
    for (const QModelIndex &index : indexes)
        urls << QUrl::fromLocalFile(m_rows.at(index.row()).path);
    auto *mime = new QMimeData;
    mime->setUrls(urls);
    return mime;
}
