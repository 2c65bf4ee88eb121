#include "app/ORVMainWindow.h"

#include "core/AppDelegate.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryFolder.h"
#include "library/document_title.h"

#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>

#include <algorithm>

namespace {

// What an entry of the left list stands for: its kind and id.
constexpr int kCatTypeRole = Qt::UserRole;
constexpr int kUUIDRole = Qt::UserRole + 1;

void addEntry(QListWidget *list, const QString &text, qint64 catType, qint64 uuid)
{
    auto *item = new QListWidgetItem(text, list);
    item->setData(kCatTypeRole, catType);
    item->setData(kUUIDRole, uuid);
}

void addCategories(QListWidget *list, const QList<ORVCatTreeItemPtr> &items, int depth)
{
    for (const ORVCatTreeItemPtr &item : items) {
        const QString label = QStringLiteral("%1%2%3  (%4)")
                                  .arg(QString(depth * 4, QLatin1Char(' ')), item->name,
                                       item->catType == ORVCatType::SiteCategory ? QStringLiteral(" — site") : QString())
                                  .arg(item->itemCount);
        addEntry(list, label, item->catType, item->uuid);
        addCategories(list, item->sortedChildren(), depth + 1);
    }
}

} // namespace

ORVMainWindow::ORVMainWindow(AppDelegate *app, const QString &libraryPath, QWidget *parent)
    : QMainWindow(parent), m_app(app), m_requestedPath(libraryPath), m_stack(new QStackedWidget(this)),
      m_message(new QLabel(this)), m_categories(new QListWidget(this)), m_documents(new QListWidget(this))
{
    setWindowTitle(QStringLiteral("Orvo"));
    m_message->setAlignment(Qt::AlignCenter);
    m_message->setWordWrap(true);
    m_message->setMargin(40);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_documents->setWordWrap(true);
    m_documents->setSpacing(2);

    auto *splitter = new QSplitter(this);
    splitter->addWidget(m_categories);
    splitter->addWidget(m_documents);
    splitter->setStretchFactor(1, 3);
    splitter->setSizes({280, 820});
    m_stack->addWidget(m_message);
    m_stack->addWidget(splitter);
    setCentralWidget(m_stack);
    resize(1100, 720);

    connect(m_categories, &QListWidget::currentRowChanged, this, &ORVMainWindow::reloadDocuments);
    connect(m_app, &AppDelegate::doReloadTheLibraryCatTreeAndDocsListData, this, &ORVMainWindow::reloadLibrary);
    reloadLibrary();
}

ORVMainWindow::~ORVMainWindow() = default;

void ORVMainWindow::showMessage(const QString &message)
{
    m_message->setText(message);
    m_stack->setCurrentWidget(m_message);
    statusBar()->clearMessage();
}

void ORVMainWindow::reloadLibrary()
{
    const QString path = m_requestedPath.isEmpty() ? m_app->libraryModeMainURL() : m_requestedPath;
    if (path.isEmpty()) {
        showMessage(tr("There is no library yet.\n\nMake one with\n    orvo library init [FOLDER]\nand start Orvo again."));
        return;
    }
    if (!AppDelegate::checkIsLibraryVaidWithURL(path)) {
        showMessage(tr("%1 is not a library: it needs a docs folder and a mainlib.db.").arg(path));
        return;
    }
    if (const auto problem = ORVLibraryFolder::checkLibraryDatabase(path)) {
        showMessage(tr("The library %1 cannot be used: %2.").arg(path, *problem));
        return;
    }
    m_libraryPath = QFileInfo(path).canonicalFilePath();
    m_app->libraryURLStartAccessingSecurityScopedResourceByURL(m_libraryPath);
    m_manager = m_app->libraryModeDBManagerByURL(m_libraryPath);
    if (!m_manager) {
        showMessage(tr("The library %1 cannot be opened.").arg(path));
        return;
    }
    // A library without any document file gets one to begin with.
    m_app->libraryModeFirstDocumentURLByLibURL(m_libraryPath);
    m_app->reloadUncategoriesDocumentToLibraryWithURL(m_libraryPath);
    m_stack->setCurrentIndex(1);
    statusBar()->showMessage(m_libraryPath);
    reloadCategories();
}

