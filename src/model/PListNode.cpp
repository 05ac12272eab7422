// Construction, children and accessors of the node tree.
#include "PListNode.h"

#include "ParallelSplit.h"

#include <QLoggingCategory>

#include <algorithm>
#include <vector>

Q_LOGGING_CATEGORY(lcModel, "orvane.model")

// ---- construction -----------------------------------------------------------

PListNodePtr PListNode::initWithName(const QString &name, const PropertyList &value)
{
    PListNodePtr node = leafWithoutSignature(value);
    node->m_name = name;
    node->refreshOwnSignature();
    return node;
}

PListNodePtr PListNode::leafWithoutSignature(const PropertyList &value)
{
    PListNodePtr node = make();
    node->m_objectValue = value;
    // A value of no class (a keyed archiver's UID) gets no tag and no text,
    // and a leaf cannot hold a group's class.
    const ValueClass tag = ValueClasses::of(value);
    if (tag != ArrayClass && tag != DictionaryClass)
        node->m_menuValue = static_cast<qint8>(tag);
    node->m_canEditValue = tag != DataClass;
    node->m_valueIsBool = tag == BooleanClass;
    return node;
}

PListNodePtr PListNode::treeFromDictionary(const PropertyDictionary &dictionary)
{
    return initFromDictionary(dictionary, QStringLiteral("OVRoot"));
}

namespace {

// One shared empty marker per kind: groups only use it to say what they are.
const PropertyList &emptyDictionaryMarker()
{
    static const PropertyList marker{PropertyDictionary()};
    return marker;
}

const PropertyList &emptyArrayMarker()
{
    static const PropertyList marker{PropertyArray()};
    return marker;
}

PListNodePtr childFor(const QString &name, const PropertyList &value)
{
    if (value.isDictionary())
        return PListNode::groupFromDictionary(value.dictionaryRef(), name);
    if (value.isArray())
        return PListNode::groupFromArray(value.arrayRef(), name);
    return PListNode::initWithName(name, value);
}

} // namespace

// An array element's child, named by its value: the name is kept as that value
// and described only when someone asks for it.
PListNodePtr PListNode::elementFor(const PropertyList &value)
{
    PListNodePtr child = childFor(QString(), value);
    child->m_nameIsDescription = true;
    if (!child->m_isLeaf)
        child->m_objectValue = value;
    child->refreshOwnSignature();
    return child;
}

PListNodePtr PListNode::makeGroup(const QString &name, const PropertyList &marker, int tag)
{
    PListNodePtr node = make();
    node->m_name = name;
    node->m_isLeaf = false;
    node->m_objectValue = marker;
    node->m_menuValue = static_cast<qint8>(tag);
    node->m_canEditValue = false;
    node->refreshOwnSignature();
    return node;
}

PListNodePtr PListNode::initFromDictionary(const PropertyDictionary &dictionary, const QString &name)
{
    PListNodePtr node = makeGroup(name, emptyDictionaryMarker(), DictionaryClass);
    node->fillWhileBuilding(
        dictionary.size(), [&](qsizetype i) -> const PropertyList & { return dictionary.valueAt(i); },
        [&](qsizetype i) { return childFor(dictionary.keyAt(i), dictionary.valueAt(i)); });
    return node;
}

PListNodePtr PListNode::initFromArray(const PropertyArray &array, const QString &name)
{
    PListNodePtr node = makeGroup(name, emptyArrayMarker(), ArrayClass);
    // Array elements are named by their own description text; the outline labels
    // them by position instead (displayName), and fixupNames makes the two agree.
    const auto itemAt = [&](qsizetype i) -> const PropertyList & { return array.at(i); };
    node->fillWhileBuilding(array.size(), itemAt, [&](qsizetype i) { return elementFor(array.at(i)); });
    return node;
}

PListNodePtr PListNode::groupFromDictionary(const PropertyDictionary &dictionary, const QString &name)
{
    return initFromDictionary(dictionary, name);
}

PListNodePtr PListNode::groupFromArray(const PropertyArray &array, const QString &name)
{
    return initFromArray(array, name);
}

