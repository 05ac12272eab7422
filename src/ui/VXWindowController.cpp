// The window's parts: its pages, actions, menus, toolbar and notices, and the
// enabling of its commands, which the document decides.
#include "VXWindowController.h"

#include "document/plistDocument.h"
#include "ui/ClassPopUpDelegate.h"
#include "ui/DocumentPrinter.h"
#include "ui/InfoPanel.h"
#include "ui/NoticeBar.h"
#include "ui/OutlineItemDelegate.h"
#include "ui/PrefOV.h"
#include "ui/SearchField.h"
#include "ui/VXDocumentController.h"
#include "ui/prefController.h"
#include "domains/ApplicationSettings.h"
#include "domains/SettingsKeys.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "ui/VXTabItemBar.h"
#include "ui/WindowActions.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QHBoxLayout>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

VXWindowController::VXWindowController(VXDocumentController *controller, QWidget *parent)
    : QMainWindow(parent), m_controller(controller)
{
    setAttribute(Qt::WA_DeleteOnClose);
    resize(760, 520);
    createWidgets();
    createActions();
    createApplicationActions();
    createMenus();
    createToolBar();
    createStatusBar();
    connect(qApp, &QGuiApplication::applicationStateChanged, this, &VXWindowController::refreshActions);
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &VXWindowController::refreshActions);
    refreshActions();
}

VXWindowController::~VXWindowController()
{
    // The documents may outlive this window, and be freed while its widgets are.
    for (const Tab &tab : std::as_const(m_tabs)) {
        if (tab.document->screen() == this)
            tab.document->setScreen(nullptr);
        tab.document->disconnect(this);
        tab.document->undoManager().disconnect(this);
        tab.document->selectionModel()->disconnect(this);
    }
    qApp->disconnect(this);
    QGuiApplication::clipboard()->disconnect(this);
}

void VXWindowController::createWidgets()
{
    createBusyPage();
    m_outline = new PrefOV;
    m_delegate = new OutlineItemDelegate(this);
    m_classDelegate = new ClassPopUpDelegate(this);
    m_outline->setItemDelegate(m_delegate);
    m_outline->setItemDelegateForColumn(DocumentScreen::ClassColumn, m_classDelegate);
    m_outline->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_outline, &QWidget::customContextMenuRequested, this, &VXWindowController::showContextMenu);

    auto *documentPage = new QWidget;
    auto *documentLayout = new QVBoxLayout(documentPage);
    documentLayout->setContentsMargins(0, 0, 0, 0);
    documentLayout->setSpacing(0);
    createNotices();
    documentLayout->addWidget(m_diskNotice);
    documentLayout->addWidget(m_warningNotice);
    documentLayout->addWidget(m_outline, 1);

    m_pages = new QStackedWidget;
    m_pages->addWidget(m_busyPage);
    m_pages->addWidget(documentPage);
    createTabBar();
    auto *central = new QWidget(this);
    auto *centralLayout = new QVBoxLayout(central);
    centralLayout->setContentsMargins(0, 0, 0, 0);
    centralLayout->setSpacing(0);
    centralLayout->addWidget(m_tabBar);
    centralLayout->addWidget(m_pages, 1);
    setCentralWidget(central);

}

// The status bar holds the two warning buttons, and says when a document is read-only.
void VXWindowController::createStatusBar()
{
    for (QAction *warning : {m_actions.warnOnDelete, m_actions.warnOnDuplicates}) {
        auto *box = new QCheckBox(warning->text().remove(QLatin1Char('&')));
        box->setToolTip(warning->toolTip());
        box->setChecked(warning->isChecked());
        connect(box, &QCheckBox::clicked, warning, &QAction::trigger);
        connect(warning, &QAction::toggled, box, &QCheckBox::setChecked);
        statusBar()->addWidget(box);
    }
    m_readOnlyBadge = new QWidget;
    auto *badge = new QHBoxLayout(m_readOnlyBadge);
    badge->setContentsMargins(0, 0, 0, 0);
    const QIcon lock = QIcon::fromTheme(QStringLiteral("object-locked"));
    if (!lock.isNull()) {
        auto *lockIcon = new QLabel;
        lockIcon->setPixmap(lock.pixmap(16));
        badge->addWidget(lockIcon);
    }
    auto *readOnly = new QLabel(tr("Read Only"));
    readOnly->setToolTip(tr("This document cannot be changed: its file may not be written."));
    badge->addWidget(readOnly);
    statusBar()->addPermanentWidget(m_readOnlyBadge);
    statusBar()->setSizeGripEnabled(false);
}

