#include "app/ORVLibraryWindow.h"

#include "app/ORVAppShell.h"
#include "app/ORVEditorArea.h"
#include "app/ORVLibraryListModel.h"
#include "app/ORVLibraryTreeDelegate.h"
#include "app/ORVLibraryTreeModel.h"
#include "app/ORVMDTextView.h"
#include "app/ORVSidebarTreeView.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "core/ORVNotificationCenter.h"
#include "library/ORVCategoryEditor.h"
#include "library/ORVDBCat.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryDocuments.h"
#include "library/ORVLibraryFolder.h"
#include "library/ORVLibraryListController.h"
#include "library/ORVLibraryListNotifications.h"
#include "library/ORVLibraryNotifications.h"
#include "library/ORVLibraryTree.h"
#include "library/ORVSearchController.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

// The search waits this long after the last change of the field: a query
// is typed in bursts, and each search reads every document.
constexpr int kSearchDelayMs = 400;
// Default widths of the tree and list panes, in pixels.
constexpr int kTreePaneWidth = 220;
constexpr int kListPaneWidth = 300;

} // namespace

ORVLibraryWindow::ORVLibraryWindow(ORVAppShell *shell, AppDelegate *app, const QString &libraryPath, QWidget *parent)
    : QMainWindow(parent), m_shell(shell), m_app(app)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("ORVLibraryWindow"));
    m_libraryPath = libraryPath.isEmpty() ? app->libraryModeMainURL() : QFileInfo(libraryPath).absoluteFilePath();
    if (!libraryPath.isEmpty())
        app->libraryURLStartAccessingSecurityScopedResourceByURL(m_libraryPath);
    m_manager = app->libraryModeDBManagerWithURLIsReload(libraryPath.isEmpty() ? QString() : m_libraryPath, false);

    m_tree = std::make_unique<ORVLibraryTree>(m_manager, app->libraryRecentDocumentManager());
    m_list = std::make_unique<ORVLibraryListController>(m_manager, m_libraryPath, app->libraryRecentDocumentManager(),
                                                        m_tree.get());
    m_list->options = ORVLibraryListOptions::fromPreferences(app->prfs());
    const QString path = m_libraryPath;
    m_list->reloadUncategoriesDocuments = [app, path] { app->reloadUncategoriesDocumentToLibraryWithURL(path); };

    buildViews();
    buildActions();
    buildMenus();
    buildToolbar();
    observeNotifications();
    updateWindowTitle();
    resize(1360, 860);

    if (m_manager)
        loadTree();
    else
        showError(tr("The library at %1 cannot be opened.").arg(m_libraryPath));
}

ORVLibraryWindow::~ORVLibraryWindow() = default;

QString ORVLibraryWindow::documentPath(qint64 uuid) const
{
    return ORVLibraryFolder::documentPath(m_libraryPath, uuid);
}

