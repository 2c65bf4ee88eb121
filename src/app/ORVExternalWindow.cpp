#include "app/ORVExternalWindow.h"

#include "app/ORVAppShell.h"
#include "app/ORVEditorArea.h"
#include "app/ORVExternalListModel.h"
#include "app/ORVLibraryListModel.h"
#include "app/ORVMDTextView.h"
#include "app/ORVShellActions.h"
#include "app/window_state.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "core/ORVNotificationCenter.h"
#include "library/ORVDirWatchingController.h"
#include "library/ORVExternalCategoryItem.h"
#include "library/ORVExternalSettingData.h"
#include "library/ORVExternalSourceItem.h"
#include "library/ORVExternalSourceItemManager.h"
#include "library/ORVExternalTree.h"
#include "library/ORVSearchController.h"
#include "library/supportedDocumentExt.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

// The search waits this long after the last change of the field.
constexpr int kSearchDelayMs = 400;
constexpr int kPathRole = Qt::UserRole + 1;

void addFolderItems(QTreeWidgetItem *parent, const ORVExternalCategoryItem &entry)
{
    for (const ORVExternalCategoryItemPtr &child : entry.children) {
        auto *item = new QTreeWidgetItem(parent);
        item->setText(0, child->name);
        item->setData(0, kPathRole, child->fullPath);
        item->setIcon(0, QIcon::fromTheme(QStringLiteral("folder")));
        item->setToolTip(0, child->isMissing ? QObject::tr("%1 (not found)").arg(child->fullPath) : child->fullPath);
        if (child->isMissing)
            item->setForeground(0, QPalette().brush(QPalette::PlaceholderText));
        addFolderItems(item, *child);
    }
}

} // namespace

ORVExternalWindow::ORVExternalWindow(ORVAppShell *shell, AppDelegate *app, QWidget *parent)
    : QMainWindow(parent), m_shell(shell), m_app(app)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("ORVExternalWindow"));
    setWindowTitle(tr("Folders — Orvo"));
    m_app->externalTreeData();
    m_app->setupExternalSourceWatching();
    buildViews();
    buildMenus();
    resize(1280, 820);

    ORVNotificationCenter *center = ORVNotificationCenter::defaultCenter();
    center->addObserver(kORVExternalTreeViewControllerTreeControllerRearrangeObjectsNotification, this,
                        [this](const ORVNotification &n) {
                            if (n.userInfo.value(QStringLiteral("treeChanged"), true).toBool())
                                reloadTree();
                            if (!m_showingSearch)
                                reloadList();
                        });
    center->addObserver(kORVExternalSourceItemDidChangeNotification, this, [this](const ORVNotification &) {
        m_app->updateExternalTreeDataTopItems();
        reloadTree();
    });
    center->addObserver(kORVSearchControllerDidUpdateResultNotification, this,
                        [this](const ORVNotification &n) { searchResultsArrived(n.userInfo); });
    reloadTree();
}

ORVExternalWindow::~ORVExternalWindow() = default;

