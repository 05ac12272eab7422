#include "VXTabItemBar.h"

#include "domains/ApplicationSettings.h"
#include "domains/SettingsKeys.h"
#include "model/VXAdditions.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "ui/AppearanceDefaults.h"

#include <QApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

// The chevron's strip at the right end is the room the fitting keeps free.
constexpr int kChevronWidth = static_cast<int>(TabBarFitting::kChevronRoom);
// Below the tabs, a strip in the active tab's colour that the active tab joins.
constexpr int kBaseStrip = 3;
constexpr int kTextPadding = 10;

TabColors tabColors(const UserDefaults &defaults, const QPalette &palette)
{
    using namespace SettingsKeys;
    if (defaults.boolForKey(VXTabsUseCustomColors)) {
        const auto color = [&defaults](const QString &key) {
            return SystemAppearance::qColor(VXAdditions::colorFromString(defaults.stringForKey(key)));
        };
        return {color(VXTabActiveTextColor), color(VXTabBackgroundColor), color(VXTabDisabledTextColor),
                color(VXTabActiveBackgroundColor), color(VXTabOverflowChevronColor)};
    }
    // The roles the registered tab colours are made of; the inactive highlight
    // softened where the style paints it as strong as the active one. The
    // disabled grey is too faint on it for a title that is read all day, so
    // the other tabs' titles are the text colour, a little lighter.
    const QColor text = palette.color(QPalette::Active, QPalette::Text);
    QColor otherTitles = text;
    otherTitles.setAlphaF(0.7f);
    return {text, SystemAppearance::backgroundHighlight(palette), otherTitles,
            palette.color(QPalette::Active, QPalette::Light), palette.color(QPalette::Disabled, QPalette::Text)};
}

QFont tabFont(const UserDefaults &defaults)
{
    const QString family = defaults.stringForKey(SettingsKeys::VXTabTextFont);
    QFont font = family.isEmpty() ? QFont() : QFont(family);
    const double size = defaults.doubleForKey(SettingsKeys::VXTabTextFontSize);
    font.setPointSizeF(size > 0 ? size : ApplicationSettings::kTabTextFontSize);
    font.setBold(true);
    return font;
}

} // namespace

VXTabItemBar::VXTabItemBar(UserDefaults &defaults, NotificationCenter &center, QWidget *parent)
    : QWidget(parent), m_defaults(defaults)
{
    TabBarFitting::State start;
    start.barWidth = static_cast<float>(width());
    m_fitting = TabBarFitting(start);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    using namespace SettingsNotifications;
    for (const QString &name : {VXTabsUseCustomColorsChangedNotification, VXTabColorsChangedNotification,
                                VXTabTextFontChangedNotification})
        center.addObserver(this, name, [this](const Notification &) { applyAppearance(); });
    applyAppearance();
}

void VXTabItemBar::createNewTabWithTitle(const QString &title, int index)
{
    index = qBound(0, index, count());
    m_documents.insert(index, Document{});
    m_fitting.createNewTabWithTitle(title, index);
    sync();
}

void VXTabItemBar::removeTabView(int index)
{
    if (index < 0 || index >= count())
        return;
    m_dragSlot = -1;
    m_dragging = false;
    m_documents.removeAt(index);
    m_fitting.removeTabView(index);
    sync();
}

void VXTabItemBar::updateTabName(int index, const QString &title)
{
    m_fitting.updateTabName(index, title);
    sync();
}

void VXTabItemBar::setTabToolTip(int index, const QString &toolTip)
{
    if (index >= 0 && index < m_documents.size()) {
        m_documents[index].toolTip = toolTip;
        sync();
    }
}

void VXTabItemBar::setTabModified(int index, bool modified)
{
    if (index >= 0 && index < m_documents.size()) {
        m_documents[index].modified = modified;
        sync();
    }
}

void VXTabItemBar::setSelectedDocument(int index)
{
    m_fitting.setSelectedDocument(index);
    sync();
}

