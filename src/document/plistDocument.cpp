// The document's state, its selection and the enabling of its commands.
#include "plistDocument.h"

#include "document/DocumentStrings.h"
#include "document/OutlineModel.h"
#include "document/Pasteboard.h"
#include "domains/SettingsKeys.h"
#include "model/OutlineRows.h"
#include "model/RowSelection.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"

plistDocument::plistDocument(const Services &services, QObject *parent)
    : QObject(parent)
    , m_services(services)
    , m_treeData(PListNode::treeFromDictionary(PropertyDictionary()))
    , m_cachedTreeData(m_treeData)
    , m_model(new OutlineModel(this))
    , m_selection(new QItemSelectionModel(m_model, this))
{
    m_model->resetRoot(m_treeData);
    m_model->setEditHandler([this](PListNode *node, int column, const QVariant &value) {
        setObjectValue(node, column, value);
        return true;
    });
    connect(&m_undoManager, &UndoManager::cleanChanged, this, [this](bool clean) { emit editedChanged(!clean); });
    readWarnSetting();
    readRenditionSettings();
    using namespace SettingsNotifications;
    m_services.center.addObserver(this, VXDocumentWarningChangedNotification, [this](const Notification &) {
        readWarnSetting();
    });
    for (const QString &name :
         {VXUseCustomColorsChangedNotification, VXColorsChangedNotification, VXTextFontChangedNotification}) {
        m_services.center.addObserver(this, name, [this](const Notification &) { readRenditionSettings(); });
    }
}

plistDocument::~plistDocument()
{
    // The undo records hold nodes of the trees; the model shows them.
    m_undoManager.removeAllActions();
    m_selection->clear();
}

void plistDocument::readWarnSetting()
{
    m_warn = m_services.store.defaults.boolForKey(SettingsKeys::VXWarnOnDocumentDelete);
}

void plistDocument::readRenditionSettings()
{
    const UserDefaults &defaults = m_services.store.defaults;
    RenditionSettings settings;
    settings.fontName = defaults.stringForKey(SettingsKeys::VXTextFont);
    settings.fontSize = defaults.doubleForKey(SettingsKeys::VXTextFontSize);
    settings.useCustomColors = defaults.boolForKey(SettingsKeys::VXUseCustomColors);
    settings.textColor = defaults.stringForKey(SettingsKeys::VXTextColor);
    settings.disabledColor = defaults.stringForKey(SettingsKeys::VXDisabledColor);
    m_model->setRenditionSettings(settings);
}

void plistDocument::beep() const
{
    if (m_screen)
        m_screen->beep();
}

PListNodePtr plistDocument::sharedNode(const PListNode *node) const
{
    if (!node)
        return nullptr;
    if (node == m_treeData.get())
        return m_treeData;
    if (node == m_cachedTreeData.get())
        return m_cachedTreeData;
    const PListNode *parent = node->nodeParent();
    return parent ? parent->childAtIndex(parent->indexOfChildIdenticalTo(node)) : nullptr;
}

// ---- selection --------------------------------------------------------------------

QList<PListNodePtr> plistDocument::selectedNodes() const
{
    QList<PListNodePtr> nodes;
    for (const QModelIndex &row : RowSelection::inOutlineOrder(*m_selection, OutlineModel::KeyColumn)) {
        if (PListNodePtr node = sharedNode(m_model->nodeAt(row)))
            nodes.append(std::move(node));
    }
    return nodes;
}

PListNode *plistDocument::selectedNode() const
{
    const QList<PListNodePtr> nodes = selectedNodes();
    return nodes.isEmpty() ? nullptr : nodes.first().get();
}

QList<PListNodePtr> plistDocument::searchedItems() const
{
    QList<PListNodePtr> items;
    for (const PListNodePtr &node : selectedNodes()) {
        if (PListNodePtr real = sharedNode(node->searchReference()))
            items.append(std::move(real));
    }
    return items;
}

void plistDocument::selectNodes(const QList<PListNodePtr> &nodes, bool extending)
{
    QModelIndexList indexes;
    for (const PListNodePtr &node : nodes)
        indexes.append(m_model->indexOf(node.get()));
    RowSelection::select(*m_selection, indexes, extending);
}

void plistDocument::deselectAll() { m_selection->clearSelection(); }

void plistDocument::selectRow(int row)
{
    RowSelection::selectOnly(*m_selection, m_model->indexOf(nodeAtRow(row)));
}

// ---- rows -------------------------------------------------------------------------------

bool plistDocument::isExpanded(const PListNode *node) const
{
    return node == m_treeData.get() || (m_screen && m_screen->isItemExpanded(node));
}

int plistDocument::rowForNode(const PListNode *node) const
{
    if (!node || node == m_treeData.get() || !m_model->holds(node))
        return -1;
    const auto indexOf = [](const PListNode *parent, const PListNode *child) {
        return parent->indexOfChildIdenticalTo(child);
    };
    const auto open = [this](const PListNode *at) { return isExpanded(at); };
    return OutlineRows::rowOf<PListNode>(m_treeData.get(), node, open, indexOf);
}

PListNode *plistDocument::nodeAtRow(int row) const
{
    const auto open = [this](const PListNode *at) { return isExpanded(at); };
    return OutlineRows::nodeAt<PListNode>(m_treeData.get(), row, open);
}

// ---- enabling ---------------------------------------------------------------------------

bool plistDocument::validateCommand(Command command) const
{
    const bool keyWindow = !m_screen || m_screen->isKeyWindow();
    const bool anySelected = m_selection->hasSelection();
    switch (command) {
    case Command::Sort:
    case Command::AddArray:
    case Command::AddGroup:
    case Command::AddLeaf:
    case Command::Reload:
        return m_canEditPlist && keyWindow;
    case Command::Save:
    case Command::Revert:
        return m_canEditPlist && isDocumentEdited();
    case Command::Cut:
        return m_canEditPlist && anySelected;
    case Command::Copy:
        return anySelected;
    case Command::Delete:
        return m_canEditPlist && anySelected && keyWindow;
    case Command::Paste:
        return m_canEditPlist && m_pasteboard && canPaste(m_pasteboard->mimeData());
    case Command::Other:
        break;
    }
    return false;
}

bool plistDocument::validateToolbarItem(ToolbarItem item) const
{
    const bool keyWindow = !m_screen || m_screen->isKeyWindow();
    const bool active = !m_screen || m_screen->isApplicationActive();
    switch (item) {
    case ToolbarItem::DeleteItem:
        return m_canEditPlist && m_selection->hasSelection() && active && keyWindow;
    case ToolbarItem::Reload:
        return m_canEditPlist && active && keyWindow;
    case ToolbarItem::Print:
        return keyWindow;
    case ToolbarItem::GetInfo:
        return active;
    case ToolbarItem::Other:
        break;
    }
    return false;
}
