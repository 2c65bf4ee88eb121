#include "app/ORVShellActions.h"

#include "app/ORVAppShell.h"
#include "app/ORVFindBar.h"
#include "app/ORVMDTextView.h"
#include "core/MyPreferences.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QWidget>

namespace ORVShellActions {

void addApplicationItems(QMenu *file, ORVAppShell *shell, QWidget *window)
{
    file->addSeparator();
    QAction *prefs = file->addAction(QObject::tr("&Preferences…"), window, [shell] {
        if (shell)
            shell->showPreferences();
    });
    prefs->setShortcut(QKeySequence::Preferences);
    if (prefs->shortcut().isEmpty())
        prefs->setShortcut(QKeySequence(QObject::tr("Ctrl+,")));
    prefs->setMenuRole(QAction::PreferencesRole);
    file->addSeparator();
    QAction *quit = file->addAction(QObject::tr("&Quit"), window, [shell] {
        if (shell)
            shell->requestQuit();
        else
            QApplication::quit();
    });
    quit->setShortcut(QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);
}

void addEditItems(QMenu *edit, const CurrentTextView &current)
{
    const auto item = [&](const QString &text, QKeySequence::StandardKey key, void (QPlainTextEdit::*slot)()) {
        QAction *a = edit->addAction(text);
        a->setShortcut(key);
        // The view handles these keys itself while it has the focus; the
        // menu item is for the mouse and for other focus.
        a->setShortcutContext(Qt::WidgetShortcut);
        QObject::connect(a, &QAction::triggered, edit, [current, slot] {
            if (ORVMDTextView *view = current())
                (view->*slot)();
        });
    };
    item(QObject::tr("&Undo"), QKeySequence::Undo, &QPlainTextEdit::undo);
    item(QObject::tr("&Redo"), QKeySequence::Redo, &QPlainTextEdit::redo);
    edit->addSeparator();
    item(QObject::tr("Cu&t"), QKeySequence::Cut, &QPlainTextEdit::cut);
    item(QObject::tr("&Copy"), QKeySequence::Copy, &QPlainTextEdit::copy);
    item(QObject::tr("&Paste"), QKeySequence::Paste, &QPlainTextEdit::paste);
    item(QObject::tr("Select &All"), QKeySequence::SelectAll, &QPlainTextEdit::selectAll);
    edit->addSeparator();
    QAction *find = edit->addAction(QObject::tr("&Find…"));
    find->setShortcut(QKeySequence::Find);
    find->setShortcutContext(Qt::WidgetShortcut);
    QObject::connect(find, &QAction::triggered, edit, [current] {
        if (ORVMDTextView *view = current())
            emit view->findRequested(view->textCursor().selectedText());
    });
}

void addFormatMenus(QMenuBar *bar, const CurrentTextView &current)
{
    QMenu *format = bar->addMenu(QObject::tr("F&ormat"));
    QMenu *insert = bar->addMenu(QObject::tr("&Insert"));
    const auto fill = [current, format, insert] {
        format->clear();
        insert->clear();
        ORVMDTextView *view = current();
        if (!view) {
            format->addAction(QObject::tr("No Document"))->setEnabled(false);
            insert->addAction(QObject::tr("No Document"))->setEnabled(false);
            return;
        }
        for (QAction *a : view->editingActions()) {
            if (a->objectName() == QLatin1String("find"))
                continue;
            (a->objectName().startsWith(QLatin1String("insert")) ? insert : format)->addAction(a);
        }
    };
    QObject::connect(format, &QMenu::aboutToShow, format, fill);
    QObject::connect(insert, &QMenu::aboutToShow, insert, fill);
}

void addThemeItems(QMenu *view)
{
    view->addSeparator();
    QAction *dark = view->addAction(QObject::tr("&Dark Theme"));
    dark->setCheckable(true);
    dark->setChecked(MyPreferences::sharedInstance()->isDarkThemes());
    QObject::connect(dark, &QAction::toggled, view, [](bool on) {
        MyPreferences::sharedInstance()->setIsDarkThemes(on);
        MyPreferences::sharedInstance()->synchronize();
    });
    QObject::connect(view, &QMenu::aboutToShow, dark,
                     [dark] { dark->setChecked(MyPreferences::sharedInstance()->isDarkThemes()); });
}

void addWindowMenu(QMenuBar *bar, ORVAppShell *shell)
{
    QMenu *window = bar->addMenu(QObject::tr("&Window"));
    window->addAction(QObject::tr("&Library"), QKeySequence(QObject::tr("Ctrl+Shift+1")), window, [shell] {
        if (shell)
            shell->showLibraryModeAction();
    });
    window->addAction(QObject::tr("&External Folders"), QKeySequence(QObject::tr("Ctrl+Shift+2")), window, [shell] {
        if (shell)
            shell->showExternalModeAction();
    });
    window->addSeparator();
    window->addAction(QObject::tr("&Quick Search…"), QKeySequence(QObject::tr("Ctrl+Shift+O")), window, [shell] {
        if (shell)
            shell->showQuickSearch();
    });
    window->addSeparator();
    window->addAction(QObject::tr("&Minimize"), QKeySequence(QObject::tr("Ctrl+M")), window, [] {
        if (QWidget *w = QApplication::activeWindow())
            w->showMinimized();
    });
}

} // namespace ORVShellActions
