#pragma once

#include "app/ORVEditorTab.h"
#include "library/ORVCatTreeItem.h"

#include <QMainWindow>
#include <QTimer>
#include <QVariantMap>

#include <memory>

class AppDelegate;
class ORVAppShell;
class ORVDBManager;
class ORVEditorArea;
class ORVLibraryListController;
class ORVLibraryListDataItem;
class ORVLibraryListDelegate;
class ORVLibraryListModel;
class ORVLibraryTree;
class ORVLibraryTreeModel;
class QLabel;
class QLineEdit;
class QListView;
class QMenu;
class QSplitter;
class QStackedWidget;
class QPushButton;
class QTreeView;

// How much of a library window shows.
enum class ORVLibraryPaneState : int {
    TreeListEditor = 0,
    ListEditor = 1,
    EditorOnly = 2,
};

// A library window: the category tree, the document list of the selected
// entry (or of a search), and the open documents in tabs with their live
// preview. It binds the views to the library's cores (ORVLibraryTree,
// ORVLibraryListController, ORVLibraryDocuments, ORVCategoryEditor,
// ORVSearchController) and holds no library logic of its own.
//
// Thread: the main thread.
class ORVLibraryWindow : public QMainWindow
{
    Q_OBJECT
public:
    // The window of the library at `libraryPath` (the main library when
    // ""); the shell and application object are not owned.
    ORVLibraryWindow(ORVAppShell *shell, AppDelegate *app, const QString &libraryPath = QString(),
                     QWidget *parent = nullptr);
    ~ORVLibraryWindow() override;

    QString libraryPath() const { return m_libraryPath; }
    bool isLibraryReady() const { return m_manager != nullptr; }
    ORVLibraryTree *libraryTree() const { return m_tree.get(); }
    ORVLibraryListController *listController() const { return m_list.get(); }
    ORVLibraryTreeModel *treeModel() const { return m_treeModel; }
    ORVLibraryListModel *listModel() const { return m_listModel; }
    ORVLibraryListDelegate *listDelegate() const { return m_listDelegate; }
    QTreeView *treeView() const { return m_treeView; }
    QListView *listView() const { return m_listView; }
    QLineEdit *searchField() const { return m_searchField; }
    ORVEditorArea *editorArea() const { return m_editorArea; }
    // isTreeViewReady: the tree was loaded once and shows.
    bool isTreeViewReady() const { return m_treeReady; }

    // ---- State (window state record of type "lib")
    QVariantMap theWindowStates() const;
    // Applies a record; with `restoreDocs` its tabs open again. Applied once
    // the tree is ready when it is not yet.
    void setupWindowStates(const QVariantMap &state, bool restoreDocs = true);
    ORVLibraryPaneState paneState() const { return m_paneState; }
    void setPaneState(ORVLibraryPaneState state);

    // ---- Actions the menus, toolbar and tests use
    // Selects an entry of the tree and shows its list.
    bool selectTreeEntry(qint64 uuid, bool isTag = false);
    ORVCatTreeItemPtr selectedTreeItem() const;
    // The selected document rows of the list.
    QList<ORVLibraryListDataItem> selectedListItems() const;
    bool selectDocument(qint64 uuid);
    // Opens a document of this library in a tab.
    ORVEditorTab *openLibraryDocument(qint64 uuid);
    ORVEditorTab *openDocumentPath(const QString &path);
    // newDocument: in the selected entry; the new document opens.
    ORVEditorTab *newDocument();
    bool newCategory(bool isSubCategory, bool isSite = false);
    void moveSelectedToTrash();
    void putBackSelected();
    // Asks first, as every final deletion does, unless `confirmed`.
    void deleteSelected(bool confirmed = false);
    void emptyTrash(bool confirmed = false);
    void deleteSelectedCategory(bool confirmed = false);
    void renameSelectedCategory();
    void copyLinkOfSelected();
    void importFiles(const QStringList &paths);
    void exportSelected(const QString &folder);
    // The search field's text, searched 0.4 s after the last change (at
    // once with `now`).
    void searchFor(const QString &text, bool now = false);
    bool isShowingSearchResults() const { return m_showingSearch; }
    // Saves every open document; false (after telling the user unless
    // `quiet`) when one could not be saved.
    bool saveAllDocuments(bool quiet = false, QStringList *errors = nullptr);
    // doReloadTheLibraryCatTreeAndDocsListDataAction: the library changed
    // underneath; tree and list are rebuilt with the window's state kept.
    void doReloadTheLibraryCatTreeAndDocsListData();

signals:
    void treeReady();
    void listReloaded();

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void buildViews();
    void buildActions();
    void buildMenus();
    void buildToolbar();
    void observeNotifications();
    void loadTree();
    void treeSelectionChanged();
    void listSelectionChanged();
    void reloadList();
    void updateSortButton();
    QMenu *makeSortMenu(QMenu *menu);
    void showTreeContextMenu(const QPoint &pos);
    void showListContextMenu(const QPoint &pos);
    void applyPendingState();
    void editedTabChanged(ORVEditorTab *tab);
    void searchResultsArrived(const QVariantMap &info);
    void updateActions();
    void updateWindowTitle();
    void showError(const QString &message);
    QString documentPath(qint64 uuid) const;

    ORVAppShell *m_shell;
    AppDelegate *m_app;
    QString m_libraryPath;
    std::shared_ptr<ORVDBManager> m_manager;
    std::unique_ptr<ORVLibraryTree> m_tree;
    std::unique_ptr<ORVLibraryListController> m_list;
    ORVLibraryTreeModel *m_treeModel = nullptr;
    ORVLibraryListModel *m_listModel = nullptr;
    ORVLibraryListDelegate *m_listDelegate = nullptr;

    QSplitter *m_splitter = nullptr;
    QWidget *m_treePane = nullptr;
    QWidget *m_listPane = nullptr;
    QTreeView *m_treeView = nullptr;
    QListView *m_listView = nullptr;
    QLineEdit *m_searchField = nullptr;
    QPushButton *m_sortButton = nullptr;
    QLabel *m_listHeader = nullptr;
    QLabel *m_emptyList = nullptr;
    QStackedWidget *m_editorStack = nullptr;
    QLabel *m_noDocument = nullptr;
    ORVEditorArea *m_editorArea = nullptr;
    ORVLibraryPaneState m_paneState = ORVLibraryPaneState::TreeListEditor;
    QList<int> m_savedPaneWidths;

    QTimer m_searchTimer;
    bool m_showingSearch = false;
    bool m_treeReady = false;
    bool m_selectingProgrammatically = false;
    QVariantMap m_pendingState;
    bool m_pendingRestoreDocs = false;
    QHash<QString, QAction *> m_actions;
};