void ORVExternalWindow::buildViews()
{
    m_tree = new QTreeWidget(this);
    m_tree->setHeaderHidden(true);
    m_tree->setFrameShape(QFrame::NoFrame);
    m_tree->setIndentation(14);
    m_tree->setContextMenuPolicy(Qt::ActionsContextMenu);
    // The side list takes the window's colour, in light and dark alike.
    m_tree->viewport()->setBackgroundRole(QPalette::Window);

    auto *listPane = new QWidget(this);
    m_searchField = new QLineEdit(listPane);
    m_searchField->setPlaceholderText(tr("Search Folders"));
    m_searchField->setClearButtonEnabled(true);
    m_listHeader = new QLabel(listPane);
    QFont bold = m_listHeader->font();
    bold.setBold(true);
    m_listHeader->setFont(bold);
    m_listModel = new ORVExternalListModel(this);
    m_listDelegate = new ORVLibraryListDelegate(this);
    m_listDelegate->setDisplayType(int(m_app->prfs()->documentListDisplayType()));
    m_listView = new QListView(listPane);
    m_listView->setModel(m_listModel);
    m_listView->setItemDelegate(m_listDelegate);
    m_listView->setFrameShape(QFrame::NoFrame);
    m_listView->setDragEnabled(true);
    m_listView->setMouseTracking(true);
    m_listView->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_listView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto *listLayout = new QVBoxLayout(listPane);
    listLayout->setContentsMargins(0, 6, 0, 0);
    listLayout->setSpacing(4);
    auto *searchRow = new QHBoxLayout;
    searchRow->setContentsMargins(8, 0, 8, 0);
    searchRow->addWidget(m_searchField);
    listLayout->addLayout(searchRow);
    auto *headerRow = new QHBoxLayout;
    headerRow->setContentsMargins(12, 2, 6, 2);
    headerRow->addWidget(m_listHeader);
    listLayout->addLayout(headerRow);
    listLayout->addWidget(m_listView, 1);

    m_editorArea = new ORVEditorArea(m_app, this);
    auto *empty = new QLabel(tr("No Document Selected"), this);
    empty->setAlignment(Qt::AlignCenter);
    empty->setForegroundRole(QPalette::PlaceholderText);
    m_editorStack = new QStackedWidget(this);
    m_editorStack->addWidget(empty);
    m_editorStack->addWidget(m_editorArea);

    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setHandleWidth(1);
    m_splitter->addWidget(m_tree);
    m_splitter->addWidget(listPane);
    m_splitter->addWidget(m_editorStack);
    m_splitter->setStretchFactor(2, 1);
    m_splitter->setSizes({220, 300, 760});
    setCentralWidget(m_splitter);

    connect(m_tree, &QTreeWidget::currentItemChanged, this, [this] {
        if (m_showingSearch) {
            m_searchField->blockSignals(true);
            m_searchField->clear();
            m_searchField->blockSignals(false);
            m_showingSearch = false;
            m_listDelegate->setHighlightKeys({});
        }
        reloadList();
    });
    connect(m_listView, &QListView::clicked, this,
            [this](const QModelIndex &index) { openDocumentPath(index.data(ORVLibraryListModel::PathRole).toString()); });
    connect(m_listView->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex &index) {
        if (index.isValid())
            openDocumentPath(index.data(ORVLibraryListModel::PathRole).toString());
    });
    connect(m_editorArea, &ORVEditorArea::currentEditorTabChanged, this, [this](ORVEditorTab *tab) {
        m_editorStack->setCurrentIndex(tab ? 1 : 0);
        setWindowTitle(tab ? QStringLiteral("%1 — Orvo").arg(tab->displayTitle()) : tr("Folders — Orvo"));
    });
    connect(m_editorArea, &ORVEditorArea::editorTabSaved, this, [this] {
        if (!m_showingSearch)
            reloadList();
    });
    connect(m_editorArea, &ORVEditorArea::editorTabLinkActivated, this,
            [this](const QString &path) { m_shell->openFile(path); });
    connect(m_editorArea, &ORVEditorArea::applicationLinkActivated, this,
            [this](const QUrl &url) { m_shell->handleURL(url.toString()); });
    m_searchTimer.setSingleShot(true);
    m_searchTimer.setInterval(kSearchDelayMs);
    connect(m_searchField, &QLineEdit::textChanged, this, [this](const QString &text) { searchFor(text); });
    connect(&m_searchTimer, &QTimer::timeout, this, [this] { searchFor(m_searchField->text(), true); });
}

