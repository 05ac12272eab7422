// Keys and values edited in place, booleans toggled, classes changed through
// the class pop-up, and the keys the outline passes to the document.
#include "plistDocument.h"

#include "document/DocumentStrings.h"
#include "document/OutlineModel.h"

namespace {

constexpr char16_t kDeleteCharacter = 0x7f;
constexpr char16_t kReturnCharacter = 0x0d;
constexpr char16_t kEnterCharacter = 0x03;

bool isArrayElement(const PListNode &node) { return node.nodeParent() && node.nodeParent()->isArray(); }

// An edit as a value: a typed text as a string, a toggled boolean as a boolean.
PropertyList valueOf(const QVariant &value)
{
    if (value.metaType() == QMetaType::fromType<bool>())
        return PropertyList::boolean(value.toBool());
    return PropertyList(value.toString());
}

QString textOf(const PropertyList &value) { return value.isString() ? value.toString() : value.description(); }

} // namespace

bool plistDocument::shouldEditColumn(PListNode *node, int column)
{
    if (!m_canEditPlist) {
        beep();
        return false;
    }
    switch (column) {
    case DocumentScreen::ValueColumn:
        if (node->valueIsBool()) {
            // A click on a boolean flips it, undoably, without an editor.
            setObjectValue(node, column, !node->value().toBool());
            return false;
        }
        if (!node->canEditValue())
            beep();
        return node->canEditValue();
    case DocumentScreen::KeyColumn:
        // An array element's label is its position, not a key.
        if (isArrayElement(*node)) {
            beep();
            return false;
        }
        return true;
    default:
        return true;
    }
}

bool plistDocument::textShouldEndEditing(const PListNode *node, int column, const QString &text) const
{
    if (text.isEmpty())
        return false;
    if (column != DocumentScreen::KeyColumn)
        return true;
    // Keys are unique among the real siblings, which a filtered view may not all show.
    const PListNode *real = node->searchReference() ? node->searchReference() : node;
    const PListNode *parent = real->nodeParent();
    const PListNodePtr existing = parent ? parent->childWithName(text) : nullptr;
    return !existing || existing.get() == real;
}

void plistDocument::setObjectValue(PListNode *node, int column, const QVariant &value)
{
    if (!m_canEditPlist || !node)
        return;
    const PropertyList newValue = valueOf(value);
    if (column == DocumentScreen::KeyColumn) {
        const QString name = textOf(newValue);
        const QString current = node->name();
        if (name == current)
            return;
        const PListNodePtr held = sharedNode(node);
        m_undoManager.registerUndo([this, held, current] { setObjectValue(held.get(), DocumentScreen::KeyColumn, current); });
        if (!m_undoManager.isUndoing() && !m_undoManager.isRedoing())
            m_undoManager.setActionName(DocumentStrings::changeName());
        setNodeName(node, name);
        return;
    }
    if (column != DocumentScreen::ValueColumn || !node->canEditValue() || textOf(newValue) == node->stringValue())
        return;
    const PListNodePtr held = sharedNode(node);
    const PListNode::Content before = node->content();
    m_undoManager.registerUndo([this, held, before] { undoChangeClass(held, before); });
    m_undoManager.setActionName(DocumentStrings::changeValue());
    setNodeValue(node, newValue);
}

void plistDocument::menuAction(int tag)
{
    PListNode *node = selectedNode();
    if (!node || !m_canEditPlist || !node->canEditValue() || tag == node->menu()) {
        beep();
        return;
    }
    const PListNodePtr held = sharedNode(node);
    const PListNode::Content before = node->content();
    m_undoManager.registerUndo([this, held, before] { undoChangeClass(held, before); });
    m_undoManager.setActionName(DocumentStrings::changeClass());
    if (!setNodeClass(node, tag))
        beep();
}

bool plistDocument::shouldHandleKeyDown(const KeyPress &key)
{
    if (key.character == 0 || key.repeat)
        return true;
    if (key.character == kDeleteCharacter) {
        deleteSelections();
        return false;
    }
    if (key.character != kReturnCharacter && key.character != kEnterCharacter)
        return true;
    const QList<PListNodePtr> selected = selectedNodes();
    if (selected.size() != 1 || !m_canEditPlist || !m_screen)
        return true;
    PListNode *node = selected.first().get();
    if (!key.shift && !isArrayElement(*node)) {
        m_screen->editColumn(node, DocumentScreen::KeyColumn);
        return false;
    }
    if (node->valueIsBool()) {
        setObjectValue(node, DocumentScreen::ValueColumn, !node->value().toBool());
        return false;
    }
    if (node->canEditValue()) {
        m_screen->editColumn(node, DocumentScreen::ValueColumn);
        return false;
    }
    return true;
}
