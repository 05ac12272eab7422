// Tree search: the filtered copy and lookups by equality.
#include "PListNode.h"

#include "PListNodeFilter.h"

PListNodePtr PListNode::queryWithString(const QString &query) const
{
    return PListNodeFilter(query).visit(*this);
}

PListNode *PListNode::recursiveSearchForChild(const PListNode &node) const
{
    // Depth first, each child before anything inside it.
    for (const PListNodePtr &child : m_children) {
        if (child->isEqualToNode(node))
            return child.get();
        if (PListNode *found = child->recursiveSearchForChild(node))
            return found;
    }
    return nullptr;
}
