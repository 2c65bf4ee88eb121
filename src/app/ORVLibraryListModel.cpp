#include "app/ORVLibraryListModel.h"

#include "core/MyPreferences.h"
#include "library/ORVDocumentDropHandler.h"
#include "library/ORVLibraryListController.h"
#include "library/ORVLibraryListDataItem.h"
#include "library/document_title.h"

#include <QApplication>
#include <QMimeData>
#include <QPainter>
#include <QRegularExpression>
#include <QTextLayout>

namespace {

// Row heights of the three list layouts, and of a group header.
constexpr int kRowHeightFull = 80;
constexpr int kRowHeightTitleAndDate = 46;
constexpr int kRowHeightTitle = 32;
constexpr int kRowHeightGroup = 20;
// updateTheListContentData reads this much of the edited text: a title and
// a summary line never need more.
constexpr int kEditedTextPrefix = 150;

const QString kInternalRowsMime = QStringLiteral("application/x-orvo-list-rows");

// The list's date format is a Unicode pattern ("yyyy/M/d H:m aa"); Qt's
// formats differ in the day-period and weekday letters.
QString qtDateFormatFromUnicodePattern(const QString &pattern)
{
    QString out;
    for (qsizetype i = 0; i < pattern.size();) {
        const QChar c = pattern.at(i);
        qsizetype run = 1;
        while (i + run < pattern.size() && pattern.at(i + run) == c)
            ++run;
        if (c == QLatin1Char('a'))
            out += QStringLiteral("AP");
        else if (c == QLatin1Char('E'))
            out += run >= 4 ? QStringLiteral("dddd") : QStringLiteral("ddd");
        else
            out += QString(run, c);
        i += run;
    }
    return out;
}

} // namespace

ORVLibraryListModel::ORVLibraryListModel(ORVLibraryListController *controller, QObject *parent)
    : QAbstractListModel(parent), m_controller(controller)
{
}

void ORVLibraryListModel::reload()
{
    beginResetModel();
    QString pattern = MyPreferences::sharedInstance()->documentListDateformat();
    if (pattern.isEmpty())
        pattern = QStringLiteral("M/d/yyyy H:m aa");
    m_dateFormat = qtDateFormatFromUnicodePattern(pattern);
    endResetModel();
}

int ORVLibraryListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_controller->listContent.size());
}

int ORVLibraryListModel::rowOfDocument(qint64 uuid) const
{
    const auto &rows = m_controller->listContent;
    for (int i = 0; i < rows.size(); ++i)
        if (!rows[i].isGroup && rows[i].art.uuid() == uuid)
            return i;
    return -1;
}

ORVLibraryListDataItem &ORVLibraryListModel::ensureTitle(int row) const
{
    ORVLibraryListDataItem &item = m_controller->listContent[row];
    if (!item.isGroup && item.title().isEmpty())
        item.setupTitleAndContentWithFileURL();
    return item;
}

void ORVLibraryListModel::updateRowWithText(qint64 uuid, const QString &text)
{
    const QString head = text.left(kEditedTextPrefix);
    const qsizetype newline = head.indexOf(QLatin1Char('\n'));
    QString title, summary;
    if (newline < 0) {
        title = documentTitleRemoveMark(head);
    } else {
        title = documentTitleRemoveMark(head.left(newline));
        summary = head.mid(newline + 1).replace(QLatin1Char('\n'), QLatin1Char(' '));
    }
    auto &rows = m_controller->listContent;
    for (int i = 0; i < rows.size(); ++i) {
        if (rows[i].isGroup || rows[i].art.uuid() != uuid)
            continue;
        rows[i].setTitle(title);
        rows[i].content = summary;
        emit dataChanged(index(i), index(i));
    }
}

QString ORVLibraryListModel::dateLineOfItem(const ORVLibraryListDataItem &item, const QString &dateFormat)
{
    QString line = item.addDate().toLocalTime().toString(dateFormat) + QStringLiteral("  ");
    if (!item.cats.isEmpty()) {
        QString cats;
        for (const QString &name : item.cats)
            cats += name + QStringLiteral(" 、");
        cats.chop(1);
        line += QStringLiteral("・") + cats;
    }
    return line;
}

