#pragma once

#include "domains/BrowserScreen.h"
#include "domains/FileArrayItem.h"
#include "domains/openNode.h"
#include "platform/FolderLookup.h"
#include "platform/PropertyList.h"
#include "platform/UndoManager.h"

#include <QByteArray>
#include <QDateTime>
#include <QFileDevice>
#include <QItemSelectionModel>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <variant>

class DomainOutlineModel;
class NotificationCenter;
class UserDefaults;
struct AppearanceDefaults;

// The application object: it finds the preference folders, lists them and owns
// the browser's tree of domains, with everything of the browser that needs no
// widget: deleting domains and undoing that, search, reload, which selected
// items open, and the enabling of the browser's commands. The browser window
// shows model() and selectionModel() and answers what only a screen can do
// through BrowserScreen (without one, those requests are simply not made).
// A `defaults write` line dropped or pasted on the browser is applied to its
// domain's file, which the window opens (applyDefaultsRequested).
//
// treeData is the shown root, cachedTreeData the full tree; they differ while
// a search result is shown. Domains are only deleted from the full tree.
class openDomain : public QObject {
    Q_OBJECT
public:
    struct Services {
        UserDefaults &defaults;
        NotificationCenter &center;
    };

    enum class Command { Open, OpenInNewWindow, GetInfo, Delete, Paste, Other };
    enum class ToolbarItem { DeleteItem, Reload, GetInfo, Other };

    // A key as the outline received it: the first character of the event
    // (0x7F is delete) and whether it repeats.
    struct KeyPress {
        char16_t character = 0;
        bool repeat = false;
    };

    // What undo needs of a domain deleted in a group.
    struct DeletionRecord {
        openNodePtr parent;
        int index = 0;
        QByteArray bytes;
        QFileDevice::Permissions permissions;
        QString path;
    };
    // A group delete toggles on what it holds: domains to delete, or the
    // records of domains deleted.
    using GroupDelete = std::variant<QList<openNodePtr>, QList<DeletionRecord>>;

    static inline const QString kPlaceholderFileName = QStringLiteral("tempEmptyFile.plist");

    // Start-up in its order: the settings' registered defaults, the move of
    // an earlier release's settings, then the application object (folders,
    // tree, placeholder file, observers). The crash-log check is the
    // browser window's, once it is shown.
    static std::unique_ptr<openDomain> launch(const Services &services, const AppearanceDefaults &appearance,
                                              const QDateTime &now);

    explicit openDomain(const Services &services, QObject *parent = nullptr);
    ~openDomain() override;

    void setScreen(BrowserScreen *screen) { m_screen = screen; }
    // Removes the placeholder file; quitting is always allowed.
    bool applicationShouldTerminate();

    // ---- folders and listing ----
    // The folder for a folder-manager (type, domain) pair; none when it is
    // missing (it is never created) or the pair is unknown.
    static std::optional<QString> folderForType(FolderLookup::FolderType type, FolderLookup::FolderDomain domain);
    static std::optional<QString> preferencesFolderPathForDomain(FolderLookup::FolderDomain domain);
    // returnFileArrayFromPath lists a preferences folder for the browser: the
    // readable ".plist" files of the folder and, recursively, of its
    // sub-folders, in the file system's listing order. A sub-folder without
    // such a file at any depth is left out; a missing or unreadable folder
    // gives an empty list.
    static FileArray returnFileArrayFromPath(const QString &path);
    // getSize formats a file size: a byte count as the information panel
    // shows it ("512 bytes", "1.50 KB", "3.20 MB", "1.00 GB"), worked out in
    // single precision as the original did, so the unit changes exactly where
    // it did there.
    static QString getSize(quint32 bytes);
    // The browser's top level: the machine folder as one group (left out when
    // machineFolder is empty: the machine has no preferences folder), the
    // registration domain's leaf, then the user's files and folders.
    static FileArray browserFileArray(const QString &machineFolder);
    // Lists both folders and builds the root of a full tree from them.
    static openNodePtr fullDomainTree();
    // Where the registration domain's document points its window.
    static QString placeholderPath();

    // ---- state ----
    openNodePtr treeData() const { return m_treeData; }
    openNodePtr cachedTreeData() const { return m_cachedTreeData; }
    bool isSearchShown() const { return m_treeData != m_cachedTreeData; }
    QString searchText() const { return m_searchText; }
    bool warnsOnDelete() const { return m_warn; }
    UndoManager &undoManager() { return m_undoManager; }
    DomainOutlineModel *model() const { return m_model; }
    QItemSelectionModel *selectionModel() const { return m_selection; }

