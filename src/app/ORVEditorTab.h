#pragma once

#include "editor/ORVDocument.h"

#include <QFileSystemWatcher>
#include <QTimer>
#include <QWidget>

#include <memory>

class AppDelegate;
class ORVFindBar;
class ORVLivePreviewView;
class ORVMDTextView;
class QLabel;
class QPushButton;
class QSplitter;

// How the editor area of a tab is laid out.
enum class ORVEditorPaneMode : int {
    EditorAndPreview = 0,
    EditorOnly = 1,
    PreviewOnly = 2,
};

// One open document in a window: the Markdown editor beside its live
// preview, the find bar, and a message line for what happened to the file
// (read errors, a deletion or a change by another program).
//
// The tab owns its document. It watches the file: a change made by another
// program reloads the text when nothing here is unsaved, and otherwise asks;
// a deletion keeps the text and says so until the user saves or closes.
//
// Thread: the main thread.
class ORVEditorTab : public QWidget
{
    Q_OBJECT
public:
    // Opens `path`. A file that cannot be read opens empty and unsaved, with
    // the reason in the message line; `readError` receives it too.
    ORVEditorTab(AppDelegate *app, const QString &path, QWidget *parent = nullptr, QString *readError = nullptr);
    ~ORVEditorTab() override;

    ORVDocument *document() const { return m_document.get(); }
    ORVMDTextView *textView() const { return m_view; }
    ORVLivePreviewView *previewView() const;
    ORVFindBar *findBar() const { return m_findBar; }
    QString filePath() const { return m_document->fileURL(); }
    // The text shown as the tab's label: the document's title, "Untitled"
    // when it has none.
    QString displayTitle() const;
    bool isModified() const { return m_document->hasUnautosavedChanges(); }
    // The file is gone from disk (the text is still here).
    bool isFileMissing() const { return m_fileMissing; }
    QString messageText() const;

    ORVEditorPaneMode paneMode() const { return m_mode; }
    void setPaneMode(ORVEditorPaneMode mode);
    // The state kept with a window's tabs: the pane mode and the splitter.
    QVariantMap editorAreaState() const;
    void setEditorAreaState(const QVariantMap &state);

    // Writes the document to its file. False, with the reason, when it
    // could not: the text stays and the document stays unsaved.
    bool save(QString *error = nullptr);

    // The editing position goes to the application object (by path), and
    // comes back from it.
    void storeTextViewState();
    void restoreTextViewState();

    // Checks the file now instead of waiting for the watcher (tests, and
    // windows that get the focus back).
    void checkFileOnDisk();

signals:
    // Title, unsaved state or the file's presence changed.
    void tabStateChanged();
    // The text changed (every edit).
    void textChanged();
    // Saved to disk.
    void documentSaved();
    // A link to another document was followed in the preview.
    void documentLinkActivated(const QString &path);
    // An application link (orvolib://) was followed.
    void applicationLinkActivated(const QUrl &url);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void ensurePreview();
    void schedulePreview();
    void syncPreviewScroll();
    void showMessage(const QString &text, bool withActions = false);
    void hideMessage();
    void rememberDiskState();
    void fileChangedOnDisk();
    void reloadFromDisk();

    AppDelegate *m_app;
    std::unique_ptr<ORVDocument> m_document;
    ORVMDTextView *m_view = nullptr;
    ORVLivePreviewView *m_preview = nullptr; // made when first shown
    ORVFindBar *m_findBar = nullptr;
    QLabel *m_message = nullptr;
    QPushButton *m_reloadButton = nullptr;
    QPushButton *m_keepButton = nullptr;
    QWidget *m_messageBar = nullptr;
    QSplitter *m_splitter = nullptr;
    QWidget *m_previewHolder = nullptr;
    ORVEditorPaneMode m_mode = ORVEditorPaneMode::EditorAndPreview;
    bool m_splitSet = false; // the panes were given their widths once
    QTimer m_previewTimer;
    QTimer m_scrollSyncTimer;

    QFileSystemWatcher m_watcher;
    QTimer m_diskCheckTimer;
    bool m_fileMissing = false;
    bool m_askingAboutDiskChange = false;
    // The file's bytes (hashed) after our last read or save, so that our own
    // writes, and touches that change nothing, are not taken for another
    // program's edits.
    QByteArray m_diskHash;
};
