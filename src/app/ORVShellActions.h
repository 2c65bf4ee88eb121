#pragma once

#include <QString>

#include <functional>

class ORVAppShell;
class ORVMDTextView;
class QMenu;
class QMenuBar;
class QWidget;

// Menu items that library and external windows share: the application's
// items (preferences, quit), the editing items and the Format and Insert
// menus that act on the window's current text view, the theme switch, and
// the Window menu.
namespace ORVShellActions {

using CurrentTextView = std::function<ORVMDTextView *()>;

void addApplicationItems(QMenu *file, ORVAppShell *shell, QWidget *window);
void addEditItems(QMenu *edit, const CurrentTextView &current);
// Format and Insert list the current view's own commands (each view has
// its actions, bound to its text), rebuilt whenever they open.
void addFormatMenus(QMenuBar *bar, const CurrentTextView &current);
void addThemeItems(QMenu *view);
void addWindowMenu(QMenuBar *bar, ORVAppShell *shell);
// The label of a document order (0 to 6); "" for any other.
QString sortOrderLabel(quint64 order);

} // namespace ORVShellActions