void VXWindowController::createBusyPage()
{
    m_busyPage = new QWidget;
    m_busyText = new QLabel(m_busyPage);
    m_busyText->setTextFormat(Qt::PlainText);
    m_busyText->setAlignment(Qt::AlignCenter);
    m_busyIndicator = new QProgressBar(m_busyPage);
    m_busyIndicator->setRange(0, 0); // no end known: a busy indicator
    m_busyIndicator->setMaximumWidth(240);
    auto *layout = new QVBoxLayout(m_busyPage);
    layout->addStretch();
    layout->addWidget(m_busyText);
    layout->addWidget(m_busyIndicator, 0, Qt::AlignHCenter);
    layout->addStretch();
}

void VXWindowController::createNotices()
{
    const auto answered = [this](bool reload) {
        Tab *tab = tabFor(m_document);
        if (!tab)
            return;
        tab->diskChanged = false;
        if (reload)
            m_document->reloadData();
        else
            m_document->keepOwnVersion();
    };
    m_diskNotice = new NoticeBar;
    m_diskNotice->addButton(tr("Reload"), [answered] { answered(true); });
    m_diskNotice->addButton(tr("Keep"), [answered] { answered(false); });
    m_warningNotice = new NoticeBar;
    m_warningNotice->addButton(tr("Close"), [this] {
        if (Tab *tab = tabFor(m_document))
            tab->warningsClosed = true;
    });
}

void VXWindowController::createActions()
{
    Actions &a = m_actions;
    a.open = WindowActions::make(this, tr("&Open…"), QKeySequence::Open);
    a.close = WindowActions::make(this, tr("&Close"), QKeySequence::Close);
    a.closeWindow = WindowActions::make(this, tr("Close &Window"), QKeySequence::UnknownKey,
                                        QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_W));
    a.save = WindowActions::make(this, tr("&Save"), QKeySequence::Save);
    a.saveAs = WindowActions::make(this, tr("Save &As…"), QKeySequence::SaveAs,
                                   QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    a.revert = WindowActions::make(this, tr("&Revert to Saved"));
    a.quit = WindowActions::make(this, tr("&Quit"), QKeySequence::Quit);
    a.undo = WindowActions::make(this, tr("&Undo"), QKeySequence::Undo);
    a.redo = WindowActions::make(this, tr("&Redo"), QKeySequence::Redo);
    a.cut = WindowActions::make(this, tr("Cu&t"), QKeySequence::Cut);
    a.copy = WindowActions::make(this, tr("&Copy"), QKeySequence::Copy);
    a.paste = WindowActions::make(this, tr("&Paste"), QKeySequence::Paste);
    a.deleteItem = WindowActions::make(this, tr("&Delete"), QKeySequence::Delete);
    a.addLeaf = WindowActions::tool(this, tr("New &Key"), "list-add");
    a.addGroup = WindowActions::tool(this, tr("New &Dictionary"), "folder-new");
    a.addArray = WindowActions::tool(this, tr("New &Array"), "view-list-details");
    a.sort = WindowActions::make(this, tr("S&ort"));
    a.reload = WindowActions::make(this, tr("Re&load"), QKeySequence::Refresh);
    a.showToolbar = WindowActions::make(this, tr("Show &Toolbar"));
    a.showToolbar->setCheckable(true);
    a.showToolbar->setChecked(true);
    a.search = WindowActions::make(this, tr("Search"), QKeySequence::Find);
    addAction(a.search);
    a.deleteTool = WindowActions::tool(this, tr("Delete"), "edit-delete");
    a.reloadTool = WindowActions::tool(this, tr("Reload"), "view-refresh");
    createTabActions();
    createWarningActions();
    createPrintActions();

    connect(a.open, &QAction::triggered, this, [this] { m_controller->runOpenPanel(this); });
    connect(a.close, &QAction::triggered, this, [this] { closeTab(indexOfDocument(m_document)); });
    connect(a.closeWindow, &QAction::triggered, this, &QWidget::close);
    connect(a.save, &QAction::triggered, this, [this] { saveDocument(); });
    connect(a.saveAs, &QAction::triggered, this, &VXWindowController::saveDocumentAs);
    connect(a.revert, &QAction::triggered, this, &VXWindowController::revertDocumentToSaved);
    connect(a.quit, &QAction::triggered, m_controller, &VXDocumentController::quit);
    connect(a.undo, &QAction::triggered, this, [this] {
        if (m_document)
            m_document->undoManager().undo();
    });
    connect(a.redo, &QAction::triggered, this, [this] {
        if (m_document)
            m_document->undoManager().redo();
    });
    onDocument(a.cut, &plistDocument::cut);
    onDocument(a.copy, &plistDocument::copy);
    onDocument(a.paste, &plistDocument::paste);
    onDocument(a.deleteItem, &plistDocument::deleteSelections);
    onDocument(a.deleteTool, &plistDocument::deleteSelections);
    onDocument(a.addLeaf, &plistDocument::addLeaf);
    onDocument(a.addGroup, &plistDocument::addGroup);
    onDocument(a.addArray, &plistDocument::addArray);
    onDocument(a.sort, &plistDocument::sortData);
    for (QAction *reload : {a.reload, a.reloadTool}) {
        connect(reload, &QAction::triggered, this, [this] {
            if (m_document)
                m_document->reloadData();
        });
    }
}

