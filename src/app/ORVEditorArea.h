#pragma once

#include "app/ORVEditorTab.h"

#include <QList>
#include <QTabWidget>

class AppDelegate;

// The tabs of a window: one ORVEditorTab per open document, at most one per
// file. Closing a tab with unsaved changes asks first; a failed save keeps
// the tab open.
//
// Thread: the main thread.
class ORVEditorArea : public QTabWidget
{
    Q_OBJECT
public:
    explicit ORVEditorArea(AppDelegate *app, QWidget *parent = nullptr);

    // The tab of `path`, made when missing (then placed after the current
    // tab). Null only when `path` is "".
    ORVEditorTab *openDocument(const QString &path, bool makeCurrent = true);
    ORVEditorTab *tabForPath(const QString &path) const;
    ORVEditorTab *currentEditorTab() const;
    QList<ORVEditorTab *> editorTabs() const;

    // Asks about unsaved changes when `ask`; false when the user kept the
    // tab (Cancel, or a save that failed).
    bool closeEditorTab(ORVEditorTab *tab, bool ask = true);
    // The tabs of these files close after saving what they have (their
    // documents left the window's library: trash, deletion).
    void closeTabsOfPaths(const QStringList &paths);

    // Saves every tab with unsaved changes. False when one failed; the
    // messages are "<file>: <reason>".
    bool saveAllDocuments(QStringList *errors = nullptr);
    // The same, telling the user what failed unless `quiet` (the window's
    // own save all and close).
    bool saveAllDocumentsTellingUser(bool quiet, QStringList *errors);
    // Every tab looks at its file (the window came to the front: another
    // program may have changed them meanwhile).
    void checkFilesOnDisk();
    bool hasUnsavedDocuments() const;

    void setPaneModeOfAllTabs(ORVEditorPaneMode mode);
    // Editing positions of every tab go to the application object.
    void storeAllTextViewStates();

signals:
    void currentEditorTabChanged(ORVEditorTab *tab);
    void editorTabTextChanged(ORVEditorTab *tab);
    void editorTabSaved(ORVEditorTab *tab);
    void editorTabLinkActivated(const QString &path);
    void applicationLinkActivated(const QUrl &url);
    // The last tab closed.
    void becameEmpty();

private:
    void refreshTabLabel(ORVEditorTab *tab);

    AppDelegate *m_app;
};