void ORVLibraryWindow::buildViews()
{
    // Tree pane.
    m_treePane = new QWidget(this);
    m_treePane->setObjectName(QStringLiteral("orvTreePane"));
    m_treeView = new ORVSidebarTreeView(m_treePane);
    m_treeModel = new ORVLibraryTreeModel(m_tree.get(), this);
    m_treeModel->shownListProvider = [this](qint64 &uuid, bool &isTag, QString &tagName) {
        uuid = m_list->fetchUUID;
        isTag = m_list->isFetchTag;
        tagName = m_list->fetchTagName;
    };
    m_treeView->setModel(m_treeModel);
    m_treeView->setItemDelegate(new ORVLibraryTreeDelegate(m_treeView));
    m_treeView->setEditTriggers(QAbstractItemView::EditKeyPressed);
    m_treeView->setDragDropMode(QAbstractItemView::DragDrop);
    m_treeView->setDefaultDropAction(Qt::MoveAction);
    m_treeView->setDropIndicatorShown(true);
    m_treeView->setContextMenuPolicy(Qt::CustomContextMenu);
    auto *treeLayout = new QVBoxLayout(m_treePane);
    treeLayout->setContentsMargins(0, 0, 0, 0);
    treeLayout->addWidget(m_treeView);

    // List pane: search field, header with the sort button, the rows.
    m_listPane = new QWidget(this);
    m_searchField = new QLineEdit(m_listPane);
    m_searchField->setPlaceholderText(tr("Search  (-t tags  -c categories  -h title)"));
    m_searchField->setClearButtonEnabled(true);
    m_searchField->addAction(QIcon::fromTheme(QStringLiteral("edit-find")), QLineEdit::LeadingPosition);
    m_listHeader = new QLabel(m_listPane);
    QFont headerFont = m_listHeader->font();
    headerFont.setBold(true);
    m_listHeader->setFont(headerFont);
    m_sortButton = new QPushButton(m_listPane);
    m_sortButton->setFlat(true);
    m_sortButton->setMenu(new QMenu(m_sortButton));
    connect(m_sortButton->menu(), &QMenu::aboutToShow, this, [this] { makeSortMenu(m_sortButton->menu()); });
    auto *header = new QHBoxLayout;
    header->setContentsMargins(12, 2, 6, 2);
    m_listHeader->setMinimumWidth(40);
    m_listHeader->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    header->addWidget(m_listHeader, 1);
    header->addWidget(m_sortButton);

    m_listModel = new ORVLibraryListModel(m_list.get(), this);
    m_listDelegate = new ORVLibraryListDelegate(this);
    m_listDelegate->setDisplayType(int(m_app->prfs()->documentListDisplayType()));
    m_listView = new QListView(m_listPane);
    m_listView->setModel(m_listModel);
    m_listView->setItemDelegate(m_listDelegate);
    m_listView->setFrameShape(QFrame::NoFrame);
    m_listView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_listView->setDragEnabled(true);
    m_listView->setAcceptDrops(true);
    m_listView->setDropIndicatorShown(true);
    m_listView->setDragDropMode(QAbstractItemView::DragDrop);
    m_listView->setDefaultDropAction(Qt::MoveAction);
    m_listView->setMouseTracking(true);
    m_listView->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_listView->setContextMenuPolicy(Qt::CustomContextMenu);
    m_listView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_emptyList = new QLabel(tr("No Documents"), m_listView->viewport());
    m_emptyList->setAlignment(Qt::AlignCenter);
    m_emptyList->setForegroundRole(QPalette::PlaceholderText);
    m_emptyList->hide();

    auto *listLayout = new QVBoxLayout(m_listPane);
    listLayout->setContentsMargins(0, 6, 0, 0);
    listLayout->setSpacing(4);
    auto *searchRow = new QHBoxLayout;
    searchRow->setContentsMargins(8, 0, 8, 0);
    searchRow->addWidget(m_searchField);
    listLayout->addLayout(searchRow);
    listLayout->addLayout(header);
    listLayout->addWidget(m_listView, 1);

    // Editor area, with a placeholder while no document is open.
    m_editorArea = new ORVEditorArea(m_app, this);
    m_noDocument = new QLabel(tr("No Document Selected"), this);
    m_noDocument->setAlignment(Qt::AlignCenter);
    m_noDocument->setForegroundRole(QPalette::PlaceholderText);
    QFont big = m_noDocument->font();
    big.setPointSizeF(big.pointSizeF() * 1.4);
    m_noDocument->setFont(big);
    m_editorStack = new QStackedWidget(this);
    m_editorStack->addWidget(m_noDocument);
    m_editorStack->addWidget(m_editorArea);

    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setHandleWidth(1);
    m_splitter->addWidget(m_treePane);
    m_splitter->addWidget(m_listPane);
    m_splitter->addWidget(m_editorStack);
    m_splitter->setCollapsible(2, false);
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 0);
    m_splitter->setStretchFactor(2, 1);
    m_splitter->setSizes({kTreePaneWidth, kListPaneWidth, 840});
    setCentralWidget(m_splitter);
    statusBar()->setSizeGripEnabled(true);

    connect(m_treeView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ORVLibraryWindow::treeSelectionChanged);
    connect(m_treeModel, &QAbstractItemModel::modelReset, this, [this] {
        connect(m_treeView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
                &ORVLibraryWindow::treeSelectionChanged, Qt::UniqueConnection);
    });
    connect(m_treeModel, &ORVLibraryTreeModel::operationFailed, this, &ORVLibraryWindow::showError);
    connect(m_treeModel, &ORVLibraryTreeModel::documentsDropped, this, [this] { reloadList(); });
    connect(m_treeModel, &ORVLibraryTreeModel::categoriesMoved, this, [this](const QList<qint64> &uuids) {
        m_treeView->expandToDepth(0);
        if (!uuids.isEmpty())
            selectTreeEntry(uuids.first());
    });
    connect(m_treeView, &QWidget::customContextMenuRequested, this, &ORVLibraryWindow::showTreeContextMenu);
    connect(m_listView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ORVLibraryWindow::listSelectionChanged);
    connect(m_listView, &QWidget::customContextMenuRequested, this, &ORVLibraryWindow::showListContextMenu);
    connect(m_listModel, &ORVLibraryListModel::reorderNeedsManualOrder, this, [this] {
        const auto answer = QMessageBox::question(
            this, tr("Switch to the manual order?"),
            tr("Documents can only be arranged by hand in the manual order. Switch this category to the manual "
               "order?"),
            QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok);
        if (answer == QMessageBox::Ok)
            m_list->setTopCategoryToManualOrder();
    });
    connect(m_list.get(), &ORVLibraryListController::listContentDidChange, this, [this] {
        const ORVEditorTab *tab = m_editorArea->currentEditorTab();
        // Without group rows every row has one height: the view then sizes
        // one row instead of asking for each of thousands.
        const bool grouped = std::any_of(m_list->listContent.cbegin(), m_list->listContent.cend(),
                                         [](const ORVLibraryListDataItem &row) { return row.isGroup; });
        m_listView->setUniformItemSizes(!grouped);
        m_listModel->reload();
        m_listDelegate->setHighlightKeys(m_list->searchHighlightKeys);
        m_emptyList->setVisible(m_listModel->rowCount() == 0);
        m_emptyList->resize(m_listView->viewport()->size());
        if (tab && tab->document()->isLibraryDocument()) {
            const int row = m_listModel->rowOfDocument(tab->document()->libraryDocumentUUID());
            if (row >= 0) {
                m_selectingProgrammatically = true;
                m_listView->setCurrentIndex(m_listModel->index(row));
                m_selectingProgrammatically = false;
            }
        }
        updateActions();
        emit listReloaded();
    });

    connect(m_editorArea, &ORVEditorArea::currentEditorTabChanged, this, [this](ORVEditorTab *tab) {
        m_editorStack->setCurrentIndex(tab ? 1 : 0);
        if (tab && tab->document()->isLibraryDocument()) {
            const int row = m_listModel->rowOfDocument(tab->document()->libraryDocumentUUID());
            if (row >= 0 && m_listView->currentIndex().row() != row) {
                m_selectingProgrammatically = true;
                m_listView->setCurrentIndex(m_listModel->index(row));
                m_selectingProgrammatically = false;
            }
        }
        updateActions();
        updateWindowTitle();
    });
    connect(m_editorArea, &ORVEditorArea::editorTabTextChanged, this, &ORVLibraryWindow::editedTabChanged);
    connect(m_editorArea, &ORVEditorArea::editorTabLinkActivated, this,
            [this](const QString &path) { m_shell->openFile(path); });
    connect(m_editorArea, &ORVEditorArea::applicationLinkActivated, this,
            [this](const QUrl &url) { m_shell->handleURL(url.toString()); });

    m_searchTimer.setSingleShot(true);
    m_searchTimer.setInterval(kSearchDelayMs);
    connect(m_searchField, &QLineEdit::textChanged, this, [this](const QString &text) { searchFor(text); });
    connect(&m_searchTimer, &QTimer::timeout, this, [this] { searchFor(m_searchField->text(), true); });
}