QVariant ORVLibraryListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_controller->listContent.size())
        return {};
    const ORVLibraryListDataItem &item = role == TitleRole || role == SummaryRole || role == Qt::DisplayRole
                                             ? ensureTitle(index.row())
                                             : m_controller->listContent.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return item.title();
    case SummaryRole:
        return item.content;
    case DateRole:
        return item.isGroup ? QString() : dateLineOfItem(item, m_dateFormat);
    case IsGroupRole:
        return item.isGroup;
    case UUIDRole:
        return item.isGroup ? item.groupCatUUID : item.art.uuid();
    case PathRole:
        return item.url;
    case InTrashRole:
        return !item.isGroup && item.art.state() == 0;
    case Qt::ToolTipRole:
        return item.isGroup ? QVariant() : QVariant(item.title());
    default:
        return {};
    }
}

Qt::ItemFlags ORVLibraryListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    if (index.data(IsGroupRole).toBool())
        return Qt::ItemIsEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
}

Qt::DropActions ORVLibraryListModel::supportedDragActions() const
{
    return Qt::MoveAction | Qt::CopyAction | Qt::LinkAction;
}

Qt::DropActions ORVLibraryListModel::supportedDropActions() const { return Qt::MoveAction; }

QStringList ORVLibraryListModel::mimeTypes() const { return {kORV_LIB_DOC_PASTEBOARD_TYPE, kInternalRowsMime}; }

QMimeData *ORVLibraryListModel::mimeData(const QModelIndexList &indexes) const
{
    QList<ORVLibraryDocDragRecord> records;
    QStringList rows;
    QList<QUrl> urls;
    for (const QModelIndex &index : indexes) {
        const ORVLibraryListDataItem &item = m_controller->listContent.at(index.row());
        if (item.isGroup)
            continue;
        records << ORVLibraryDocDragRecord{item.art.uuid(), item.art.state()};
        rows << QString::number(index.row());
        urls << QUrl::fromLocalFile(item.url);
    }
    if (records.isEmpty())
        return nullptr;
    auto *mime = new QMimeData;
    mime->setData(kORV_LIB_DOC_PASTEBOARD_TYPE, ORVDocumentDropHandler::pasteboardDataWithRecords(records));
    mime->setData(kInternalRowsMime, rows.join(QLatin1Char(',')).toUtf8());
    // Other programs get the files.
    mime->setUrls(urls);
    return mime;
}

bool ORVLibraryListModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int,
                                          const QModelIndex &parent) const
{
    // Only between rows, and only rows of this list.
    return !parent.isValid() && data->hasFormat(kInternalRowsMime);
}

bool ORVLibraryListModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                       const QModelIndex &parent)
{
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    QList<int> dragged;
    for (const QByteArray &part : data->data(kInternalRowsMime).split(','))
        dragged << part.toInt();
    const int target = row < 0 ? rowCount() : row;
    switch (m_controller->tableViewAcceptDropRow(dragged, target)) {
    case ORVLibraryListController::ReorderResult::NeedsManualOrder:
        emit reorderNeedsManualOrder();
        break;
    case ORVLibraryListController::ReorderResult::Done:
        reload();
        break;
    case ORVLibraryListController::ReorderResult::NotAvailable:
        break;
    }
    // The controller rebuilt the rows; the view must not remove any.
    return false;
}

// ---- Delegate

ORVLibraryListDelegate::ORVLibraryListDelegate(QObject *parent) : QStyledItemDelegate(parent) {}

void ORVLibraryListDelegate::setHighlightKeys(const QStringList &keys) { m_keys = keys; }

QSize ORVLibraryListDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (index.data(ORVLibraryListModel::IsGroupRole).toBool())
        return {option.rect.width(), kRowHeightGroup + 6};
    switch (m_displayType) {
    case 1:
        return {option.rect.width(), kRowHeightTitleAndDate + 6};
    case 2:
        return {option.rect.width(), kRowHeightTitle};
    default:
        return {option.rect.width(), kRowHeightFull + 8};
    }
}

void ORVLibraryListDelegate::drawMarkedText(QPainter *painter, const QRect &rect, const QString &text,
                                            const QFont &font, const QColor &color, int maxLines) const
{
    QList<QTextLayout::FormatRange> marks;
    for (const QString &key : m_keys) {
        if (key.isEmpty())
            continue;
        const QRegularExpression re(QRegularExpression::escape(key), QRegularExpression::CaseInsensitiveOption);
        for (auto it = re.globalMatch(text); it.hasNext();) {
            const auto m = it.next();
            QTextLayout::FormatRange r;
            r.start = int(m.capturedStart());
            r.length = int(m.capturedLength());
            r.format.setForeground(QColor(0xd0, 0x1f, 0x1f));
            r.format.setFontWeight(QFont::DemiBold);
            marks << r;
        }
    }
    QTextLayout layout(text, font);
    QTextOption opt;
    opt.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(opt);
    layout.setFormats(marks);
    layout.beginLayout();
    const QFontMetrics fm(font);
    int y = 0;
    for (int n = 0; n < maxLines; ++n) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(rect.width());
        line.setPosition(QPointF(0, y));
        y += fm.lineSpacing();
    }
    layout.endLayout();
    painter->save();
    painter->setPen(color);
    painter->setClipRect(rect);
    // The last line that fits is elided by the clip; a fade would cost a
    // second layout per row.
    layout.draw(painter, rect.topLeft());
    painter->restore();
}

void ORVLibraryListDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                   const QModelIndex &index) const
{
    QStyleOptionViewItem opt(option);
    initStyleOption(&opt, index);
    const QPalette &pal = opt.palette;
    const bool selected = opt.state & QStyle::State_Selected;
    const bool active = opt.state & QStyle::State_Active;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);

    if (index.data(ORVLibraryListModel::IsGroupRole).toBool()) {
        painter->fillRect(opt.rect, pal.color(QPalette::AlternateBase));
        QFont bold = opt.font;
        bold.setBold(true);
        bold.setPointSizeF(bold.pointSizeF() * 0.92);
        painter->setFont(bold);
        painter->setPen(pal.color(QPalette::PlaceholderText));
        painter->drawText(opt.rect.adjusted(12, 0, -8, 0), Qt::AlignVCenter | Qt::AlignLeft,
                          index.data(ORVLibraryListModel::TitleRole).toString().toUpper());
        painter->restore();
        return;
    }

    if (selected) {
        QColor fill = pal.color(active ? QPalette::Active : QPalette::Inactive, QPalette::Highlight);
        if (!active)
            fill.setAlpha(110);
        painter->fillRect(opt.rect, fill);
    } else if (opt.state & QStyle::State_MouseOver) {
        QColor hover = pal.color(QPalette::Highlight);
        hover.setAlpha(28);
        painter->fillRect(opt.rect, hover);
    }
    const QColor textColor = selected && active ? pal.color(QPalette::HighlightedText) : pal.color(QPalette::Text);
    QColor dimColor = selected && active ? pal.color(QPalette::HighlightedText) : pal.color(QPalette::PlaceholderText);

    const QRect inner = opt.rect.adjusted(14, 7, -12, -6);
    QFont small = opt.font;
    small.setPointSizeF(opt.font.pointSizeF() * 0.85);
    QFont titleFont = opt.font;
    titleFont.setWeight(QFont::DemiBold);
    titleFont.setPointSizeF(opt.font.pointSizeF() * 1.05);

    QString title = index.data(ORVLibraryListModel::TitleRole).toString();
    if (title.isEmpty())
        title = QObject::tr("Untitled");
    int y = inner.top();
    if (m_displayType == 0 || m_displayType == 1) {
        const QFontMetrics fm(small);
        painter->setFont(small);
        painter->setPen(dimColor);
        painter->drawText(QRect(inner.left(), y, inner.width(), fm.height()), Qt::AlignLeft | Qt::AlignVCenter,
                          fm.elidedText(index.data(ORVLibraryListModel::DateRole).toString(), Qt::ElideRight,
                                        inner.width()));
        y += fm.height() + 3;
    } else {
        y = opt.rect.top() + (opt.rect.height() - QFontMetrics(titleFont).height()) / 2;
    }
    const QFontMetrics tfm(titleFont);
    drawMarkedText(painter, QRect(inner.left(), y, inner.width(), tfm.height()),
                   tfm.elidedText(title, Qt::ElideRight, inner.width()), titleFont, textColor, 1);
    y += tfm.height() + 2;
    if (m_displayType == 0) {
        const QString summary = index.data(ORVLibraryListModel::SummaryRole).toString().simplified();
        const QFontMetrics sfm(small);
        const int lines = std::max(1, (inner.bottom() - y) / sfm.lineSpacing());
        drawMarkedText(painter, QRect(inner.left(), y, inner.width(), inner.bottom() - y), summary, small, dimColor,
                       std::min(lines, 2));
    }
    // A hairline between rows.
    QColor line = pal.color(QPalette::Mid);
    line.setAlpha(60);
    painter->setPen(line);
    painter->drawLine(opt.rect.left() + 14, opt.rect.bottom(), opt.rect.right(), opt.rect.bottom());
    painter->restore();
}
