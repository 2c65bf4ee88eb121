#pragma once

#include <QAbstractListModel>
#include <QStyledItemDelegate>

class ORVLibraryListController;
class ORVLibraryListDataItem;

// The rows of a library list controller (its listContent) for the list
// view: documents and group headers. A row's title and summary are read
// from its file when the row is first drawn. Drags carry the documents
// (kORV_LIB_DOC_PASTEBOARD_TYPE) to the tree, or within the list for the
// manual order.
//
// Thread: the main thread.
class ORVLibraryListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    enum Role {
        TitleRole = Qt::UserRole + 1,
        SummaryRole,
        DateRole,       // the date line: date and categories
        IsGroupRole,
        UUIDRole,
        PathRole,
        InTrashRole,
    };

    explicit ORVLibraryListModel(ORVLibraryListController *controller, QObject *parent = nullptr);

    ORVLibraryListController *controller() const { return m_controller; }
    // Resets after the controller's rows were replaced.
    void reload();
    // The row of a document, -1 when it is not shown.
    int rowOfDocument(qint64 uuid) const;
    // updateTheListContentData: the row of the edited document takes its
    // title and summary from the text in the editor, without the disk.
    void updateRowWithText(qint64 uuid, const QString &text);
    // The date line of a row: the date by the list's format, then the
    // categories.
    static QString dateLineOfItem(const ORVLibraryListDataItem &item, const QString &dateFormat);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

signals:
    // A reorder asked for the manual order first (the window asks the user).
    void reorderNeedsManualOrder();

private:
    ORVLibraryListDataItem &ensureTitle(int row) const;

    ORVLibraryListController *m_controller;
    QString m_dateFormat;
};

// Draws a list row by documentListDisplayType: date line, title and summary
// (0), date line and title (1), title alone (2); group rows as bold
// headers. Search keys are marked in the text.
class ORVLibraryListDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit ORVLibraryListDelegate(QObject *parent = nullptr);
    // The keys whose matches are marked (case-insensitive).
    void setHighlightKeys(const QStringList &keys);
    void setDisplayType(int type) { m_displayType = type; }
    int displayType() const { return m_displayType; }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    void drawMarkedText(QPainter *painter, const QRect &rect, const QString &text, const QFont &font,
                        const QColor &color, int maxLines) const;

    QStringList m_keys;
    int m_displayType = 0;
};
