#pragma once

#include <QDialog>
#include <QHash>

class AppDelegate;
class ORVAppShell;
class QLabel;
class QListWidget;
class QStackedWidget;
class QWidget;

// The preferences: panes for general, editor, themes, Markdown, preview,
// library and backup. Every control is bound to one key of MyPreferences
// and writes it as soon as it changes; views follow the change
// notification, so changes show at once. Controls follow changes made
// elsewhere (menus, another window) as well.
//
// The library pane shows where the library is, lets the user choose another
// folder that holds one or make a new library, and shows a message when the
// library was not found at start.
class ORVPreferencesWindow : public QDialog
{
    Q_OBJECT
public:
    ORVPreferencesWindow(ORVAppShell *shell, AppDelegate *app, QWidget *parent = nullptr);

    // "general", "editor", "themes", "markdown", "preview", "library",
    // "backup". False for an unknown name.
    bool showPane(const QString &name);
    QString currentPane() const;
    // A message at the top of the library pane ("" hides it).
    void setMessage(const QString &message);
    QString message() const;
    // The control bound to a preference key (tests).
    QWidget *controlForKey(const QString &key) const { return m_controls.value(key); }

    // Makes `folder` the main library: a library already there is taken,
    // otherwise (with `create`) a new one is made. False with the reason.
    bool switchLibrary(const QString &folder, bool create, QString *error = nullptr);

private:
    QWidget *generalPane();
    QWidget *editorPane();
    QWidget *themesPane();
    QWidget *markdownPane();
    QWidget *previewPane();
    QWidget *libraryPane();
    QWidget *backupPane();
    void addPane(const QString &name, const QString &title, const QString &icon, QWidget *pane);
    void refreshLibraryPane();

    QWidget *check(const QString &key, const QString &text);
    QWidget *spin(const QString &key, int min, int max, const QString &suffix = QString());
    QWidget *combo(const QString &key, const QStringList &labels, const QVariantList &values);
    void refreshControl(const QString &key);

    ORVAppShell *m_shell;
    AppDelegate *m_app;
    QListWidget *m_sidebar;
    QStackedWidget *m_stack;
    QStringList m_paneNames;
    QHash<QString, QWidget *> m_controls;
    QLabel *m_libraryMessage = nullptr;
    QLabel *m_libraryPath = nullptr;
    bool m_refreshing = false;
};
