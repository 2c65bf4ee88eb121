#pragma once

#include "library/ORVExternalListDataItem.h"

#include <QAbstractListModel>

// The documents of an external folder, or of a search in the folders, for
// the list view. It answers the roles of ORVLibraryListModel, so that the
// same row drawing serves both windows.
class ORVExternalListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    struct Row {
        QString path;
        QString title;
        QString summary;
        QString dateLine;
    };

    explicit ORVExternalListModel(QObject *parent = nullptr);

    void setRows(const QList<Row> &rows);
    // The rows of a folder's list data items.
    static QList<Row> rowsWithItems(const QList<ORVExternalListDataItem::Ptr> &items);
    const QList<Row> &rows() const { return m_rows; }
    int rowOfPath(const QString &path) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    QStringList mimeTypes() const override;

private:
    QList<Row> m_rows;
};
