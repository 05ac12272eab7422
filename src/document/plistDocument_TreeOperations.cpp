// The one way the document changes its trees: each operation changes the
// nodes and tells the outline model exactly what changed, so the views stay
// right whoever asked (a command, undo, redo, the filter's mirror).
#include "plistDocument.h"

#include "document/OutlineModel.h"

#include <algorithm>

bool plistDocument::insertNode(const PListNodePtr &parent, const PListNodePtr &node, int index)
{
    if (!parent || !node || index < 0 || index > parent->numberOfChildren())
        return false;
    const bool shown = m_model->holds(parent.get());
    if (shown)
        m_model->beginInsert(parent.get(), index, index);
    const bool inserted = parent->insertChild(node, index);
    if (shown)
        m_model->endInsert(parent.get(), index);
    return inserted;
}

void plistDocument::insertNodes(const PListNodePtr &parent, const QList<PListNodePtr> &nodes, int index)
{
    if (!parent || nodes.isEmpty())
        return;
    index = std::clamp(index, 0, parent->numberOfChildren());
    const int last = index + int(nodes.size()) - 1;
    const bool shown = m_model->holds(parent.get());
    if (shown)
        m_model->beginInsert(parent.get(), index, last);
    parent->insertChildren(nodes, index);
    if (shown)
        m_model->endInsert(parent.get(), last);
}

int plistDocument::takeNode(const PListNodePtr &node)
{
    PListNode *parent = node ? node->nodeParent() : nullptr;
    if (!parent)
        return -1;
    const int index = parent->indexOfChildIdenticalTo(node.get());
    if (index < 0)
        return -1;
    const bool shown = m_model->holds(parent);
    if (shown)
        m_model->beginRemove(parent, index, index);
    // Held here while it leaves: its parent may hold the last reference.
    const PListNodePtr keep = node;
    keep->removeFromParent();
    if (shown)
        m_model->endRemove(parent, index);
    return index;
}

void plistDocument::nodeTextsChanged(PListNode *node)
{
    if (m_model->holds(node))
        m_model->nodeChanged(node);
    else if (isFiltered())
        m_model->redrawAll(); // a real node whose filtered copy may be showing
}

void plistDocument::setNodeName(PListNode *node, const QString &name)
{
    node->setName(name);
    nodeTextsChanged(node);
}

void plistDocument::setNodeValue(PListNode *node, const PropertyList &value)
{
    node->setValue(value);
    nodeTextsChanged(node);
}

bool plistDocument::setNodeClass(PListNode *node, int tag)
{
    const bool converted = node->setMenu(tag);
    nodeTextsChanged(node);
    return converted;
}

void plistDocument::swapNodeContent(PListNode *node, PListNode::Content &content)
{
    node->swapContent(content);
    nodeTextsChanged(node);
}

void plistDocument::sortShownTree()
{
    m_model->beginSort();
    m_treeData->recursiveSortChildren();
    m_model->endSort();
}

void plistDocument::showRoot(const PListNodePtr &root)
{
    m_treeData = root;
    m_model->resetRoot(root);
}
