#pragma once

#include "platform/PropertyList.h"
#include "platform/SequentialArchive.h"

#include "ChildList.h"
#include "ValueClass.h"

#include <QList>
#include <QString>

#include <functional>
#include <initializer_list>
#include <memory>
#include <utility>

class PListNode;
using PListNodePtr = std::shared_ptr<PListNode>;

// How a rendition is drawn: which colour role and font the view should use.
enum class Rendition { Normal, Selected, BackgroundSelected };

struct RenditionSettings {
    QString fontName = QStringLiteral("Monaco");
    double fontSize = 10.0;
    bool useCustomColors = false;
    QString textColor;     // colour strings "r g b a", as VXAdditions writes them
    QString disabledColor;
};

struct RenditionStyle {
    enum class Colour { StandardText, DisabledText, CustomText, CustomDisabled, AlternateSelectedText };
    Colour colour = Colour::StandardText;
    QString customColor; // for the custom colours: the colour string to use
    QString fontName;
    double fontSize = 0;
};

// One node of a document's tree: one key/value pair of a dictionary or one
// element of an array. Groups (dictionaries and arrays) hold children, leaves a
// scalar value.
//
// Ownership: a node owns its children through shared pointers; undo records and
// pasteboard payloads may hold removed nodes alive so the same node is put
// back. The parent and, in a filtered copy, the search reference (the real node
// this one stands for) are plain non-owning pointers. Only the group that holds
// a node sets its parent link, and that group clears it when it removes the
// node or lets go of its children, so the link never outlives the parent. A
// copy is standalone: no parent and no search reference. A filtered copy lives
// no longer than the tree it was made from. While a search reference is set,
// name, value (of leaves), menu, loadedByUserDefaults, initialValue, setName,
// setValue, setMenu and setCanEdit act on the referenced node.
class PListNode {
public:
    // ---- construction (node tree) ----
    // The root of every document tree: a dictionary node named "OVRoot".
    static PListNodePtr treeFromDictionary(const PropertyDictionary &dictionary);
    static PListNodePtr initFromDictionary(const PropertyDictionary &dictionary, const QString &name);
    static PListNodePtr initFromArray(const PropertyArray &array, const QString &name);
    static PListNodePtr groupFromDictionary(const PropertyDictionary &dictionary, const QString &name);
    static PListNodePtr groupFromArray(const PropertyArray &array, const QString &name);
    static PListNodePtr initWithName(const QString &name, const PropertyList &value);

    // The property-list value the subtree stands for.
    PropertyList initialValue() const;

    // ---- children (node tree) ----
    // Inserting beyond the end is a programming error: it is refused, logged,
    // answers false, and leaves the tree as it was.
    bool insertChild(const PListNodePtr &child, int index);
    // Clamps an index past the end to the end.
    void insertChildren(const QList<PListNodePtr> &children, int index);
    void removeChild(const PListNodePtr &child);
    void removeFromParent();
    int indexOfChild(const PListNode *node) const;           // by isEqualToNode; -1 when absent
    int indexOfChildIdenticalTo(const PListNode *node) const; // by identity; -1 when absent
    // nullptr for kNotFound (the platform's NSNotFound) and for indexes past the end.
    PListNodePtr childAtIndex(int index) const;
    int numberOfChildren() const { return static_cast<int>(m_children.size()); }
    const ChildList &children() const { return m_children; }
    // nullptr (and a logged programming error) when there are no children.
    PListNodePtr firstChild() const;
    PListNodePtr lastChild() const;
    bool isDescendantOfNode(const PListNode *node) const;
    bool isDescendantOfNodeInArray(const QList<PListNodePtr> &nodes) const;
    bool containsChildWithName(const QString &name) const;
    PListNodePtr childWithName(const QString &name) const;

    // Case-insensitive, digit runs by value: "Item 9" < "Item 10", "abc" ties "ABC".
    int compare(const PListNode &other) const;
    void sortChildren();
    void recursiveSortChildren();
    void fixupNames();

    static constexpr int kNotFound = 0x7fffffff;