void VXWindowController::onDocument(QAction *action, void (plistDocument::*command)())
{
    connect(action, &QAction::triggered, this, [this, command] {
        if (m_document)
            (m_document->*command)();
    });
}

void VXWindowController::createTabActions()
{
    Actions &a = m_actions;
    // Ctrl+Tab as in browsers; Ctrl+Page Down and Up where a desktop takes Ctrl+Tab.
    a.nextTab = WindowActions::make(this, tr("Select &Next Tab"), QKeySequence::NextChild);
    a.nextTab->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Tab), QKeySequence(Qt::CTRL | Qt::Key_PageDown)});
    a.previousTab = WindowActions::make(this, tr("Select &Previous Tab"), QKeySequence::PreviousChild);
    a.previousTab->setShortcuts({QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Backtab),
                                 QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Tab),
                                 QKeySequence(Qt::CTRL | Qt::Key_PageUp)});
    a.moveTabLeft = WindowActions::make(this, tr("Move Tab &Left"), QKeySequence::UnknownKey,
                                        QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_PageUp));
    a.moveTabRight = WindowActions::make(this, tr("Move Tab &Right"), QKeySequence::UnknownKey,
                                         QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_PageDown));
    const auto step = [this](int by) {
        if (m_tabs.size() > 1)
            selectDocumentAt((indexOfDocument(m_document) + by + m_tabs.size()) % m_tabs.size());
    };
    connect(a.nextTab, &QAction::triggered, this, [step] { step(1); });
    connect(a.previousTab, &QAction::triggered, this, [step] { step(-1); });
    connect(a.moveTabLeft, &QAction::triggered, this, [this] { moveCurrentTab(-1); });
    connect(a.moveTabRight, &QAction::triggered, this, [this] { moveCurrentTab(1); });
}

void VXWindowController::createPrintActions()
{
    Actions &a = m_actions;
    a.pageSetup = WindowActions::make(this, tr("Page Set&up…"));
    a.printPreview = WindowActions::make(this, tr("Print Pre&view…"));
    a.print = WindowActions::make(this, tr("&Print…"), QKeySequence::Print);
    a.printTool = WindowActions::tool(this, tr("Print"), "document-print");
    connect(a.pageSetup, &QAction::triggered, this, [this] {
        if (m_document)
            DocumentPrinter::runPageLayout(m_document, this);
    });
    connect(a.printPreview, &QAction::triggered, this, [this] {
        if (m_document)
            DocumentPrinter::printPreview(m_document, this);
    });
    for (QAction *print : {a.print, a.printTool}) {
        connect(print, &QAction::triggered, this, [this] {
            if (m_document)
                DocumentPrinter::printShowingPrintPanel(m_document, this, true);
        });
    }
}

