// The browser's tree changes, search, reload, opening, and the enabling of
// its commands and keys.
#include "openDomain.h"

#include "domains/DomainOutlineModel.h"
#include "domains/PathText.h"
#include "domains/SettingsKeys.h"
#include "platform/UserDefaults.h"

#include <QFileInfo>
#include <QSet>

namespace {

constexpr char16_t kDeleteCharacter = 0x7F;
const QString kPlistExtension = QStringLiteral("plist");

openNode *findByName(openNode &node, const QString &name)
{
    if (node.name() == name)
        return &node;
    for (const openNodePtr &child : node.children()) {
        if (openNode *found = findByName(*child, name))
            return found;
    }
    return nullptr;
}

void collectNamed(const openNodePtr &node, const QSet<QString> &names, QList<openNodePtr> &found)
{
    for (const openNodePtr &child : node->children()) {
        if (names.contains(child->name()))
            found.append(child);
        collectNamed(child, names, found);
    }
}

} // namespace

// ---- tree changes ---------------------------------------------------------------------

void openDomain::showRoot(const openNodePtr &root)
{
    m_selection->clear();
    m_treeData = root;
    m_model->resetRoot(root);
}

openNodePtr openDomain::inFullTree(const openNodePtr &node) const
{
    if (!node)
        return nullptr;
    const openNode *top = node.get();
    while (top->nodeParent())
        top = top->nodeParent();
    // A deleted domain has no parent and stands for itself.
    if (top == m_cachedTreeData.get() || (top == node.get() && !node->isGroup()))
        return node;
    // A reload replaced the tree the node was in (a root among them): its
    // path finds its successor.
    return sharedNode(findByName(*m_cachedTreeData, node->name()));
}

void openDomain::insertNode(const openNodePtr &parent, const openNodePtr &node, int index)
{
    if (!parent)
        return;
    index = std::clamp(index, 0, parent->numberOfChildren());
    const bool shown = m_model->holds(parent.get());
    if (shown)
        m_model->beginInsert(parent.get(), index);
    parent->insertChild(node, index);
    if (shown)
        m_model->endInsert();
    fullTreeChanged();
}

void openDomain::takeNode(const openNodePtr &node)
{
    openNode *parent = node->nodeParent();
    const bool shown = m_model->holds(parent);
    if (shown)
        m_model->beginRemove(parent, parent->indexOfChild(node.get()));
    node->removeFromParent();
    if (shown)
        m_model->endRemove();
    fullTreeChanged();
}

void openDomain::fullTreeChanged()
{
    // An undo can run while a search result is shown; the result then holds
    // copies of what changed, so it is made again.
    if (isSearchShown())
        searchDomains(m_searchText);
}

// ---- search ----------------------------------------------------------------------------

void openDomain::searchDomains(const QString &text)
{
    m_searchText = text;
    if (!text.isEmpty()) {
        showRoot(m_cachedTreeData->queryWithString(text));
        if (m_screen)
            m_screen->expandAll();
        return;
    }
    if (!isSearchShown())
        return;
    // Back to the full tree, with the domains found selected there.
    QList<openNodePtr> chosen;
    for (const openNodePtr &result : selectedNodes()) {
        if (openNodePtr real = sharedNode(result->searchReference()))
            chosen.append(std::move(real));
    }
    showRoot(m_cachedTreeData);
    for (const openNodePtr &node : std::as_const(chosen)) {
        for (openNode *above = node->nodeParent(); m_screen && above && above != m_treeData.get();
             above = above->nodeParent())
            m_screen->expandItem(above);
    }
    selectNodes(chosen, false);
    if (m_screen && !chosen.isEmpty())
        m_screen->scrollToItem(chosen.first().get());
}

void openDomain::searchCancel()
{
    emit searchTextCleared();
    searchDomains(QString());
    if (m_screen)
        m_screen->focusOutlineLater();
}

// ---- reload ----------------------------------------------------------------------------

void openDomain::refresh()
{
    reloadTree();
    if (m_screen)
        m_screen->bringForward();
}

void openDomain::reloadTree()
{
    // The new tree holds new nodes, so what was selected is found again by path.
    const QStringList selected = selectedPaths();
    m_cachedTreeData = fullDomainTree();
    showRoot(m_cachedTreeData);
    if (!m_searchText.isEmpty())
        searchDomains(m_searchText);
    QList<openNodePtr> found;
    collectNamed(m_treeData, QSet<QString>(selected.begin(), selected.end()), found);
    selectNodes(found, true);
}

// ---- opening -----------------------------------------------------------------------------

void openDomain::openQuickly() { open(false); }

void openDomain::openQuicklyInNewWindow() { open(true); }

void openDomain::open(bool newWindow)
{
    const QList<openNodePtr> nodes = selectedNodes();
    for (const openNodePtr &node : nodes) {
        if (PathText::pathExtension(node->name()) == kPlistExtension) {
            // The first domain makes the new window; the others join it.
            emit openRequested(node->name(), node->loadSpecial(), newWindow);
            newWindow = false;
        } else if (nodes.size() == 1 && m_screen) {
            if (m_screen->isItemExpanded(node.get()))
                m_screen->collapseItem(node.get());
            else
                m_screen->expandItem(node.get());
        }
    }
}

// ---- enabling ------------------------------------------------------------------------------

bool openDomain::validateCommand(Command command) const
{
    const bool keyWindow = !m_screen || m_screen->isKeyWindow();
    const bool anySelected = m_selection->hasSelection();
    switch (command) {
    case Command::OpenInNewWindow:
        if (!m_services.defaults.boolForKey(SettingsKeys::VXDocumentsUseTabs))
            return false;
        [[fallthrough]];
    case Command::Open:
    case Command::GetInfo:
        return keyWindow && anySelected;
    case Command::Delete: {
        const QList<openNodePtr> nodes = selectedNodes();
        return !isSearchShown() && !nodes.isEmpty() && !nodes.first()->isGroup()
            && QFileInfo(nodes.first()->name()).isWritable();
    }
    case Command::Paste:
        return keyWindow && m_pasteboardText && willAccept(m_pasteboardText());
    case Command::Other:
        break;
    }
    return true;
}

bool openDomain::validateToolbarItem(ToolbarItem item) const
{
    const bool keyWindow = !m_screen || m_screen->isKeyWindow();
    const bool active = !m_screen || m_screen->isApplicationActive();
    switch (item) {
    case ToolbarItem::DeleteItem:
        return active && keyWindow && (!m_screen || m_screen->isOutlineFocused())
            && validateCommand(Command::Delete);
    case ToolbarItem::Reload:
        return active && keyWindow;
    case ToolbarItem::GetInfo:
        return active && keyWindow && m_selection->hasSelection();
    case ToolbarItem::Other:
        break;
    }
    return false;
}

bool openDomain::shouldHandleKeyDown(const KeyPress &key)
{
    if (key.character != kDeleteCharacter || key.repeat || isSearchShown())
        return true;
    deleteSelections();
    return false;
}