void ORVLibraryWindow::observeNotifications()
{
    ORVNotificationCenter *center = ORVNotificationCenter::defaultCenter();
    center->addObserver(kORVLibraryCategoryTreeNeedToUpdateNotification, this,
                        [this](const ORVNotification &n) {
                            if (n.sender == m_tree.get())
                                m_treeModel->refreshCounts();
                        });
    const auto reshape = [this](const ORVNotification &) {
        if (!m_treeReady)
            return;
        const ORVCatTreeItemPtr selected = selectedTreeItem();
        const qint64 uuid = selected ? selected->uuid : 15;
        const bool isTag = selected && selected->catType == ORVCatType::Tag;
        QSet<qint64> expanded;
        std::function<void(const QModelIndex &)> walk = [&](const QModelIndex &parent) {
            for (int r = 0; r < m_treeModel->rowCount(parent); ++r) {
                const QModelIndex i = m_treeModel->index(r, 0, parent);
                if (m_treeView->isExpanded(i))
                    expanded.insert(i.data(ORVLibraryTreeModel::UUIDRole).toLongLong());
                walk(i);
            }
        };
        walk({});
        m_selectingProgrammatically = true;
        m_treeModel->reloadTree();
        std::function<void(const QModelIndex &)> expand = [&](const QModelIndex &parent) {
            for (int r = 0; r < m_treeModel->rowCount(parent); ++r) {
                const QModelIndex i = m_treeModel->index(r, 0, parent);
                if (expanded.contains(i.data(ORVLibraryTreeModel::UUIDRole).toLongLong()))
                    m_treeView->expand(i);
                expand(i);
            }
        };
        expand({});
        m_selectingProgrammatically = false;
        if (!selectTreeEntry(uuid, isTag))
            selectTreeEntry(15);
    };
    center->addObserver(kORVTreeViewControllerTreeControllerRearrangeObjectsNotification, this, reshape);
    center->addObserver(kORVTreeViewControllerReloadOutlineViewNotification, this, reshape);
    center->addObserver(kORVListViewControllerReloadTableViewNotification, this, [this](const ORVNotification &n) {
        if (n.sender == m_list.get() || !m_manager ||
            n.userInfo.value(QStringLiteral("dbURL")).toString() != m_manager->dbURL())
            return;
        if (!m_showingSearch)
            reloadList();
    });
    center->addObserver(kORVCatSortDidChangedNotification, this, [this](const ORVNotification &) {
        if (!m_showingSearch)
            reloadList();
        updateSortButton();
    });
    center->addObserver(kORVSearchControllerDidUpdateResultNotification, this,
                        [this](const ORVNotification &n) { searchResultsArrived(n.userInfo); });
    center->addObserver(PAPreferencesDidChangeNotification, this, [this](const ORVNotification &n) {
        const QString key = n.userInfo.value(QStringLiteral("key")).toString();
        if (key == QLatin1String("documentListDateformat")) {
            m_listModel->reload();
        } else if (key == QLatin1String("documentListDisplayType")) {
            m_listDelegate->setDisplayType(int(m_app->prfs()->documentListDisplayType()));
            m_listModel->reload();
        } else if (key == QLatin1String("libraryDefaultSortType") || key == QLatin1String("isGroupLibDocumentsList")) {
            if (!m_showingSearch)
                reloadList();
            updateSortButton();
        }
    });
    connect(m_app, &AppDelegate::doReloadTheLibraryCatTreeAndDocsListData, this,
            &ORVLibraryWindow::doReloadTheLibraryCatTreeAndDocsListData);
}

