#include "WindowActions.h"

#include "ui/AboutPanel.h"

#include <QAbstractItemView>
#include <QAction>
#include <QKeyEvent>
#include <QApplication>
#include <QIcon>
#include <QMenuBar>

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

ApplicationActions makeApplicationActions(QWidget *window, const std::function<void()> &showPreferences)
{
    ApplicationActions a;
    a.preferences = make(window, QApplication::translate("WindowActions", "Pr&eferences…"),
                         QKeySequence::Preferences, QKeySequence(Qt::CTRL | Qt::Key_Comma));
    a.preferences->setMenuRole(QAction::PreferencesRole);
    QObject::connect(a.preferences, &QAction::triggered, window, showPreferences);
    a.getInfo = make(window, QApplication::translate("WindowActions", "Get &Info"), QKeySequence::UnknownKey,
                     QKeySequence(Qt::CTRL | Qt::Key_I));
    a.domainBrowser = make(window, QApplication::translate("WindowActions", "&Domain Browser"));
    a.findInAllDomains = make(window, QApplication::translate("WindowActions", "Find in All Domains…"),
                              QKeySequence::UnknownKey, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F));
    a.about = make(window, QApplication::translate("WindowActions", "&About Orvane"));
    a.about->setMenuRole(QAction::AboutRole);
    QObject::connect(a.about, &QAction::triggered, window, [window] { AboutPanel::showAbout(window); });
    a.aboutQt = make(window, QApplication::translate("WindowActions", "About &Qt"));
    a.aboutQt->setMenuRole(QAction::AboutQtRole);
    QObject::connect(a.aboutQt, &QAction::triggered, qApp, &QApplication::aboutQt);
    return a;
}

bool isContextMenuKey(const QKeyEvent &event)
{
    return event.key() == Qt::Key_F10 && (event.modifiers() & ~Qt::KeypadModifier) == Qt::ShiftModifier;
}

QPoint contextMenuPosition(const QAbstractItemView &view)
{
    const QRect row = view.visualRect(view.currentIndex());
    return row.isValid() ? QPoint(row.left() + row.height(), row.center().y()) : QPoint(0, 0);
}

QMenu *addApplicationMenus(QMenuBar *menuBar, const ApplicationActions &actions, QAction *showToolbar)
{
    menuBar->addMenu(QApplication::translate("WindowActions", "&View"))->addAction(showToolbar);
    QMenu *window = menuBar->addMenu(QApplication::translate("WindowActions", "&Window"));
    window->addAction(actions.domainBrowser);
    menuBar->addMenu(QApplication::translate("WindowActions", "&Help"))->addActions({actions.about, actions.aboutQt});
    return window;
}

} // namespace WindowActions
