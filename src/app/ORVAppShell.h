#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariantList>

class AppDelegate;
class ORVExternalWindow;
class ORVFirstRunWizard;
class ORVLibraryWindow;
class ORVPreferencesWindow;
class ORVQuickSearchWindow;
class QMainWindow;
class QWidget;

// The desktop application around the application object: which windows
// exist, how the first one comes up, what quitting does, and how files and
// application links reach a window.
//
// Start-up: the first-run wizard while isAppInstalled is unset; otherwise
// the windows of the last session (AppStateData.data) come back, or the last
// window of the first mode, or a fresh library window. A library that is
// gone opens the preferences at the library pane with the reason, and
// nothing is made on disk.
//
// Quitting saves every document with unsaved changes first; when one cannot
// be saved the user is told and nothing quits. Then the window states and
// the editing positions are written.
//
// Thread: the main thread.
class ORVAppShell : public QObject
{
    Q_OBJECT
public:
    explicit ORVAppShell(AppDelegate *app, QObject *parent = nullptr);
    ~ORVAppShell() override;

    AppDelegate *app() const { return m_app; }

    // applicationDidFinishLaunching: the wizard or the main window, then
    // the files and links given on the command line.
    void start(const QStringList &arguments = {});

    // showOrvoMainWindowWithRestoreColseState:
    void showMainWindowWithRestoreState(bool restore);
    // launchWithAppStateData:. True when at least one window opened.
    bool launchWithAppStateData(const QVariantList &records);
    // showTheLibraryWindown: an open library window, else a new one.
    ORVLibraryWindow *showLibraryWindow();
    // showLibraryModeAction: an open library window, else the last library
    // state, else a fresh window.
    ORVLibraryWindow *showLibraryModeAction();
    // showExternalModeAction:
    ORVExternalWindow *showExternalModeAction();
    // openExternalDefaultFileWithCompletion: the welcome text in the
    // external window.
    ORVExternalWindow *openExternalDefaultFile();

    // checkTheLibraryIsOKdAndShowAlert: false (and the preferences open at
    // the library pane with the reason) when the main library is not there.
    bool checkTheLibraryIsOKdAndShowAlert();
    ORVFirstRunWizard *showFirstRunWizard();
    // Preferences at a pane ("general", "editor", "themes", "markdown",
    // "preview", "library", "backup"), with an optional message on it.
    ORVPreferencesWindow *showPreferences(const QString &pane = QString(), const QString &message = QString());
    ORVQuickSearchWindow *showQuickSearch();

    // application:openFiles: and URL events, as the command line hands them.
    void openArguments(const QStringList &arguments);
    // handleURLEvent: orvolib://<uuid> opens that document of the main library.
    bool handleURL(const QString &url);
    // Opens a file: a library document in a library window, anything else
    // in the external window.
    bool openFile(const QString &path);

    QList<ORVLibraryWindow *> libraryWindows() const;
    QList<ORVExternalWindow *> externalWindows() const;
    QList<QMainWindow *> documentWindows() const;

    // The state records of every window, in window order.
    QVariantList windowStateRecords() const;
    // Saves every document of every window; false, after telling the user
    // unless `quiet`, when one failed.
    bool saveAllDocuments(bool quiet = false);
    // Quitting: save all, then the states; false when the user must act
    // first (a failed save). `quitApplication` ends the event loop.
    bool requestQuit(bool quitApplication = true);
    // A window is closing: as the last one it quits; otherwise its state
    // becomes the last state of its mode. False to keep it open.
    bool windowShouldClose(QMainWindow *window);

    // Closes the library windows (their documents saved, their state kept as
    // the last library state) without quitting: the library changes.
    bool closeLibraryWindowsForSwitch();

    // The windows' colours follow isDarkThemes: a dark palette when set, the
    // style's own palette otherwise.
    static void applyInterfaceTheme(bool dark);

    // The window state record of a window (library or external).
    static QVariantMap windowStateOf(QMainWindow *window);

private:
    void registerWindow(QMainWindow *window);
    ORVLibraryWindow *newLibraryWindow(const QString &libraryPath = QString());
    ORVExternalWindow *newExternalWindow();

    AppDelegate *m_app;
    QList<QPointer<QMainWindow>> m_windows;
    QPointer<ORVFirstRunWizard> m_wizard;
    QPointer<ORVPreferencesWindow> m_preferences;
    QPointer<ORVQuickSearchWindow> m_quickSearch;
    bool m_quitting = false;
    bool m_switchingLibrary = false;
};