void VXWindowController::createWarningActions()
{
    Actions &a = m_actions;
    a.warnOnDelete = WindowActions::make(this, tr("Warn Before &Deleting"));
    a.warnOnDelete->setToolTip(tr("Ask before deleting entries"));
    a.warnOnDuplicates = WindowActions::make(this, tr("Warn About D&uplicate Keys"));
    a.warnOnDuplicates->setToolTip(tr("Ask before a pasted or dropped key replaces one of the same name"));
    for (QAction *warning : {a.warnOnDelete, a.warnOnDuplicates})
        warning->setCheckable(true);
    connect(a.warnOnDelete, &QAction::triggered, this, [this](bool on) {
        ApplicationSettings(m_controller->services().store.defaults, m_controller->services().center)
            .setWarnOnDocumentDelete(on, this);
    });
    connect(a.warnOnDuplicates, &QAction::triggered, this, [this](bool on) {
        ApplicationSettings(m_controller->services().store.defaults, m_controller->services().center)
            .setWarnOnDuplicateKeys(on, this);
    });
    // Each button follows a change made elsewhere: the preferences window, another document window.
    NotificationCenter &center = m_controller->services().center;
    using namespace SettingsNotifications;
    for (const QString &name : {VXDocumentWarningChangedNotification, VXWarnOnDuplicateKeysChangedNotification}) {
        center.addObserver(this, name, [this](const Notification &notification) {
            if (notification.object != this)
                documentWarningChanged();
        });
    }
    documentWarningChanged();
}

void VXWindowController::documentWarningChanged()
{
    const UserDefaults &defaults = m_controller->services().store.defaults;
    m_actions.warnOnDelete->setChecked(defaults.boolForKey(SettingsKeys::VXWarnOnDocumentDelete));
    m_actions.warnOnDuplicates->setChecked(defaults.boolForKey(SettingsKeys::VXWarnOnDuplicateKeys));
}

void VXWindowController::createApplicationActions()
{
    Actions &a = m_actions;
    static_cast<WindowActions::ApplicationActions &>(a) = WindowActions::makeApplicationActions(this, [this] {
        const plistDocument::Services &services = m_controller->services();
        prefController::showPreferences(services.store.defaults, services.center);
    });
    connect(a.getInfo, &QAction::triggered, this, [this] {
        if (m_document)
            InfoPanel::getInfoForFiles({m_document->fileName()});
    });
    connect(a.domainBrowser, &QAction::triggered, m_controller, &VXDocumentController::domainBrowserRequested);
    connect(a.findInAllDomains, &QAction::triggered, m_controller, &VXDocumentController::findPanelRequested);
}

void VXWindowController::createMenus()
{
    const Actions &a = m_actions;
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addActions({a.open, a.close, a.closeWindow});
    file->addSeparator();
    file->addActions({a.save, a.saveAs, a.revert});
    file->addSeparator();
    file->addActions({a.pageSetup, a.printPreview, a.print});
    file->addSeparator();
    file->addAction(a.getInfo);
    file->addSeparator();
    file->addAction(a.quit);
    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    edit->addActions({a.undo, a.redo});
    edit->addSeparator();
    edit->addActions({a.cut, a.copy, a.paste, a.deleteItem});
    edit->addSeparator();
    edit->addActions({a.addLeaf, a.addGroup, a.addArray});
    edit->addSeparator();
    edit->addActions({a.sort, a.reload});
    edit->addSeparator();
    edit->addActions({a.warnOnDelete, a.warnOnDuplicates});
    edit->addSeparator();
    edit->addAction(a.findInAllDomains);
    edit->addSeparator();
    edit->addAction(a.preferences);
    QMenu *window = WindowActions::addApplicationMenus(menuBar(), a, a.showToolbar);
    window->addSeparator();
    window->addActions({a.nextTab, a.previousTab, a.moveTabLeft, a.moveTabRight});
}

void VXWindowController::createToolBar()
{
    m_toolBar = new QToolBar(tr("Toolbar"), this);
    m_toolBar->setObjectName(QStringLiteral("documentToolbar"));
    m_toolBar->setMovable(false);
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_toolBar->addActions({m_actions.addLeaf, m_actions.addGroup, m_actions.addArray});
    m_toolBar->addSeparator();
    m_toolBar->addActions({m_actions.deleteTool, m_actions.reloadTool, m_actions.printTool});
    auto *spring = new QWidget(m_toolBar);
    spring->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_toolBar->addWidget(spring);
    m_searchField = new SearchField(m_toolBar);
    m_searchField->setMaximumWidth(220);
    m_searchField->setToolTip(tr("Show only the entries whose key or value holds this text (%1)")
                                  .arg(m_actions.search->shortcut().toString(QKeySequence::NativeText)));
    connect(m_actions.search, &QAction::triggered, m_searchField, [field = m_searchField] {
        field->setFocus(Qt::ShortcutFocusReason);
        field->selectAll();
    });
    m_toolBar->addWidget(m_searchField);
    addToolBar(m_toolBar);
    connect(m_actions.showToolbar, &QAction::toggled, m_toolBar, &QToolBar::setVisible);
    connect(m_toolBar, &QToolBar::visibilityChanged, m_actions.showToolbar, [this](bool visible) {
        // Hiding the window hides the toolbar too; only the user's choice counts.
        if (isVisible())
            m_actions.showToolbar->setChecked(visible);
    });
    connect(m_searchField, &SearchField::searchRequested, this, [this](const QString &text) {
        if (m_document && !isLoading())
            m_document->searchDocument(text);
    });
    connect(m_searchField, &SearchField::searchCanceled, this, [this] {
        if (m_document && !isLoading())
            m_document->searchCancel();
    });
}

