#include "PrefOV.h"

#include "OutlineItemDelegate.h"
#include "document/OutlineModel.h"
#include "document/plistDocument.h"
#include "domains/SettingsKeys.h"
#include "model/VXAdditions.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "ui/AppearanceDefaults.h"
#include "ui/WindowActions.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

namespace {

// The key as the document reads it: the first character, where Backspace and
// Delete are both the delete character, Return 0x0D and the keypad's Enter 0x03.
plistDocument::KeyPress keyPressOf(const QKeyEvent &event)
{
    plistDocument::KeyPress key;
    key.shift = event.modifiers().testFlag(Qt::ShiftModifier);
    key.repeat = event.isAutoRepeat();
    switch (event.key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        key.character = 0x7f;
        break;
    case Qt::Key_Return:
        key.character = 0x0d;
        break;
    case Qt::Key_Enter:
        key.character = 0x03;
        break;
    default:
        key.character = event.text().isEmpty() ? 0 : event.text().at(0).unicode();
        break;
    }
    return key;
}

bool isDeleteKey(const QKeyEvent &event)
{
    const auto modifiers = event.modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier);
    return modifiers == Qt::NoModifier && (event.key() == Qt::Key_Delete || event.key() == Qt::Key_Backspace);
}

constexpr int kKeyColumnWidth = 280;
constexpr int kClassColumnWidth = 100;

} // namespace

PrefOV::PrefOV(QWidget *parent) : QTreeView(parent)
{
    // Every row has the same height, which keeps a tree of millions of rows fast to scroll.
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    setAllColumnsShowFocus(true);
    header()->setStretchLastSection(true);
    header()->setSectionsMovable(true);
    setDragEnabled(true);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDropIndicatorShown(false); // the outline draws where a drop goes itself
    connect(header(), &QHeaderView::sectionMoved, this, &PrefOV::outlineViewColumnDidMove);
}

void PrefOV::outlineViewColumnDidMove() { setTreePosition(header()->logicalIndex(0)); }

void PrefOV::setDocument(plistDocument *document)
{
    if (m_document)
        m_document->services().center.removeObserver(this);
    m_document = document;
    // One outline shows each tab's document in turn: the columns keep the
    // widths and order the user gave them, which a new model would reset.
    const bool hadColumns = header()->count() > 0;
    const QByteArray columns = header()->saveState();
    setModel(document ? document->outlineModel() : nullptr);
    if (!document)
        return;
    QItemSelectionModel *made = selectionModel();
    setSelectionModel(document->selectionModel());
    if (made && made->parent() == this)
        made->deleteLater();
    if (hadColumns) {
        header()->restoreState(columns);
    } else {
        header()->resizeSection(OutlineModel::KeyColumn, kKeyColumnWidth);
        header()->resizeSection(OutlineModel::ClassColumn, kClassColumnWidth);
    }
    outlineViewColumnDidMove();
    applyRowColors();
    using namespace SettingsNotifications;
    for (const QString &name : {VXUseCustomColorsChangedNotification, VXColorsChangedNotification})
        document->services().center.addObserver(this, name,
                                                [this](const Notification &) { applyRowColors(); });
}

void PrefOV::applyRowColors()
{
    // The stripes are the user's light and dark colours when custom colours
    // are on, the desktop's base colours otherwise.
    QPalette stripes = QApplication::palette(this);
    const UserDefaults &defaults = m_document->services().store.defaults;
    if (defaults.boolForKey(SettingsKeys::VXUseCustomColors)) {
        const auto color = [&defaults](const QString &key) {
            return SystemAppearance::qColor(VXAdditions::colorFromString(defaults.stringForKey(key)));
        };
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
            stripes.setColor(group, QPalette::Base, color(SettingsKeys::VXLightColor));
            stripes.setColor(group, QPalette::AlternateBase, color(SettingsKeys::VXDarkColor));
        }
    }
    setPalette(stripes);
}

PListNode *PrefOV::nodeAt(const QModelIndex &index) const
{
    return index.isValid() && m_document ? m_document->outlineModel()->nodeAt(index) : nullptr;
}

QModelIndex PrefOV::indexOf(const PListNode *node, int column) const
{
    return m_document ? m_document->outlineModel()->indexOf(node, column) : QModelIndex();
}

QRect PrefOV::visibleRect() const
{
    return {horizontalScrollBar()->value(), verticalScrollBar()->value(), viewport()->width(),
            viewport()->height()};
}