void PListNode::fillWhileBuilding(qsizetype count, const std::function<const PropertyList &(qsizetype)> &valueAt,
                                  const std::function<PListNodePtr(qsizetype)> &make)
{
    // Each child is made into its own slot, so the two halves of a large
    // dictionary can be made side by side.
    m_children.resizeWithEmptyPlaces(count);
    PListNodePtr *made = m_children.data();
    quint64 *marks = m_children.marks();
    const auto weightOf = [&](qsizetype i) -> qint64 {
        const PropertyList &value = valueAt(i);
        if (value.isDictionary())
            return 1 + value.dictionaryRef().size();
        return 1 + (value.isArray() ? value.arrayRef().size() : 0);
    };
    ParallelSplit::run(count, weightOf, [&](qsizetype first, qsizetype last) {
        for (qsizetype i = first; i < last; ++i) {
            made[i] = make(i);
            made[i]->m_parent = this;
            marks[i] = made[i]->filterMark();
        }
    });
}

// ---- back to values ----------------------------------------------------------

PropertyList PListNode::initialValue() const
{
    if (m_searchReference)
        return m_searchReference->initialValue();
    if (m_isLeaf)
        return m_objectValue;
    const auto weightOf = [this](qsizetype i) { return 1 + m_children.at(i)->m_children.size(); };
    if (ParallelSplit::worthSplitting(m_children.size(), weightOf))
        return initialValueInHalves();
    if (m_objectValue.isArray()) {
        PropertyArray items;
        items.reserve(m_children.size());
        for (const PListNodePtr &child : m_children)
            items.append(child->initialValue());
        return items;
    }
    PropertyDictionary entries;
    entries.reserve(m_children.size());
    for (const PListNodePtr &child : m_children)
        entries.insert(child->name(), child->initialValue()); // a later equal name wins
    return entries;
}

// A large tree's value, its children's values made side by side.
PropertyList PListNode::initialValueInHalves() const
{
    std::vector<PropertyList> values(static_cast<size_t>(m_children.size()));
    ParallelSplit::run(
        m_children.size(), [this](qsizetype i) { return 1 + m_children.at(i)->m_children.size(); },
        [&](qsizetype first, qsizetype last) {
            for (qsizetype i = first; i < last; ++i)
                values[static_cast<size_t>(i)] = m_children.at(i)->initialValue();
        });
    if (m_objectValue.isArray()) {
        PropertyArray items;
        items.reserve(m_children.size());
        for (const PropertyList &value : values)
            items.append(value);
        return items;
    }
    PropertyDictionary entries;
    entries.reserve(m_children.size());
    for (qsizetype i = 0; i < m_children.size(); ++i)
        entries.insert(m_children.at(i)->name(), values[static_cast<size_t>(i)]); // a later equal name wins
    return entries;
}

// ---- children -----------------------------------------------------------------

bool PListNode::insertChild(const PListNodePtr &child, int index)
{
    if (!child || index < 0 || index > numberOfChildren()) {
        qCCritical(lcModel, "insertChild: index %d beyond bounds [0 .. %d]", index, numberOfChildren());
        return false;
    }
    // A child's mark comes into the list with it.
    m_children.insert(index, child, child->filterMark());
    child->setNodeParent(this);
    changed();
    return true;
}

void PListNode::insertChildren(const QList<PListNodePtr> &children, int index)
{
    index = std::clamp(index, 0, numberOfChildren());
    for (const PListNodePtr &child : children) {
        m_children.insert(index++, child, child->filterMark());
        child->setNodeParent(this);
    }
    // Once for the whole batch: the groups above are walked once.
    changed();
}

void PListNode::removeChild(const PListNodePtr &child)
{
    // Only the child itself is removed, never an equal stranger, whose parent
    // link belongs to the group that holds it.
    const int position = indexOfChildIdenticalTo(child.get());
    if (position < 0)
        return;
    if (child->m_parent == this)
        child->setNodeParent(nullptr);
    m_children.removeAt(position);
    changed();
}

void PListNode::removeFromParent()
{
    if (!m_parent)
        return;
    PListNode *parent = m_parent;
    const int position = parent->indexOfChildIdenticalTo(this);
    if (position >= 0) {
        const PListNodePtr self = parent->m_children.at(position); // keeps this node alive while it is removed
        parent->removeChild(self);
    }
}

int PListNode::indexOfChildIdenticalTo(const PListNode *node) const
{
    if (!node)
        return -1;
    for (int i = 0; i < numberOfChildren(); ++i) {
        if (m_children.at(i).get() == node)
            return i;
    }
    return -1;
}

