#include "DuplicateKeys.h"

#include "platform/PropertyListSerialization.h"

namespace DuplicateKeys {

namespace {

// One incoming node met one name already there. A node that matched once
// stays out of the passed list even if a later name does not match it.
void compare(const PListNodePtr &incoming, const QString &name, const PListNodePtr &existing,
             QList<const PListNode *> &seen, Check &check)
{
    if (incoming->name() == name) {
        check.conflicting.append({incoming, existing});
        seen.append(incoming.get());
        check.passed.removeAll(incoming);
    } else if (!check.passed.contains(incoming) && !seen.contains(incoming.get())) {
        check.passed.append(incoming);
    }
}

} // namespace

Check nodesInArray(const QList<PListNodePtr> &nodes, const PListNodePtr &target)
{
    Check check;
    QList<const PListNode *> seen;
    if (target->isGroup() && !target->isArray()) {
        for (const PListNodePtr &child : target->children()) {
            for (const PListNodePtr &incoming : nodes)
                compare(incoming, child->name(), child, seen, check);
        }
        return check;
    }
    // An array's elements have no keys to clash with; what is compared is the
    // array's own name, so an entry that shares it is reported against the
    // array itself.
    for (const PListNodePtr &incoming : nodes)
        compare(incoming, target->name(), target, seen, check);
    return check;
}

PListNodePtr nodeFor(const QString &key, const PropertyList &value)
{
    if (value.isDictionary())
        return PListNode::initFromDictionary(value.toDictionary(), key);
    if (value.isArray())
        return PListNode::initFromArray(value.toArray(), key);
    return PListNode::initWithName(key, value);
}

QString dialogText(const PropertyList &value)
{
    const QString xml = QString::fromUtf8(PropertyListSerialization::write(value, PropertyListFormat::Xml));
    const qsizetype open = xml.indexOf(QLatin1String("<plist"));
    const qsizetype close = xml.lastIndexOf(QLatin1String("</plist"));
    const qsizetype start = open < 0 ? -1 : xml.indexOf(u'>', open);
    if (start < 0 || close < 0 || close < start)
        return xml;
    return xml.mid(start + 1, close - start - 1);
}

} // namespace DuplicateKeys
