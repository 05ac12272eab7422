// Tree search: the filtered copy and lookups by equality.
#include "PListNode.h"

PListNodePtr PListNode::queryWithString(const QString &) const { return nullptr; }
PListNode *PListNode::recursiveSearchForChild(const PListNode &) const { return nullptr; }