void PrefOV::setVisibleRect(const QRect &rect)
{
    // Rows expanded just now are laid out later; the scroll ranges must hold them first.
    executeDelayedItemsLayout();
    updateGeometries();
    horizontalScrollBar()->setValue(rect.x());
    verticalScrollBar()->setValue(rect.y());
}

bool PrefOV::event(QEvent *event)
{
    // The delete keys belong to the outline while it has the keyboard, not to
    // the Edit menu's shortcut, so that the document sees both of them alike.
    if (event->type() == QEvent::ShortcutOverride && isDeleteKey(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    return QTreeView::event(event);
}

void PrefOV::drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (isKeyOutline())
        return QTreeView::drawRow(painter, option, index);
    QStyleOptionViewItem background = option;
    background.palette.setColor(QPalette::Highlight, SystemAppearance::backgroundHighlight(option.palette));
    QTreeView::drawRow(painter, background, index);
}

void PrefOV::keyPressEvent(QKeyEvent *event)
{
    if (state() != EditingState && WindowActions::isContextMenuKey(*event)) {
        emit customContextMenuRequested(WindowActions::contextMenuPosition(*this));
        return;
    }
    if (state() != EditingState && event->key() == Qt::Key_Down &&
        (event->modifiers() & ~Qt::KeypadModifier) == Qt::AltModifier) {
        openClassPopUp();
        event->accept();
        return;
    }
    if (m_document && state() != EditingState && !m_document->shouldHandleKeyDown(keyPressOf(*event))) {
        event->accept();
        return;
    }
    QTreeView::keyPressEvent(event);
}

void PrefOV::mousePressEvent(QMouseEvent *event)
{
    QTreeView::mousePressEvent(event);
    if (!m_document || event->button() != Qt::LeftButton)
        return;
    const QModelIndex index = indexAt(event->position().toPoint());
    // One click flips a boolean; the document refuses, with a beep, when it may not.
    if (index.column() == OutlineModel::ValueColumn && index.data(OutlineModel::ValueIsBoolRole).toBool())
        m_document->shouldEditColumn(nodeAt(index), index.column());
}

bool PrefOV::edit(const QModelIndex &index, EditTrigger trigger, QEvent *event)
{
    // An editor the user asks for opens only when the document agrees; one the
    // document asks for (AllEditTriggers, from edit(index)) has been agreed to.
    const bool userAsks = trigger != AllEditTriggers && (trigger & editTriggers());
    if (userAsks && m_document && index.isValid() && state() != EditingState) {
        const bool booleanValue =
            index.column() == OutlineModel::ValueColumn && index.data(OutlineModel::ValueIsBoolRole).toBool();
        // The press of a double click has flipped the boolean already.
        if (booleanValue && trigger == DoubleClicked)
            return false;
        if (!m_document->shouldEditColumn(nodeAt(index), index.column()))
            return false;
    }
    return QTreeView::edit(index, trigger, event);
}

void PrefOV::closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint)
{
    const bool onward = hint == QAbstractItemDelegate::EditNextItem || hint == QAbstractItemDelegate::EditPreviousItem;
    const QModelIndex edited = onward ? OutlineItemDelegate::indexOfEditor(editor) : QModelIndex();
    QTreeView::closeEditor(editor, onward ? QAbstractItemDelegate::NoHint : hint);
    if (!edited.isValid())
        return;
    const QModelIndex next = nextEditableCell(edited, hint == QAbstractItemDelegate::EditNextItem ? 1 : -1);
    if (next.isValid()) {
        setCurrentIndex(next);
        edit(next);
    }
}

QModelIndex PrefOV::nextEditableCell(const QModelIndex &from, int step) const
{
    for (int column = from.column() + step; column >= 0 && column < OutlineModel::ColumnCount; column += step) {
        const QModelIndex cell = from.siblingAtColumn(column);
        const PListNode *node = nodeAt(cell);
        if (!node)
            return {};
        if (column == OutlineModel::KeyColumn && cell.data(OutlineModel::ArrayElementRole).toBool())
            continue;
        if (column == OutlineModel::ValueColumn && (node->valueIsBool() || !node->canEditValue()))
            continue;
        return cell;
    }
    return {};
}

