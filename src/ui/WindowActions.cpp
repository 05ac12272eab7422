#include "WindowActions.h"

#include <QAction>
#include <QIcon>

namespace WindowActions {

QAction *make(QObject *parent, const QString &title, QKeySequence::StandardKey key, const QKeySequence &fallback)
{
    auto *action = new QAction(title, parent);
    const QList<QKeySequence> keys = QKeySequence::keyBindings(key);
    action->setShortcuts(keys.isEmpty() && !fallback.isEmpty() ? QList<QKeySequence>{fallback} : keys);
    return action;
}

QAction *tool(QObject *parent, const QString &title, const char *iconName)
{
    auto *action = new QAction(QIcon::fromTheme(QString::fromLatin1(iconName)), title, parent);
    action->setToolTip(title);
    return action;
}

} // namespace WindowActions
