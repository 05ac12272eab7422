#pragma once

#include <QKeySequence>

class QAction;
class QObject;
class QString;

// How the windows make their menu and toolbar actions.
namespace WindowActions {

// The desktop's shortcut for key, or fallback where the desktop has none (a
// plain X11 session knows no Save As key).
QAction *make(QObject *parent, const QString &title, QKeySequence::StandardKey key = QKeySequence::UnknownKey,
              const QKeySequence &fallback = {});
// A toolbar item with the theme's icon of that name and its title as tooltip.
QAction *tool(QObject *parent, const QString &title, const char *iconName);

} // namespace WindowActions