void ORVLibraryWindow::loadTree()
{
    m_tree->fetchLibraryTreeDataWithCompletion([this] {
        m_selectingProgrammatically = true;
        m_treeModel->reloadTree();
        m_treeView->expandToDepth(0);
        m_selectingProgrammatically = false;
        m_treeReady = true;
        if (!m_pendingState.isEmpty())
            applyPendingState();
        else
            selectTreeEntry(15);
        emit treeReady();
    });
}

bool ORVLibraryWindow::selectTreeEntry(qint64 uuid, bool isTag)
{
    const QModelIndex index = m_treeModel->indexForUUID(uuid, isTag);
    if (!index.isValid())
        return false;
    m_treeView->scrollTo(index);
    if (m_treeView->currentIndex() == index && m_treeView->selectionModel()->isSelected(index)) {
        treeSelectionChanged();
        return true;
    }
    m_treeView->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    return true;
}

ORVCatTreeItemPtr ORVLibraryWindow::selectedTreeItem() const
{
    const QModelIndexList rows = m_treeView->selectionModel()->selectedIndexes();
    return rows.isEmpty() ? nullptr : m_treeModel->sharedItemForIndex(rows.first());
}

void ORVLibraryWindow::treeSelectionChanged()
{
    if (m_selectingProgrammatically)
        return;
    const ORVCatTreeItemPtr item = selectedTreeItem();
    if (!item)
        return;
    if (m_showingSearch) {
        // Picking an entry leaves the search.
        m_searchField->blockSignals(true);
        m_searchField->clear();
        m_searchField->blockSignals(false);
        m_showingSearch = false;
        m_searchTimer.stop();
        ORVSearchController::sharedInstance()->stopQuery();
        ORVSearchController::sharedInstance()->clearSearchData();
        m_list->searchHighlightKeys.clear();
    }
    m_list->options = ORVLibraryListOptions::fromPreferences(m_app->prfs());
    if (item->catType == ORVCatType::Tag)
        m_list->fetchAndReloadListDataByCatUUIDIsFetchTagInCurrentCatUUID(item->uuid, true, 0);
    else
        m_list->fetchAndReloadListDataByCatUUID(item->uuid);
    m_listHeader->setText(ORVLibraryTreeModel::displayNameOfItem(*item));
    updateSortButton();
    updateActions();
}

