#pragma once

#include "model/PListNode.h"

#include <QList>
#include <QString>

#include <utility>

// Which incoming nodes would duplicate a key of the group they go into, and
// what the duplicate-key dialog shows of a value.
namespace DuplicateKeys {

// An incoming node and the node already there under the same key.
using ConflictPair = std::pair<PListNodePtr, PListNodePtr>;

struct Check {
    QList<ConflictPair> conflicting;
    QList<PListNodePtr> passed; // incoming nodes that clash with nothing, in order
};

// Incoming nodes checked against target: a dictionary against its children's
// keys; anything else against target's own name.
Check nodesInArray(const QList<PListNodePtr> &nodes, const PListNodePtr &target);

// The node a value makes when it arrives under key: groups for containers.
PListNodePtr nodeFor(const QString &key, const PropertyList &value);

// A value as the dialog shows it: its XML text between the <plist> tags, or
// the whole text when either tag is missing.
QString dialogText(const PropertyList &value);

} // namespace DuplicateKeys
