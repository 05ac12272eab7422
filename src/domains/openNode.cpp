#include "openNode.h"

#include "domains/PathText.h"
#include "model/VXAdditions.h"
#include "platform/FolderLookup.h"

namespace {

const QString kRootName = QStringLiteral("Root");
const QString kRegistrationFileName = QStringLiteral("NSRegistrationDomain.plist");
const QString kGlobalFileStem = QStringLiteral(".GlobalPreferences");
const QString kGlobalDomainName = QStringLiteral("NSGlobalDomain");

} // namespace

openNode::openNode(Private, const QString &name, bool group) : m_name(name), m_isGroup(group) {}

openNodePtr openNode::treeFromFileArray(const FileArray &items, const QString &machineFolder)
{
    return build(items, kRootName, true, machineFolder);
}

openNodePtr openNode::treeFromFileArray(const FileArray &items, const QString &name, bool group) const
{
    return initWithArray(items, name, group);
}

openNodePtr openNode::initWithArray(const FileArray &items, const QString &name, bool group)
{
    return build(items, name, group, QString());
}

openNodePtr openNode::build(const FileArray &items, const QString &name, bool group,
                            const QString &machineFolder)
{
    auto node = std::make_shared<openNode>(Private(), name, group);
    node->m_children.reserve(items.size());
    for (const FileArrayItem &item : items) {
        openNodePtr child = item.isFolder ? build(item.children, item.path, true, machineFolder)
                                          : initWithItem(item.path);
        child->m_isMachineFolder = !machineFolder.isEmpty() && item.path == machineFolder;
        node->appendWhileBuilding(child);
    }
    return node;
}

openNodePtr openNode::initWithItem(const QString &path)
{
    auto node = std::make_shared<openNode>(Private(), path, false);
    node->m_loadSpecial = PathText::lastPathComponent(path) == kRegistrationFileName;
    return node;
}

void openNode::appendWhileBuilding(const openNodePtr &child)
{
    child->m_parent = this;
    m_children.append(child);
}

bool openNode::insertChild(const openNodePtr &child, int index)
{
    if (!child || index < 0 || index > numberOfChildren() || indexOfChild(child.get()) >= 0)
        return false;
    child->m_parent = this;
    m_children.insert(index, child);
    return true;
}

void openNode::removeChild(const openNode *child)
{
    const int index = indexOfChild(child);
    if (index >= 0)
        m_children.removeAt(index);
}

void openNode::removeFromParent()
{
    // Everything needed is read first: leaving the parent may free this node.
    openNode *parent = m_parent;
    openNode *reference = m_searchReference;
    m_parent = nullptr;
    if (parent)
        parent->removeChild(this);
    if (reference)
        reference->removeFromParent();
}

int openNode::indexOfChild(const openNode *child) const
{
    for (qsizetype i = 0; i < m_children.size(); ++i) {
        if (m_children.at(i).get() == child)
            return static_cast<int>(i);
    }
    return -1;
}

openNodePtr openNode::childAtIndex(int index) const
{
    if (index < 0 || index >= numberOfChildren())
        return nullptr;
    return m_children.at(index);
}

QString openNode::displayName() const
{
    const QString stem = PathText::deletingPathExtension(PathText::lastPathComponent(m_name));
    const qsizetype global = stem.indexOf(kGlobalFileStem);
    if (global >= 0) {
        QString shown = stem;
        return shown.replace(global, kGlobalFileStem.size(), kGlobalDomainName);
    }
    if (m_isMachineFolder)
        return QStringLiteral("System Preferences");
    return stem;
}

QString openNode::systemPrefsPath()
{
    return FolderLookup::folderForType(FolderLookup::kPreferencesFolderType, FolderLookup::kLocalDomain)
        .value_or(QString());
}

QString openNode::description() const
{
    // The children list is written the way the platform prints an array of
    // objects: one element per line, indented by four spaces.
    QString list = QStringLiteral("(\n");
    for (qsizetype i = 0; i < m_children.size(); ++i) {
        list += QStringLiteral("    ") + m_children.at(i)->description();
        list += i + 1 < m_children.size() ? QStringLiteral(",\n") : QStringLiteral("\n");
    }
    list += QLatin1Char(')');
    return QStringLiteral("name: %1\nchildren: %2").arg(m_name, list);
}

// The search copy of node: a leaf that matches, or a group holding the copies
// of its children that survived; nullptr when nothing below matched.
openNodePtr openNode::searchCopy(openNode &node, const VXAdditions::SearchPattern &pattern)
{
    if (!node.isGroup()) {
        if (!pattern.matches(node.displayName()))
            return nullptr;
        openNodePtr leaf = initWithItem(node.name());
        leaf->m_searchReference = &node;
        leaf->m_isMachineFolder = node.m_isMachineFolder;
        return leaf;
    }
    openNodePtr group = initWithArray({}, node.name(), true);
    group->m_searchReference = &node;
    group->m_isMachineFolder = node.m_isMachineFolder;
    for (const openNodePtr &child : node.children()) {
        if (openNodePtr copy = searchCopy(*child, pattern))
            group->insertChild(copy, group->numberOfChildren());
    }
    // The root is the tree itself: an empty result is still a (blank) tree.
    if (group->numberOfChildren() == 0 && node.name() != kRootName)
        return nullptr;
    return group;
}

openNodePtr openNode::queryWithString(const QString &query)
{
    const VXAdditions::SearchPattern pattern(query);
    return searchCopy(*this, pattern);
}

openNode::Presentation openNode::presentation(bool selected, bool focused, bool writable)
{
    if (selected)
        return focused ? Presentation::Selected : Presentation::BackSelected;
    return writable ? Presentation::Normal : Presentation::Disabled;
}