void ORVLibraryWindow::reloadList()
{
    if (!m_manager)
        return;
    m_list->options = ORVLibraryListOptions::fromPreferences(m_app->prfs());
    m_list->fetchAndReloadListData();
}

QList<ORVLibraryListDataItem> ORVLibraryWindow::selectedListItems() const
{
    QList<ORVLibraryListDataItem> items;
    QModelIndexList rows = m_listView->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(), [](const QModelIndex &a, const QModelIndex &b) { return a.row() < b.row(); });
    for (const QModelIndex &index : rows)
        if (index.row() < m_list->listContent.size() && !m_list->listContent[index.row()].isGroup)
            items << m_list->listContent[index.row()];
    return items;
}

bool ORVLibraryWindow::selectDocument(qint64 uuid)
{
    const int row = m_listModel->rowOfDocument(uuid);
    if (row < 0)
        return false;
    m_listView->setCurrentIndex(m_listModel->index(row));
    m_listView->scrollTo(m_listModel->index(row));
    return true;
}

void ORVLibraryWindow::listSelectionChanged()
{
    updateActions();
    if (m_selectingProgrammatically)
        return;
    const QList<ORVLibraryListDataItem> items = selectedListItems();
    if (items.size() == 1)
        openDocumentPath(items.first().url);
}

ORVEditorTab *ORVLibraryWindow::openLibraryDocument(qint64 uuid) { return openDocumentPath(documentPath(uuid)); }

ORVEditorTab *ORVLibraryWindow::openDocumentPath(const QString &path)
{
    if (path.isEmpty())
        return nullptr;
    ORVEditorTab *tab = m_editorArea->openDocument(path);
    m_editorStack->setCurrentIndex(1);
    return tab;
}

void ORVLibraryWindow::editedTabChanged(ORVEditorTab *tab)
{
    if (tab && tab->document()->isLibraryDocument())
        m_listModel->updateRowWithText(tab->document()->libraryDocumentUUID(), tab->textView()->markdownText());
    updateWindowTitle();
}

ORVEditorTab *ORVLibraryWindow::newDocument()
{
    if (!m_manager)
        return nullptr;
    const ORVCatTreeItemPtr place = selectedTreeItem();
    QString error;
    const std::optional<ORVDBArticle> art =
        ORVLibraryDocuments(m_manager, m_libraryPath, m_tree.get()).newDocument(place.get(), QString(), &error);
    if (!art) {
        showError(error.isEmpty() ? tr("The new document could not be made.") : error);
        return nullptr;
    }
    if (m_showingSearch) {
        m_searchField->clear();
        searchFor(QString(), true);
    }
    reloadList();
    ORVEditorTab *tab = openLibraryDocument(art->uuid());
    if (!tab)
        return nullptr;
    selectDocument(art->uuid());
    if (tab->paneMode() == ORVEditorPaneMode::PreviewOnly)
        tab->setPaneMode(ORVEditorPaneMode::EditorAndPreview);
    // Typing goes behind the heading mark.
    QTextCursor cursor = tab->textView()->textCursor();
    if (tab->textView()->markdownText().startsWith(QStringLiteral("# "))) {
        cursor.setPosition(2);
        tab->textView()->setTextCursor(cursor);
    }
    tab->textView()->setFocus();
    return tab;
}

void ORVLibraryWindow::moveSelectedToTrash()
{
    const QList<ORVLibraryListDataItem> items = selectedListItems();
    if (items.isEmpty())
        return;
    QStringList paths;
    for (const ORVLibraryListDataItem &item : items)
        paths << item.url;
    // Unsaved text is written before the document leaves the window.
    m_editorArea->closeTabsOfPaths(paths);
    m_list->moveToTrashAction(items);
    m_listView->clearSelection();
}