int VXTabItemBar::selectedDocument() const
{
    return m_fitting.selectedDocument();
}

void VXTabItemBar::moveTab(int from, int to)
{
    if (from == to || from < 0 || to < 0 || from >= count() || to >= count())
        return;
    m_fitting.moveTab(from, to);
    m_documents.move(from, to);
    sync();
}

int VXTabItemBar::count() const
{
    return m_fitting.count();
}

int VXTabItemBar::numberOfTabs() const
{
    return m_fitting.numberOfTabs();
}

QList<int> VXTabItemBar::visibleIndexes() const
{
    return m_fitting.visibleIndexes();
}

QList<int> VXTabItemBar::hiddenIndexes() const
{
    return m_fitting.hiddenIndexes();
}

float VXTabItemBar::currentTabWidth() const
{
    return m_fitting.currentTabWidth();
}

QMenu *VXTabItemBar::popUpMenu() const
{
    return m_menu;
}

VXTabItemView *VXTabItemBar::tabView(int index) const
{
    for (VXTabItemView *view : m_views)
        if (view->index() == index)
            return view;
    return nullptr;
}

QRect VXTabItemBar::chevronRect() const
{
    return {width() - kChevronWidth, 0, kChevronWidth, m_tabHeight};
}

QSize VXTabItemBar::sizeHint() const
{
    return {400, m_tabHeight + kBaseStrip};
}

QSize VXTabItemBar::minimumSizeHint() const
{
    return {0, m_tabHeight + kBaseStrip};
}

void VXTabItemBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.fillRect(QRect(0, m_tabHeight, width(), kBaseStrip), m_colors.activeBackground);
    if (!m_fitting.hasPopUp())
        return;
    painter.setFont(m_font);
    painter.setPen(m_colors.overflowChevron);
    painter.drawText(chevronRect(), Qt::AlignCenter, u"\u00bb"_s);
}

void VXTabItemBar::resizeEvent(QResizeEvent *)
{
    // Qt reports a maximise as one resize, like the end of a drag: fit fully.
    m_fitting.windowDidResize(static_cast<float>(width()), false);
    sync();
}

void VXTabItemBar::mousePressEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    if (m_menu && chevronRect().contains(position) && event->button() == Qt::LeftButton) {
        // Right-aligned under the chevron, as a menu under a button at the
        // window's right end opens, so that it stays on the screen.
        const QRect chevron = chevronRect();
        const int left = chevron.right() + 1 - m_menu->sizeHint().width();
        m_menu->popup(mapToGlobal(QPoint(left, chevron.bottom() + 1)));
        return;
    }
    const int slot = slotAt(position);
    if (slot < 0)
        return;
    const int index = m_fitting.tabItemViews().at(slot).index;
    if (event->button() == Qt::MiddleButton) {
        emit tabCloseRequested(index);
    } else if (event->button() == Qt::LeftButton) {
        m_dragSlot = slot;
        m_pressX = position.x();
        m_grabOffset = position.x() - m_views.at(slot)->x();
        m_dragging = false;
        emit tabSelected(index);
    }
}

void VXTabItemBar::mouseMoveEvent(QMouseEvent *event)
{
    if (m_dragSlot < 0 || m_dragSlot >= m_views.size() || !(event->buttons() & Qt::LeftButton))
        return;
    const int x = qRound(event->position().x());
    if (!m_dragging && qAbs(x - m_pressX) < QApplication::startDragDistance())
        return;
    m_dragging = true;
    dragTo(x);
}

void VXTabItemBar::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const bool dragged = m_dragging;
    m_dragSlot = -1;
    m_dragging = false;
    if (dragged)
        sync();
}

void VXTabItemBar::applyAppearance()
{
    m_colors = tabColors(m_defaults, palette());
    m_font = tabFont(m_defaults);
    m_tabHeight = QFontMetrics(m_font).height() + kTextPadding;
    setFixedHeight(m_tabHeight + kBaseStrip);
    sync();
}