void ORVMainWindow::reloadCategories()
{
    const QListWidgetItem *current = m_categories->currentItem();
    const qint64 selectedType = current ? current->data(kCatTypeRole).toLongLong() : qint64(ORVCatType::Inbox);
    const qint64 selectedUUID = current ? current->data(kUUIDRole).toLongLong() : qint64(ORVCatType::Inbox);

    const QSignalBlocker block(m_categories);
    m_categories->clear();
    addEntry(m_categories, tr("Inbox  (%1)").arg(m_manager->getAllItemsDBArticleCount()), ORVCatType::Inbox,
             ORVCatType::Inbox);
    addEntry(m_categories, tr("Uncategorized  (%1)").arg(m_manager->getUnCatsItemsDBArticleCount()),
             ORVCatType::Uncategorized, ORVCatType::Uncategorized);
    addEntry(m_categories, tr("Trash  (%1)").arg(m_manager->getTrashItemsDBArticleCount()), ORVCatType::Trash,
             ORVCatType::Trash);
    QList<ORVCatTreeItemPtr> tops = m_manager->getAllItemDBCatTree();
    std::stable_sort(tops.begin(), tops.end(), [](const auto &a, const auto &b) { return a->sort < b->sort; });
    addCategories(m_categories, tops, 0);

    int row = 0;
    for (int i = 0; i < m_categories->count(); ++i) {
        const QListWidgetItem *item = m_categories->item(i);
        if (item->data(kCatTypeRole).toLongLong() == selectedType && item->data(kUUIDRole).toLongLong() == selectedUUID)
            row = i;
    }
    m_categories->setCurrentRow(row);
    reloadDocuments();
}

void ORVMainWindow::reloadDocuments()
{
    m_documents->clear();
    const QListWidgetItem *entry = m_categories->currentItem();
    if (!entry || !m_manager)
        return;
    const qint64 catType = entry->data(kCatTypeRole).toLongLong();
    const qint64 uuid = entry->data(kUUIDRole).toLongLong();
    QList<ORVDBArticle> rows;
    if (catType == ORVCatType::Trash)
        rows = m_manager->getTrashItemsDBArticleWithSort(0);
    else if (catType == ORVCatType::Uncategorized)
        rows = m_manager->getUnCatsItemsDBArticleWithSort(0);
    else if (uuid > 1000)
        rows = m_manager->getItemsDBArticleWithCatIDSort(uuid, 0);
    else
        rows = m_manager->getAllItemsDBArticleWithSort(0);
    std::stable_sort(rows.begin(), rows.end(),
                     [](const ORVDBArticle &a, const ORVDBArticle &b) { return a.dateArt() > b.dateArt(); });

    const auto cats = m_manager->dicArticleCatsMaps();
    for (const ORVDBArticle &a : rows) {
        const ORVDocumentTitleAndSummary text =
            documentTitleAndSummaryWithFile(ORVLibraryFolder::documentPath(m_libraryPath, a.uuid()));
        QString line = a.dateArtNSDate().toString(QStringLiteral("yyyy-MM-dd HH:mm"));
        const QStringList names = cats.value(a.uuid()).names;
        if (!names.isEmpty())
            line += QStringLiteral("   · ") + names.join(QStringLiteral(", "));
        auto *item = new QListWidgetItem(
            QStringLiteral("%1\n%2").arg(text.title.isEmpty() ? tr("Untitled") : text.title, line), m_documents);
        item->setToolTip(text.summary.trimmed());
        item->setData(kUUIDRole, a.uuid());
    }
}
