// The view state a document keeps while its window shows another document:
// one outline serves every tab, so what it showed of this one is taken down
// when the user leaves and put back when they return.
#include "plistDocument.h"

#include "document/OutlineModel.h"

namespace {

// The expanded groups in row order: a closed group's descendants have no row.
void collectExpanded(const PListNodePtr &parent, const DocumentScreen &screen, QList<PListNodePtr> &expanded)
{
    for (const PListNodePtr &child : parent->children()) {
        if (!child->isGroup() || !screen.isItemExpanded(child.get()))
            continue;
        expanded.append(child);
        collectExpanded(child, screen, expanded);
    }
}

} // namespace

void plistDocument::saveCurrentSettings()
{
    if (!m_screen)
        return;
    ViewState state;
    state.selectedNodes = selectedNodes();
    collectExpanded(m_treeData, *m_screen, state.expandedNodes);
    state.scrollRect = m_screen->visibleRect();
    m_currentSelections = std::move(state);
}

void plistDocument::restoreDocumentSettings()
{
    if (!m_currentSelections)
        return;
    const ViewState state = *std::exchange(m_currentSelections, std::nullopt);
    if (!m_screen)
        return;
    // A node the tree no longer holds (the content was read again meanwhile) has no row.
    for (const PListNodePtr &node : state.expandedNodes) {
        if (m_model->holds(node.get()))
            m_screen->expandItem(node.get());
    }
    QList<PListNodePtr> selected;
    for (const PListNodePtr &node : state.selectedNodes) {
        if (m_model->holds(node.get()))
            selected.append(node);
    }
    selectNodes(selected, true);
    m_screen->scrollRectToVisible(state.scrollRect);
}

void plistDocument::windowControllerDidLoadNib()
{
    if (!m_currentSelections) {
        selectRow(0);
        if (m_screen && nodeAtRow(0))
            m_screen->scrollToItem(nodeAtRow(0));
        return;
    }
    deselectAll();
    restoreDocumentSettings();
}
