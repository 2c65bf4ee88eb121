#include "app/ORVLibraryTreeDelegate.h"

#include "app/ORVLibraryTreeModel.h"
#include "library/ORVDBCat.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>

namespace {

// Row height of a tree entry; the root's title row is as high.
constexpr int kRowHeight = 28;

} // namespace

ORVLibraryTreeDelegate::ORVLibraryTreeDelegate(QObject *parent) : QStyledItemDelegate(parent) {}

QIcon ORVLibraryTreeDelegate::iconForCatType(qint64 catType)
{
    QStyle *style = QApplication::style();
    const auto themed = [style](const char *name, QStyle::StandardPixmap fallback) {
        return QIcon::fromTheme(QString::fromLatin1(name), style->standardIcon(fallback));
    };
    switch (catType) {
    case ORVCatType::Inbox:
        return themed("mail-folder-inbox", QStyle::SP_DirHomeIcon);
    case ORVCatType::Recent:
        return themed("document-open-recent", QStyle::SP_FileDialogDetailedView);
    case ORVCatType::Uncategorized:
        return themed("folder-documents", QStyle::SP_FileIcon);
    case ORVCatType::Trash:
        return themed("user-trash", QStyle::SP_TrashIcon);
    case ORVCatType::Tag:
        return themed("tag", QStyle::SP_FileDialogInfoView);
    case ORVCatType::SiteCategory:
        return themed("applications-internet", QStyle::SP_DriveNetIcon);
    default:
        return themed("folder", QStyle::SP_DirIcon);
    }
}

QSize ORVLibraryTreeDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setHeight(std::max(size.height(), kRowHeight));
    return size;
}

void ORVLibraryTreeDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                   const QModelIndex &index) const
{
    QStyleOptionViewItem opt(option);
    initStyleOption(&opt, index);
    const QPalette &pal = opt.palette;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);

    if (index.data(ORVLibraryTreeModel::IsHeaderRole).toBool()) {
        QFont f = opt.font;
        f.setBold(true);
        f.setPointSizeF(f.pointSizeF() * 0.82);
        f.setLetterSpacing(QFont::PercentageSpacing, 108);
        painter->setFont(f);
        painter->setPen(pal.color(QPalette::PlaceholderText));
        painter->drawText(opt.rect.adjusted(2, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, opt.text);
        painter->restore();
        return;
    }

    const bool selected = opt.state & QStyle::State_Selected;
    const bool active = opt.state & QStyle::State_Active;
    if (selected) {
        QColor fill = pal.color(QPalette::Highlight);
        if (!active)
            fill.setAlpha(120);
        QRectF r = QRectF(opt.rect).adjusted(1, 1, -4, -1);
        painter->setPen(Qt::NoPen);
        painter->setBrush(fill);
        painter->drawRoundedRect(r, 5, 5);
    } else if (opt.state & QStyle::State_MouseOver) {
        QColor hover = pal.color(QPalette::Highlight);
        hover.setAlpha(30);
        painter->setPen(Qt::NoPen);
        painter->setBrush(hover);
        painter->drawRoundedRect(QRectF(opt.rect).adjusted(1, 1, -4, -1), 5, 5);
    }
    const QColor text = selected && active ? pal.color(QPalette::HighlightedText) : pal.color(QPalette::Text);

    QRect r = opt.rect.adjusted(6, 0, -10, 0);
    const QIcon icon = iconForCatType(index.data(ORVLibraryTreeModel::CatTypeRole).toLongLong());
    const int iconSize = 16;
    icon.paint(painter, QRect(r.left(), r.top() + (r.height() - iconSize) / 2, iconSize, iconSize));
    r.setLeft(r.left() + iconSize + 8);

    const qint64 count = index.data(ORVLibraryTreeModel::CountRole).toLongLong();
    QFont badgeFont = opt.font;
    badgeFont.setPointSizeF(opt.font.pointSizeF() * 0.82);
    const QString countText = count > 0 ? QString::number(count) : QString();
    if (!countText.isEmpty()) {
        const QFontMetrics bfm(badgeFont);
        const int w = std::max(bfm.horizontalAdvance(countText) + 12, 22);
        const QRect badge(r.right() - w, r.top() + (r.height() - bfm.height() - 2) / 2, w, bfm.height() + 2);
        QColor badgeFill = selected && active ? pal.color(QPalette::HighlightedText) : pal.color(QPalette::Mid);
        badgeFill.setAlpha(selected && active ? 60 : 70);
        painter->setPen(Qt::NoPen);
        painter->setBrush(badgeFill);
        painter->drawRoundedRect(badge, badge.height() / 2.0, badge.height() / 2.0);
        painter->setFont(badgeFont);
        painter->setPen(text);
        painter->drawText(badge, Qt::AlignCenter, countText);
        r.setRight(badge.left() - 6);
    }
    painter->setFont(opt.font);
    painter->setPen(text);
    painter->drawText(r, Qt::AlignVCenter | Qt::AlignLeft,
                      QFontMetrics(opt.font).elidedText(opt.text, Qt::ElideRight, r.width()));
    painter->restore();
}
