#pragma once

#include "document/DocumentContent.h"
#include "document/DocumentScreen.h"
#include "document/DuplicateKeys.h"
#include "domains/CFReadWriteMethods.h"
#include "model/PListNode.h"
#include "platform/PropertyListSerialization.h"
#include "platform/UndoManager.h"

#include <QDateTime>
#include <QItemSelectionModel>
#include <QObject>
#include <QRect>

#include <deque>
#include <functional>
#include <memory>
#include <optional>

class NotificationCenter;
class OutlineModel;
class Pasteboard;
class QMimeData;
class QFileSystemWatcher;

// One preference domain or property-list file, held as a tree of nodes and
// edited through the commands of the document window. Everything here needs no
// widget: the window shows the document's outline model and selection model,
// and the document asks the window for what only a screen can do through
// DocumentScreen (without one, those requests are simply not made).
//
// treeData is the root the outline shows; cachedTreeData the real root. They
// are the same node except while a search filter is active, when treeData is
// the filtered copy whose nodes refer to the real ones.
//
// Every change of either tree goes through the tree operations
// (plistDocument_TreeOperations.cpp), which tell the outline model; undo
// records call document operations and never change nodes themselves.
class plistDocument : public QObject {
    Q_OBJECT
public:
    struct Services {
        CFReadWriteMethods::Store store;
        NotificationCenter &center;
    };

    // The commands whose menu items and toolbar items are enabled by the document.
    enum class Command { Sort, AddArray, AddGroup, AddLeaf, Reload, Save, Revert, Cut, Copy, Paste, Delete, Other };
    enum class ToolbarItem { DeleteItem, Reload, Print, GetInfo, Other };

    // A key as the outline received it: the first character of the event
    // (0x7F delete, 0x0D return, 0x03 enter), with the modifiers that matter.
    struct KeyPress {
        char16_t character = 0;
        bool shift = false;
        bool repeat = false;
    };

    explicit plistDocument(const Services &services, QObject *parent = nullptr);
    ~plistDocument() override;

    void setScreen(DocumentScreen *screen) { m_screen = screen; }
    DocumentScreen *screen() const { return m_screen; }

    // ---- state ----
    QString fileName() const { return m_fileName; }
    const PListNodePtr &treeData() const { return m_treeData; }
    const PListNodePtr &cachedTreeData() const { return m_cachedTreeData; }
    bool canEditPlist() const { return m_canEditPlist; }
    bool isDocumentEdited() const { return !m_undoManager.isClean(); }
    bool isFiltered() const { return m_treeData != m_cachedTreeData; }
    UndoManager &undoManager() { return m_undoManager; }
    OutlineModel *outlineModel() const { return m_model; }
    QItemSelectionModel *selectionModel() const { return m_selection; }
    const Services &services() const { return m_services; }

    // ---- reading and writing ----
    // Opens path on this thread. False, with the reason, when it cannot be
    // read; the document is then unchanged.
    bool readFromFile(const QString &path, QString *error = nullptr);
    // Shows content read for path (on any thread): a new history, clean.
    void adoptContent(const QString &path, DocumentContent content);
    // Takes over content read again for the same path, as a reload does.
    void adoptReloadedContent(DocumentContent content);
    bool loadedByUserDefaults() const { return m_cachedTreeData->loadedByUserDefaults(); }
    // What the reader resolved on its own when the content was last read.
    const QList<ReadWarning> &readWarnings() const { return m_warnings; }
    PropertyListFormat fileFormat() const { return m_format; }
    // Old-style text cannot be written: such a file is saved as XML once the
    // user agrees (setFileFormat).
    bool needsFormatChangeToSave() const;
    void setFileFormat(PropertyListFormat format) { m_format = format; }
    // The file on disk is no longer what was read or last written here.
    bool fileChangedOnDisk() const;
    // The user keeps this version over the one on disk: no more notices or
    // questions about that change.
    void keepOwnVersion();
    // Saves where the content came from: through the preferences service, or
    // into the file in its format. False, with the reason, when nothing could
    // be written; the document then stays edited and the file as it was.
    bool saveDocument(QString *error);
    // Writes the content into the file at path, which becomes the document's file.
    bool saveDocumentAs(const QString &path, PropertyListFormat format, QString *error);
    // The value the shown tree itself stands for: each shown group holding
    // only its shown entries, each shown leaf its real value.
    PropertyList shownValue() const;

    // ---- selection ----
    PListNode *selectedNode() const;
    // In the outline's order, top to bottom.
    QList<PListNodePtr> selectedNodes() const;
    // The real nodes behind the selected rows of a filtered view.
    QList<PListNodePtr> searchedItems() const;
    void selectNodes(const QList<PListNodePtr> &nodes, bool extending);
    void deselectAll();
    // Rows count the outline's visible lines from 0, as the window shows them.
    void selectRow(int row);
    int rowForNode(const PListNode *node) const;
    PListNode *nodeAtRow(int row) const;

