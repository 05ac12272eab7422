#pragma once

#include "platform/PropertyList.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

class findNode;
using findNodePtr = std::unique_ptr<findNode>;

// One row of the find window's result tree: the root, a domain, a key on the
// way down to a hit, or the hit itself (a leaf holding the matching value).
// Parents own their children; the parent link is a plain pointer. The styled
// renditions are not kept here: the window's model draws them from isGroup and
// canOpen when asked, so colour and font changes need no walk over the nodes.
class findNode {
public:
    // The root of the tree of a pruned search result: named "Root", a group
    // that cannot be opened; its dictionary children are the domains.
    static findNodePtr treeFromDefDict(const PropertyDictionary &dictionary);
    static findNodePtr treeFromDefDict(const PropertyDictionary &dictionary, const QString &name,
                                       bool canOpen, bool group);
    static findNodePtr treeFromArray(const PropertyArray &array, const QString &name);
    static findNodePtr initWithItem(const QString &name, const PropertyList &value);

    findNode(const findNode &) = delete;
    findNode &operator=(const findNode &) = delete;

    const QString &name() const { return m_name; }
    bool isGroup() const { return m_isGroup; }
    bool canOpen() const { return m_canOpen; }
    const std::optional<PropertyList> &objectValue() const { return m_objectValue; }
    findNode *nodeParent() const { return m_parent; }
    const std::vector<findNodePtr> &children() const { return m_children; }
    qsizetype childCount() const { return qsizetype(m_children.size()); }
    findNode *childAt(qsizetype index) const { return m_children.at(size_t(index)).get(); }
    // This node's position among its parent's children; 0 for the root.
    qsizetype indexInParent() const { return m_row; }
    // How many nodes lie below this one, at any depth.
    qsizetype descendantCount() const;

    void insertChild(findNodePtr child, qsizetype index);
    // The node taken out of its parent, now owned by the caller.
    findNodePtr removeFromParent();

    void recursiveSortChildren();
    // Names compared ignoring case, runs of digits by their value ("Item 2"
    // before "Item 10"): negative, zero or positive.
    int compare(const findNode &other) const;
    // The domain a row opens: a domain row's own name (the registration domain
    // as the file name "NSRegistrationDomain"), any row below it its domain's.
    QString openName() const;
    // The tree below this node as text, one line per node: two blanks per
    // level below the first, the name, and for a leaf a tab and its value's
    // description.
    QString outlineText() const;

private:
    void appendOutline(QString &text, int depth) const;
    // Views ask every row for its position, so each child keeps it.
    void renumberChildren(qsizetype from);
    findNode(const QString &name, bool canOpen, bool group);

    QString m_name;
    std::vector<findNodePtr> m_children;
    findNode *m_parent = nullptr;
    qsizetype m_row = 0;
    bool m_isGroup = false;
    bool m_canOpen = false;
    std::optional<PropertyList> m_objectValue;
};
