// The library window's actions: menus, toolbar, context menus, the sort
// menu and the pane layout.

#include "app/ORVAppShell.h"
#include "app/ORVEditorArea.h"
#include "app/ORVLibraryListModel.h"
#include "app/ORVLibraryTreeModel.h"
#include "app/ORVLibraryWindow.h"
#include "app/ORVMDTextView.h"
#include "app/ORVShellActions.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "library/ORVCategoryEditor.h"
#include "library/ORVDBCat.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryDocuments.h"
#include "library/ORVLibraryListController.h"
#include "library/ORVLibraryTree.h"
#include "core/ORVLibraryRecentDocumentManager.h"

#include <QActionGroup>
#include <QApplication>
#include <QStyle>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QToolBar>
#include <QPushButton>
#include <QTreeView>

namespace {

// A desktop icon by its theme name; without an icon theme, a drawing of the
// style's that says the same.
QIcon themedIcon(const char *name)
{
    static const QHash<QByteArray, QStyle::StandardPixmap> fallbacks{
        {"document-new", QStyle::SP_FileIcon},
        {"folder-new", QStyle::SP_FileDialogNewFolder},
        {"user-trash", QStyle::SP_TrashIcon},
        {"document-save", QStyle::SP_DialogSaveButton},
        {"view-split-left-right", QStyle::SP_TitleBarNormalButton},
        {"document-edit", QStyle::SP_FileDialogDetailedView},
        {"document-preview", QStyle::SP_FileDialogContentsView},
    };
    const QIcon themed = QIcon::fromTheme(QString::fromLatin1(name));
    if (!themed.isNull())
        return themed;
    return QApplication::style()->standardIcon(fallbacks.value(QByteArray(name), QStyle::SP_FileIcon));
}

bool isDatabaseCategory(const ORVCatTreeItem *item)
{
    return item && item->uuid > 1000 && item->catType != ORVCatType::Tag;
}

} // namespace

