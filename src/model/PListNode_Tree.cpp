// Ordering, equality, copies, the archive and the debug text of the node tree.
#include "PListNode.h"

#include "PListNodeSorter.h"
#include "ParallelSplit.h"

#include <QLoggingCategory>

#include <algorithm>

Q_DECLARE_LOGGING_CATEGORY(lcModel)

namespace {

// The tag an archive carries, or no class when it is not one this build knows:
// the archive comes from the pasteboard and may have been written by anyone.
qint8 tagFromArchive(const PropertyList &menuValue)
{
    if (!menuValue.isInteger() || menuValue.isUnsignedInteger())
        return NoClass;
    const qint64 tag = menuValue.toInteger();
    return tag >= StringClass && tag <= DictionaryClass ? static_cast<qint8>(tag) : qint8(NoClass);
}

} // namespace

// ---- ordering -----------------------------------------------------------------

int PListNode::compare(const PListNode &other) const
{
    return PListNodeSorter::compareNames(name(), other.name());
}

void PListNode::sortChildren()
{
    if (PListNodeSorter::sort(*this))
        changed();
}

void PListNode::recursiveSortChildren()
{
    // Sorting moves each mark along with its child and changes none, so the
    // groups below are sorted without changed() and its walk up per group.
    PListNodeSorter::sort(*this);
    // Sorting one subtree never touches another, so large trees sort in halves.
    const PListNodePtr *children = m_children.constData();
    ParallelSplit::run(
        m_children.size(), [&](qsizetype i) { return 1 + children[i]->m_children.size(); },
        [&](qsizetype first, qsizetype last) {
            for (qsizetype i = first; i < last; ++i) {
                if (!children[i]->m_children.isEmpty())
                    children[i]->recursiveSortChildren();
            }
        });
}

void PListNode::fixupNames()
{
    if (m_searchReference)
        return;
    if (!isArray()) {
        qCWarning(lcModel, "Attempt to fix the names of a non-array type.");
        return;
    }
    // Each child's position is found by identity, so a node that sits in the
    // array twice is named after its first place; walking backwards gives it
    // that name last without a search per child. The children's marks are
    // made once at the end rather than looked up in this list per rename:
    // one of the few places that set marks without changed().
    for (qsizetype i = m_children.size() - 1; i >= 0; --i) {
        PListNode &child = *m_children.at(i);
        if (child.m_searchReference || child.m_parent != this) {
            child.setName(ValueClasses::itemLabel(i + 1));
            continue;
        }
        child.forgetNameFromValue();
        child.m_name = ValueClasses::itemLabel(i + 1);
        child.refreshOwnSignature();
    }
    remakeChildMarks();
    changed();
}

// ---- ancestry -----------------------------------------------------------------

bool PListNode::isDescendantOfNode(const PListNode *node) const
{
    for (const PListNode *ancestor = this; ancestor; ancestor = ancestor->m_parent) {
        if (ancestor == node)
            return true;
    }
    return false;
}

bool PListNode::isDescendantOfNodeInArray(const QList<PListNodePtr> &nodes) const
{
    return std::any_of(nodes.cbegin(), nodes.cend(),
                       [this](const PListNodePtr &node) { return isDescendantOfNode(node.get()); });
}

// ---- equality -----------------------------------------------------------------

bool PListNode::isEqualToNode(const PListNode &other) const
{
    // name() and value() without their copies: this runs for every child a
    // removal or lookup compares.
    auto valueOf = [](const PListNode &node) -> const PropertyList & {
        return node.m_isLeaf ? node.target()->m_objectValue : node.groupValue();
    };
    const PListNode &mine = *target();
    const PListNode &theirs = *other.target();
    const bool sameName = mine.m_nameIsDescription || theirs.m_nameIsDescription ? mine.ownName() == theirs.ownName()
                                                                                 : mine.m_name == theirs.m_name;
    if (!sameName || !(valueOf(*this) == valueOf(other)))
        return false;
    // Only this node's children are walked: a node without children equals an
    // otherwise equal node that has some. Callers rely on this one-sided test.
    if (m_children.isEmpty())
        return true;
    if (m_children.size() != other.m_children.size())
        return false;
    for (qsizetype i = 0; i < m_children.size(); ++i) {
        if (!m_children.at(i)->isEqualToNode(*other.m_children.at(i)))
            return false;
    }
    return true;
}

// ---- copies -------------------------------------------------------------------

PListNodePtr PListNode::copy() const { return copyWith(target()->m_canEdit); }