void ORVExternalWindow::buildMenus()
{
    auto *addFolder = new QAction(QIcon::fromTheme(QStringLiteral("folder-new")), tr("&Add Folder…"), this);
    addFolder->setShortcut(QKeySequence(tr("Ctrl+Shift+A")));
    connect(addFolder, &QAction::triggered, this, [this] {
        const QString folder = QFileDialog::getExistingDirectory(this, tr("Add Folder"));
        if (!folder.isEmpty())
            addFolders({folder});
    });
    auto *removeFolder = new QAction(QIcon::fromTheme(QStringLiteral("list-remove")), tr("&Remove Folder"), this);
    connect(removeFolder, &QAction::triggered, this, &ORVExternalWindow::removeSelectedFolder);
    auto *settings = new QAction(QIcon::fromTheme(QStringLiteral("configure")), tr("Folder &Settings…"), this);
    connect(settings, &QAction::triggered, this, &ORVExternalWindow::editFolderSettings);
    auto *open = new QAction(QIcon::fromTheme(QStringLiteral("document-open")), tr("&Open…"), this);
    open->setShortcut(QKeySequence::Open);
    connect(open, &QAction::triggered, this, [this] {
        const QString path = QFileDialog::getOpenFileName(this, tr("Open"), QString(),
                                                          tr("Markdown (*.md *.markdown *.txt);;All files (*)"));
        if (!path.isEmpty())
            openDocumentPath(path);
    });
    auto *save = new QAction(QIcon::fromTheme(QStringLiteral("document-save")), tr("&Save"), this);
    save->setShortcut(QKeySequence::Save);
    connect(save, &QAction::triggered, this, [this] {
        if (ORVEditorTab *tab = m_editorArea->currentEditorTab()) {
            QString error;
            if (!tab->save(&error))
                QMessageBox::warning(this, tr("Error:"), error);
        }
    });
    m_tree->addAction(removeFolder);
    m_tree->addAction(settings);

    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(open);
    file->addAction(save);
    file->addSeparator();
    file->addAction(addFolder);
    file->addAction(removeFolder);
    file->addAction(settings);
    file->addSeparator();
    file->addAction(tr("Close &Tab"), QKeySequence::Close, this,
                    [this] { m_editorArea->closeEditorTab(m_editorArea->currentEditorTab()); });
    file->addAction(tr("Close &Window"), QKeySequence(tr("Ctrl+Shift+W")), this, &QWidget::close);
    ORVShellActions::addApplicationItems(file, m_shell, this);
    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    const auto current = [this]() -> ORVMDTextView * {
        ORVEditorTab *tab = m_editorArea->currentEditorTab();
        return tab ? tab->textView() : nullptr;
    };
    ORVShellActions::addEditItems(edit, current);
    edit->addSeparator();
    edit->addAction(tr("Searc&h Folders"), QKeySequence(tr("Ctrl+Alt+F")), this, [this] {
        m_searchField->setFocus();
        m_searchField->selectAll();
    });
    ORVShellActions::addFormatMenus(menuBar(), current);
    QMenu *view = menuBar()->addMenu(tr("&View"));
    const QStringList modes{tr("Editor and Preview"), tr("Editor Only"), tr("Preview Only")};
    for (int i = 0; i < 3; ++i)
        view->addAction(modes[i], QKeySequence(tr("Ctrl+Alt+%1").arg(i + 1)), this, [this, i] {
            if (ORVEditorTab *tab = m_editorArea->currentEditorTab())
                tab->setPaneMode(ORVEditorPaneMode(i));
        });
    view->addSeparator();
    view->addAction(tr("Show or Hide Folders"), QKeySequence(tr("Ctrl+1")), this, [this] {
        m_paneState = m_tree->isVisible() ? 1 : 0;
        m_tree->setVisible(m_paneState == 0);
    });
    ORVShellActions::addThemeItems(view);
    ORVShellActions::addWindowMenu(menuBar(), m_shell);

    QToolBar *bar = addToolBar(tr("Folders"));
    bar->setObjectName(QStringLiteral("externalToolbar"));
    bar->setMovable(false);
    bar->setIconSize(QSize(18, 18));
    bar->addAction(addFolder);
    bar->addAction(removeFolder);
    bar->addAction(settings);
}