int PListNode::indexOfChild(const PListNode *node) const
{
    if (!node)
        return -1;
    for (int i = 0; i < numberOfChildren(); ++i) {
        if (m_children.at(i)->isEqualToNode(*node))
            return i;
    }
    return -1;
}

PListNodePtr PListNode::childAtIndex(int index) const
{
    if (index == kNotFound || index < 0 || index >= numberOfChildren())
        return nullptr;
    return m_children.at(index);
}

PListNodePtr PListNode::firstChild() const
{
    if (m_children.isEmpty()) {
        qCCritical(lcModel, "firstChild: the node has no children");
        return nullptr;
    }
    return m_children.first();
}

PListNodePtr PListNode::lastChild() const { return m_children.isEmpty() ? nullptr : m_children.last(); }

bool PListNode::containsChildWithName(const QString &name) const { return childWithName(name) != nullptr; }

PListNodePtr PListNode::childWithName(const QString &name) const
{
    for (const PListNodePtr &child : m_children) {
        if (child->name() == name)
            return child;
    }
    return nullptr;
}

// ---- accessors ------------------------------------------------------------------

QString PListNode::name() const { return target()->ownName(); }

void PListNode::setName(const QString &name)
{
    PListNode *node = target();
    node->forgetNameFromValue();
    node->m_name = name;
    node->changed();
}

void PListNode::keepNameFromValue()
{
    if (!m_nameIsDescription)
        return;
    m_name = m_objectValue.description();
    forgetNameFromValue();
}

PListNodePtr PListNode::emptyGroup(bool array)
{
    return array ? makeGroup(QString(), emptyArrayMarker(), ArrayClass)
                 : makeGroup(QString(), emptyDictionaryMarker(), DictionaryClass);
}

void PListNode::setSearchReference(PListNode *reference)
{
    m_searchReference = reference;
    changed();
}

void PListNode::forgetNameFromValue()
{
    if (!m_nameIsDescription)
        return;
    m_nameIsDescription = false;
    // A group no longer needs the value it was made from.
    if (!m_isLeaf)
        m_objectValue = m_objectValue.isArray() ? emptyArrayMarker() : emptyDictionaryMarker();
}

const PropertyList &PListNode::groupValue() const
{
    if (!m_nameIsDescription)
        return m_objectValue;
    return m_objectValue.isArray() ? emptyArrayMarker() : emptyDictionaryMarker();
}

PropertyList PListNode::value() const
{
    // A group's value is its own class marker, even in a search copy.
    return m_isLeaf ? target()->m_objectValue : groupValue();
}

QString PListNode::ownDisplayText() const
{
    if (!m_isLeaf)
        return m_objectValue.isArray() ? ValueClasses::texts().array : ValueClasses::texts().dictionary;
    switch (m_objectValue.type()) {
    case PropertyList::Type::String:
        return m_objectValue.stringRef();
    case PropertyList::Type::Boolean:
        // A boolean that came in through another class shows its number, 1 or 0.
        if (m_valueIsBool)
            return m_objectValue.toBool() ? ValueClasses::texts().yes : ValueClasses::texts().no;
        break;
    case PropertyList::Type::Data:
        if (!m_describesValue)
            return ValueClasses::texts().dataItem;
        break;
    case PropertyList::Type::Uid:
        if (!m_describesValue)
            return QString();
        break;
    case PropertyList::Type::Integer:
    case PropertyList::Type::Real:
    case PropertyList::Type::Date:
    case PropertyList::Type::Array:
    case PropertyList::Type::Dictionary:
        break;
    }
    return m_objectValue.description();
}

int PListNode::menu() const { return target()->m_menuValue; }

bool PListNode::loadedByUserDefaults() const { return target()->m_loadedByUserDefaults; }

void PListNode::setLoadedByUserDefaults(bool loaded) { m_loadedByUserDefaults = loaded; }

void PListNode::setNodeParent(PListNode *parent)
{
    m_parent = parent;
    // A node takes its editability from its parent; one without a parent cannot be edited.
    setCanEdit(parent && parent->m_canEdit);
}

void PListNode::setCanEdit(bool canEdit)
{
    PListNode *node = target();
    node->m_canEdit = canEdit;
    for (const PListNodePtr &child : node->m_children)
        child->setCanEdit(canEdit);
}

