// The `defaults write` command line that sets a node's entry.
#include "PListNode.h"

std::pair<QString, PropertyDictionary> PListNode::returnStringWithPath(const QString &, bool) const { return {}; }
QString PListNode::returnArrayDefaults(bool *) const { return QString(); }
QString PListNode::returnDictDefaults(bool *) const { return QString(); }