void ORVLibraryWindow::putBackSelected()
{
    const QList<ORVLibraryListDataItem> items = selectedListItems();
    if (!items.isEmpty())
        m_list->putBackAction(items);
    m_listView->clearSelection();
}

void ORVLibraryWindow::deleteSelected(bool confirmed)
{
    QList<ORVLibraryListDataItem> items;
    for (const ORVLibraryListDataItem &item : selectedListItems())
        if (item.art.state() == 0)
            items << item;
    if (items.isEmpty())
        return;
    if (!confirmed &&
        QMessageBox::question(this, tr("Delete the documents?"),
                              tr("%n document(s) will be deleted. Their files go to the system's trash.", nullptr,
                                 int(items.size())),
                              QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Cancel) != QMessageBox::Ok)
        return;
    QStringList paths;
    for (const ORVLibraryListDataItem &item : items)
        paths << item.url;
    m_editorArea->closeTabsOfPaths(paths);
    m_list->deleteAction(items);
}

void ORVLibraryWindow::emptyTrash(bool confirmed)
{
    if (!m_manager)
        return;
    if (!confirmed && QMessageBox::question(this, tr("Empty Trash?"), tr("Empty Trash cannot be restored."),
                                            QMessageBox::Ok | QMessageBox::Cancel,
                                            QMessageBox::Cancel) != QMessageBox::Ok)
        return;
    QStringList paths;
    for (const ORVDBArticle &art : m_list->allTrashArticles())
        paths << documentPath(art.uuid());
    m_editorArea->closeTabsOfPaths(paths);
    m_list->emptyTrashAction();
}

bool ORVLibraryWindow::newCategory(bool isSubCategory, bool isSite)
{
    if (!m_treeReady)
        return false;
    ORVCategoryEditor editor(*m_tree);
    QString error;
    ORVCatTreeItemPtr made;
    if (isSubCategory)
        made = editor.newCategoryWithTreeNode(selectedTreeItem(), tr("Untitled"), &error);
    else
        made = editor.newTopCategoryIsStaticSite(isSite, tr("Category"), &error);
    if (!made) {
        showError(error);
        return false;
    }
    m_treeModel->reloadTree();
    m_treeView->expandToDepth(0);
    const QModelIndex index = m_treeModel->indexForItem(made.get());
    m_treeView->expand(index.parent());
    selectTreeEntry(made->uuid);
    if (isVisible())
        m_treeView->edit(index);
    return true;
}

void ORVLibraryWindow::renameSelectedCategory()
{
    const ORVCatTreeItemPtr item = selectedTreeItem();
    if (item && item->uuid > 1000 && item->catType != ORVCatType::Tag)
        m_treeView->edit(m_treeModel->indexForItem(item.get()));
}

void ORVLibraryWindow::deleteSelectedCategory(bool confirmed)
{
    const ORVCatTreeItemPtr item = selectedTreeItem();
    if (!item || (item->uuid <= 1000 && item->catType != ORVCatType::Tag)) {
        showError(tr("Please select a category !"));
        return;
    }
    const bool isTag = item->catType == ORVCatType::Tag;
    if (!confirmed &&
        QMessageBox::question(this, isTag ? tr("Delete the tag?") : tr("Delete the category?"),
                              isTag ? tr("Deleted tag cannot be restored.") : tr("Deleted category cannot be restored."),
                              QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Cancel) != QMessageBox::Ok)
        return;
    QString error;
    const ORVCatTreeItemPtr next = ORVCategoryEditor(*m_tree).deleteCategoryOrTag(item, &error);
    if (!next) {
        showError(error);
        return;
    }
    m_treeModel->reloadTree();
    m_treeView->expandToDepth(0);
    if (!selectTreeEntry(next->uuid, next->catType == ORVCatType::Tag))
        selectTreeEntry(15);
}

void ORVLibraryWindow::copyLinkOfSelected()
{
    const QString text = ORVLibraryListController::noteLinkTextWithItems(selectedListItems());
    if (!text.isEmpty())
        QApplication::clipboard()->setText(text);
}

