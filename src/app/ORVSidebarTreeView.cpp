#include "app/ORVSidebarTreeView.h"

#include <QPainter>
#include <QStyleOption>

ORVSidebarTreeView::ORVSidebarTreeView(QWidget *parent) : QTreeView(parent)
{
    viewport()->setBackgroundRole(QPalette::Window);
    setFrameShape(QFrame::NoFrame);
    setHeaderHidden(true);
    setIndentation(14);
    setUniformRowHeights(true);
}

void ORVSidebarTreeView::drawBranches(QPainter *painter, const QRect &rect, const QModelIndex &index) const
{
    if (!model()->hasChildren(index))
        return;
    QStyleOption opt;
    opt.initFrom(this);
    opt.rect = QRect(rect.right() - indentation() + 1, rect.top(), indentation(), rect.height());
    opt.state = QStyle::State_Item | QStyle::State_Children | QStyle::State_Enabled;
    if (isExpanded(index))
        opt.state |= QStyle::State_Open;
    style()->drawPrimitive(QStyle::PE_IndicatorBranch, &opt, painter, this);
}
