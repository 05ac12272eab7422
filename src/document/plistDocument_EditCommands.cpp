// The document's editing commands: adding, deleting, sorting and filtering.
#include "plistDocument.h"

#include "document/DocumentStrings.h"
#include "document/OutlineModel.h"

#include <QTimer>

void plistDocument::addLeaf()
{
    addNewNode(PListNode::initWithName(DocumentStrings::newKey(), PropertyList(QString())), DocumentStrings::newKey());
}

void plistDocument::addGroup()
{
    const QString name = DocumentStrings::newDictionary();
    addNewNode(PListNode::initFromDictionary(PropertyDictionary(), name), name);
}

void plistDocument::addArray()
{
    const QString name = DocumentStrings::newArray();
    addNewNode(PListNode::initFromArray(PropertyArray(), name), name);
}

void plistDocument::deleteSelections()
{
    const QList<PListNodePtr> nodes = selectedNodes();
    if (nodes.isEmpty() || !m_canEditPlist) {
        beep();
        return;
    }
    readWarnSetting();
    if (!m_warn || !m_screen) {
        deleteSelectedNodes(DocumentStrings::deleteAction());
        return;
    }
    QString question = DocumentStrings::deleteQuestion();
    // The two texts run together without a blank before "these items?".
    question += nodes.size() == 1 ? DocumentStrings::deleteOneSuffix().arg(nodes.first()->name())
                                  : DocumentStrings::deleteManySuffix();
    m_screen->confirmDelete(question, [this](int answer) {
        // A confirmed delete is named "Cut" in the Edit menu, as it always was.
        if (answer == DocumentScreen::DeleteConfirmed)
            deleteSelectedNodes(DocumentStrings::cutAction());
    });
}

void plistDocument::deleteSelectedNodes(const QString &undoName)
{
    int lastRow = 0;
    for (const PListNodePtr &node : selectedNodes()) {
        const PListNodePtr parent = sharedNode(node->nodeParent());
        if (!parent)
            continue; // already gone with an ancestor selected before it
        const int index = parent->indexOfChildIdenticalTo(node.get());
        m_undoManager.registerUndo([this, node, index, parent] { undoNewOrDelete(node, index, parent); });
        if (PListNodePtr real = sharedNode(node->searchReference())) {
            // The real node goes back into its own parent: the filtered
            // parent may be long gone when this is undone, and the real tree
            // is what is saved.
            if (PListNodePtr realParent = sharedNode(real->nodeParent())) {
                const int realIndex = realParent->indexOfChildIdenticalTo(real.get());
                m_undoManager.registerUndo(
                    [this, real, realIndex, realParent] { undoNewOrDelete(real, realIndex, realParent); });
                takeNode(real);
            }
        }
        lastRow = rowForNode(node.get());
        takeNode(node);
        m_undoManager.setActionName(undoName);
    }
    selectRow(std::max(lastRow - 1, 0));
}

void plistDocument::sortData()
{
    const QList<PListNodePtr> selected = selectedNodes();
    sortShownTree();
    deselectAll();
    selectNodes(selected, true);
}

void plistDocument::searchDocument(const QString &text)
{
    m_lastSearchValue = text;
    if (text.isEmpty()) {
        // Leaving the filter: the real nodes behind the selected rows stay selected.
        const QList<PListNodePtr> searched = searchedItems();
        showRoot(m_cachedTreeData);
        if (searched.isEmpty()) {
            selectRow(0);
            return;
        }
        deselectAll();
        for (const PListNodePtr &node : searched) {
            QList<const PListNode *> ancestors;
            for (const PListNode *at = node->nodeParent(); at && at != m_cachedTreeData.get(); at = at->nodeParent())
                ancestors.prepend(at);
            if (m_screen) {
                for (const PListNode *ancestor : ancestors)
                    m_screen->expandItem(ancestor);
            }
        }
        selectNodes(searched, true);
        if (m_screen)
            m_screen->scrollToItem(searched.first().get());
        return;
    }
    PListNodePtr result = m_cachedTreeData->queryWithString(text);
    if (!result)
        result = PListNode::initFromDictionary(PropertyDictionary(), DocumentStrings::kSearchRootName);
    else if (result == m_cachedTreeData)
        result = PListNode::treeFromDictionary(PropertyDictionary());
    showRoot(result);
    if (!m_selection->hasSelection())
        selectRow(0);
}

void plistDocument::searchCancel()
{
    searchDocument(QString());
    if (m_screen)
        m_screen->focusOutlineLater();
}
