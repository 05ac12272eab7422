#include "openQuicklyOV.h"

#include "domains/DomainOutlineModel.h"
#include "domains/SettingsKeys.h"
#include "domains/openDomain.h"
#include "model/VXAdditions.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "ui/AppearanceDefaults.h"
#include "ui/DomainItemDelegate.h"
#include "ui/WindowActions.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMimeData>

namespace {

bool isDeleteKey(const QKeyEvent &event)
{
    const auto modifiers = event.modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier);
    return modifiers == Qt::NoModifier && (event.key() == Qt::Key_Delete || event.key() == Qt::Key_Backspace);
}

bool isOpenKey(const QKeyEvent &event)
{
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    return modifiers == Qt::NoModifier && (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter);
}


// Only a `defaults write` line is taken; where it lands does not matter.
bool acceptsText(QDropEvent *event)
{
    const QMimeData *data = event->mimeData();
    if (!data || !data->hasText() || !openDomain::willAccept(data->text()))
        return false;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    return true;
}

} // namespace

openQuicklyOV::openQuicklyOV(openDomain &application, UserDefaults &defaults, NotificationCenter &center,
                             QWidget *parent)
    : QTreeView(parent), m_application(application), m_defaults(defaults)
{
    // Every row has the same height: the account's hundreds of domains scroll and open quickly.
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setHeaderHidden(true);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    // A double click opens; on a folder, opening is the toggle.
    setExpandsOnDoubleClick(false);
    setModel(application.model());
    setSelectionModel(application.selectionModel());
    setItemDelegate(new DomainItemDelegate(defaults, this));
    connect(this, &QAbstractItemView::doubleClicked, &application, &openDomain::openQuickly);
    applyAppearance();
    using namespace SettingsNotifications;
    for (const QString &name :
         {VXUseCustomColorsChangedNotification, VXColorsChangedNotification, VXTextFontChangedNotification})
        center.addObserver(this, name, [this](const Notification &) { applyAppearance(); });
}

QModelIndex openQuicklyOV::indexOf(const openNode *node) const
{
    return m_application.model()->indexOf(node);
}

void openQuicklyOV::applyAppearance()
{
    QPalette stripes = QApplication::palette(this);
    if (m_defaults.boolForKey(SettingsKeys::VXUseCustomColors)) {
        const auto color = [this](const QString &key) {
            return SystemAppearance::qColor(VXAdditions::colorFromString(m_defaults.stringForKey(key)));
        };
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
            stripes.setColor(group, QPalette::Base, color(SettingsKeys::VXLightColor));
            stripes.setColor(group, QPalette::AlternateBase, color(SettingsKeys::VXDarkColor));
        }
    }
    setPalette(stripes);
    const QFont font = SystemAppearance::listFont(m_defaults, QApplication::font(this));
    setFont(font);
    viewport()->update();
}

bool openQuicklyOV::event(QEvent *event)
{
    // The delete keys belong to the outline while it has the keyboard, not to
    // the Edit menu's shortcut, so that both reach the application object alike.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto &key = *static_cast<QKeyEvent *>(event);
        if (isDeleteKey(key) || isOpenKey(key)) {
            event->accept();
            return true;
        }
    }
    return QTreeView::event(event);
}

void openQuicklyOV::keyPressEvent(QKeyEvent *event)
{
    if (WindowActions::isContextMenuKey(*event)) {
        emit customContextMenuRequested(WindowActions::contextMenuPosition(*this));
        return;
    }
    if (isOpenKey(*event)) {
        m_application.openQuickly();
        return;
    }
    if (isDeleteKey(*event)) {
        constexpr char16_t kDelete = 0x7F;
        if (!m_application.shouldHandleKeyDown({kDelete, event->isAutoRepeat()}))
            return;
    }
    QTreeView::keyPressEvent(event);
}

void openQuicklyOV::dragEnterEvent(QDragEnterEvent *event)
{
    if (!acceptsText(event))
        event->ignore();
}

void openQuicklyOV::dragMoveEvent(QDragMoveEvent *event)
{
    if (!acceptsText(event))
        event->ignore();
}

void openQuicklyOV::dropEvent(QDropEvent *event)
{
    if (!acceptsText(event) || !m_application.acceptDrop(event->mimeData()->text()))
        event->ignore();
}
