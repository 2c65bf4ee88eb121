#pragma once

#include <QMainWindow>

#include <memory>

class AppDelegate;
class ORVDBManager;
class QLabel;
class QListWidget;
class QStackedWidget;

// The main window: the library's entries (Inbox, Uncategorized, Trash and
// the categories with their counts) in one list, the documents of the
// selected entry in the other. It follows changes that other programs make
// to the library's database.
class ORVMainWindow : public QMainWindow
{
    Q_OBJECT
public:
    // Shows `libraryPath`, or the main library when it is "". The
    // application object is not owned.
    explicit ORVMainWindow(AppDelegate *app, const QString &libraryPath = QString(), QWidget *parent = nullptr);
    ~ORVMainWindow() override;

    // Rebuilds both lists from the library, keeping the selected entry.
    void reloadLibrary();

    QListWidget *categoryList() const { return m_categories; }
    QListWidget *documentList() const { return m_documents; }

private:
    void showMessage(const QString &message);
    void reloadCategories();
    void reloadDocuments();

    AppDelegate *m_app;
    QString m_requestedPath;
    QString m_libraryPath;
    std::shared_ptr<ORVDBManager> m_manager;
    QStackedWidget *m_stack;
    QLabel *m_message;
    QListWidget *m_categories;
    QListWidget *m_documents;
};
