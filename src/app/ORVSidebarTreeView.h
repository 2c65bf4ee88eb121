#pragma once

#include <QTreeView>

// The tree of a window's side bar: the delegate draws the selection as a
// rounded pill, so the indentation column keeps the side bar's colour and
// shows only the expand arrow.
class ORVSidebarTreeView : public QTreeView
{
    Q_OBJECT
public:
    explicit ORVSidebarTreeView(QWidget *parent = nullptr);

protected:
    void drawBranches(QPainter *painter, const QRect &rect, const QModelIndex &index) const override;
};
