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
class QStackedWidget;
class QToolBar;
class SearchField;
class VXDocumentController;
class plistDocument;

// The window of one document: its outline, toolbar, filter field, menus and
// notices, and the sheets the document asks for. Every decision about the
// content is the document's; the window passes on what the user does, shows
// what the document asks it to show, and runs the flows that need the user's
// answer (saving, reverting, closing with edits) as sheets.
//
// The document belongs to the document controller, which also decides which
// window shows it; until its content has been read the window shows a busy
// page instead of the outline.
class VXWindowController : public QMainWindow, public DocumentScreen {
    Q_OBJECT
public:
    // With the application's windows, reached from every document window.
    struct Actions : WindowActions::ApplicationActions {
        QAction *open, *close, *save, *saveAs, *revert, *quit;
        QAction *undo, *redo, *deleteItem, *addLeaf, *addGroup, *addArray, *sort, *reload;
        QAction *showToolbar;
        // Takes the keyboard to the filter field; in no menu, named by the field's tooltip.
        QAction *search;
        // The toolbar's own items, enabled by the toolbar's rules.
        QAction *deleteTool, *reloadTool;
    };

    VXWindowController(plistDocument *document, VXDocumentController *controller, QWidget *parent = nullptr);
    ~VXWindowController() override;

    plistDocument *document() const { return m_document; }
    PrefOV *outlineView() const { return m_outline; }
    SearchField *searchField() const { return m_searchField; }
    QToolBar *toolBar() const { return m_toolBar; }
    NoticeBar *diskNotice() const { return m_diskNotice; }
    NoticeBar *warningNotice() const { return m_warningNotice; }
    const Actions &actions() const { return m_actions; }

    // ---- loading ----
    bool isLoading() const { return m_loading; }
    // The busy page, for a read that is taking a while.
    void showBusy();
    // The document holds its content now: the outline, focused.
    void showDocument();

    // ---- flows that ask the user ----
    // Saves, asking first when the file must change format or was changed by
    // another program; done gets whether it was written.
    void saveDocument(std::function<void(bool saved)> done = {});
    void saveDocumentAs();
    bool saveDocumentTo(const QString &path, PropertyListFormat format);
    void revertDocumentToSaved();
    // Asks what becomes of unsaved edits; done gets whether the window may close.
    void confirmClose(std::function<void(bool mayClose)> done);
    // Closes, the question about edits having been answered.
    void closeWithoutAsking();

    // ---- DocumentScreen ----
    void expandItem(const PListNode *node) override;
    bool isItemExpanded(const PListNode *node) const override;
    void scrollToItem(const PListNode *node) override;
    void editColumn(const PListNode *node, int column) override;
    void confirmDelete(const QString &question, std::function<void(int answer)> done) override;
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
    void createWidgets();
    void createBusyPage();
    void createActions();
    void createApplicationActions();
    void createMenus();
    void createToolBar();
    void createNotices();
    void connectDocument();
    void refreshActions();
    void refreshTitle();
    void contentAdopted();
    void showReadWarnings();
    void showContextMenu(const QPoint &at);
    void writeDocument(const std::function<void(bool)> &done);
    void showSaveError(const QString &reason);
    QString displayName() const;

    QPointer<plistDocument> m_document;
    VXDocumentController *m_controller;
    Actions m_actions{};
    QStackedWidget *m_pages = nullptr;
    QWidget *m_busyPage = nullptr;
    QLabel *m_busyText = nullptr;
    PrefOV *m_outline = nullptr;
    OutlineItemDelegate *m_delegate = nullptr;
    ClassPopUpDelegate *m_classDelegate = nullptr;
    QToolBar *m_toolBar = nullptr;
    SearchField *m_searchField = nullptr;
    NoticeBar *m_diskNotice = nullptr;
    NoticeBar *m_warningNotice = nullptr;
    bool m_loading = true;
    bool m_closeAnswered = false;
    bool m_asking = false;
};
