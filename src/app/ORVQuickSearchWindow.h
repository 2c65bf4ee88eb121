#pragma once

#include <QDialog>

#include <memory>

class AppDelegate;
class ORVAppShell;
class ORVSearchController;
class QLineEdit;
class QListWidget;
class QTimer;

// The quick search: a small window with one field over the main library.
// Empty, it lists the recent documents (library first, then files from
// folders); typed, it searches the library with the query language. Return
// opens the chosen document, Escape closes.
//
// It runs a search controller of its own, so that it never replaces the
// search of a library window.
class ORVQuickSearchWindow : public QDialog
{
    Q_OBJECT
public:
    ORVQuickSearchWindow(ORVAppShell *shell, AppDelegate *app, QWidget *parent = nullptr);
    ~ORVQuickSearchWindow() override;

    // Shows, centred on the active screen, with the field focused and empty.
    void popUp();
    QLineEdit *field() const { return m_field; }
    QListWidget *results() const { return m_results; }
    // Searches at once (tests); "" shows the recent documents.
    void searchNow(const QString &text);
    // Opens the document of a row and closes.
    bool openRow(int row);

signals:
    void resultsChanged();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void showRecentDocuments();

    ORVAppShell *m_shell;
    AppDelegate *m_app;
    QLineEdit *m_field;
    QListWidget *m_results;
    QTimer *m_timer;
    std::unique_ptr<ORVSearchController> m_search;
    QString m_query; // the search shown; "" while the recent documents show
};
