#pragma once

#include "domains/BrowserScreen.h"
#include "ui/WindowActions.h"

#include <QMainWindow>

class NotificationCenter;
class QToolBar;
class SearchField;
class UserDefaults;
class VXDocumentController;
class openDomain;
class openQuicklyOV;

// The domain browser: the application's main window. It shows the application
// object's tree in its outline and passes on what the user does; every
// decision (what opens, what may be deleted, what a search shows, which
// command is enabled) is openDomain's. Domains open through the document
// controller; the browser's Edit menu undoes with the application object's
// own undo manager.
//
// Closing the window only hides it: Window › Domain Browser brings it back.
class openQuicklyPanel : public QMainWindow, public BrowserScreen {
    Q_OBJECT
public:
    // With the application's windows, as in every document window.
    struct Actions : WindowActions::ApplicationActions {
        QAction *open, *openInNewWindow, *openFile, *close, *quit;
        QAction *undo, *redo, *deleteItem, *paste, *reload;
        QAction *showToolbar, *search;
        // The toolbar's own items, enabled by the toolbar's rules.
        QAction *deleteTool, *reloadTool, *infoTool;
    };

    openQuicklyPanel(openDomain &application, VXDocumentController &documents, UserDefaults &defaults,
                     NotificationCenter &center, QWidget *parent = nullptr);
    ~openQuicklyPanel() override;

    openQuicklyOV *outlineView() const { return m_outline; }
    SearchField *searchField() const { return m_searchField; }
    QToolBar *toolBar() const { return m_toolBar; }
    const Actions &actions() const { return m_actions; }

    // ---- BrowserScreen ----
    void beep() override;
    void confirmDelete(const QString &question, std::function<void(int answer)> done) override;
    void expandItem(const openNode *node) override;
    void collapseItem(const openNode *node) override;
    bool isItemExpanded(const openNode *node) const override;
    void scrollToItem(const openNode *node) override;
    void expandAll() override;
    bool isKeyWindow() const override;
    bool isApplicationActive() const override;
    bool isOutlineFocused() const override;
    void focusOutlineLater() override;
    void bringForward() override;

protected:
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void createActions();
    void createApplicationActions();
    void createMenus();
    void createToolBar();
    void showContextMenu(const QPoint &at);
    void refreshActions();
    void selectionChanged();
    void getInfo();
    void applicationStateChanged(Qt::ApplicationState state);
    // Offers the newest crash report, once, when the window is first shown.
    void checkCrashLog();

    openDomain &m_application;
    VXDocumentController &m_documents;
    UserDefaults &m_defaults;
    NotificationCenter &m_center;
    Actions m_actions{};
    openQuicklyOV *m_outline = nullptr;
    QToolBar *m_toolBar = nullptr;
    SearchField *m_searchField = nullptr;
    bool m_crashLogChecked = false;
    bool m_minimizedOnDeactivation = false;
};
