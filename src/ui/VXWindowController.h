#pragma once

#include "document/DocumentScreen.h"
#include "platform/PropertyListSerialization.h"
#include "ui/WindowActions.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>

class ClassPopUpDelegate;
class NoticeBar;
class OutlineItemDelegate;
class PrefOV;
class QLabel;
class QProgressBar;
class QStackedWidget;
class QToolBar;
class SearchField;
class VXDocumentController;
class VXTabItemBar;
class plistDocument;

// A document window: the tab bar, one outline, the toolbar with its filter
// field, menus and notices, and the sheets the documents ask for. It shows
// several documents as tabs (or one, when documents do not use tabs), one at
// a time in the same outline: leaving a tab keeps that document's view state,
// coming back puts it back. Every decision about the content is the
// document's; the window passes on what the user does, shows what the
// document asks it to show, and runs the flows that need the user's answer
// (saving, reverting, closing with edits) as sheets.
//
// The documents belong to the document controller, which also decides which
// window shows them; until a document's content has been read its tab shows
// a busy page instead of the outline.
class VXWindowController : public QMainWindow, public DocumentScreen {
    Q_OBJECT
public:
    // With the application's windows, reached from every document window.
    struct Actions : WindowActions::ApplicationActions {
        QAction *open, *close, *closeWindow, *save, *saveAs, *revert, *quit;
        QAction *pageSetup, *printPreview, *print;
        QAction *undo, *redo, *cut, *copy, *paste, *deleteItem, *addLeaf, *addGroup, *addArray, *sort, *reload;
        QAction *showToolbar;
        // The tabs: the next and previous one, and moving the current one.
        QAction *nextTab, *previousTab, *moveTabLeft, *moveTabRight;
        // The two warning buttons, in step with the preferences window.
        QAction *warnOnDelete, *warnOnDuplicates;
        // Takes the keyboard to the filter field; in no menu, named by the field's tooltip.
        QAction *search;
        // The toolbar's own items, enabled by the toolbar's rules.
        QAction *deleteTool, *reloadTool, *printTool;
    };

    explicit VXWindowController(VXDocumentController *controller, QWidget *parent = nullptr);
    ~VXWindowController() override;

    // The document shown now.
    plistDocument *document() const { return m_document; }
    // The window's documents in tab order.
    QList<plistDocument *> documents() const;
    int indexOfDocument(const plistDocument *document) const;
    VXTabItemBar *tabBar() const { return m_tabBar; }
    PrefOV *outlineView() const { return m_outline; }
    SearchField *searchField() const { return m_searchField; }
    QToolBar *toolBar() const { return m_toolBar; }
    NoticeBar *diskNotice() const { return m_diskNotice; }
    NoticeBar *warningNotice() const { return m_warningNotice; }
    const Actions &actions() const { return m_actions; }

    // ---- the documents ----
    // A new tab for document, read from path, shown at once.
    void addDocument(plistDocument *document, const QString &path);
    // Shows the document's tab, keeping the view state of the one left.
    void selectDocument(plistDocument *document);
    void selectDocumentAt(int index);
    // The document has gone (closed, or its read failed); with the last one the window closes.
    void removeDocument(plistDocument *document);
    // Save As gave the document a new file.
    void updateTabName(plistDocument *document, const QString &title);

    // ---- loading ----
    // Whether the document shown is still being read.
    bool isLoading() const;
    bool isLoading(const plistDocument *document) const;
    // The busy page, for a read that is taking a while.
    void showBusy(plistDocument *document);
    // The document holds its content now: the outline, focused, if its tab is shown.
    void documentLoaded(plistDocument *document);

    // ---- flows that ask the user ----
    // Saves, asking first when the file must change format or was changed by
    // another program; done gets whether it was written.
    void saveDocument(std::function<void(bool saved)> done = {});
    void saveDocumentAs();
    bool saveDocumentTo(const QString &path, PropertyListFormat format);
    void revertDocumentToSaved();
    // Asks what becomes of the document's unsaved edits, showing its tab; done
    // gets whether it may close.
    void confirmClose(plistDocument *document, std::function<void(bool mayClose)> done);
    // Closes the tab, asking first when its document is edited.
    void closeTab(int index);
    // Closes the window, the questions about edits having been answered.
    void closeWithoutAsking();

    // ---- DocumentScreen ----
    void expandItem(const PListNode *node) override;
    bool isItemExpanded(const PListNode *node) const override;
    void scrollToItem(const PListNode *node) override;
    void editColumn(const PListNode *node, int column) override;
    void confirmDelete(const QString &question, std::function<void(int answer)> done) override;
    void askDuplicateKey(const QString &key, const QString &oldValue, const QString &newValue,
                         std::function<void(int answer, bool stopWarning)> done) override;
    void showBadPermissions() override;
    void beep() override;
    bool isKeyWindow() const override;
    bool isApplicationActive() const override;
    bool isShowingDocument() const override;
    void focusOutlineLater() override;
    QRect visibleRect() const override;
    void scrollRectToVisible(const QRect &rect) override;

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct Tab {
        plistDocument *document;
        QString path;              // as opened, until the document has its file
        bool loading = true;
        bool busyShown = false;
        bool diskChanged = false;  // the notice about another program's change is due
        bool warningsClosed = false;
    };

    void createWidgets();
    void createTabBar();
    void createBusyPage();
    void createActions();
    void createTabActions();
    void createWarningActions();
    void createPrintActions();
    void createApplicationActions();
    void createMenus();
    void createToolBar();
    void createNotices();
    void createStatusBar();
    void connectDocument(plistDocument *document);
    void leaveCurrentDocument();
    void showCurrentDocument();
    void showCurrentPage();
    void refreshTab(plistDocument *document);
    void documentWarningChanged();
    void closeDocuments(QList<QPointer<plistDocument>> edited);
    void moveCurrentTab(int step);
    Tab *tabFor(const plistDocument *document);
    const Tab *tabFor(const plistDocument *document) const;
    void refreshActions();
    void refreshTitle();
    void contentAdopted(plistDocument *document);
    void showReadWarnings();
    void showContextMenu(const QPoint &at);
    void writeDocument(const std::function<void(bool)> &done);
    void showSaveError(const QString &reason);
    void forgetDiskChange();
    QString displayName() const;
    QString displayName(const plistDocument *document) const;
    QString tabTitle(const plistDocument *document) const;
    // The document shown runs command; nothing happens while there is none.
    void onDocument(QAction *action, void (plistDocument::*command)());

    QList<Tab> m_tabs; // the window's documents, in tab order
    QPointer<plistDocument> m_document; // the one shown
    VXDocumentController *m_controller;
    VXTabItemBar *m_tabBar = nullptr;
    Actions m_actions{};
    QStackedWidget *m_pages = nullptr;
    QWidget *m_busyPage = nullptr;
    QLabel *m_busyText = nullptr;
    QProgressBar *m_busyIndicator = nullptr;
    PrefOV *m_outline = nullptr;
    OutlineItemDelegate *m_delegate = nullptr;
    ClassPopUpDelegate *m_classDelegate = nullptr;
    QToolBar *m_toolBar = nullptr;
    SearchField *m_searchField = nullptr;
    NoticeBar *m_diskNotice = nullptr;
    NoticeBar *m_warningNotice = nullptr;
    QWidget *m_readOnlyBadge = nullptr;
    bool m_closeAnswered = false;
    bool m_asking = false;
};
