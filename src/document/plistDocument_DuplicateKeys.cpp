// Nodes arriving in a group that may already hold their keys: equal entries
// stay, dictionaries are merged entry by entry, anything else replaces what
// was there, after asking when the user wants to be asked. The questions are
// asked one at a time, in the order the clashes were found.
#include "plistDocument.h"

#include "document/DocumentStrings.h"
#include "document/DuplicateKeys.h"
#include "document/OutlineModel.h"
#include "domains/ApplicationSettings.h"
#include "domains/SettingsKeys.h"
#include "platform/UserDefaults.h"

#include <QPointer>

void plistDocument::mergeNodes(const QList<PListNodePtr> &nodes, const PListNodePtr &parent, int index,
                               const QString &undoName, SelectionMemory memory)
{
    DuplicateKeys::Check check = DuplicateKeys::nodesInArray(nodes, parent);
    if (!check.conflicting.isEmpty()) {
        recursiveAddBadNodes(check.conflicting, check.passed, parent, index, undoName);
        return;
    }
    insertNodes(parent, nodes, index);
    m_undoManager.registerUndo([this, nodes, parent, index] { undoDrag(nodes, parent, index); });
    m_undoManager.setActionName(undoName);
    sortShownTree();
    showInserted(nodes, memory);
}

void plistDocument::recursiveAddBadNodes(const QList<DuplicateKeys::ConflictPair> &conflicting,
                                         QList<PListNodePtr> passed, const PListNodePtr &parent, int index,
                                         const QString &undoName)
{
    // An entry named like the array it is dropped into clashes with nothing
    // the array holds; it simply goes in.
    for (const auto &[incoming, existing] : conflicting) {
        if (existing->nodeParent() != parent.get())
            passed << incoming;
    }
    if (!passed.isEmpty()) {
        index = std::clamp(index, 0, parent->numberOfChildren());
        insertNodes(parent, passed, index);
        sortShownTree();
        m_undoManager.registerUndo([this, passed, parent, index] { undoDrag(passed, parent, index); });
        m_undoManager.setActionName(undoName);
    }
    for (const auto &[incoming, existing] : conflicting) {
        const int existingIndex = parent->indexOfChildIdenticalTo(existing.get());
        if (existingIndex < 0)
            continue;
        if (incoming->value().isDictionary() && existing->value().isDictionary()) {
            mergeEntries(incoming, existing, undoName);
        } else if (incoming->isEqualToNode(*existing)) {
            selectNodes({existing}, true);
            if (m_screen)
                m_screen->scrollToItem(existing.get());
        } else {
            queueDuplicateKey({parent, existing, incoming, existingIndex, undoName});
        }
    }
}

void plistDocument::mergeEntries(const PListNodePtr &incoming, const PListNodePtr &existing,
                                 const QString &undoName)
{
    // The incoming dictionary is dropped; its entries move into the one there.
    QList<PListNodePtr> children(incoming->children().begin(), incoming->children().end());
    for (const PListNodePtr &child : children)
        child->removeFromParent();
    const DuplicateKeys::Check check = DuplicateKeys::nodesInArray(children, existing);
    const int count = existing->numberOfChildren();
    if (!check.conflicting.isEmpty()) {
        recursiveAddBadNodes(check.conflicting, check.passed, existing, count, undoName);
        return;
    }
    insertNodes(existing, children, count);
    m_undoManager.registerUndo([this, children, existing, count] { undoDrag(children, existing, count); });
    m_undoManager.setActionName(undoName);
    sortShownTree();
    if (isShown() && !children.isEmpty()) {
        selectNodes(children, true);
        if (m_screen)
            m_screen->scrollToItem(children.first().get());
    }
}

// ---- the duplicate-key questions ------------------------------------------------------

void plistDocument::queueDuplicateKey(DuplicateJob job)
{
    m_duplicateJobs.push_back(std::move(job));
    runDuplicateJobs();
}

void plistDocument::runDuplicateJobs()
{
    while (!m_askingDuplicate && !m_duplicateJobs.empty()) {
        DuplicateJob job = std::move(m_duplicateJobs.front());
        m_duplicateJobs.pop_front();
        // Turning the warning off in one dialog answers the questions still waiting.
        if (!m_services.store.defaults.boolForKey(SettingsKeys::VXWarnOnDuplicateKeys)) {
            replaceDuplicate(job);
            continue;
        }
        // With nobody to ask, nothing is replaced unasked.
        if (!m_screen)
            continue;
        m_askingDuplicate = true;
        QPointer<plistDocument> self(this);
        m_screen->askDuplicateKey(job.existing->name(),
                                  DuplicateKeys::dialogText(job.existing->initialValue()),
                                  DuplicateKeys::dialogText(job.incoming->initialValue()),
                                  [self, job](int answer, bool stopWarning) {
                                      if (!self)
                                          return;
                                      self->duplicateKeyAnswered(job, answer, stopWarning);
                                  });
    }
}

void plistDocument::duplicateKeyAnswered(const DuplicateJob &job, int answer, bool stopWarning)
{
    if (stopWarning) {
        ApplicationSettings(m_services.store.defaults, m_services.center).setWarnOnDuplicateKeys(false, this);
    }
    if (answer == DocumentScreen::ReplaceConfirmed)
        replaceDuplicate(job);
    m_askingDuplicate = false;
    runDuplicateJobs();
}

void plistDocument::replaceDuplicate(const DuplicateJob &job)
{
    // The tree may have changed while the question waited: the existing node
    // is replaced where it is now, and not at all once it has gone.
    const int index = job.parent->indexOfChildIdenticalTo(job.existing.get());
    if (index < 0)
        return;
    const PListNodePtr &incoming = job.incoming;
    const PListNodePtr &existing = job.existing;
    m_undoManager.registerUndo(
        [this, incoming, existing, index] { undoReplacement(incoming, existing, index); });
    takeNode(existing);
    insertNode(job.parent, incoming, index);
    m_undoManager.setActionName(job.undoName);
    sortShownTree();
    selectNodes({incoming}, true);
    if (m_screen)
        m_screen->scrollToItem(incoming.get());
}

// ---- defaults values dropped on the browser ---------------------------------------------

void plistDocument::addNewDefaultsValue(const PropertyDictionary &entry)
{
    if (!m_canEditPlist) {
        if (m_screen)
            m_screen->showBadPermissions();
        beep();
        return;
    }
    QList<PListNodePtr> nodes;
    for (qsizetype i = 0; i < entry.size(); ++i)
        nodes << DuplicateKeys::nodeFor(entry.keyAt(i), entry.valueAt(i));
    const QString undoName = DocumentStrings::applyDefaultsValue();
    // The real tree: what is applied must be saved even while a filter shows.
    const DuplicateKeys::Check check = DuplicateKeys::nodesInArray(nodes, m_cachedTreeData);
    if (!check.conflicting.isEmpty()) {
        const QList<PListNodePtr> selection = selectedNodes();
        recursiveAddBadNodes(check.conflicting, check.passed, m_cachedTreeData, 0, undoName);
        sortShownTree();
        if (isShown())
            selectNodes(selection, true);
        return;
    }
    m_undoManager.registerUndo([this, nodes, root = m_cachedTreeData] { undoDrag(nodes, root, 0); });
    m_undoManager.setActionName(undoName);
    insertNodes(m_cachedTreeData, nodes, 0);
    sortShownTree();
    if (isShown()) {
        selectNodes(nodes, true);
        if (m_screen && !nodes.isEmpty())
            m_screen->scrollToItem(nodes.first().get());
    }
}