void ORVLibraryWindow::buildActions()
{
    const auto add = [this](const QString &name, const QString &text, const QKeySequence &keys,
                            const std::function<void()> &slot, const char *icon = nullptr) {
        auto *a = new QAction(text, this);
        a->setObjectName(name);
        if (!keys.isEmpty())
            a->setShortcut(keys);
        if (icon)
            a->setIcon(themedIcon(icon));
        connect(a, &QAction::triggered, this, slot);
        m_actions.insert(name, a);
        addAction(a);
        return a;
    };
    add(QStringLiteral("newDocument"), tr("&New Document"), QKeySequence::New, [this] { newDocument(); },
        "document-new");
    add(QStringLiteral("newCategory"), tr("New &Category"), QKeySequence(tr("Ctrl+Shift+N")),
        [this] { newCategory(false); }, "folder-new");
    add(QStringLiteral("newSiteCategory"), tr("New &Site Category"), {}, [this] { newCategory(false, true); });
    add(QStringLiteral("newSubCategory"), tr("New Su&b-Category"), QKeySequence(tr("Ctrl+Alt+N")),
        [this] { newCategory(true); });
    add(QStringLiteral("import"), tr("&Import…"), QKeySequence(tr("Ctrl+Shift+I")), [this] {
        const QStringList paths = QFileDialog::getOpenFileNames(
            this, tr("Import"), QString(),
            tr("Markdown and text (*.md *.markdown *.mdown *.mkd *.txt);;All files (*)"));
        importFiles(paths);
    });
    add(QStringLiteral("importFolder"), tr("Import &Folder…"), {}, [this] {
        const QString folder = QFileDialog::getExistingDirectory(this, tr("Import Folder"));
        if (!folder.isEmpty())
            importFiles({folder});
    });
    add(QStringLiteral("export"), tr("&Export as Markdown…"), QKeySequence(tr("Ctrl+Shift+E")), [this] {
        const QString folder = QFileDialog::getExistingDirectory(this, tr("Export to Folder"));
        exportSelected(folder);
    });
    add(QStringLiteral("save"), tr("&Save"), QKeySequence::Save, [this] {
        if (ORVEditorTab *tab = m_editorArea->currentEditorTab()) {
            QString error;
            if (!tab->save(&error))
                showError(error);
        }
    }, "document-save");
    add(QStringLiteral("closeTab"), tr("Close &Tab"), QKeySequence::Close,
        [this] { m_editorArea->closeEditorTab(m_editorArea->currentEditorTab()); });
    add(QStringLiteral("closeWindow"), tr("Close &Window"), QKeySequence(tr("Ctrl+Shift+W")), [this] { close(); });
    add(QStringLiteral("searchField"), tr("Searc&h Library"), QKeySequence(tr("Ctrl+Alt+F")), [this] {
        if (m_paneState == ORVLibraryPaneState::EditorOnly)
            setPaneState(ORVLibraryPaneState::ListEditor);
        m_searchField->setFocus();
        m_searchField->selectAll();
    });
    add(QStringLiteral("moveToTrash"), tr("Move to &Trash"), QKeySequence(Qt::Key_Delete),
        [this] { moveSelectedToTrash(); }, "user-trash");
    m_actions[QStringLiteral("moveToTrash")]->setShortcutContext(Qt::WidgetShortcut);
    m_listView->addAction(m_actions[QStringLiteral("moveToTrash")]);
    add(QStringLiteral("putBack"), tr("&Put Back"), {}, [this] { putBackSelected(); });
    add(QStringLiteral("deleteImmediately"), tr("&Delete Immediately…"), QKeySequence(tr("Shift+Del")),
        [this] { deleteSelected(); });
    m_actions[QStringLiteral("deleteImmediately")]->setShortcutContext(Qt::WidgetShortcut);
    m_listView->addAction(m_actions[QStringLiteral("deleteImmediately")]);
    add(QStringLiteral("emptyTrash"), tr("E&mpty Trash…"), {}, [this] { emptyTrash(); });
    add(QStringLiteral("copyLink"), tr("Copy &Link"), QKeySequence(tr("Ctrl+Shift+L")), [this] { copyLinkOfSelected(); });
    add(QStringLiteral("renameCategory"), tr("&Rename"), QKeySequence(Qt::Key_F2), [this] { renameSelectedCategory(); });
    m_actions[QStringLiteral("renameCategory")]->setShortcutContext(Qt::WidgetShortcut);
    m_treeView->addAction(m_actions[QStringLiteral("renameCategory")]);
    add(QStringLiteral("deleteCategory"), tr("&Delete…"), {}, [this] { deleteSelectedCategory(); });
    add(QStringLiteral("setSite"), tr("Make It a &Site"), {}, [this] {
        QString error;
        if (!ORVCategoryEditor(*m_tree).setToSiteCategory(selectedTreeItem(), &error))
            showError(error);
        m_treeModel->refreshCounts();
    });
    add(QStringLiteral("setPlain"), tr("Make It a Plain &Category"), {}, [this] {
        QString error;
        if (!ORVCategoryEditor(*m_tree).setToLibCategory(selectedTreeItem(), &error))
            showError(error);
        m_treeModel->refreshCounts();
    });
    add(QStringLiteral("emptyRecent"), tr("Clear Recent"), {}, [this] {
        // emptyRecentUseRecordAction: the list forgets, "Recent" shows 0.
        m_app->libraryRecentDocumentManager()->removeAllItems();
        m_tree->setRecentCount(0);
        m_tree->updateLibraryCategoryWithAllCats(false);
        reloadList();
    });

    // Layouts of the window and of the editor area.
    auto *panes = new QActionGroup(this);
    const QStringList paneNames{tr("Library, List and Editor"), tr("List and Editor"), tr("Editor Only")};
    for (int i = 0; i < 3; ++i) {
        QAction *a = add(QStringLiteral("pane%1").arg(i), paneNames[i], QKeySequence(tr("Ctrl+%1").arg(i + 1)),
                         [this, i] { setPaneState(ORVLibraryPaneState(i)); });
        a->setCheckable(true);
        panes->addAction(a);
    }
    m_actions[QStringLiteral("pane0")]->setChecked(true);
    auto *editorModes = new QActionGroup(this);
    const QStringList modeNames{tr("Editor and Preview"), tr("Editor Only"), tr("Preview Only")};
    const char *modeIcons[] = {"view-split-left-right", "document-edit", "document-preview"};
    for (int i = 0; i < 3; ++i) {
        QAction *a = add(QStringLiteral("editorMode%1").arg(i), modeNames[i],
                         QKeySequence(tr("Ctrl+Alt+%1").arg(i + 1)), [this, i] {
                             if (ORVEditorTab *tab = m_editorArea->currentEditorTab())
                                 tab->setPaneMode(ORVEditorPaneMode(i));
                             m_app->prfs()->setEditorAreaViewState(i);
                             m_app->prfs()->synchronize();
                         }, modeIcons[i]);
        a->setCheckable(true);
        editorModes->addAction(a);
    }
    auto *display = new QActionGroup(this);
    const QStringList displayNames{tr("Title, Date and Summary"), tr("Title and Date"), tr("Title Only")};
    for (int i = 0; i < 3; ++i) {
        QAction *a = add(QStringLiteral("listDisplay%1").arg(i), displayNames[i], {}, [this, i] {
            m_app->prfs()->setDocumentListDisplayType(i);
            m_app->prfs()->synchronize();
        });
        a->setCheckable(true);
        a->setChecked(m_app->prfs()->documentListDisplayType() == i);
        display->addAction(a);
    }
}