void VXWindowController::refreshTitle()
{
    if (!m_document) {
        setWindowTitle(QApplication::applicationDisplayName());
        return;
    }
    const Tab *tab = tabFor(m_document);
    setWindowFilePath(m_document->fileName().isEmpty() ? tab->path : m_document->fileName());
    const bool readOnly = !tab->loading && !m_document->canEditPlist();
    // An empty title shows the file's name with the modified mark.
    setWindowTitle(readOnly ? tr("%1[*] — Read Only").arg(displayName()) : QString());
    setWindowModified(m_document->isDocumentEdited());
    m_readOnlyBadge->setVisible(readOnly);
}

void VXWindowController::refreshActions()
{
    const bool severalTabs = m_tabs.size() > 1;
    for (QAction *tabAction : {m_actions.nextTab, m_actions.previousTab, m_actions.moveTabLeft, m_actions.moveTabRight})
        tabAction->setEnabled(severalTabs);
    if (!m_document)
        return;
    const plistDocument &document = *m_document;
    const bool ready = !isLoading();
    const auto command = [&](plistDocument::Command c) { return ready && document.validateCommand(c); };
    const auto toolItem = [&](plistDocument::ToolbarItem i) {
        return ready && document.validateToolbarItem(i);
    };
    using Command = plistDocument::Command;
    Actions &a = m_actions;
    UndoManager &undo = m_document->undoManager();
    a.undo->setText(undo.undoMenuItemTitle());
    a.redo->setText(undo.redoMenuItemTitle());
    a.undo->setEnabled(ready && document.canEditPlist() && undo.canUndo());
    a.redo->setEnabled(ready && document.canEditPlist() && undo.canRedo());
    a.save->setEnabled(command(Command::Save));
    a.revert->setEnabled(command(Command::Revert));
    a.saveAs->setEnabled(ready);
    a.cut->setEnabled(command(Command::Cut));
    a.copy->setEnabled(command(Command::Copy));
    a.paste->setEnabled(command(Command::Paste));
    a.deleteItem->setEnabled(command(Command::Delete));
    a.addLeaf->setEnabled(command(Command::AddLeaf));
    a.addGroup->setEnabled(command(Command::AddGroup));
    a.addArray->setEnabled(command(Command::AddArray));
    a.sort->setEnabled(command(Command::Sort));
    a.reload->setEnabled(command(Command::Reload));
    a.deleteTool->setEnabled(toolItem(plistDocument::ToolbarItem::DeleteItem));
    a.reloadTool->setEnabled(toolItem(plistDocument::ToolbarItem::Reload));
    a.printTool->setEnabled(toolItem(plistDocument::ToolbarItem::Print));
    for (QAction *print : {a.pageSetup, a.printPreview, a.print})
        print->setEnabled(ready);
    m_searchField->setEnabled(ready);
}

void VXWindowController::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange)
        return;
    if (isActiveWindow())
        m_controller->windowActivated(this);
    refreshActions();
}

void VXWindowController::showContextMenu(const QPoint &at)
{
    const Actions &a = m_actions;
    QMenu menu(this);
    menu.addAction(tr("Add New Dictionary"), a.addGroup, &QAction::trigger)->setEnabled(a.addGroup->isEnabled());
    menu.addAction(tr("Add New Array"), a.addArray, &QAction::trigger)->setEnabled(a.addArray->isEnabled());
    menu.addAction(tr("Add New Key"), a.addLeaf, &QAction::trigger)->setEnabled(a.addLeaf->isEnabled());
    menu.addAction(tr("Get Info"), a.getInfo, &QAction::trigger);
    menu.addSeparator();
    menu.addActions({a.cut, a.copy, a.paste, a.deleteItem});
    menu.addSeparator();
    menu.addAction(a.showToolbar);
    menu.exec(m_outline->viewport()->mapToGlobal(at));
}
