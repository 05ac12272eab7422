// The browser window's parts: its outline, actions, menus, toolbar and
// context menu, and the enabling of its commands, which the application
// object decides.
#include "openQuicklyPanel.h"

#include "domains/DomainOutlineModel.h"
#include "domains/openDomain.h"
#include "ui/InfoPanel.h"
#include "ui/SearchField.h"
#include "ui/VXDocumentController.h"
#include "ui/openQuicklyOV.h"
#include "ui/prefController.h"
#include "ui/WindowActions.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

namespace {

using Command = openDomain::Command;
using ToolbarItem = openDomain::ToolbarItem;

} // namespace

openQuicklyPanel::openQuicklyPanel(openDomain &application, VXDocumentController &documents,
                                   UserDefaults &defaults, NotificationCenter &center, QWidget *parent)
    : QMainWindow(parent), m_application(application), m_documents(documents), m_defaults(defaults),
      m_center(center)
{
    setWindowTitle(tr("Domain Browser"));
    resize(420, 560);
    application.setScreen(this);
    application.setPasteboardText([] {
        const QMimeData *clipboard = QGuiApplication::clipboard()->mimeData();
        return clipboard && clipboard->hasText() ? clipboard->text() : QString();
    });
    m_outline = new openQuicklyOV(application, defaults, center, this);
    m_outline->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_outline, &QWidget::customContextMenuRequested, this, &openQuicklyPanel::showContextMenu);
    setCentralWidget(m_outline);
    createActions();
    createApplicationActions();
    createMenus();
    createToolBar();
    connect(&application, &openDomain::openRequested, this,
            [this](const QString &path, bool /*registrationDomain*/, bool newWindow) {
                // The registration domain's document knows itself by its file
                // name, and opens read-only.
                m_documents.openDocument(path, newWindow);
            });
    connect(&application.undoManager(), &UndoManager::changed, this, &openQuicklyPanel::refreshActions);
    connect(application.selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &openQuicklyPanel::selectionChanged);
    connect(application.model(), &QAbstractItemModel::modelReset, this, &openQuicklyPanel::refreshActions);
    connect(qApp, &QApplication::focusChanged, this, &openQuicklyPanel::refreshActions);
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &openQuicklyPanel::refreshActions);
    connect(qApp, &QGuiApplication::applicationStateChanged, this,
            &openQuicklyPanel::applicationStateChanged);
    application.selectRow(0);
    m_outline->setFocus();
    refreshActions();
}

openQuicklyPanel::~openQuicklyPanel()
{
    m_application.setScreen(nullptr);
    m_application.setPasteboardText({});
    m_application.disconnect(this);
    m_application.undoManager().disconnect(this);
    m_application.selectionModel()->disconnect(this);
    m_application.model()->disconnect(this);
    qApp->disconnect(this);
}