void ORVLibraryWindow::buildMenus()
{
    const auto a = [this](const char *name) { return m_actions.value(QString::fromLatin1(name)); };
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(a("newDocument"));
    file->addAction(a("newCategory"));
    file->addAction(a("newSubCategory"));
    file->addAction(a("newSiteCategory"));
    file->addSeparator();
    file->addAction(a("save"));
    file->addSeparator();
    file->addAction(a("import"));
    file->addAction(a("importFolder"));
    file->addAction(a("export"));
    file->addSeparator();
    file->addAction(a("closeTab"));
    file->addAction(a("closeWindow"));
    ORVShellActions::addApplicationItems(file, m_shell, this);

    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    ORVShellActions::addEditItems(edit, [this] {
        ORVEditorTab *tab = m_editorArea->currentEditorTab();
        return tab ? tab->textView() : nullptr;
    });
    edit->addSeparator();
    edit->addAction(a("searchField"));
    edit->addAction(a("copyLink"));

    QMenu *document = menuBar()->addMenu(tr("&Document"));
    document->addAction(a("moveToTrash"));
    document->addAction(a("putBack"));
    document->addAction(a("deleteImmediately"));
    document->addSeparator();
    document->addAction(a("emptyTrash"));
    document->addAction(a("emptyRecent"));

    QMenu *category = menuBar()->addMenu(tr("&Category"));
    category->addAction(a("newCategory"));
    category->addAction(a("newSubCategory"));
    category->addAction(a("newSiteCategory"));
    category->addSeparator();
    category->addAction(a("renameCategory"));
    category->addAction(a("deleteCategory"));
    category->addSeparator();
    category->addAction(a("setSite"));
    category->addAction(a("setPlain"));

    ORVShellActions::addFormatMenus(menuBar(), [this] {
        ORVEditorTab *tab = m_editorArea->currentEditorTab();
        return tab ? tab->textView() : nullptr;
    });

    QMenu *view = menuBar()->addMenu(tr("&View"));
    for (int i = 0; i < 3; ++i)
        view->addAction(a(QStringLiteral("pane%1").arg(i).toLatin1().constData()));
    view->addSeparator();
    for (int i = 0; i < 3; ++i)
        view->addAction(a(QStringLiteral("editorMode%1").arg(i).toLatin1().constData()));
    view->addSeparator();
    QMenu *listMenu = view->addMenu(tr("Document &List"));
    for (int i = 0; i < 3; ++i)
        listMenu->addAction(a(QStringLiteral("listDisplay%1").arg(i).toLatin1().constData()));
    QMenu *sort = view->addMenu(tr("&Sort By"));
    connect(sort, &QMenu::aboutToShow, this, [this, sort] { makeSortMenu(sort); });
    ORVShellActions::addThemeItems(view);

    ORVShellActions::addWindowMenu(menuBar(), m_shell);
    connect(view, &QMenu::aboutToShow, this, [this] {
        if (ORVEditorTab *tab = m_editorArea->currentEditorTab())
            m_actions.value(QStringLiteral("editorMode%1").arg(int(tab->paneMode())))->setChecked(true);
    });
}