void ORVExternalWindow::reloadTree()
{
    const QString selected = selectedFolder();
    QSet<QString> expanded;
    for (QTreeWidgetItemIterator it(m_tree); *it; ++it)
        if ((*it)->isExpanded())
            expanded.insert((*it)->data(0, kPathRole).toString());
    m_tree->blockSignals(true);
    m_tree->clear();
    ORVExternalTree *tree = m_app->externalTreeData();
    if (ORVExternalCategoryItem *root = tree ? tree->foldersRootItem() : nullptr) {
        auto *header = new QTreeWidgetItem(m_tree);
        header->setText(0, tr("FOLDERS"));
        header->setFlags(Qt::ItemIsEnabled);
        QFont f = header->font(0);
        f.setBold(true);
        f.setPointSizeF(f.pointSizeF() * 0.82);
        header->setFont(0, f);
        header->setForeground(0, QPalette().brush(QPalette::PlaceholderText));
        addFolderItems(header, *root);
        header->setExpanded(true);
    }
    for (QTreeWidgetItemIterator it(m_tree); *it; ++it) {
        const QString path = (*it)->data(0, kPathRole).toString();
        if (expanded.contains(path) && !path.isEmpty())
            (*it)->setExpanded(true);
        if (!selected.isEmpty() && path == selected)
            m_tree->setCurrentItem(*it);
    }
    m_tree->blockSignals(false);
}

QString ORVExternalWindow::selectedFolder() const
{
    const QTreeWidgetItem *item = m_tree->currentItem();
    return item ? item->data(0, kPathRole).toString() : QString();
}

bool ORVExternalWindow::selectFolder(const QString &path)
{
    for (QTreeWidgetItemIterator it(m_tree); *it; ++it) {
        if ((*it)->data(0, kPathRole).toString() == path) {
            m_tree->setCurrentItem(*it);
            return true;
        }
    }
    return false;
}

void ORVExternalWindow::reloadList()
{
    const QString folder = selectedFolder();
    if (folder.isEmpty()) {
        m_listModel->setRows({});
        m_listHeader->clear();
        return;
    }
    m_listHeader->setText(QFileInfo(folder).fileName());
    const auto items =
        ORVExternalListDataItem::listDataItemsInFolder(folder, m_app->prfs()->externalModeSortType(), true);
    m_listModel->setRows(ORVExternalListModel::rowsWithItems(items));
    if (const ORVEditorTab *tab = m_editorArea->currentEditorTab()) {
        const int row = m_listModel->rowOfPath(tab->filePath());
        if (row >= 0) {
            m_listView->selectionModel()->blockSignals(true);
            m_listView->setCurrentIndex(m_listModel->index(row));
            m_listView->selectionModel()->blockSignals(false);
        }
    }
}

ORVEditorTab *ORVExternalWindow::openDocumentPath(const QString &path)
{
    if (path.isEmpty())
        return nullptr;
    ORVEditorTab *tab = m_editorArea->openDocument(path);
    m_editorStack->setCurrentIndex(1);
    return tab;
}

void ORVExternalWindow::addFolders(const QStringList &folders)
{
    ORVExternalSourceItemManager *sources = m_app->externalSourceItemManager();
    bool added = false;
    for (const QString &folder : folders)
        if (QFileInfo(folder).isDir() && !sources->itemWithPath(folder))
            added = sources->addItem(ORVExternalSourceItem::itemWithFolderPath(folder)) || added;
    if (!added)
        return;
    QString error;
    if (!sources->saveItems(&error))
        QMessageBox::warning(this, tr("Error:"), error);
    m_app->updateExternalTreeDataTopItems();
    reloadTree();
    selectFolder(ORVExternalSourceItem::normalizedFolderPath(folders.last()));
}

