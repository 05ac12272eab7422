// Deleting domains and undoing it. A deleted domain's file is removed from
// disk; its bytes and permissions live in the undo record that writes them
// back, so nothing else has to stay in step with the undo history.
#include "openDomain.h"

#include "domains/DomainOutlineModel.h"
#include "domains/PathText.h"
#include "domains/SettingsKeys.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

const QString kGlobalDomainFile = QStringLiteral(".GlobalPreferences.plist");

QString deleteActionName() { return openDomain::tr("Delete Domain"); }

} // namespace

bool openDomain::refusesDelete(const openNode &node) const
{
    return PathText::lastPathComponent(node.name()) == kGlobalDomainFile || node.isGroup()
        || !QFileInfo(node.name()).isWritable();
}

void openDomain::deleteSelections()
{
    // Deleting works on the full tree; the key and the menu item are off while
    // a search result is shown.
    if (isSearchShown())
        return;
    const QList<openNodePtr> nodes = selectedNodes();
    if (nodes.size() == 1)
        deleteOne(nodes.first());
    else if (nodes.size() > 1)
        deleteSelected(nodes);
}

void openDomain::deleteOne(const openNodePtr &node)
{
    if (refusesDelete(*node)) {
        beep();
        return;
    }
    auto remove = [this, node] {
        const openNodePtr parent = sharedNode(node->nodeParent());
        if (parent)
            undoDelete(node, parent->indexOfChild(node.get()), parent);
    };
    if (!m_warn || !m_screen) {
        remove();
        return;
    }
    const QString question =
        tr("Do you really wish to delete %1?").arg(PathText::lastPathComponent(node->name()));
    m_screen->confirmDelete(question, [this, remove](int answer) {
        if (answer == BrowserScreen::DeleteConfirmed)
            remove();
        if (m_screen)
            m_screen->bringForward();
    });
}

void openDomain::deleteSelected(const QList<openNodePtr> &nodes)
{
    if (!m_warn || !m_screen) {
        undoGroupDelete(nodes);
        return;
    }
    m_screen->confirmDelete(tr("Do you really wish to delete these items?"), [this](int answer) {
        // What is selected when the sheet ends is what goes.
        if (answer == BrowserScreen::DeleteConfirmed && !isSearchShown())
            undoGroupDelete(selectedNodes());
        if (m_screen)
            m_screen->bringForward();
    });
}

void openDomain::domainWarnClicked(bool boxChecked)
{
    m_warn = !boxChecked;
    m_services.defaults.setBool(m_warn, SettingsKeys::VXWarnOnDomainDelete);
    m_services.defaults.synchronize();
    m_services.center.post(SettingsNotifications::VXDomainWarningChangedNotification, this);
}

// ---- files ------------------------------------------------------------------------

std::optional<openDomain::DeletionRecord> openDomain::removeDomainFile(const openNode &node)
{
    QFile file(node.name());
    if (!file.open(QIODevice::ReadOnly)) {
        beep();
        return std::nullopt;
    }
    DeletionRecord record{nullptr, 0, file.readAll(), file.permissions(), node.name()};
    file.close();
    if (!QFile::remove(record.path)) {
        beep();
        return std::nullopt;
    }
    return record;
}

bool openDomain::writeBack(const DeletionRecord &record)
{
    // Atomic, so a file made under the same name meanwhile is replaced whole.
    QSaveFile file(record.path);
    if (!file.open(QIODevice::WriteOnly) || file.write(record.bytes) != record.bytes.size()) {
        beep();
        return false;
    }
    file.setPermissions(record.permissions);
    if (file.commit())
        return true;
    beep();
    return false;
}

// ---- one domain ---------------------------------------------------------------------

void openDomain::undoDelete(const openNodePtr &given, int index, const openNodePtr &parent)
{
    const openNodePtr node = inFullTree(given);
    if (!node || !node->nodeParent()) {
        // Deleted already: putting it back is the business of the undo
        // record that holds its bytes.
        return;
    }
    const int row = rowForNode(node.get());
    std::optional<DeletionRecord> file = removeDomainFile(*node);
    if (!file)
        return;
    m_undoManager.registerUndo([this, node, index, parent, saved = *std::move(file)] {
        restoreDomain(node, index, parent, saved);
    });
    m_undoManager.setActionName(deleteActionName());
    takeNode(node);
    selectRow(std::max(row - 1, 0));
}

void openDomain::restoreDomain(const openNodePtr &node, int index, const openNodePtr &parent,
                               const DeletionRecord &file)
{
    if (!writeBack(file))
        return;
    const openNodePtr home = inFullTree(parent);
    insertNode(home, node, index);
    if (m_model->holds(node.get()))
        selectNodes({node}, false);
    m_undoManager.registerUndo([this, node, index, parent] { undoDelete(node, index, parent); });
}

// ---- several domains ---------------------------------------------------------------

void openDomain::undoGroupDelete(const GroupDelete &state)
{
    if (const auto *nodes = std::get_if<QList<openNodePtr>>(&state))
        deleteGroup(*nodes);
    else
        restoreGroup(std::get<QList<DeletionRecord>>(state));
}

void openDomain::deleteGroup(const QList<openNodePtr> &given)
{
    QList<DeletionRecord> records;
    int lastIndex = 0;
    for (const openNodePtr &candidate : given) {
        const openNodePtr node = inFullTree(candidate);
        if (!node || !node->nodeParent() || refusesDelete(*node)) {
            beep();
            continue;
        }
        std::optional<DeletionRecord> record = removeDomainFile(*node);
        if (!record)
            continue;
        record->parent = sharedNode(node->nodeParent());
        record->index = lastIndex = record->parent->indexOfChild(node.get());
        records.append(*std::move(record));
        takeNode(node);
    }
    if (records.isEmpty())
        return; // every one was refused: there is nothing to undo
    m_undoManager.registerUndo([this, records] { undoGroupDelete(records); });
    m_undoManager.setActionName(deleteActionName());
    // The row comes from the last domain's index among its siblings, not
    // from the outline's rows, as it always has.
    selectRow(std::max(lastIndex - 1, 0));
}

void openDomain::restoreGroup(const QList<DeletionRecord> &records)
{
    // Last to first, so each index is counted among the siblings it had.
    QList<openNodePtr> restored;
    for (auto record = records.crbegin(); record != records.crend(); ++record) {
        if (!writeBack(*record))
            continue;
        openNodePtr node = openNode::initWithItem(record->path);
        insertNode(inFullTree(record->parent), node, record->index);
        restored.append(std::move(node));
    }
    m_undoManager.registerUndo([this, restored] { undoGroupDelete(restored); });
    selectNodes(restored, true);
}
