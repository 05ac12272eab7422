#pragma once

#include <QList>

// The rows of an outline as a view lays them out: the root is not shown, its
// children are the top level, and a group's children follow it only while it
// is expanded. Node is any tree with nodeParent(), children() and
// numberOfChildren(); isExpanded answers for a node (the root always is), and
// indexOf finds a child among its parent's by identity.
namespace OutlineRows {

template <typename Node, typename IsExpanded>
int visibleSize(const Node *node, const IsExpanded &isExpanded)
{
    int size = 1;
    if (isExpanded(node)) {
        for (const auto &child : node->children())
            size += visibleSize(child.get(), isExpanded);
    }
    return size;
}

// The row of node under root, -1 when an ancestor is closed.
template <typename Node, typename IsExpanded, typename IndexOf>
int rowOf(const Node *root, const Node *node, const IsExpanded &isExpanded, const IndexOf &indexOf)
{
    QList<const Node *> chain;
    for (const Node *at = node; at != root; at = at->nodeParent())
        chain.prepend(at);
    int row = 0;
    for (const Node *at : std::as_const(chain)) {
        const Node *parent = at->nodeParent();
        if (!isExpanded(parent))
            return -1;
        const int index = indexOf(parent, at);
        for (int i = 0; i < index; ++i)
            row += visibleSize(parent->children().at(i).get(), isExpanded);
        if (at != node)
            ++row; // the ancestor's own line
    }
    return row;
}

// The node shown at row under root, nullptr past the last row.
template <typename Node, typename IsExpanded>
Node *nodeAt(const Node *root, int row, const IsExpanded &isExpanded)
{
    if (row < 0)
        return nullptr;
    const Node *parent = root;
    int remaining = row;
    for (qsizetype i = 0; i < parent->numberOfChildren();) {
        Node *child = parent->children().at(i).get();
        if (remaining == 0)
            return child;
        const int size = visibleSize(child, isExpanded);
        if (remaining < size) {
            // The row lies inside this child's open subtree.
            --remaining;
            parent = child;
            i = 0;
            continue;
        }
        remaining -= size;
        ++i;
    }
    return nullptr;
}

} // namespace OutlineRows
