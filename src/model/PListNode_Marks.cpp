// What the filter knows of each node: its signature and its mark in its
// parent's list, and the one way every change keeps them right.
#include "PListNode.h"

#include "VXAdditions.h"

namespace TextSignature = VXAdditions::TextSignature;

void PListNode::changed()
{
    refreshOwnSignature();
    if (m_parent) {
        const quint64 mark = filterMark();
        m_parent->m_children.setMarkOf(this, mark);
        m_parent->takeInChildMark(mark);
    }
}

void PListNode::remakeChildMarks()
{
    for (qsizetype i = 0; i < m_children.size(); ++i)
        m_children.setMarkAt(i, m_children.at(i)->filterMark());
}

void PListNode::refreshOwnSignature()
{
    // A name still to be made from the value is left out: array elements are
    // not searched by name, and the filter reads such a name whenever it must.
    quint64 signature = m_nameIsDescription ? 0 : TextSignature::of(m_name);
    if (m_isLeaf) {
        switch (m_objectValue.type()) {
        case PropertyList::Type::String:
            signature |= TextSignature::of(m_objectValue.stringRef());
            break;
        case PropertyList::Type::Integer:
        case PropertyList::Type::Real:
        case PropertyList::Type::Boolean:
            signature |= TextSignature::ofNumbers();
            break;
        case PropertyList::Type::Data:
        case PropertyList::Type::Date:
        case PropertyList::Type::Array:
        case PropertyList::Type::Dictionary:
        case PropertyList::Type::Uid:
            break; // never searched by value
        }
    }
    m_signatureLow = static_cast<quint16>(signature);
    m_signatureHigh = static_cast<quint32>(signature >> 16);
}

quint64 PListNode::filterMark() const
{
    if (m_searchReference)
        return ~quint64(0);
    const quint64 own = signature() | (m_nameIsDescription ? kNameUnread : 0);
    return m_isLeaf ? own : own | kGroup | markFromChild(m_children.unitedMarks());
}

quint64 PListNode::markFromChild(quint64 childMark) const
{
    // A child's own name still to be made is searched only outside an array.
    const quint64 unread = (childMark & kNameUnread) && !isArray() ? kNameUnreadBelow : 0;
    return (childMark & ~kNameUnread) | unread;
}

void PListNode::takeInChildMark(quint64 childMark)
{
    // What this group gains, its own groups gain too; the walk up ends where
    // a mark already held it all.
    const quint64 added = markFromChild(childMark);
    for (PListNode *node = this; node->m_parent; node = node->m_parent) {
        if (!node->m_parent->m_children.addToMarkOf(node, added))
            return;
    }
}
