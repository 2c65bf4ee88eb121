#include "app/ORVSidebarTreeView.h"

#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>

namespace {

// The selection colour stays off the indentation column.
class SidebarStyle : public QProxyStyle
{
public:
    using QProxyStyle::QProxyStyle;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returnData) const override
    {
        if (hint == SH_ItemView_ShowDecorationSelected)
            return 0;
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

} // namespace

ORVSidebarTreeView::ORVSidebarTreeView(QWidget *parent) : QTreeView(parent)
{
    viewport()->setBackgroundRole(QPalette::Window);
    setFrameShape(QFrame::NoFrame);
    setHeaderHidden(true);
    setIndentation(14);
    setUniformRowHeights(true);
    auto *sidebarStyle = new SidebarStyle(style()->name());
    sidebarStyle->setParent(this);
    setStyle(sidebarStyle);
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
