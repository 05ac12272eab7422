// Nodes leaving the document (copy, cut, the start of a drag) and entering it
// (paste, drop): the payloads written, which ones are accepted and in which
// order of preference, and moves inside the document.
#include "plistDocument.h"

#include "document/DocumentStrings.h"
#include "document/DuplicateKeys.h"
#include "document/OutlineModel.h"
#include "document/Pasteboard.h"
#include "platform/FolderLookup.h"

#include <QUrl>

#include <algorithm>

namespace {

const QString kDefaultsWrite = QStringLiteral("defaults write ");

QString folderOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash <= 0 ? QStringLiteral("/") : path.left(slash);
}

QStringList localFiles(const QMimeData &data)
{
    QStringList files;
    for (const QUrl &url : data.urls()) {
        if (url.isLocalFile())
            files << url.toLocalFile();
    }
    return files;
}

// A property list other than old-style text, which is refused: its strings
// and numbers cannot be told apart.
std::optional<PropertyList> readablePropertyList(const ReadResult<PropertyListFile> &read)
{
    if (!read || read.value.format == PropertyListFormat::OpenStep)
        return std::nullopt;
    return read.value.value;
}

// The nodes a dropped file or text stands for, each added unless an equal one
// was collected already.
void collectNodes(const PropertyList &value, QList<PListNodePtr> &collected)
{
    QList<PListNodePtr> nodes;
    if (value.isDictionary()) {
        const PropertyDictionary &dictionary = value.dictionaryRef();
        for (qsizetype i = 0; i < dictionary.size(); ++i)
            nodes << DuplicateKeys::nodeFor(dictionary.keyAt(i), dictionary.valueAt(i));
    } else if (value.isArray()) {
        nodes << PListNode::initFromArray(value.toArray(), DocumentStrings::newArray());
    } else {
        nodes << PListNode::initWithName(value.description(), value);
    }
    for (const PListNodePtr &node : nodes) {
        const bool known = std::any_of(collected.cbegin(), collected.cend(), [&](const PListNodePtr &other) {
            return other->isEqualToNode(*node);
        });
        if (!known)
            collected << node;
    }
}

} // namespace

// ---- writing ----------------------------------------------------------------------

QString plistDocument::pasteboardPath() const
{
    return m_fileName.isEmpty() ? DocumentStrings::untitled() : m_fileName;
}

QString plistDocument::pasteboardText(const QList<PListNodePtr> &nodes) const
{
    const QString path = pasteboardPath();
    // Inside the user's own folder the domain name says enough; anywhere
    // else the command needs the whole path to reach the file.
    const auto userFolder =
        FolderLookup::folderForType(FolderLookup::kPreferencesFolderType, FolderLookup::kUserDomain);
    const bool full = !userFolder || folderOf(path) != *userFolder;
    const QString label = full ? path : path.mid(path.lastIndexOf(u'/') + 1);

    QString commands;
    PropertyDictionary merged;
    for (const PListNodePtr &node : nodes) {
        const auto [command, entry] = node->returnStringWithPath(path, full);
        commands += command;
        if (!commands.isEmpty())
            commands += QStringLiteral("\n\n");
        for (qsizetype i = 0; i < entry.size(); ++i)
            merged.insert(entry.keyAt(i), entry.valueAt(i));
    }
    const QString xml = QString::fromUtf8(PropertyListSerialization::write(merged, PropertyListFormat::Xml));
    if (commands.isEmpty())
        return QStringLiteral("\"%1\" :\n\nXML:\n\n%2").arg(label, xml);
    return QStringLiteral("\"%1\" :\n\ndefaults:\n\n%2\n\nXML:\n\n%3").arg(label, commands, xml);
}

std::unique_ptr<QMimeData> plistDocument::mimeDataForItems(const QList<PListNodePtr> &nodes) const
{
    auto data = std::make_unique<QMimeData>();
    QList<ArchivedNode> archived;
    archived.reserve(nodes.size());
    for (const PListNodePtr &node : nodes)
        archived << node->encodeWithCoder();
    SequentialArchiveWriter writer;
    writer.encodeNodes(archived);
    data->setData(PasteboardTypes::kPListNodes, writer.data());
    data->setText(pasteboardText(nodes));
    data->setData(PasteboardTypes::kDocumentPath, pasteboardPath().toUtf8());
    return data;
}

void plistDocument::writeItems(const QList<PListNodePtr> &nodes, Pasteboard &pasteboard) const
{
    pasteboard.setMimeData(mimeDataForItems(nodes));
}

