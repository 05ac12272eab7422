#pragma once

#include <QKeySequence>

#include <functional>

class QAbstractItemView;
class QAction;
class QKeyEvent;
class QPoint;
class QMenu;
class QMenuBar;
class QObject;
class QString;
class QWidget;

// How the windows make their menu and toolbar actions.
namespace WindowActions {

// The desktop's shortcut for key, or fallback where the desktop has none (a
// plain X11 session knows no Save As key).
QAction *make(QObject *parent, const QString &title, QKeySequence::StandardKey key = QKeySequence::UnknownKey,
              const QKeySequence &fallback = {});
// A toolbar item with the theme's icon of that name and its title as tooltip.
QAction *tool(QObject *parent, const QString &title, const char *iconName);

// What every window offers of the application as a whole. Preferences and the
// about panels act alike everywhere; Get Info, Domain Browser and Find in All
// Domains are the window's to connect, since what they mean depends on it.
struct ApplicationActions {
    QAction *preferences, *getInfo, *about, *aboutQt, *domainBrowser, *findInAllDomains;
};
ApplicationActions makeApplicationActions(QWidget *window, const std::function<void()> &showPreferences);
// Shift+F10, the desktop's other key for the context menu: a view that has
// one opens it at its current row when this answers true.
bool isContextMenuKey(const QKeyEvent &event);
// Where a context menu asked for by the keyboard opens in a view's viewport:
// at its current row, or its top left when it has none.
QPoint contextMenuPosition(const QAbstractItemView &view);

// The menus after a window's own File and Edit: View with showToolbar, Window, Help.
// Answers the Window menu, for the window's own items.
QMenu *addApplicationMenus(QMenuBar *menuBar, const ApplicationActions &actions, QAction *showToolbar);

} // namespace WindowActions
