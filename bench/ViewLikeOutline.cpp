#include "ViewLikeOutline.h"

#include "document/OutlineModel.h"

#include <QCoreApplication>
#include <QItemSelectionModel>

#include <algorithm>

ViewLikeOutline::ViewLikeOutline(OutlineModel &model, QItemSelectionModel &selection)
    : m_model(model), m_selection(selection)
{
    const auto layoutLater = [this] { m_layoutPending = true; };
    QObject::connect(&m_model, &QAbstractItemModel::modelReset, &m_model, [this] {
        m_expanded.clear();
        m_top = 0;
        m_layoutPending = true;
    });
    QObject::connect(&m_model, &QAbstractItemModel::layoutChanged, &m_model, layoutLater);
    QObject::connect(&m_model, &QAbstractItemModel::rowsInserted, &m_model, layoutLater);
    QObject::connect(&m_model, &QAbstractItemModel::rowsRemoved, &m_model, layoutLater);
    QObject::connect(&m_model, &QAbstractItemModel::dataChanged, &m_model, [this] { m_paintPending = true; });
}

void ViewLikeOutline::settle()
{
    QCoreApplication::sendPostedEvents();
    if (m_layoutPending)
        layOut();
    if (m_paintPending) {
        const qsizetype first = std::min<qsizetype>(m_top, m_layout.size());
        paint(m_layout.mid(first, kRowsOnScreen));
        m_paintPending = false;
    }
}

void ViewLikeOutline::layOut()
{
    m_layout.clear();
    layOutBelow(QModelIndex());
    if (m_scrollTarget.isValid()) {
        const qsizetype at = m_layout.indexOf(QModelIndex(m_scrollTarget));
        m_top = at < 0 ? 0 : int(at);
        m_scrollTarget = QPersistentModelIndex();
    }
    m_layoutPending = false;
    m_paintPending = true;
}

void ViewLikeOutline::layOutBelow(const QModelIndex &parent)
{
    const int rows = m_model.rowCount(parent);
    for (int row = 0; row < rows; ++row) {
        const QModelIndex index = m_model.index(row, 0, parent);
        m_layout.append(index);
        if (m_model.hasChildren(index) && m_expanded.contains(index))
            layOutBelow(index);
    }
}

qsizetype ViewLikeOutline::paint(const QList<QModelIndex> &rows) const
{
    static constexpr int kRoles[] = {Qt::DisplayRole, OutlineModel::ColourRole,
                                     OutlineModel::CustomColourRole, OutlineModel::FontNameRole,
                                     OutlineModel::FontSizeRole};
    qsizetype texts = 0;
    for (const QModelIndex &row : rows) {
        const QModelIndex parent = m_model.parent(row);
        for (int column = 0; column < OutlineModel::ColumnCount; ++column) {
            const QModelIndex cell = m_model.index(row.row(), column, parent);
            texts += m_selection.isSelected(cell);
            for (const int role : kRoles)
                texts += m_model.data(cell, role).isValid();
        }
    }
    return texts;
}

QList<QModelIndex> ViewLikeOutline::rowsOf(const QModelIndex &parent, int first) const
{
    QList<QModelIndex> rows;
    const int last = std::min(first + kRowsOnScreen, m_model.rowCount(parent));
    for (int row = first; row < last; ++row)
        rows.append(m_model.index(row, 0, parent));
    return rows;
}

void ViewLikeOutline::expandItem(const PListNode *node)
{
    const QModelIndex index = m_model.indexOf(node);
    if (index.isValid() && !m_expanded.contains(index)) {
        m_expanded.insert(index);
        m_layoutPending = true;
    }
}

bool ViewLikeOutline::isItemExpanded(const PListNode *node) const
{
    const QModelIndex index = m_model.indexOf(node);
    return index.isValid() && m_expanded.contains(index);
}

void ViewLikeOutline::scrollToItem(const PListNode *node)
{
    m_scrollTarget = m_model.indexOf(node);
    m_layoutPending = true;
}