    // ---- view state, kept while another document has the window ----
    // What the window shows of this document: selection, expanded rows, scroll position.
    struct ViewState {
        QList<PListNodePtr> selectedNodes;
        QList<PListNodePtr> expandedNodes; // in row order
        QRect scrollRect;
    };
    // The window is about to show another document.
    void saveCurrentSettings();
    // Shows the saved state again, and forgets it.
    void restoreDocumentSettings();
    const std::optional<ViewState> &currentSelections() const { return m_currentSelections; }
    // The window shows this document (first, or again after another): the
    // saved state, or the first row.
    void windowControllerDidLoadNib();
    // The filter text last applied, empty when the whole tree shows.
    const QString &lastSearchValue() const { return m_lastSearchValue; }

    // ---- editing commands ----
    void addLeaf();
    void addGroup();
    void addArray();
    void deleteSelections();
    void sortData();
    // Reads the source again and forgets the undo history; false (with a beep)
    // when it cannot be read, and then nothing changed.
    bool reloadData();
    void searchDocument(const QString &text);
    void searchCancel();
    bool validateCommand(Command command) const;
    bool validateToolbarItem(ToolbarItem item) const;

    // ---- cell editing ----
    // Whether the cell's editor may open. A boolean's value is toggled instead.
    bool shouldEditColumn(PListNode *node, int column);
    // Whether a finished edit may close its editor.
    bool textShouldEndEditing(const PListNode *node, int column, const QString &text) const;
    // Applies a finished edit, undoably.
    void setObjectValue(PListNode *node, int column, const QVariant &value);
    // A class chosen in the class pop-up for the selected node.
    void menuAction(int tag);
    // False when the key was handled here; true leaves it to the outline.
    bool shouldHandleKeyDown(const KeyPress &key);

    // ---- pasteboard, drag and drop ----
    // A drop moves nodes inside this document's own outline, or copies
    // anything else; the paste command copies.
    enum class DragType { Copy = 1, Move = 4 };
    enum class ReadType { Paste = 0, Drop = 1 };
    // `defaults write` text is the domain browser's business: whether it
    // would take the text, and taking it. Without them such text is refused.
    using DefaultsTextHook = std::function<bool(const QString &text)>;

    // Where copy, cut and paste go (the GUI's clipboard); without one they do nothing.
    void setPasteboard(Pasteboard *pasteboard) { m_pasteboard = pasteboard; }
    Pasteboard *pasteboard() const { return m_pasteboard; }
    void setDefaultsTextHooks(DefaultsTextHook willAccept, DefaultsTextHook import)
    {
        m_willAcceptDefaultsText = std::move(willAccept);
        m_importDefaultsText = std::move(import);
    }
    // The payload of a copy or a drag: the archived nodes, their text (the
    // `defaults write` commands and the XML), this document's path.
    std::unique_ptr<QMimeData> mimeDataForItems(const QList<PListNodePtr> &nodes) const;
    void writeItems(const QList<PListNodePtr> &nodes, Pasteboard &pasteboard) const;
    // Whether data holds something a paste or drop could take in.
    bool canPaste(const QMimeData *data) const;
    // Takes in what data holds at index of parent (no parent: just after the
    // selected node). True when something was inserted or moved.
    bool readFromPasteboard(const QMimeData &data, PListNodePtr parent, int index, DragType dragType,
                            ReadType readType);
    // A drop on the outline: item is the row dropped onto or between whose
    // children (none: the top level); childIndex is -1 for onto the row.
    struct DropTarget {
        PListNodePtr parent;
        int index;
    };
    // Whether the outline may offer the drop there, and where it would go.
    std::optional<DropTarget> validateDrop(const QMimeData &data, const PListNodePtr &item,
                                           int childIndex) const;
    // Performs the drop; true when something was inserted or moved.
    bool acceptDrop(const QMimeData &data, const PListNodePtr &item, int childIndex, DragType dragType);
    void cut();
    void copy();
    void paste();
    // The entries of a `defaults write` dropped on the domain browser, added
    // to the real tree with the same duplicate-key handling as a paste.
    void addNewDefaultsValue(const PropertyDictionary &entry);
    // Duplicate-key questions still waiting for the one on screen.
    int pendingDuplicateKeys() const { return int(m_duplicateJobs.size()); }