void ORVLibraryWindow::importFiles(const QStringList &paths)
{
    if (!m_manager || paths.isEmpty())
        return;
    const ORVCatTreeItemPtr place = selectedTreeItem();
    const qint64 target = place && place->uuid > 1000 && place->catType != ORVCatType::Tag ? place->uuid : 0;
    const ORVLibraryDocuments::ImportResult result =
        ORVLibraryDocuments(m_manager, m_libraryPath, m_tree.get()).importToLibrary(paths, target);
    if (result.isNothingImported()) {
        showError(ORVLibraryDocuments::importNothingMessage());
        return;
    }
    reloadList();
    statusBar()->showMessage(tr("Imported %n document(s).", nullptr, int(result.imported.size())), 5000);
}

void ORVLibraryWindow::exportSelected(const QString &folder)
{
    if (!m_manager || folder.isEmpty())
        return;
    const auto result =
        ORVLibraryDocuments(m_manager, m_libraryPath, m_tree.get()).exportDocumentsToMarkdown(selectedListItems(), folder);
    if (!result.failed.isEmpty())
        showError(tr("These documents could not be exported:\n%1").arg(result.failed.join(QLatin1Char('\n'))));
    else
        statusBar()->showMessage(tr("Exported %n document(s).", nullptr, int(result.written.size())), 5000);
}

void ORVLibraryWindow::searchFor(const QString &text, bool now)
{
    if (!now) {
        m_searchTimer.start();
        return;
    }
    m_searchTimer.stop();
    ORVSearchController *search = ORVSearchController::sharedInstance();
    if (text.trimmed().isEmpty()) {
        search->stopQuery();
        search->clearSearchData();
        if (m_showingSearch) {
            m_showingSearch = false;
            m_list->searchHighlightKeys.clear();
            const ORVCatTreeItemPtr item = selectedTreeItem();
            m_listHeader->setText(item ? ORVLibraryTreeModel::displayNameOfItem(*item) : QString());
            reloadList();
        }
        updateSortButton();
        return;
    }
    if (!m_manager)
        return;
    m_showingSearch = true;
    m_listHeader->setText(tr("Searching…"));
    m_sortButton->hide();
    search->queryWithLibraryURL(m_libraryPath, m_manager, text);
}

void ORVLibraryWindow::searchResultsArrived(const QVariantMap &info)
{
    if (!m_showingSearch || info.value(QStringLiteral("type")).toString() != QLatin1String("lib"))
        return;
    if (info.value(QStringLiteral("searchString")).toString() != m_searchField->text() &&
        !m_searchField->text().isEmpty())
        return;
    m_list->listContent = info.value(QStringLiteral("data")).value<QList<ORVLibraryListDataItem>>();
    m_list->searchHighlightKeys = info.value(QStringLiteral("keys")).toStringList();
    const bool done = info.value(QStringLiteral("isOK")).toBool();
    m_listHeader->setText(done ? tr("%n Result(s)", nullptr, int(m_list->listContent.size())) : tr("Searching…"));
    emit m_list->listContentDidChange();
}

bool ORVLibraryWindow::saveAllDocuments(bool quiet, QStringList *errors)
{
    return m_editorArea->saveAllDocumentsTellingUser(quiet, errors);
}

void ORVLibraryWindow::doReloadTheLibraryCatTreeAndDocsListData()
{
    if (!m_manager)
        return;
    const QVariantMap state = theWindowStates();
    m_treeReady = false;
    m_tree->clearLibraryTreeData();
    setupWindowStates(state, false);
    loadTree();
}

void ORVLibraryWindow::showError(const QString &message)
{
    if (message.isEmpty())
        return;
    if (!isVisible()) {
        statusBar()->showMessage(message, 8000);
        return;
    }
    QMessageBox::warning(this, tr("Error:"), message);
}

void ORVLibraryWindow::updateWindowTitle()
{
    const ORVEditorTab *tab = m_editorArea ? m_editorArea->currentEditorTab() : nullptr;
    const QString library = QFileInfo(m_libraryPath).fileName();
    setWindowTitle(tab ? QStringLiteral("%1[*] — %2 — Orvo").arg(tab->displayTitle(), library)
                       : QStringLiteral("%1 — Orvo").arg(library));
    setWindowModified(tab && tab->isModified());
}

void ORVLibraryWindow::closeEvent(QCloseEvent *event)
{
    if (m_shell && !m_shell->windowShouldClose(this)) {
        event->ignore();
        return;
    }
    m_editorArea->storeAllTextViewStates();
    event->accept();
}

void ORVLibraryWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_editorArea->checkFilesOnDisk();
}
