#include "RowSelection.h"

#include <QItemSelectionModel>

#include <algorithm>
#include <numeric>

namespace {

// The rows from the top level down to an index.
QList<int> pathOf(QModelIndex index)
{
    QList<int> path;
    for (; index.isValid(); index = index.parent())
        path.prepend(index.row());
    return path;
}

} // namespace

namespace RowSelection {

QModelIndexList inOutlineOrder(const QItemSelectionModel &selection, int column)
{
    const QModelIndexList rows = selection.selectedRows(column);
    // Each path once, not once per comparison: a select-all of a big tree sorts many rows.
    QList<QList<int>> paths;
    paths.reserve(rows.size());
    for (const QModelIndex &row : rows)
        paths.append(pathOf(row));
    QList<qsizetype> order(rows.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&paths](qsizetype a, qsizetype b) { return paths[a] < paths[b]; });
    QModelIndexList sorted;
    sorted.reserve(rows.size());
    for (const qsizetype i : order)
        sorted.append(rows[i]);
    return sorted;
}

void select(QItemSelectionModel &selection, const QModelIndexList &indexes, bool extending)
{
    QItemSelection rows;
    for (const QModelIndex &index : indexes) {
        if (index.isValid())
            rows.select(index, index);
    }
    const auto flags = QItemSelectionModel::Rows
        | (extending ? QItemSelectionModel::Select : QItemSelectionModel::ClearAndSelect);
    selection.select(rows, flags);
    if (!rows.isEmpty())
        selection.setCurrentIndex(rows.first().topLeft(), QItemSelectionModel::NoUpdate);
}

void selectOnly(QItemSelectionModel &selection, const QModelIndex &index)
{
    if (!index.isValid()) {
        selection.clearSelection();
        return;
    }
    selection.setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

} // namespace RowSelection
