#pragma once

#include <QModelIndexList>

class QItemSelectionModel;

// The row selection of an outline, shared by the document and the browser.
namespace RowSelection {

// The selected rows (their indexes in column) top to bottom as the outline
// shows them, not in the order they were selected.
QModelIndexList inOutlineOrder(const QItemSelectionModel &selection, int column = 0);
// Selects the rows of indexes (invalid ones are passed over), adding to the
// selection or replacing it; the first becomes current.
void select(QItemSelectionModel &selection, const QModelIndexList &indexes, bool extending);
// Selects index's row alone, or nothing when index is invalid.
void selectOnly(QItemSelectionModel &selection, const QModelIndex &index);

} // namespace RowSelection