void ORVExternalWindow::removeSelectedFolder()
{
    ORVExternalSourceItemManager *sources = m_app->externalSourceItemManager();
    const auto item = sources->itemWithPath(selectedFolder());
    if (!item) {
        QMessageBox::information(this, tr("Remove Folder"), tr("Select one of your folders (a top entry) first."));
        return;
    }
    if (QMessageBox::question(this, tr("Remove the folder?"),
                              tr("“%1” leaves Orvo's list. Its files stay on disk.").arg(selectedFolder()),
                              QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok) != QMessageBox::Ok)
        return;
    sources->removeItem(item);
    sources->saveItems(nullptr);
    m_app->updateExternalTreeDataTopItems();
    reloadTree();
    reloadList();
}

void ORVExternalWindow::editFolderSettings()
{
    ORVExternalSourceItemManager *sources = m_app->externalSourceItemManager();
    const auto item = sources->itemWithPath(selectedFolder());
    if (!item) {
        QMessageBox::information(this, tr("Folder Settings"), tr("Select one of your folders (a top entry) first."));
        return;
    }
    ORVExternalSettingData data(item->realURL());
    data.fetchNewlerData();
    QDialog dialog(this);
    dialog.setWindowTitle(tr("Folder Settings"));
    auto *form = new QFormLayout;
    auto *name = new QLineEdit(data.name, &dialog);
    auto *media = new QLineEdit(data.mediaFloder, &dialog);
    auto *place = new QComboBox(&dialog);
    place->addItem(tr("Beside the document"), qulonglong(ORVExternalSettingData::kFolderTypeMediaBesideDocument));
    place->addItem(tr("In the folder's root"), qulonglong(ORVExternalSettingData::kFolderTypeMediaAtSourceRoot));
    place->setCurrentIndex(data.folderType == ORVExternalSettingData::kFolderTypeMediaAtSourceRoot ? 1 : 0);
    auto *ext = new QLineEdit(data.fileExtension, &dialog);
    form->addRow(tr("Name:"), name);
    form->addRow(tr("Media folder:"), media);
    form->addRow(tr("Media goes:"), place);
    form->addRow(tr("New file extension:"), ext);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto *layout = new QVBoxLayout(&dialog);
    layout->addLayout(form);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted)
        return;
    data.name = name->text().trimmed();
    data.mediaFloder = media->text().trimmed();
    data.folderType = place->currentData().toULongLong();
    data.fileExtension = ext->text().trimmed();
    QString error;
    if (!data.saveData(&error)) {
        QMessageBox::warning(this, tr("Error:"), error);
        return;
    }
    item->reloadSettingData();
    m_app->updateExternalTreeDataTopItems();
    reloadTree();
}

void ORVExternalWindow::searchFor(const QString &text, bool now)
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
        m_showingSearch = false;
        m_listDelegate->setHighlightKeys({});
        reloadList();
        return;
    }
    m_showingSearch = true;
    m_listHeader->setText(tr("Searching…"));
    QStringList paths;
    const QString folder = selectedFolder();
    if (!folder.isEmpty())
        paths << folder;
    else
        paths = m_app->externalSourceItemManager()->externalSourcePaths();
    search->queryWithExternalURLs(paths, text, supportedDocumentExt());
}

void ORVExternalWindow::searchResultsArrived(const QVariantMap &info)
{
    if (!m_showingSearch || info.value(QStringLiteral("type")).toString() != QLatin1String("ext"))
        return;
    const auto hits = info.value(QStringLiteral("data")).value<ORVSearchExternalHits>();
    QList<ORVExternalListModel::Row> rows = ORVExternalListModel::rowsWithItems(hits);
    // The place of a hit says more than its date in a search over folders.
    for (ORVExternalListModel::Row &row : rows)
        row.dateLine = QDir::toNativeSeparators(QFileInfo(row.path).absolutePath());
    m_listDelegate->setHighlightKeys(info.value(QStringLiteral("keys")).toStringList());
    m_listModel->setRows(rows);
    const bool done = info.value(QStringLiteral("isOK")).toBool();
    m_listHeader->setText(done ? tr("%n Result(s)", nullptr, int(rows.size())) : tr("Searching…"));
}

bool ORVExternalWindow::saveAllDocuments(bool quiet, QStringList *errors)
{
    return m_editorArea->saveAllDocumentsTellingUser(quiet, errors);
}

