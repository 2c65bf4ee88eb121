#pragma once

#include <QStyledItemDelegate>

// Draws an entry of the library tree: an icon by kind, the name, and the
// count as a small rounded badge at the right; the root as a section title.
class ORVLibraryTreeDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit ORVLibraryTreeDelegate(QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    // The icon of an entry kind, from the desktop theme with a fallback.
    static QIcon iconForCatType(qint64 catType);
};