// ---- what may come in ---------------------------------------------------------------

bool plistDocument::canPaste(const QMimeData *data) const
{
    if (!data || !m_canEditPlist || isFiltered())
        return false;
    if (data->hasFormat(PasteboardTypes::kPListNodes))
        return true;
    const QStringList files = localFiles(*data);
    if (!files.isEmpty()) {
        return std::all_of(files.cbegin(), files.cend(), [](const QString &file) {
            return readablePropertyList(PropertyListSerialization::readFile(file)).has_value();
        });
    }
    if (!data->hasText())
        return false;
    const QString text = data->text();
    if (text.contains(kDefaultsWrite))
        return m_willAcceptDefaultsText && m_willAcceptDefaultsText(text);
    return readablePropertyList(PropertyListSerialization::read(text.toUtf8())).has_value();
}

// ---- reading ------------------------------------------------------------------------

bool plistDocument::readFromPasteboard(const QMimeData &data, PListNodePtr parent, int index,
                                       DragType dragType, ReadType readType)
{
    // The shown tree is a filtered copy: what arrived would miss the real tree.
    if (isFiltered())
        return false;
    QString undoName = DocumentStrings::dragAction();
    if (!parent) {
        // The paste command: just after the selected node, in its parent.
        PListNode *anchor = selectedNode();
        if (!anchor || !anchor->nodeParent()) {
            parent = m_treeData;
            index = 0;
        } else {
            parent = sharedNode(anchor->nodeParent());
            index = parent->indexOfChildIdenticalTo(anchor) + 1;
        }
        undoName = DocumentStrings::pasteAction();
    }
    index = std::clamp(index, 0, parent->numberOfChildren());

    if (data.hasFormat(PasteboardTypes::kPListNodes)) {
        const auto archived = SequentialArchiveReader::readNodes(data.data(PasteboardTypes::kPListNodes));
        if (!archived || archived.value.isEmpty())
            return false;
        QList<PListNodePtr> nodes;
        for (const ArchivedNode &item : archived.value)
            nodes << PListNode::initWithCoder(item);
        if (dragType == DragType::Move)
            return moveNodes(nodes, parent, index);
        const QString source = QString::fromUtf8(data.data(PasteboardTypes::kDocumentPath));
        if (readType == ReadType::Drop && source == m_fileName) {
            for (const PListNodePtr &node : nodes)
                node->setName(QStringLiteral("%1 %2").arg(node->name(), DocumentStrings::copySuffix()));
        }
        mergeNodes(nodes, parent, index, undoName, SelectionMemory::Kept);
        return true;
    }
    if (const QStringList files = localFiles(data); !files.isEmpty()) {
        QList<PListNodePtr> nodes;
        for (const QString &file : files) {
            const auto read = PropertyListSerialization::readFile(file);
            if (!read) {
                qWarning("Got an error: %s", qPrintable(read.errorText()));
                continue;
            }
            if (const auto value = readablePropertyList(read))
                collectNodes(*value, nodes);
        }
        if (nodes.isEmpty())
            return false;
        // A document shown later does not select what came from files: its
        // saved selection was always stored where the restore does not look.
        mergeNodes(nodes, parent, index, undoName, SelectionMemory::Lost);
        return true;
    }
    if (!data.hasText())
        return false;
    const QString text = data.text();
    if (text.contains(kDefaultsWrite))
        return m_importDefaultsText && m_importDefaultsText(text);
    const auto value = readablePropertyList(PropertyListSerialization::read(text.toUtf8()));
    if (!value)
        return false;
    QList<PListNodePtr> nodes;
    collectNodes(*value, nodes);
    mergeNodes(nodes, parent, index, undoName, SelectionMemory::Kept);
    return true;
}

bool plistDocument::moveNodes(const QList<PListNodePtr> &archived, const PListNodePtr &parent, int index)
{
    QList<PListNodePtr> moved;
    for (const PListNodePtr &copy : archived) {
        const PListNodePtr node = sharedNode(m_treeData->recursiveSearchForChild(*copy));
        if (!node || node == parent || parent->isDescendantOfNode(node.get()))
            continue; // gone meanwhile, or a group dropped into itself
        const PListNodePtr oldParent = node->nodeParent() ? sharedNode(node->nodeParent()) : m_treeData;
        // A dictionary keeps its entries in sorted order: nothing to move.
        if (oldParent == parent && !parent->isArray())
            continue;
        const int oldIndex = takeNode(node);
        if (oldParent == parent && oldIndex < index)
            --index;
        index = std::clamp(index, 0, parent->numberOfChildren());
        insertNode(parent, node, index);
        // The next one goes after it, so the moved nodes keep their order.
        ++index;
        m_undoManager.registerUndo(
            [this, node, oldParent, oldIndex] { undoMove(node, oldParent, oldIndex); });
        m_undoManager.setActionName(DocumentStrings::moveAction());
        moved << node;
    }
    if (moved.isEmpty())
        return false;
    sortShownTree();
    showInserted(moved, SelectionMemory::Kept);
    return true;
}