    // ---- selection (nodes of the shown tree) ----
    // In the outline's order, top to bottom.
    QList<openNodePtr> selectedNodes() const;
    QStringList selectedPaths() const;
    void selectNodes(const QList<openNodePtr> &nodes, bool extending);
    // Rows count the outline's visible lines from 0, as the window shows them.
    void selectRow(int row);
    int rowForNode(const openNode *node) const;
    openNode *nodeAtRow(int row) const;

    // ---- commands ----
    void deleteSelections();
    // The confirmation sheet's box: checked means "do not ask again".
    void domainWarnClicked(bool boxChecked);
    // Deletes node when it is in the tree, else puts it back; registers the other.
    void undoDelete(const openNodePtr &node, int index, const openNodePtr &parent);
    void undoGroupDelete(const GroupDelete &state);
    void searchDomains(const QString &text);
    void searchCancel();
    // Lists the folders again and shows the new tree as the browser did before.
    void refresh();
    void openQuickly();
    void openQuicklyInNewWindow();
    bool validateCommand(Command command) const;
    bool validateToolbarItem(ToolbarItem item) const;
    // False when the key was handled here; true leaves it to the outline.
    bool shouldHandleKeyDown(const KeyPress &key);

    // ---- a `defaults write` line dropped or pasted ----
    // Where the enabling of Paste reads the clipboard's plain text (a null
    // string when it holds none). Without it, Paste is off.
    void setPasteboardText(std::function<QString()> text) { m_pasteboardText = std::move(text); }
    // Whether a drop of text is taken: the text begins with the command
    // (exact case) and makes an entry. A parse error refuses it as well.
    static bool willAccept(const QString &text);
    // A drop that willAccept took; the row it lands on does not matter.
    bool acceptDrop(const QString &text);
    // Unlike a drop, finds the command anywhere in the text; beeps when the
    // text makes no entry.
    void paste(const QString &text);
    // Finds or creates the domain's file (DefaultsDomainFile), lists a new
    // one in the tree, and asks the window to open the file and add entry.
    // False, after a beep, when there is no file to open.
    bool openDomainWithNewValue(const QString &domain, const PropertyDictionary &entry);

signals:
    // The window opens path as a document; registrationDomain marks the
    // registration domain's leaf, which has no file of its own.
    void openRequested(const QString &path, bool registrationDomain, bool newWindow);
    // searchCancel emptied the search text; the window's field follows.
    void searchTextCleared();
    // The window opens path as a document, as for openRequested, and once
    // the document has its content adds entry to it as a new defaults value.
    void applyDefaultsRequested(const QString &path, const PropertyDictionary &entry);

private:
    // ---- tree changes: every change goes through these, which tell the model ----
    void showRoot(const openNodePtr &root);
    void insertNode(const openNodePtr &parent, const openNodePtr &node, int index);
    void takeNode(const openNodePtr &node);
    // A change of the full tree while a search result is shown runs the search again.
    void fullTreeChanged();
    // Lists the folders again, keeping the search and the selection.
    void reloadTree();
    // The node of the full tree standing for node: itself, or after a reload
    // the new node with its path.
    openNodePtr inFullTree(const openNodePtr &node) const;
    openNodePtr sharedNode(const openNode *node) const;

    void deleteOne(const openNodePtr &node);
    void deleteSelected(const QList<openNodePtr> &nodes);
    void restoreDomain(const openNodePtr &node, int index, const openNodePtr &parent,
                       const DeletionRecord &file);
    void deleteGroup(const QList<openNodePtr> &nodes);
    void restoreGroup(const QList<DeletionRecord> &records);
    bool refusesDelete(const openNode &node) const;
    // Reads the file into a record and removes it; none (with a beep) when
    // either fails, and then the file is as it was.
    std::optional<DeletionRecord> removeDomainFile(const openNode &node);
    bool writeBack(const DeletionRecord &record);
    void open(bool newWindow);

    void observeSettings();
    void readWarnSetting();
    void createPlaceholder();
    void beep() const;
    bool isExpanded(const openNode *node) const;

    Services m_services;
    BrowserScreen *m_screen = nullptr;
    std::function<QString()> m_pasteboardText;
    openNodePtr m_treeData;       // what the browser shows: the full tree or a search result
    openNodePtr m_cachedTreeData; // the full tree
    QString m_searchText;
    QString m_placeholder;
    bool m_warn = true;
    UndoManager m_undoManager;
    DomainOutlineModel *m_model;
    QItemSelectionModel *m_selection;
};