    // ---- accessors (node tree) ----
    QString name() const;
    void setName(const QString &name);
    PropertyList value() const;
    // The node's value-class tag (a ValueClass), named after the class pop-up menu whose item it selects.
    int menu() const;
    bool isLeaf() const { return m_isLeaf; }
    void setIsLeaf(bool leaf)
    {
        m_isLeaf = leaf;
        changed();
    }
    bool isGroup() const { return !m_isLeaf; }
    bool isArray() const { return !m_isLeaf && m_objectValue.isArray(); }
    bool canEdit() const { return m_canEdit; }
    void setCanEdit(bool canEdit);
    bool canEditValue() const { return m_canEditValue; }
    bool valueIsBool() const { return m_valueIsBool; }
    bool loadedByUserDefaults() const;
    void setLoadedByUserDefaults(bool loaded);
    PListNode *nodeParent() const { return m_parent; }
    PListNode *searchReference() const { return m_searchReference; }
    void setSearchReference(PListNode *reference);

    // ---- equality, copies, archive, debug text (node tree) ----
    bool isEqualToNode(const PListNode &other) const;
    // A standalone deep copy: what this node answers (a filtered entry's real
    // name, value, tag and flags), with no link into any tree.
    PListNodePtr copy() const;
    ArchivedNode encodeWithCoder() const;
    static PListNodePtr initWithCoder(const ArchivedNode &archived);
    QString description() const;

    // ---- value classes and value editing ----
    void setValue(const PropertyList &newValue);
    // Chooses the value class by its tag (the class pop-up menu's item) and converts the value to it.
    // Answers false where the platform sounds the alert beep (the conversion
    // failed or the class cannot be chosen); the tag is stored either way.
    bool setMenu(int tag);
    QString stringValue() const;

    QString displayName() const;  // "Item %d" for array children, else the name
    QString displayValue() const { return stringValue(); }
    QString displayMenu() const { return ValueClasses::title(menu()); }
    QString countedText() const;  // "%d %@": "0 Items", "1 Item", "2 Items"
    RenditionStyle style(Rendition rendition, const RenditionSettings &settings, bool itemCount = false) const;

    // ---- tree search ----
    PListNodePtr queryWithString(const QString &query) const;
    PListNode *recursiveSearchForChild(const PListNode &node) const;

    // ---- defaults command text ----
    // The command, or the refusal for nested containers (empty when no file is
    // at path), and the one-entry dictionary {name: initialValue}.
    std::pair<QString, PropertyDictionary> returnStringWithPath(const QString &path, bool returnFullPath) const;
    QString returnArrayDefaults(bool *canExpress) const;
    QString returnDictDefaults(bool *canExpress) const;

    // ---- content snapshots (for undo) ----
    // What an edit of a name, a value or a class may change, hidden state
    // included (an array element's name kept as its value, the boolean flag,
    // a tag stored by a refused class change, an unsigned width), so that undo
    // and redo put back exactly what was there.
    class Content {
        friend class PListNode;
        QString name;
        PropertyList value;
        qint8 menuValue = NoClass;
        bool nameIsDescription = false;
        bool valueIsBool = false;
        bool describesValue = false;
    };
    // Of the node a search copy stands for, as the edits are.
    Content content() const;
    // Exchanges the node's content with content, which then holds what was there.
    void swapContent(Content &content);

    static PListNodePtr make() { return std::make_shared<PListNode>(Private()); }

    PListNode(const PListNode &) = delete;
    PListNode &operator=(const PListNode &) = delete;
    ~PListNode() { m_children.clear(this); }

private:
    // Nodes live in shared pointers only; the key keeps construction to the factories.
    struct Private {
        explicit Private() = default;
    };

public:
    explicit PListNode(Private) {}

private:
    // Links a node to the group that now holds it (nullptr: to none), and
    // passes that group's editability down to it.
    void setNodeParent(PListNode *parent);
    PListNodePtr copyWith(bool canEdit) const;
    // Makes count children at once, make(i) for each, while the tree is built.
    void fillWhileBuilding(qsizetype count, const std::function<const PropertyList &(qsizetype)> &valueAt,
                           const std::function<PListNodePtr(qsizetype)> &make);
    // An empty dictionary or array node: the part both group constructors share.
    static PListNodePtr makeGroup(const QString &name, const PropertyList &marker, int tag);
    static PListNodePtr elementFor(const PropertyList &value);
    PropertyList initialValueInHalves() const;
    PListNode *target() { return m_searchReference ? m_searchReference : this; }
    const PListNode *target() const { return m_searchReference ? m_searchReference : this; }