QVariantMap ORVExternalWindow::theWindowStates() const
{
    QVariantMap state;
    state.insert(QStringLiteral("type"), QStringLiteral("ext"));
    state.insert(QStringLiteral("paneState"), m_paneState);
    state.insert(QStringLiteral("pw1"), m_splitter->sizes().value(0));
    QVariantMap expanded;
    for (QTreeWidgetItemIterator it(m_tree); *it; ++it)
        if ((*it)->isExpanded() && !(*it)->data(0, kPathRole).toString().isEmpty())
            expanded.insert((*it)->data(0, kPathRole).toString(), true);
    state.insert(QStringLiteral("categoriesState"), expanded);
    state.insert(QStringLiteral("selectedFolder"), selectedFolder());
    QVariantList tabs;
    for (ORVEditorTab *tab : m_editorArea->editorTabs()) {
        const QString path = tab->filePath();
        tabs << QVariantMap{
            {QStringLiteral("fullPath"), path.isEmpty() ? QString() : AppDelegate::base64DocPathWithFileURL(path)},
            {QStringLiteral("srcPath"), path},
            {QStringLiteral("editorAreaState"), tab->editorAreaState()}};
    }
    state.insert(QStringLiteral("openedTabs"), tabs);
    const ORVEditorTab *current = m_editorArea->currentEditorTab();
    state.insert(QStringLiteral("currentDocPath"),
                 current && !current->filePath().isEmpty() ? AppDelegate::base64DocPathWithFileURL(current->filePath())
                                                           : QString());
    state.insert(QStringLiteral("winRect"), rectStringWithRect(geometry()));
    state.insert(QStringLiteral("isShowInfoSide"), false);
    return state;
}

void ORVExternalWindow::setupWindowStates(const QVariantMap &state, bool restoreDocs)
{
    m_paneState = state.value(QStringLiteral("paneState")).toInt() == 1 ? 1 : 0;
    m_tree->setVisible(m_paneState == 0);
    if (const int pw1 = state.value(QStringLiteral("pw1")).toInt(); pw1 > 0) {
        QList<int> sizes = m_splitter->sizes();
        sizes[0] = pw1;
        m_splitter->setSizes(sizes);
    }
    const QVariantMap expanded = state.value(QStringLiteral("categoriesState")).toMap();
    for (QTreeWidgetItemIterator it(m_tree); *it; ++it)
        if (expanded.contains((*it)->data(0, kPathRole).toString()))
            (*it)->setExpanded(true);
    selectFolder(state.value(QStringLiteral("selectedFolder")).toString());
    if (!restoreDocs)
        return;
    const QString current = AppDelegate::fileURLWithBase64DocPath(state.value(QStringLiteral("currentDocPath")).toString());
    for (const QVariant &v : state.value(QStringLiteral("openedTabs")).toList()) {
        const QVariantMap tab = v.toMap();
        QString path = AppDelegate::fileURLWithBase64DocPath(tab.value(QStringLiteral("fullPath")).toString());
        if (path.isEmpty())
            path = tab.value(QStringLiteral("srcPath")).toString();
        if (path.isEmpty() || !QFileInfo::exists(path))
            continue;
        if (ORVEditorTab *opened = m_editorArea->openDocument(path, false))
            opened->setEditorAreaState(tab.value(QStringLiteral("editorAreaState")).toMap());
    }
    if (!current.isEmpty() && QFileInfo::exists(current))
        openDocumentPath(current);
    else if (!m_editorArea->editorTabs().isEmpty())
        m_editorArea->setCurrentIndex(0);
}

void ORVExternalWindow::closeEvent(QCloseEvent *event)
{
    if (m_shell && !m_shell->windowShouldClose(this)) {
        event->ignore();
        return;
    }
    m_editorArea->storeAllTextViewStates();
    event->accept();
}

void ORVExternalWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_editorArea->checkFilesOnDisk();
}
