#include "app/ORVQuickSearchWindow.h"

#include "app/ORVAppShell.h"
#include "core/AppDelegate.h"
#include "core/ORVExternalRecentDocumentManager.h"
#include "core/ORVLibraryRecentDocumentManager.h"
#include "core/ORVNotificationCenter.h"
#include "library/ORVLibraryFolder.h"
#include "library/ORVSearchController.h"
#include "library/document_title.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// The wait after typing before a search, as in the library window.
constexpr int kSearchDelayMs = 400;
// Rows of recent documents shown while the field is empty.
constexpr int kRecentRows = 30;
constexpr int kPathRole = Qt::UserRole + 1;

} // namespace

ORVQuickSearchWindow::ORVQuickSearchWindow(ORVAppShell *shell, AppDelegate *app, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), m_shell(shell), m_app(app),
      m_search(std::make_unique<ORVSearchController>())
{
    setWindowTitle(tr("Quick Search"));
    m_field = new QLineEdit(this);
    m_field->setPlaceholderText(tr("Search documents"));
    QFont big = m_field->font();
    big.setPointSizeF(big.pointSizeF() * 1.3);
    m_field->setFont(big);
    m_field->setMinimumHeight(40);
    m_results = new QListWidget(this);
    m_results->setFrameShape(QFrame::NoFrame);
    m_results->setUniformItemSizes(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->addWidget(m_field);
    layout->addWidget(m_results, 1);
    resize(620, 420);

    m_timer = new QTimer(this);
    m_timer->setSingleShot(true);
    m_timer->setInterval(kSearchDelayMs);
    connect(m_field, &QLineEdit::textChanged, m_timer, qOverload<>(&QTimer::start));
    connect(m_timer, &QTimer::timeout, this, [this] { searchNow(m_field->text()); });
    connect(m_field, &QLineEdit::returnPressed, this, [this] { openRow(std::max(0, m_results->currentRow())); });
    connect(m_results, &QListWidget::itemActivated, this,
            [this](QListWidgetItem *item) { openRow(m_results->row(item)); });
    ORVNotificationCenter::defaultCenter()->addObserver(
        kORVSearchControllerDidUpdateResultNotification, this, [this](const ORVNotification &n) {
            if (n.sender != m_search.get() || m_query.isEmpty())
                return;
            const auto rows = n.userInfo.value(QStringLiteral("data")).value<QList<ORVLibraryListDataItem>>();
            m_results->clear();
            for (ORVLibraryListDataItem row : rows) {
                if (row.title().isEmpty())
                    row.setupTitleAndContentWithFileURL();
                auto *item = new QListWidgetItem(row.title().isEmpty() ? tr("Untitled") : row.title(), m_results);
                item->setToolTip(row.content);
                item->setData(kPathRole, row.url);
                item->setIcon(QIcon::fromTheme(row.art.state() == 0 ? QStringLiteral("user-trash")
                                                                    : QStringLiteral("text-x-generic")));
            }
            if (m_results->count() > 0)
                m_results->setCurrentRow(0);
            emit resultsChanged();
        });
}

ORVQuickSearchWindow::~ORVQuickSearchWindow() = default;

void ORVQuickSearchWindow::popUp()
{
    m_field->clear();
    m_query.clear();
    showRecentDocuments();
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        move(area.center().x() - width() / 2, area.top() + area.height() / 5);
    }
    show();
    raise();
    activateWindow();
    m_field->setFocus();
}

void ORVQuickSearchWindow::showRecentDocuments()
{
    m_results->clear();
    const QString main = m_app->libraryModeMainURL();
    int shown = 0;
    if (!main.isEmpty()) {
        for (const QVariant &v : m_app->libraryRecentDocumentManager()->items()) {
            const QVariantMap record = v.toMap();
            const QString path = ORVLibraryFolder::documentPath(main, record.value(QStringLiteral("uuid")).toLongLong());
            if (!QFileInfo::exists(path))
                continue;
            QString title = documentTitleRemoveMark(readFileContentWithPathMaxLineLenth(path, 1, 120).section(QLatin1Char('\n'), 0, 0));
            auto *item = new QListWidgetItem(QIcon::fromTheme(QStringLiteral("text-x-generic")),
                                             title.trimmed().isEmpty() ? tr("Untitled") : title.trimmed(), m_results);
            item->setData(kPathRole, path);
            if (++shown >= kRecentRows)
                break;
        }
    }
    const QVariantList external = m_app->externalRecentDocumentManager()->items();
    // The external list keeps its newest entry last.
    for (auto it = external.rbegin(); it != external.rend() && shown < kRecentRows; ++it) {
        const QString path = it->toString();
        if (!QFileInfo::exists(path))
            continue;
        auto *item = new QListWidgetItem(QIcon::fromTheme(QStringLiteral("folder")), QFileInfo(path).fileName(), m_results);
        item->setToolTip(path);
        item->setData(kPathRole, path);
        ++shown;
    }
    if (m_results->count() > 0)
        m_results->setCurrentRow(0);
    emit resultsChanged();
}

void ORVQuickSearchWindow::searchNow(const QString &text)
{
    m_timer->stop();
    m_query = text.trimmed();
    if (m_query.isEmpty()) {
        m_search->stopQuery();
        showRecentDocuments();
        return;
    }
    const QString main = m_app->libraryModeMainURL();
    if (main.isEmpty())
        return;
    m_search->queryWithLibraryURL(main, m_app->libraryModeMainDBManager(), text);
}

bool ORVQuickSearchWindow::openRow(int row)
{
    QListWidgetItem *item = m_results->item(row);
    if (!item)
        return false;
    const QString path = item->data(kPathRole).toString();
    hide();
    return m_shell && m_shell->openFile(path);
}

void ORVQuickSearchWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Down || event->key() == Qt::Key_Up) {
        const int step = event->key() == Qt::Key_Down ? 1 : -1;
        const int row = std::clamp(m_results->currentRow() + step, 0, std::max(0, m_results->count() - 1));
        m_results->setCurrentRow(row);
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        hide();
        return;
    }
    QDialog::keyPressEvent(event);
}
