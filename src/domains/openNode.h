#pragma once

#include "domains/FileArrayItem.h"

#include <QList>
#include <QString>

#include <memory>

class openNode;
using openNodePtr = std::shared_ptr<openNode>;

namespace VXAdditions {
class SearchPattern;
}

// openNode is a node of the domain browser's tree: one row, a preference file
// (a leaf) or a folder (a group), named by its full path; the invisible root is
// named "Root".
//
// Ownership: a node owns its children through shared pointers, so a node taken
// out of the tree (a deleted domain waiting for undo) stays alive as long as
// someone holds it. The parent and, in a search-results tree, the search
// reference (the node of the full tree this one stands for) are plain
// non-owning pointers.
//
// The styled texts the browser draws are not kept here: the view model makes
// them on demand from displayName() and presentation(), and a change of fonts
// or colours is a model refresh, so nodes observe nothing. Which node is the
// machine's preferences folder is settled when the tree is built, so drawing a
// row never looks at the disk.
class openNode {
public:
    // The four ways the browser draws a name.
    enum class Presentation { Normal, Selected, BackSelected, Disabled };

    // The root of a browser tree: a group named "Root". The node named
    // machineFolder (the machine's preferences folder; empty when there is
    // none) shows as "System Preferences".
    static openNodePtr treeFromFileArray(const FileArray &items, const QString &machineFolder);
    // A new subtree named name (the instance form of the builder). This form
    // and initWithArray know no machine folder, so they mark none.
    openNodePtr treeFromFileArray(const FileArray &items, const QString &name, bool group) const;
    // A node holding one child per item, in order: folders become groups named
    // by their path and built from their content, files become leaves.
    static openNodePtr initWithArray(const FileArray &items, const QString &name, bool group);
    // A leaf for one file; the registration domain's file name marks it special.
    static openNodePtr initWithItem(const QString &path);

    // Refuses (false) an index past the end and a child that is already there.
    bool insertChild(const openNodePtr &child, int index);
    // By identity; nothing happens when child is not a child. The child's parent
    // field is left alone: removeFromParent() is the complete operation.
    void removeChild(const openNode *child);
    // Leaves the parent, and takes the node a search result stands for out of
    // the full tree as well. The node may be destroyed by this call when its
    // parent held the last reference.
    void removeFromParent();

    QString name() const { return m_name; }
    openNode *nodeParent() const { return m_parent; }
    void setParent(openNode *parent) { m_parent = parent; }
    openNode *searchReference() const { return m_searchReference; }
    void setSearchReference(openNode *reference) { m_searchReference = reference; }
    bool isGroup() const { return m_isGroup; }
    bool loadSpecial() const { return m_loadSpecial; }
    int indexOfChild(const openNode *child) const; // by identity; -1 when absent
    int numberOfChildren() const { return static_cast<int>(m_children.size()); }
    openNodePtr childAtIndex(int index) const;   // nullptr past the end
    const QList<openNodePtr> &children() const { return m_children; }

    // The browser's text: the file name without its extension, the global
    // domain as "NSGlobalDomain", the machine folder as "System Preferences".
    QString displayName() const;
    bool isMachineFolder() const { return m_isMachineFolder; }
    // The machine-wide preferences folder, empty when there is none: looked
    // up on disk, so asked once per tree, when it is built.
    static QString systemPrefsPath();
    // "name: …\nchildren: (…)", the children's own descriptions in the list.
    QString description() const;

    // A new tree holding the leaves whose display name matches query (the
    // search field's rules) and the folders on the way to them; every copied
    // node refers to its original. The root "Root" is always returned, any
    // other folder without results is not (nullptr).
    openNodePtr queryWithString(const QString &query);

    // Which presentation a row shows: a selected row is drawn as selected only
    // where the user's keystrokes go (application active, browser window key,
    // outline first responder); an unselected one is disabled when its file
    // cannot be written.
    static Presentation presentation(bool selected, bool focused, bool writable);

    openNode(const openNode &) = delete;
    openNode &operator=(const openNode &) = delete;
    ~openNode() = default;

private:
    struct Private {
        explicit Private() = default;
    };

public:
    openNode(Private, const QString &name, bool group);

private:
    static openNodePtr build(const FileArray &items, const QString &name, bool group,
                             const QString &machineFolder);
    static openNodePtr searchCopy(openNode &node, const VXAdditions::SearchPattern &pattern);
    void appendWhileBuilding(const openNodePtr &child);

    QString m_name;
    QList<openNodePtr> m_children;
    openNode *m_parent = nullptr;
    openNode *m_searchReference = nullptr;
    bool m_isGroup = false;
    bool m_loadSpecial = false;
    bool m_isMachineFolder = false;
};
