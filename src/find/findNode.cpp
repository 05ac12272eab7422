#include "findNode.h"

#include "FindStrings.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

QString itemName(qsizetype position)
{
    return QStringLiteral("%1 %2")
        .arg(QCoreApplication::translate("findNode", FindStrings::kItem))
        .arg(position);
}

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

// Compares the digit runs starting at i and j by value, moving both past them.
int compareNumbers(QStringView a, qsizetype &i, QStringView b, qsizetype &j)
{
    while (i < a.size() && a[i] == QLatin1Char('0') && i + 1 < a.size() && isDigit(a[i + 1]))
        ++i;
    while (j < b.size() && b[j] == QLatin1Char('0') && j + 1 < b.size() && isDigit(b[j + 1]))
        ++j;
    qsizetype endA = i;
    qsizetype endB = j;
    while (endA < a.size() && isDigit(a[endA]))
        ++endA;
    while (endB < b.size() && isDigit(b[endB]))
        ++endB;
    int result = 0;
    if (endA - i != endB - j)
        result = endA - i < endB - j ? -1 : 1;
    else
        result = a.sliced(i, endA - i).compare(b.sliced(j, endB - j));
    i = endA;
    j = endB;
    return result < 0 ? -1 : (result > 0 ? 1 : 0);
}

int compareNatural(QStringView a, QStringView b)
{
    qsizetype i = 0;
    qsizetype j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i]) && isDigit(b[j])) {
            if (const int numbers = compareNumbers(a, i, b, j))
                return numbers;
            continue;
        }
        const char32_t x = a[i].toCaseFolded().unicode();
        const char32_t y = b[j].toCaseFolded().unicode();
        if (x != y)
            return x < y ? -1 : 1;
        ++i;
        ++j;
    }
    if (i < a.size())
        return 1;
    return j < b.size() ? -1 : 0;
}

} // namespace

findNode::findNode(const QString &name, bool canOpen, bool group)
    : m_name(name), m_isGroup(group), m_canOpen(canOpen)
{
}

findNodePtr findNode::treeFromDefDict(const PropertyDictionary &dictionary)
{
    return treeFromDefDict(dictionary, FindStrings::kRootName, false, true);
}

findNodePtr findNode::treeFromDefDict(const PropertyDictionary &dictionary, const QString &name, bool canOpen,
                                      bool group)
{
    findNodePtr node(new findNode(name, canOpen, group));
    // Only the root's dictionaries are domains; further down they are keys.
    const bool childrenAreDomains = name == FindStrings::kRootName;
    node->m_children.reserve(size_t(dictionary.size()));
    for (qsizetype i = 0; i < dictionary.size(); ++i) {
        const QString &key = dictionary.keyAt(i);
        const PropertyList &value = dictionary.valueAt(i);
        if (value.isDictionary())
            node->insertChild(treeFromDefDict(value.dictionaryRef(), key, childrenAreDomains, true),
                              node->childCount());
        else if (value.isArray())
            node->insertChild(treeFromArray(value.arrayRef(), key), node->childCount());
        else
            node->insertChild(initWithItem(key, value), node->childCount());
    }
    return node;
}

findNodePtr findNode::treeFromArray(const PropertyArray &array, const QString &name)
{
    findNodePtr node(new findNode(name, false, false));
    const QList<PropertyList> &items = array.items();
    node->m_children.reserve(size_t(items.size()));
    for (const PropertyList &element : items) {
        // Equal elements share the label of the first of them.
        const QString label = itemName(items.indexOf(element) + 1);
        if (element.isDictionary())
            node->insertChild(treeFromDefDict(element.dictionaryRef(), label, false, true),
                              node->childCount());
        else if (element.isArray())
            node->insertChild(treeFromArray(element.arrayRef(), label), node->childCount());
        else
            node->insertChild(initWithItem(label, element), node->childCount());
    }
    return node;
}

findNodePtr findNode::initWithItem(const QString &name, const PropertyList &value)
{
    findNodePtr node(new findNode(name, false, false));
    node->m_objectValue = value;
    return node;
}

void findNode::renumberChildren(qsizetype from)
{
    for (qsizetype i = from; i < childCount(); ++i)
        m_children[size_t(i)]->m_row = i;
}

qsizetype findNode::descendantCount() const
{
    qsizetype count = childCount();
    for (const findNodePtr &child : m_children)
        count += child->descendantCount();
    return count;
}

void findNode::insertChild(findNodePtr child, qsizetype index)
{
    child->m_parent = this;
    m_children.insert(m_children.begin() + index, std::move(child));
    renumberChildren(index);
}

findNodePtr findNode::removeFromParent()
{
    if (!m_parent)
        return nullptr;
    findNode *parent = m_parent;
    const auto at = parent->m_children.begin() + m_row;
    findNodePtr self = std::move(*at);
    parent->m_children.erase(at);
    parent->renumberChildren(m_row);
    m_parent = nullptr;
    m_row = 0;
    return self;
}

void findNode::recursiveSortChildren()
{
    std::stable_sort(m_children.begin(), m_children.end(),
                     [](const findNodePtr &a, const findNodePtr &b) { return a->compare(*b) < 0; });
    renumberChildren(0);
    for (const findNodePtr &child : m_children)
        child->recursiveSortChildren();
}

int findNode::compare(const findNode &other) const
{
    return compareNatural(m_name, other.m_name);
}

QString findNode::openName() const
{
    if (m_canOpen)
        return m_name == FindStrings::kRegistrationDomainName ? m_name.mid(2) : m_name;
    return m_parent ? m_parent->openName() : QString();
}

QString findNode::outlineText() const
{
    QString text;
    for (const findNodePtr &child : m_children)
        child->appendOutline(text, 0);
    return text;
}

void findNode::appendOutline(QString &text, int depth) const
{
    text += QString(depth * 2, QLatin1Char(' ')) + m_name;
    if (m_objectValue)
        text += QLatin1Char('\t') + m_objectValue->description();
    text += QLatin1Char('\n');
    for (const findNodePtr &child : m_children)
        child->appendOutline(text, depth + 1);
}