void openQuicklyPanel::createActions()
{
    Actions &a = m_actions;
    openDomain *app = &m_application;
    a.open = WindowActions::make(this, tr("&Open"), QKeySequence::Open);
    a.openInNewWindow = WindowActions::make(this, tr("Open In &New Window"));
    a.openFile = WindowActions::make(this, tr("Open &File…"), QKeySequence::UnknownKey,
                                     QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    a.close = WindowActions::make(this, tr("&Close"), QKeySequence::Close);
    a.quit = WindowActions::make(this, tr("&Quit"), QKeySequence::Quit);
    a.undo = WindowActions::make(this, tr("&Undo"), QKeySequence::Undo);
    a.redo = WindowActions::make(this, tr("&Redo"), QKeySequence::Redo);
    a.deleteItem = WindowActions::make(this, tr("&Delete"), QKeySequence::Delete);
    a.paste = WindowActions::make(this, tr("&Paste"), QKeySequence::Paste);
    a.reload = WindowActions::make(this, tr("Re&load"), QKeySequence::Refresh, QKeySequence(Qt::Key_F5));
    a.showToolbar = WindowActions::make(this, tr("Show &Toolbar"));
    a.showToolbar->setCheckable(true);
    a.showToolbar->setChecked(true);
    a.search = WindowActions::make(this, tr("Search Domains"), QKeySequence::Find);
    addAction(a.search);
    a.deleteTool = WindowActions::tool(this, tr("Delete"), "edit-delete");
    a.reloadTool = WindowActions::tool(this, tr("Reload"), "view-refresh");
    a.infoTool = WindowActions::tool(this, tr("Info"), "dialog-information");

    connect(a.open, &QAction::triggered, app, &openDomain::openQuickly);
    connect(a.openInNewWindow, &QAction::triggered, app, &openDomain::openQuicklyInNewWindow);
    connect(a.openFile, &QAction::triggered, this, [this] { m_documents.runOpenPanel(this); });
    connect(a.close, &QAction::triggered, this, &QWidget::close);
    connect(a.quit, &QAction::triggered, &m_documents, &VXDocumentController::quit);
    connect(a.undo, &QAction::triggered, this, [app] { app->undoManager().undo(); });
    connect(a.redo, &QAction::triggered, this, [app] { app->undoManager().redo(); });
    for (QAction *remove : {a.deleteItem, a.deleteTool})
        connect(remove, &QAction::triggered, app, &openDomain::deleteSelections);
    for (QAction *reload : {a.reload, a.reloadTool})
        connect(reload, &QAction::triggered, app, &openDomain::refresh);
    // A `defaults write` line on the clipboard applies to its domain.
    connect(a.paste, &QAction::triggered, this, [app] { app->paste(QGuiApplication::clipboard()->text()); });
}

void openQuicklyPanel::createApplicationActions()
{
    Actions &a = m_actions;
    static_cast<WindowActions::ApplicationActions &>(a) = WindowActions::makeApplicationActions(
        this, [this] { prefController::showPreferences(m_defaults, m_center); });
    for (QAction *info : {a.getInfo, a.infoTool})
        connect(info, &QAction::triggered, this, &openQuicklyPanel::getInfo);
    connect(a.domainBrowser, &QAction::triggered, this, &openQuicklyPanel::bringForward);
    connect(a.findInAllDomains, &QAction::triggered, &m_documents, &VXDocumentController::findPanelRequested);
}

void openQuicklyPanel::createMenus()
{
    const Actions &a = m_actions;
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addActions({a.open, a.openFile, a.close});
    file->addSeparator();
    file->addAction(a.getInfo);
    file->addSeparator();
    file->addAction(a.quit);
    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    edit->addActions({a.undo, a.redo});
    edit->addSeparator();
    edit->addActions({a.paste, a.deleteItem});
    edit->addSeparator();
    edit->addAction(a.reload);
    edit->addSeparator();
    edit->addAction(a.findInAllDomains);
    edit->addSeparator();
    edit->addAction(a.preferences);
    WindowActions::addApplicationMenus(menuBar(), a, a.showToolbar);
}

void openQuicklyPanel::createToolBar()
{
    m_toolBar = new QToolBar(tr("Toolbar"), this);
    m_toolBar->setObjectName(QStringLiteral("browserToolbar"));
    m_toolBar->setMovable(false);
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_toolBar->addActions({m_actions.infoTool, m_actions.deleteTool, m_actions.reloadTool});
    auto *spring = new QWidget(m_toolBar);
    spring->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_toolBar->addWidget(spring);
    m_searchField = new SearchField(m_toolBar);
    m_searchField->setPlaceholderText(tr("Search Domains"));
    m_searchField->setMinimumWidth(132);
    m_searchField->setMaximumWidth(200);
    m_searchField->setToolTip(tr("Show only the domains whose name holds this text (%1)")
                                  .arg(m_actions.search->shortcut().toString(QKeySequence::NativeText)));
    m_searchField->installEventFilter(this);
    m_toolBar->addWidget(m_searchField);
    addToolBar(m_toolBar);
    connect(m_actions.search, &QAction::triggered, m_searchField, [field = m_searchField] {
        field->setFocus(Qt::ShortcutFocusReason);
        field->selectAll();
    });
    connect(m_actions.showToolbar, &QAction::toggled, m_toolBar, &QToolBar::setVisible);
    connect(m_toolBar, &QToolBar::visibilityChanged, m_actions.showToolbar, [this](bool visible) {
        // Hiding the window hides the toolbar too; only the user's choice counts.
        if (isVisible())
            m_actions.showToolbar->setChecked(visible);
    });
    connect(m_searchField, &SearchField::searchRequested, &m_application, &openDomain::searchDomains);
    connect(m_searchField, &SearchField::searchCanceled, &m_application, &openDomain::searchCancel);
    connect(&m_application, &openDomain::searchTextCleared, m_searchField, &QLineEdit::clear);
}

void openQuicklyPanel::showContextMenu(const QPoint &at)
{
    refreshActions();
    const Actions &a = m_actions;
    QMenu menu(this);
    menu.setTitle(tr("ContextMenu"));
    menu.addAction(a.open);
    if (a.openInNewWindow->isEnabled())
        menu.addAction(a.openInNewWindow);
    menu.addAction(a.getInfo);
    menu.addSeparator();
    menu.addAction(a.paste);
    menu.addAction(a.deleteItem);
    menu.addSeparator();
    menu.addAction(a.showToolbar);
    menu.exec(m_outline->viewport()->mapToGlobal(at));
}

void openQuicklyPanel::refreshActions()
{
    const openDomain &app = m_application;
    Actions &a = m_actions;
    UndoManager &undo = m_application.undoManager();
    a.undo->setText(undo.undoMenuItemTitle());
    a.redo->setText(undo.redoMenuItemTitle());
    a.undo->setEnabled(undo.canUndo());
    a.redo->setEnabled(undo.canRedo());
    a.open->setEnabled(app.validateCommand(Command::Open));
    a.openInNewWindow->setEnabled(app.validateCommand(Command::OpenInNewWindow));
    a.getInfo->setEnabled(app.validateCommand(Command::GetInfo));
    a.deleteItem->setEnabled(app.validateCommand(Command::Delete));
    a.paste->setEnabled(app.validateCommand(Command::Paste));
    a.deleteTool->setEnabled(app.validateToolbarItem(ToolbarItem::DeleteItem));
    a.reloadTool->setEnabled(app.validateToolbarItem(ToolbarItem::Reload));
    a.infoTool->setEnabled(app.validateToolbarItem(ToolbarItem::GetInfo));
}

void openQuicklyPanel::selectionChanged()
{
    refreshActions();
    InfoPanel::getPrefInfoIfOpen(m_application.selectedPaths());
}

void openQuicklyPanel::getInfo()
{
    const QStringList paths = m_application.selectedPaths();
    if (!paths.isEmpty())
        InfoPanel::getInfoForFiles(paths);
}

bool openQuicklyPanel::eventFilter(QObject *watched, QEvent *event)
{
    // Down and Return in the search field go on to what it found, so that a
    // search, a choice and opening it need no mouse.
    if (watched == m_searchField && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (!m_application.selectionModel()->hasSelection())
                m_application.selectRow(0);
            m_outline->setFocus(Qt::TabFocusReason);
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}