    // This node's own name and display text, not its search reference's.
    QString ownName() const { return m_nameIsDescription ? m_objectValue.description() : m_name; }
    QString ownDisplayText() const;
    // A group's value: only what kind of group it is.
    const PropertyList &groupValue() const;
    // Stores the name an array element has been given by its value, before
    // that value changes or the name is replaced.
    void keepNameFromValue();
    // Clears it when the name is about to be replaced anyway.
    void forgetNameFromValue();
    static PListNodePtr emptyGroup(bool array);
    // A leaf of that value, nameless, whose signature the caller sets.
    static PListNodePtr leafWithoutSignature(const PropertyList &value);

    // ---- what the filter knows of each node (PListNode_Marks.cpp) ----
    // Every change to a node's texts, class or children ends here: its
    // signature is made again, its mark in its parent's list follows, and the
    // groups above take in what it adds. Telling views is the document's
    // business, through its own operations. A child's mark enters a list along with the child;
    // after that, only building (a tree, a copy, a decoded archive, a filtered
    // copy), fixupNames and the recursive sort bypass this, where a change per
    // node would cost a walk up per node; each says so where it does.
    void changed();
    // After fixupNames has renamed every child at once: their marks in this
    // list made again, one pass instead of one search per child.
    void remakeChildMarks();
    // Which characters the name (unless it is still to be made from the value)
    // and the searched value text hold; made again whenever either changes.
    quint64 signature() const { return quint64(m_signatureHigh) << 16 | m_signatureLow; }
    void refreshOwnSignature();
    // What the filter may find in this node and below it, kept in its
    // parent's list of children: the signatures of its texts and of all its
    // descendants' texts together, kNameUnread when its own name is still to
    // be made, kNameUnreadBelow when a name below it is still to be made and
    // would be searched, kGroup for a group; every bit for a search copy, whose
    // texts are its real node's. A group's mark may hold more than is left
    // below it (a removal takes bits away from its own group's mark only),
    // which only costs a visit.
    static constexpr quint64 kNameUnread = quint64(1) << 63;
    static constexpr quint64 kNameUnreadBelow = quint64(1) << 62;
    static constexpr quint64 kGroup = quint64(1) << 61;
    quint64 filterMark() const;
    // What a child's mark adds to this group's mark.
    quint64 markFromChild(quint64 childMark) const;
    // The groups above this one take in what a child's new mark adds.
    void takeInChildMark(quint64 childMark);

    // The fields the search reads on every node come first, so a walk over a
    // large tree touches as few cache lines as possible. The flags share one
    // byte: a large file has millions of nodes.
    qint8 m_menuValue = NoClass;
    bool m_isLeaf : 1 = true;
    // An array element is named by its value's description text. Making that
    // text for every element of a large file is most of the cost of opening
    // it, so it is made when the name is asked for: while this is set, m_name
    // is empty and the name is the description of m_objectValue, which for a
    // group is the element's original value (its children are copies of it).
    bool m_nameIsDescription : 1 = false;
    bool m_canEditValue : 1 = true;
    bool m_valueIsBool : 1 = false;
    bool m_loadedByUserDefaults : 1 = false;
    bool m_canEdit : 1 = true;
    // Data and UID values show "(Data Item)" and nothing when read, but their
    // description once they were set by editing.
    bool m_describesValue : 1 = false;
    // The signature of the texts the filter reads (TextSignature), in the
    // bytes before the value that alignment leaves free.
    quint16 m_signatureLow = 0xffff;
    quint32 m_signatureHigh = 0xffffffff;
    PListNode *m_searchReference = nullptr;
    PropertyList m_objectValue;
    PListNode *m_parent = nullptr;
    QString m_name;
    ChildList m_children;

    friend class PListNodeFilter;
    friend class PListNodeSorter;
    friend class ChildList; // clears the links of the children it lets go
};

// With the shared pointer's control block in front, a node takes one 112-byte
// heap chunk; a child's place in its parent's list takes 24 more.
static_assert(sizeof(PListNode) <= 88, "a node's budget is 160 bytes besides its text, control block included");
