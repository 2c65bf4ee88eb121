#pragma once

#include "editor/ORVDocument.h"

#include <QMainWindow>
#include <QTimer>

#include <memory>

class AppDelegate;
class ORVFindBar;
class ORVLivePreviewView;
class ORVMDTextView;
class QLabel;
class QSplitter;

// A window with one document: the Markdown editor beside its live preview,
// find and replace, the word count, and File, Edit and Format menus. It is
// the editor as a writer meets it, without the library around it (which
// the main window adds).
class ORVEditorWindow : public QMainWindow
{
    Q_OBJECT
public:
    // Opens `path` (an empty, unsaved document when "" or when it cannot be
    // read; the reason shows in the window). The application object is not
    // owned.
    explicit ORVEditorWindow(AppDelegate *app, const QString &path = QString(), QWidget *parent = nullptr);
    ~ORVEditorWindow() override;

    ORVDocument *document() const { return m_document.get(); }
    ORVMDTextView *textView() const { return m_view; }
    ORVLivePreviewView *previewView() const { return m_preview; }
    ORVFindBar *findBar() const { return m_findBar; }
    // The message line above the text (theme faults, read and save errors).
    QString messageText() const;

    bool saveDocument();
    bool exportHTMLTo(const QString &path);

protected:
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void buildMenus();
    void showMessage(const QString &text);
    void schedulePreview();
    void syncPreviewScroll();
    void updateTitle();

    AppDelegate *m_app;
    std::unique_ptr<ORVDocument> m_document;
    ORVMDTextView *m_view;
    ORVLivePreviewView *m_preview;
    ORVFindBar *m_findBar;
    QLabel *m_message;
    QLabel *m_counts;
    QSplitter *m_splitter;
    QTimer m_scrollSyncTimer;
    bool m_splitSet = false; // the panes got their first, even division
};