// Every node of the copy takes canEdit, as a child inserted under the copy
// would take its parent's editability.
PListNodePtr PListNode::copyWith(bool canEdit) const
{
    const PListNode &real = *target();
    PListNodePtr node = make();
    // A name still kept as the element's value stays so in the copy; a
    // filtered entry has no name of its own and gives its real entry's.
    if (m_searchReference) {
        node->m_name = real.ownName();
    } else {
        node->m_name = m_name;
        node->m_nameIsDescription = m_nameIsDescription;
    }
    node->m_isLeaf = m_isLeaf;
    // A filtered group holds its own class marker, a leaf its real value.
    node->m_objectValue = m_isLeaf ? real.m_objectValue : m_objectValue;
    node->m_menuValue = real.m_menuValue;
    node->m_canEditValue = real.m_canEditValue;
    node->m_valueIsBool = real.m_valueIsBool;
    node->m_describesValue = real.m_describesValue;
    node->m_loadedByUserDefaults = real.m_loadedByUserDefaults;
    node->m_canEdit = canEdit;
    node->refreshOwnSignature();
    // Built as the tree is: each copied child is linked and marked directly,
    // since nobody observes the new copy and no group above it holds a mark.
    node->m_children.reserve(m_children.size());
    for (const PListNodePtr &child : m_children) {
        PListNodePtr copied = child->copyWith(canEdit);
        copied->m_parent = node.get();
        const quint64 mark = copied->filterMark();
        node->m_children.append(std::move(copied), mark);
    }
    return node;
}

// ---- archive ------------------------------------------------------------------

ArchivedNode PListNode::encodeWithCoder() const
{
    ArchivedNode archived;
    archived.children.reserve(m_children.size());
    for (const PListNodePtr &child : m_children)
        archived.children.append(child->encodeWithCoder());
    archived.name = name();
    archived.isLeaf = m_isLeaf;
    archived.menuValue = PropertyList::integer(m_menuValue, 'i');
    archived.objectValue = m_isLeaf ? m_objectValue : groupValue();
    archived.canEditValue = m_canEditValue;
    archived.displayValue = ownDisplayText();
    archived.valueIsBool = m_valueIsBool;
    return archived;
}

PListNodePtr PListNode::initWithCoder(const ArchivedNode &archived)
{
    PListNodePtr node = make();
    node->m_children.reserve(archived.children.size());
    for (const ArchivedNode &item : archived.children) {
        PListNodePtr child = initWithCoder(item);
        // Every decoded node is not editable already, which is all that
        // setNodeParent would pass down; linking directly keeps this linear.
        child->m_parent = node.get();
        const quint64 mark = child->filterMark();
        node->m_children.append(std::move(child), mark);
    }
    node->m_name = archived.name;
    node->m_isLeaf = archived.isLeaf;
    node->m_menuValue = tagFromArchive(archived.menuValue);
    node->m_objectValue = archived.objectValue;
    node->m_canEditValue = archived.canEditValue;
    node->m_valueIsBool = archived.valueIsBool;
    // The display text follows from the value; only whether data shows as
    // "(Data Item)" or as its bytes is taken from the archive.
    node->m_describesValue = archived.displayValue != node->ownDisplayText();
    node->refreshOwnSignature();
    // Not archived, so it comes out false: the node becomes editable only when
    // it is given an editable parent.
    node->m_canEdit = false;
    return node;
}

// ---- debug text ---------------------------------------------------------------

QString PListNode::description() const
{
    // The children array as the platform prints an array of objects: one per
    // line, indented once, their own (multi-line) text left as it is.
    QString children = QStringLiteral("(\n");
    for (qsizetype i = 0; i < m_children.size(); ++i) {
        children += QStringLiteral("    ") + m_children.at(i)->description();
        children += i + 1 < m_children.size() ? QStringLiteral(",\n") : QStringLiteral("\n");
    }
    children += QLatin1Char(')');
    // "%x" of a pointer prints its low 32 bits.
    const quint32 address = static_cast<quint32>(reinterpret_cast<quintptr>(this));
    const int tag = menu();
    return QStringLiteral("<%1 0x%2> { contents = (\n\tname=%3\n\tvalue=%4\n\tmenuValue=%5\n\tnodeChildren=%6\n\t%7\n"
                          "\tnodeParent=%8\n\t)\n}")
        .arg(QStringLiteral("PListNode"), QString::number(address, 16), name(), value().description(),
             tag == NoClass ? QStringLiteral("(null)") : QString::number(tag),
             QString::number(numberOfChildren()), children,
             m_parent ? m_parent->name() : QStringLiteral("No Parent"));
}
