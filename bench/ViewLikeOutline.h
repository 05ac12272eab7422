#pragma once

#include "document/DocumentScreen.h"

#include <QList>
#include <QModelIndex>
#include <QPersistentModelIndex>
#include <QSet>

class OutlineModel;
class QItemSelectionModel;

// What the window's tree view asks of the outline model, without widgets, so
// that the benchmarks time the model's answers as the window gets them. Like
// QTreeView it keeps the expanded groups as persistent indexes (forgotten on
// a reset), lays out every visible row again once a reset, a layout change or
// a change of rows has come in, and paints the rows on screen after any
// change, each cell's text and rendition. It is the document's screen too:
// expanding, scrolling, and a delete confirmation answered yes.
class ViewLikeOutline : public DocumentScreen {
public:
    static constexpr int kRowsOnScreen = 40;

    ViewLikeOutline(OutlineModel &model, QItemSelectionModel &selection);

    // The end of an event-loop turn: posted events run, then the pending
    // layout and paint are made.
    void settle();
    // Asks for every cell of rows as a view paints them; answers the number
    // of texts made, so that nothing is optimised away.
    qsizetype paint(const QList<QModelIndex> &rows) const;
    // kRowsOnScreen rows of parent from first on.
    QList<QModelIndex> rowsOf(const QModelIndex &parent, int first) const;
    qsizetype visibleRows() const { return m_layout.size(); }

    void expandItem(const PListNode *node) override;
    bool isItemExpanded(const PListNode *node) const override;
    void scrollToItem(const PListNode *node) override;
    void editColumn(const PListNode *, int) override {}
    void confirmDelete(const QString &, std::function<void(int)> done) override { done(DeleteConfirmed); }
    void showBadPermissions() override {}
    void beep() override {}
    bool isKeyWindow() const override { return true; }
    bool isApplicationActive() const override { return true; }
    bool isShowingDocument() const override { return true; }
    void focusOutlineLater() override {}

private:
    void layOut();
    void layOutBelow(const QModelIndex &parent);

    OutlineModel &m_model;
    QItemSelectionModel &m_selection;
    QSet<QPersistentModelIndex> m_expanded;
    QPersistentModelIndex m_scrollTarget;
    QList<QModelIndex> m_layout; // the visible rows in order, as QTreeView's view items
    int m_top = 0;
    bool m_layoutPending = true;
    bool m_paintPending = true;
};
