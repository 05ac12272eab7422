// Undo: each edit registers its inverse, and each inverse registers its own
// when it runs, so redo needs no code of its own. Every inverse ends by
// sorting the shown tree, so the indexes a record keeps are approximate and
// clamped before use.
#include "plistDocument.h"

#include "document/DocumentStrings.h"
#include "document/OutlineModel.h"

#include <algorithm>

void plistDocument::addNewNode(const PListNodePtr &node, const QString &undoName)
{
    PListNode *anchor = selectedNode();
    if (!anchor)
        anchor = m_treeData.get();
    PListNodePtr parent;
    int index = 0;
    if (anchor->isGroup()) {
        parent = sharedNode(anchor);
        index = anchor->numberOfChildren();
    } else {
        parent = anchor->nodeParent() ? sharedNode(anchor->nodeParent()) : m_treeData;
        index = std::min(parent->indexOfChildIdenticalTo(anchor) + 1, parent->numberOfChildren());
    }
    const bool inArray = parent->value().isArray();
    if (inArray)
        node->setName(DocumentStrings::arrayItem());
    if (m_screen)
        m_screen->expandItem(parent.get());
    insertNode(parent, node, index);
    if (m_model->indexOf(node.get()).isValid()) {
        selectNodes({node}, false);
        const int tag = node->menu();
        const bool noEditor = tag == DictionaryClass || tag == ArrayClass || tag == DataClass;
        if (m_screen && !(inArray && noEditor))
            m_screen->editColumn(node.get(), inArray ? DocumentScreen::ValueColumn : DocumentScreen::KeyColumn);
    }
    m_undoManager.registerUndo([this, node, index, parent] { undoNewOrDelete(node, index, parent); });
    m_undoManager.setActionName(undoName);
    // In a filtered view the new entry also goes into the real tree, which is
    // what is saved; one undo step takes out both.
    if (PListNodePtr realParent = sharedNode(parent->searchReference())) {
        const PListNodePtr real = node->copy();
        const int realIndex = realParent->numberOfChildren();
        insertNode(realParent, real, realIndex);
        node->setSearchReference(real.get());
        m_undoManager.registerUndo([this, real, realIndex, realParent] { undoNewOrDelete(real, realIndex, realParent); });
        m_undoManager.setActionName(undoName);
    }
}

void plistDocument::selectAfterChange(const QList<PListNodePtr> &nodes)
{
    sortData();
    deselectAll();
    selectNodes(nodes, true);
}

void plistDocument::undoNewOrDelete(const PListNodePtr &node, int index, const PListNodePtr &parent)
{
    QList<PListNodePtr> selection = selectedNodes();
    if (node->nodeParent()) {
        // An insertion undone, or a deletion redone.
        const int noted = takeNode(node);
        selection.removeAll(node);
        deselectAll();
        selectAfterChange(selection);
        m_undoManager.registerUndo([this, node, noted, parent] { undoNewOrDelete(node, noted, parent); });
        return;
    }
    const int at = std::clamp(index, 0, parent->numberOfChildren());
    insertNode(parent, node, at);
    if (m_screen)
        m_screen->expandItem(parent.get());
    selection.append(node);
    selectAfterChange(selection);
    m_undoManager.registerUndo([this, node, at, parent] { undoNewOrDelete(node, at, parent); });
}

void plistDocument::undoChangeClass(const PListNodePtr &node, const PListNode::Content &content)
{
    PListNode::Content swapped = content;
    swapNodeContent(node.get(), swapped);
    m_undoManager.registerUndo([this, node, swapped] { undoChangeClass(node, swapped); });
}

void plistDocument::undoReplacement(const PListNodePtr &current, const PListNodePtr &restored, int index)
{
    QList<PListNodePtr> selection = selectedNodes();
    const PListNodePtr parent = sharedNode(current->nodeParent());
    if (!parent)
        return;
    const int at = std::clamp(index, 0, parent->numberOfChildren());
    m_undoManager.registerUndo([this, restored, current, at] { undoReplacement(restored, current, at); });
    takeNode(current);
    insertNode(parent, restored, std::min(at, parent->numberOfChildren()));
    selection.removeAll(current);
    selection.append(restored);
    selectAfterChange(selection);
}

void plistDocument::undoMove(const PListNodePtr &node, const PListNodePtr &oldParent, int oldIndex)
{
    const PListNodePtr currentParent = node->nodeParent() ? sharedNode(node->nodeParent()) : m_treeData;
    const int noted = currentParent->indexOfChildIdenticalTo(node.get());
    int at = std::clamp(oldIndex, 0, oldParent->numberOfChildren());
    takeNode(node);
    if (oldParent == currentParent)
        at = std::min(at, oldParent->numberOfChildren());
    insertNode(oldParent, node, at);
    m_undoManager.registerUndo(
        [this, node, currentParent, noted] { undoMove(node, currentParent, std::max(noted, 0)); });
    sortData();
    selectNodes({node}, true);
}

void plistDocument::undoDrag(const QList<PListNodePtr> &nodes, const PListNodePtr &parent, int index)
{
    QList<PListNodePtr> selection = selectedNodes();
    for (const PListNodePtr &node : nodes) {
        takeNode(node);
        selection.removeAll(node);
    }
    m_undoManager.registerUndo([this, nodes, parent, index] { redoDrag(nodes, parent, index); });
    if (m_screen)
        m_screen->expandItem(parent.get());
    selectAfterChange(selection);
}

void plistDocument::redoDrag(const QList<PListNodePtr> &nodes, const PListNodePtr &parent, int index)
{
    QList<PListNodePtr> selection = selectedNodes();
    if (m_screen)
        m_screen->expandItem(parent.get());
    const int at = std::clamp(index, 0, parent->numberOfChildren());
    insertNodes(parent, nodes, at);
    selection.append(nodes);
    m_undoManager.registerUndo([this, nodes, parent, at] { undoDrag(nodes, parent, at); });
    selectAfterChange(selection);
}