    // ---- undo methods ----
    void addNewNode(const PListNodePtr &node, const QString &undoName);
    void undoNewOrDelete(const PListNodePtr &node, int index, const PListNodePtr &parent);
    // The record of a class change and of a value change: puts content back
    // into the node whole, hidden state included, and records what it took
    // out, so the same record serves undo and redo.
    void undoChangeClass(const PListNodePtr &node, const PListNode::Content &content);
    // Puts restored back in current's place (a duplicate key's replacement undone).
    void undoReplacement(const PListNodePtr &current, const PListNodePtr &restored, int index);
    void undoMove(const PListNodePtr &node, const PListNodePtr &oldParent, int oldIndex);
    void undoDrag(const QList<PListNodePtr> &nodes, const PListNodePtr &parent, int index);
    void redoDrag(const QList<PListNodePtr> &nodes, const PListNodePtr &parent, int index);

    // The shared pointer that holds a node of either tree; nullptr for a node
    // that no tree holds.
    PListNodePtr sharedNode(const PListNode *node) const;

signals:
    void editedChanged(bool edited);
    void fileNameChanged(const QString &path);
    // New content is shown (opened, reloaded or reverted).
    void contentAdopted();
    // Another program changed the file while the document holds edits.
    void changedOnDisk();

private:
    // ---- tree operations: every change of a tree goes through these ----
    bool insertNode(const PListNodePtr &parent, const PListNodePtr &node, int index);
    void insertNodes(const PListNodePtr &parent, const QList<PListNodePtr> &nodes, int index);
    // Takes a node out of its parent; its former index, -1 when it had none.
    int takeNode(const PListNodePtr &node);
    void setNodeName(PListNode *node, const QString &name);
    void setNodeValue(PListNode *node, const PropertyList &value);
    bool setNodeClass(PListNode *node, int tag);
    void swapNodeContent(PListNode *node, PListNode::Content &content);
    void sortShownTree();
    void showRoot(const PListNodePtr &root);
    // Tells the outline that node's texts changed, wherever it shows.
    void nodeTextsChanged(PListNode *node);

    // ---- drag, drop, paste and duplicate keys ----
    // Whether the saved view state of a hidden document may select what came in.
    enum class SelectionMemory { Kept, Lost };
    struct DuplicateJob {
        PListNodePtr parent;
        PListNodePtr existing;
        PListNodePtr incoming;
        int index = 0;
        QString undoName;
    };
    QString pasteboardPath() const;
    QString pasteboardText(const QList<PListNodePtr> &nodes) const;
    bool moveNodes(const QList<PListNodePtr> &archived, const PListNodePtr &parent, int index);
    // Whether this document's own nodes on data may move into parent.
    bool isMovable(const QMimeData &data, const PListNodePtr &parent) const;
    bool isShown() const;
    void showInserted(const QList<PListNodePtr> &nodes, SelectionMemory memory);
    void mergeNodes(const QList<PListNodePtr> &nodes, const PListNodePtr &parent, int index,
                    const QString &undoName, SelectionMemory memory);
    void recursiveAddBadNodes(const QList<DuplicateKeys::ConflictPair> &conflicting,
                              QList<PListNodePtr> passed, const PListNodePtr &parent, int index,
                              const QString &undoName);
    void mergeEntries(const PListNodePtr &incoming, const PListNodePtr &existing, const QString &undoName);
    void queueDuplicateKey(DuplicateJob job);
    void runDuplicateJobs();
    void duplicateKeyAnswered(const DuplicateJob &job, int answer, bool stopWarning);
    void replaceDuplicate(const DuplicateJob &job);

    void replaceContent(DocumentContent content);
    void watchFile();
    void fileChanged();
    bool writeDomain(QString *error);
    bool writeFile(const QString &path, PropertyListFormat format, QString *error);
    void deleteSelectedNodes(const QString &undoName);
    void selectAfterChange(const QList<PListNodePtr> &nodes);
    void readWarnSetting();
    void readRenditionSettings();
    void beep() const;
    bool isExpanded(const PListNode *node) const;

    Services m_services;
    DocumentScreen *m_screen = nullptr;
    QString m_fileName;
    PListNodePtr m_treeData;
    PListNodePtr m_cachedTreeData;
    bool m_canEditPlist = true;
    bool m_warn = true;
    PropertyListFormat m_format = PropertyListFormat::Xml;
    PreferenceDomainFile::Stamp m_stamp;
    QList<ReadWarning> m_warnings;
    PreferenceDomainFile::Stamp m_reportedStamp; // the last change by another program told of
    QFileSystemWatcher *m_watcher = nullptr;
    std::optional<ViewState> m_currentSelections;
    QString m_lastSearchValue;
    Pasteboard *m_pasteboard = nullptr;
    DefaultsTextHook m_willAcceptDefaultsText;
    DefaultsTextHook m_importDefaultsText;
    std::deque<DuplicateJob> m_duplicateJobs;
    bool m_askingDuplicate = false;
    UndoManager m_undoManager;
    OutlineModel *m_model;
    QItemSelectionModel *m_selection;
};