void VXTabItemBar::sync()
{
    // Whatever the fitting did at the strip's ends, the user reads the tabs
    // in document order, as Ctrl+Tab walks them.
    m_fitting.arrangeAround(m_fitting.selectedDocument());
    const QList<TabBarFitting::Tab> &tabs = m_fitting.tabItemViews();
    while (m_views.size() < tabs.size()) {
        auto *view = new VXTabItemView(this);
        connect(view, &VXTabItemView::closeClicked, this, &VXTabItemBar::tabCloseRequested);
        view->show();
        m_views.append(view);
    }
    // Later: the view may be the one whose close box asked for this.
    while (m_views.size() > tabs.size()) {
        VXTabItemView *view = m_views.takeLast();
        view->hide();
        view->deleteLater();
    }
    for (int slot = 0; slot < tabs.size(); ++slot) {
        const TabBarFitting::Tab &tab = tabs.at(slot);
        const Document document = m_documents.value(tab.index);
        VXTabItemView *view = m_views.at(slot);
        view->setIndex(tab.index);
        view->setTitle(tab.title);
        view->setToolTip(document.toolTip);
        view->setModified(document.modified);
        view->setActiveTab(tab.index == m_fitting.selectedDocument());
        view->setColors(m_colors);
        view->setFont(m_font);
        view->setFixedHeight(m_tabHeight);
        if (!m_dragging || slot != m_dragSlot)
            view->resizeWidth(tab.width, tab.x);
    }
    syncMenu();
    update();
}

void VXTabItemBar::syncMenu()
{
    const QList<TabBarFitting::OverflowItem> &items = m_fitting.popUpMenu();
    if (items.isEmpty()) {
        if (m_menu) {
            m_menu->hide();
            m_menu->deleteLater();
            m_menu = nullptr;
        }
        return;
    }
    if (!m_menu)
        m_menu = new QMenu(this);
    // Later: the action may be the one whose choice led here.
    for (QAction *action : m_menu->actions()) {
        m_menu->removeAction(action);
        action->deleteLater();
    }
    for (const TabBarFitting::OverflowItem &item : items) {
        const int tag = item.tag;
        connect(m_menu->addAction(item.title), &QAction::triggered, this,
                [this, tag] { emit tabSelected(tag); });
    }
}

int VXTabItemBar::slotAt(const QPoint &position) const
{
    for (int slot = 0; slot < m_views.size(); ++slot)
        if (m_views.at(slot)->geometry().contains(position))
            return slot;
    return -1;
}

void VXTabItemBar::dragTo(int x)
{
    VXTabItemView *view = m_views.at(m_dragSlot);
    const int left = qBound(0, x - m_grabOffset, qMax(0, width() - kChevronWidth - view->width()));
    const float centre = static_cast<float>(left) + static_cast<float>(view->width()) / 2.0f;
    // The dragged tab passes a neighbour once its middle passes the neighbour's.
    for (;;) {
        const QList<TabBarFitting::Tab> &tabs = m_fitting.tabItemViews();
        const auto middle = [&tabs](int slot) { return tabs.at(slot).x + tabs.at(slot).width / 2.0f; };
        int target = m_dragSlot;
        if (target + 1 < tabs.size() && centre > middle(target + 1))
            ++target;
        else if (target > 0 && centre < middle(target - 1))
            --target;
        if (target == m_dragSlot)
            break;
        const int from = tabs.at(m_dragSlot).index;
        const int to = tabs.at(target).index;
        m_fitting.moveTab(from, to);
        m_documents.move(from, to);
        m_dragSlot = target;
        sync();
        emit tabMoved(from, to);
        if (m_dragSlot < 0 || m_dragSlot >= m_views.size())
            return;
    }
    view = m_views.at(m_dragSlot);
    view->move(left, 0);
    view->raise();
}