void ORVLibraryWindow::buildToolbar()
{
    QToolBar *bar = addToolBar(tr("Library"));
    bar->setObjectName(QStringLiteral("libraryToolbar"));
    bar->setMovable(false);
    bar->setIconSize(QSize(18, 18));
    bar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    for (const char *name : {"newDocument", "newCategory", "moveToTrash", "editorMode0", "editorMode1", "editorMode2"})
        if (QAction *act = m_actions.value(QString::fromLatin1(name)))
            act->setToolTip(act->text().remove(QLatin1Char('&')) +
                            (act->shortcut().isEmpty() ? QString()
                                                       : QStringLiteral(" (%1)").arg(act->shortcut().toString(QKeySequence::NativeText))));
    const auto a = [this](const char *name) { return m_actions.value(QString::fromLatin1(name)); };
    a("pane0")->setIcon(QIcon::fromTheme(QStringLiteral("view-list-tree"),
                                         style()->standardIcon(QStyle::SP_FileDialogListView)));
    bar->addAction(a("pane0"));
    bar->addAction(a("newDocument"));
    bar->addAction(a("newCategory"));
    bar->addSeparator();
    bar->addAction(a("moveToTrash"));
    auto *spacer = new QWidget(bar);
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(spacer);
    for (int i = 0; i < 3; ++i)
        bar->addAction(a(QStringLiteral("editorMode%1").arg(i).toLatin1().constData()));
    // The first toolbar button toggles the tree pane.
    disconnect(a("pane0"), nullptr, nullptr, nullptr);
    connect(a("pane0"), &QAction::triggered, this, [this] {
        setPaneState(m_paneState == ORVLibraryPaneState::TreeListEditor ? ORVLibraryPaneState::ListEditor
                                                                         : ORVLibraryPaneState::TreeListEditor);
    });
}

QString ORVShellActions::sortOrderLabel(quint64 order)
{
    switch (order) {
    case ORVListOrderType::NewestFirst:
        return QObject::tr("Newest First");
    case ORVListOrderType::OldestFirst:
        return QObject::tr("Oldest First");
    case ORVListOrderType::Manual:
        return QObject::tr("Manual");
    case ORVListOrderType::TitleAscending:
        return QObject::tr("Title A–Z");
    case ORVListOrderType::TitleDescending:
        return QObject::tr("Title Z–A");
    case ORVListOrderType::ModifiedNewestFirst:
        return QObject::tr("Recently Modified");
    case ORVListOrderType::ModifiedOldestFirst:
        return QObject::tr("Least Recently Modified");
    default:
        return {};
    }
}

QMenu *ORVLibraryWindow::makeSortMenu(QMenu *menu)
{
    menu->clear();
    const ORVCatTreeItemPtr item = selectedTreeItem();
    const bool isCategory = isDatabaseCategory(item.get()) && !m_showingSearch;
    const qint64 uuid = item ? item->uuid : 15;
    const bool isTag = item && item->catType == ORVCatType::Tag;
    const quint64 current = m_list->listOrderForCatUUID(uuid, isTag);
    auto *group = new QActionGroup(menu);
    for (quint64 order = 0; order <= 6; ++order) {
        if (order == ORVListOrderType::Manual && !isCategory)
            continue;
        QAction *a = menu->addAction(ORVShellActions::sortOrderLabel(order));
        a->setCheckable(true);
        a->setChecked(order == current);
        group->addAction(a);
        connect(a, &QAction::triggered, this, [this, order, isCategory, uuid] {
            if (isCategory) {
                QString error;
                if (!ORVCategoryEditor(*m_tree).setCategoryListOrder(uuid, order, &error))
                    showError(error);
            } else {
                m_app->prfs()->setLibraryDefaultSortType(qint64(order));
                m_app->prfs()->synchronize();
            }
        });
    }
    if (isCategory) {
        menu->addSeparator();
        QAction *groupBy = menu->addAction(tr("Group By Categories"));
        groupBy->setCheckable(true);
        groupBy->setChecked(m_app->prfs()->isGroupLibDocumentsList());
        connect(groupBy, &QAction::toggled, this, [this](bool on) {
            m_app->prfs()->setIsGroupLibDocumentsList(on);
            m_app->prfs()->synchronize();
        });
    }
    return menu;
}

void ORVLibraryWindow::updateSortButton()
{
    if (m_showingSearch || !m_manager) {
        m_sortButton->hide();
        return;
    }
    const ORVCatTreeItemPtr item = selectedTreeItem();
    const bool isTag = item && item->catType == ORVCatType::Tag;
    const qint64 uuid = item ? item->uuid : 15;
    if (uuid == 18 && !isTag) {
        // The recent list keeps the order of use.
        m_sortButton->hide();
        return;
    }
    const QString label = ORVShellActions::sortOrderLabel(m_list->listOrderForCatUUID(uuid, isTag));
    m_sortButton->setText(tr("Sort: %1").arg(label));
    m_sortButton->setVisible(!label.isEmpty());
}

