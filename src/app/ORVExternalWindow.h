#pragma once

#include "library/ORVExternalListDataItem.h"

#include <QMainWindow>
#include <QTimer>
#include <QVariantMap>

class AppDelegate;
class ORVAppShell;
class ORVEditorArea;
class ORVExternalListModel;
class ORVLibraryListDelegate;
class QLabel;
class QLineEdit;
class QListView;
class QSplitter;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

// The external window: the user's folders (external sources) as a tree
// read from the disk, the documents of the selected folder, and the open
// files in tabs with their preview. Changes that other programs make in the
// folders arrive as batches from the folder watcher and patch the tree and
// list; open files follow their own file (ORVEditorTab).
//
// Thread: the main thread.
class ORVExternalWindow : public QMainWindow
{
    Q_OBJECT
public:
    ORVExternalWindow(ORVAppShell *shell, AppDelegate *app, QWidget *parent = nullptr);
    ~ORVExternalWindow() override;

    ORVEditorArea *editorArea() const { return m_editorArea; }
    QTreeWidget *treeView() const { return m_tree; }
    QListView *listView() const { return m_listView; }
    ORVExternalListModel *listModel() const { return m_listModel; }
    QLineEdit *searchField() const { return m_searchField; }

    // The window state record of type "ext", and its restore.
    QVariantMap theWindowStates() const;
    void setupWindowStates(const QVariantMap &state, bool restoreDocs = true);

    class ORVEditorTab *openDocumentPath(const QString &path);
    // Adds folders as sources (a folder already a source is left alone).
    void addFolders(const QStringList &folders);
    void removeSelectedFolder();
    // Selects a folder of the tree and lists its documents.
    bool selectFolder(const QString &path);
    QString selectedFolder() const;
    void reloadTree();
    void reloadList();
    bool saveAllDocuments(bool quiet = false, QStringList *errors = nullptr);
    void searchFor(const QString &text, bool now = false);

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void buildViews();
    void buildMenus();
    void editFolderSettings();
    void searchResultsArrived(const QVariantMap &info);

    ORVAppShell *m_shell;
    AppDelegate *m_app;
    QSplitter *m_splitter = nullptr;
    QTreeWidget *m_tree = nullptr;
    QListView *m_listView = nullptr;
    ORVExternalListModel *m_listModel = nullptr;
    ORVLibraryListDelegate *m_listDelegate = nullptr;
    QLineEdit *m_searchField = nullptr;
    QLabel *m_listHeader = nullptr;
    QStackedWidget *m_editorStack = nullptr;
    ORVEditorArea *m_editorArea = nullptr;
    QTimer m_searchTimer;
    bool m_showingSearch = false;
    int m_paneState = 0;
};