void PrefOV::openClassPopUp()
{
    const QModelIndex cell = currentIndex().siblingAtColumn(OutlineModel::ClassColumn);
    if (!m_document || !cell.isValid() || !m_document->shouldEditColumn(nodeAt(cell), cell.column()))
        return;
    setCurrentIndex(cell);
    edit(cell);
}

// ---- drag and drop -------------------------------------------------------------------------

void PrefOV::startDrag(Qt::DropActions)
{
    if (!m_document)
        return;
    const QList<PListNodePtr> nodes = m_document->selectedNodes();
    if (nodes.isEmpty())
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(m_document->mimeDataForItems(nodes).release());
    // The document has moved the rows itself when they land here; nothing is removed afterwards.
    drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
}

PrefOV::DropSpot PrefOV::dropSpotAt(const QPoint &point) const
{
    const QModelIndex index = indexAt(point).siblingAtColumn(OutlineModel::KeyColumn);
    if (!index.isValid()) {
        // Below the last row: the end of the top level.
        const int rows = model() ? model()->rowCount() : 0;
        const QModelIndex last = rows > 0 ? model()->index(rows - 1, 0) : QModelIndex();
        const int y = last.isValid() ? visualRect(last).bottom() : 0;
        return {nullptr, rows, QRect(0, y, viewport()->width(), 2)};
    }
    const QRect row(0, visualRect(index).top(), viewport()->width(), visualRect(index).height());
    const int edge = std::max(2, row.height() / 4);
    PListNode *node = nodeAt(index);
    PListNode *parent = node->nodeParent() == m_document->treeData().get() ? nullptr : node->nodeParent();
    if (point.y() < row.top() + edge)
        return {parent, index.row(), QRect(row.left(), row.top() - 1, row.width(), 2)};
    // Only a group takes a drop onto it; on a leaf the drop goes just after it.
    const bool below = point.y() > row.bottom() - edge && !(node->isGroup() && isExpanded(index));
    if (below || !node->isGroup())
        return {parent, index.row() + 1, QRect(row.left(), row.bottom(), row.width(), 2)};
    return {node, -1, row.adjusted(0, 0, -1, -1)};
}

std::optional<PrefOV::DropSpot> PrefOV::offerDrop(QDropEvent *event)
{
    m_dropIndicator = QRect();
    if (!m_document || !event->mimeData())
        return std::nullopt;
    const DropSpot spot = dropSpotAt(event->position().toPoint());
    const bool inside = event->source() == this && !(event->modifiers() & Qt::ControlModifier);
    const Qt::DropAction action = inside ? Qt::MoveAction : Qt::CopyAction;
    if (!(event->possibleActions() & action))
        return std::nullopt;
    if (!m_document->validateDrop(*event->mimeData(), m_document->sharedNode(spot.item), spot.childIndex))
        return std::nullopt;
    event->setDropAction(action);
    event->accept();
    m_dropIndicator = spot.indicator;
    return spot;
}

void PrefOV::dragEnterEvent(QDragEnterEvent *event)
{
    // A drag is taken in as long as some row could take it.
    if (m_document && event->mimeData() && m_document->canPaste(event->mimeData()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void PrefOV::dragMoveEvent(QDragMoveEvent *event)
{
    if (!offerDrop(event))
        event->ignore();
    viewport()->update();
    // Near the edges the rows scroll, as in any outline.
    QTreeView::dragMoveEvent(event);
    if (!m_dropIndicator.isNull())
        event->accept();
}

void PrefOV::dragLeaveEvent(QDragLeaveEvent *event)
{
    m_dropIndicator = QRect();
    viewport()->update();
    QTreeView::dragLeaveEvent(event);
}

void PrefOV::dropEvent(QDropEvent *event)
{
    const std::optional<DropSpot> spot = offerDrop(event);
    m_dropIndicator = QRect();
    viewport()->update();
    if (!spot) {
        event->ignore();
        return;
    }
    const auto kind = event->dropAction() == Qt::MoveAction ? plistDocument::DragType::Move
                                                              : plistDocument::DragType::Copy;
    if (!m_document->acceptDrop(*event->mimeData(), m_document->sharedNode(spot->item), spot->childIndex, kind))
        event->ignore();
}

void PrefOV::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    if (m_dropIndicator.isNull())
        return;
    QPainter painter(viewport());
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    if (m_dropIndicator.height() <= 2)
        painter.drawLine(m_dropIndicator.topLeft(), m_dropIndicator.topRight());
    else
        painter.drawRect(m_dropIndicator);
}