// ---- showing what came in ---------------------------------------------------------

bool plistDocument::isShown() const
{
    return !m_screen || m_screen->isShowingDocument();
}

void plistDocument::showInserted(const QList<PListNodePtr> &nodes, SelectionMemory memory)
{
    if (isShown()) {
        deselectAll();
        selectNodes(nodes, true);
        if (m_screen && !nodes.isEmpty())
            m_screen->scrollToItem(nodes.first().get());
        return;
    }
    // Another document has the window: the nodes are selected when this one
    // is shown again, with its rows and scroll position as they were.
    if (!m_currentSelections)
        saveCurrentSettings();
    if (!m_currentSelections)
        m_currentSelections = ViewState();
    m_currentSelections->selectedNodes = memory == SelectionMemory::Kept ? nodes : QList<PListNodePtr>();
}

// ---- the edit commands ---------------------------------------------------------------

void plistDocument::copy()
{
    if (m_pasteboard)
        writeItems(selectedNodes(), *m_pasteboard);
}

void plistDocument::cut()
{
    if (!m_pasteboard || selectedNodes().isEmpty()) {
        beep();
        return;
    }
    copy();
    deleteSelectedNodes(DocumentStrings::cutAction());
    deselectAll();
}

void plistDocument::paste()
{
    const QMimeData *data = m_pasteboard ? m_pasteboard->mimeData() : nullptr;
    if (!canPaste(data) || !readFromPasteboard(*data, nullptr, 0, DragType::Copy, ReadType::Paste))
        beep();
}

// ---- drops on the outline ---------------------------------------------------------

std::optional<plistDocument::DropTarget>
plistDocument::validateDrop(const QMimeData &data, const PListNodePtr &item, int childIndex) const
{
    const PListNodePtr parent = item ? item : m_treeData;
    if (!m_canEditPlist || childIndex > parent->numberOfChildren() || !canPaste(&data))
        return std::nullopt;
    // Onto a leaf is no place to drop: the rows beside it are.
    if (childIndex < 0 && parent->isLeaf())
        return std::nullopt;
    const bool ownNodes = data.hasFormat(PasteboardTypes::kPListNodes) &&
                          QString::fromUtf8(data.data(PasteboardTypes::kDocumentPath)) == m_fileName;
    if (ownNodes && !isMovable(data, parent))
        return std::nullopt;
    return DropTarget{parent, childIndex};
}

bool plistDocument::isMovable(const QMimeData &data, const PListNodePtr &parent) const
{
    const auto archived = SequentialArchiveReader::readNodes(data.data(PasteboardTypes::kPListNodes));
    if (!archived)
        return false;
    for (const ArchivedNode &item : archived.value) {
        const PListNodePtr copy = PListNode::initWithCoder(item);
        const PListNode *node = m_treeData->recursiveSearchForChild(*copy);
        if (!node)
            continue;
        const PListNode *from = node->nodeParent() ? node->nodeParent() : m_treeData.get();
        // A dictionary keeps its entries sorted, so staying in one moves nothing.
        if (from == parent.get() && !parent->isArray())
            return false;
        if (node == parent.get() || parent->isDescendantOfNode(node))
            return false;
    }
    return true;
}

bool plistDocument::acceptDrop(const QMimeData &data, const PListNodePtr &item, int childIndex,
                               DragType dragType)
{
    if (!m_canEditPlist)
        return false;
    PListNodePtr parent = item ? item : m_treeData;
    int index = childIndex;
    if (parent->isLeaf()) {
        // Dropped onto a leaf: beside it instead.
        const PListNodePtr leaf = parent;
        parent = leaf->nodeParent() ? sharedNode(leaf->nodeParent()) : m_treeData;
        index = parent->indexOfChildIdenticalTo(leaf.get());
    }
    if (!data.hasFormat(PasteboardTypes::kPListNodes) && !canPaste(&data))
        return false;
    return readFromPasteboard(data, parent, index, dragType, ReadType::Drop);
}
