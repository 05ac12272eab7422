// Ordering, equality, copies, the archive and the debug text of the node tree.
#include "PListNode.h"

int PListNode::compare(const PListNode &) const { return 0; }
void PListNode::sortChildren() {}
void PListNode::recursiveSortChildren() {}
void PListNode::fixupNames() {}
bool PListNode::isDescendantOfNode(const PListNode *) const { return false; }
bool PListNode::isDescendantOfNodeInArray(const QList<PListNodePtr> &) const { return false; }
bool PListNode::isEqualToNode(const PListNode &) const { return false; }
PListNodePtr PListNode::copy() const { return nullptr; }
ArchivedNode PListNode::encodeWithCoder() const { return {}; }
PListNodePtr PListNode::initWithCoder(const ArchivedNode &) { return nullptr; }
QString PListNode::description() const { return QString(); }