void ORVLibraryWindow::updateActions()
{
    const QList<ORVLibraryListDataItem> items = selectedListItems();
    bool anyInTrash = false, anyNormal = false;
    for (const ORVLibraryListDataItem &item : items)
        (item.art.state() == 0 ? anyInTrash : anyNormal) = true;
    const auto set = [this](const char *name, bool on) {
        if (QAction *a = m_actions.value(QString::fromLatin1(name)))
            a->setEnabled(on);
    };
    set("moveToTrash", anyNormal);
    set("putBack", anyInTrash);
    set("deleteImmediately", anyInTrash);
    set("copyLink", !items.isEmpty());
    set("export", !items.isEmpty());
    const ORVCatTreeItemPtr tree = selectedTreeItem();
    const bool isCat = isDatabaseCategory(tree.get());
    set("renameCategory", isCat);
    set("deleteCategory", isCat || (tree && tree->catType == ORVCatType::Tag));
    set("newSubCategory", isCat);
    const bool isTop = isCat && tree->parent && tree->parent->catType == ORVCatType::Root;
    set("setSite", isTop && tree->catType != ORVCatType::SiteCategory);
    set("setPlain", isTop && tree->catType == ORVCatType::SiteCategory);
    set("save", m_editorArea->currentEditorTab() != nullptr);
    set("closeTab", m_editorArea->currentEditorTab() != nullptr);
    set("newDocument", m_manager != nullptr);
}

void ORVLibraryWindow::showTreeContextMenu(const QPoint &pos)
{
    const QModelIndex index = m_treeView->indexAt(pos);
    if (index.isValid() && !index.data(ORVLibraryTreeModel::IsHeaderRole).toBool())
        m_treeView->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    const ORVCatTreeItemPtr item = selectedTreeItem();
    updateActions();
    QMenu menu(this);
    const auto a = [this](const char *name) { return m_actions.value(QString::fromLatin1(name)); };
    menu.addAction(a("newDocument"));
    menu.addSeparator();
    menu.addAction(a("newCategory"));
    menu.addAction(a("newSiteCategory"));
    if (isDatabaseCategory(item.get())) {
        menu.addAction(a("newSubCategory"));
        menu.addSeparator();
        menu.addAction(a("renameCategory"));
        menu.addAction(a("setSite"));
        menu.addAction(a("setPlain"));
        menu.addSeparator();
        menu.addAction(a("deleteCategory"));
    } else if (item && item->catType == ORVCatType::Tag) {
        menu.addSeparator();
        menu.addAction(a("deleteCategory"));
    } else if (item && item->catType == ORVCatType::Trash) {
        menu.addSeparator();
        menu.addAction(a("emptyTrash"));
    } else if (item && item->catType == ORVCatType::Recent) {
        menu.addSeparator();
        menu.addAction(a("emptyRecent"));
    }
    menu.addSeparator();
    menu.addAction(a("import"));
    menu.exec(m_treeView->viewport()->mapToGlobal(pos));
}

void ORVLibraryWindow::showListContextMenu(const QPoint &pos)
{
    const QModelIndex index = m_listView->indexAt(pos);
    if (index.isValid() && !m_listView->selectionModel()->isSelected(index))
        m_listView->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    updateActions();
    QMenu menu(this);
    const auto a = [this](const char *name) { return m_actions.value(QString::fromLatin1(name)); };
    menu.addAction(a("newDocument"));
    menu.addSeparator();
    if (a("putBack")->isEnabled()) {
        menu.addAction(a("putBack"));
        menu.addAction(a("deleteImmediately"));
    } else {
        menu.addAction(a("moveToTrash"));
    }
    menu.addSeparator();
    menu.addAction(a("copyLink"));
    menu.addAction(a("export"));
    menu.addSeparator();
    QMenu *display = menu.addMenu(tr("Show"));
    for (int i = 0; i < 3; ++i)
        display->addAction(a(QStringLiteral("listDisplay%1").arg(i).toLatin1().constData()));
    QMenu *sort = menu.addMenu(tr("Sort By"));
    makeSortMenu(sort);
    menu.exec(m_listView->viewport()->mapToGlobal(pos));
}

void ORVLibraryWindow::setPaneState(ORVLibraryPaneState state)
{
    // The pane widths live while a pane is hidden, so that it comes back
    // as wide as it was.
    if (m_treePane->isVisible() || m_listPane->isVisible())
        m_savedPaneWidths = m_splitter->sizes();
    m_paneState = state;
    m_treePane->setVisible(state == ORVLibraryPaneState::TreeListEditor);
    m_listPane->setVisible(state != ORVLibraryPaneState::EditorOnly);
    if (QAction *a = m_actions.value(QStringLiteral("pane%1").arg(int(state))))
        a->setChecked(true);
    m_actions.value(QStringLiteral("pane0"))->setChecked(state == ORVLibraryPaneState::TreeListEditor);
}
