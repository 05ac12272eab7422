// The window's parts: its pages, actions, menus, toolbar and notices, and the
// enabling of its commands, which the document decides.
#include "VXWindowController.h"

#include "document/plistDocument.h"
#include "ui/ClassPopUpDelegate.h"
#include "ui/InfoPanel.h"
#include "ui/NoticeBar.h"
#include "ui/OutlineItemDelegate.h"
#include "ui/PrefOV.h"
#include "ui/SearchField.h"
#include "ui/VXDocumentController.h"
#include "ui/prefController.h"
#include "ui/WindowActions.h"

#include <QApplication>
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

VXWindowController::VXWindowController(plistDocument *document, VXDocumentController *controller,
                                       QWidget *parent)
    : QMainWindow(parent), m_document(document), m_controller(controller)
{
    setAttribute(Qt::WA_DeleteOnClose);
    resize(760, 520);
    createWidgets();
    createActions();
    createApplicationActions();
    createMenus();
    createToolBar();
    connectDocument();
    document->setScreen(this);
    refreshTitle();
    refreshActions();
}

VXWindowController::~VXWindowController()
{
    // The document may outlive this window, and be freed while its widgets are.
    if (!m_document)
        return;
    if (m_document->screen() == this)
        m_document->setScreen(nullptr);
    m_document->disconnect(this);
    m_document->undoManager().disconnect(this);
    m_document->selectionModel()->disconnect(this);
    qApp->disconnect(this);
}

void VXWindowController::createWidgets()
{
    createBusyPage();
    m_outline = new PrefOV;
    m_outline->setDocument(m_document);
    m_delegate = new OutlineItemDelegate(this);
    m_classDelegate = new ClassPopUpDelegate(this);
    m_delegate->setDocument(m_document);
    m_classDelegate->setDocument(m_document);
    m_outline->setItemDelegate(m_delegate);
    m_outline->setItemDelegateForColumn(DocumentScreen::ClassColumn, m_classDelegate);
    m_outline->header()->resizeSection(DocumentScreen::KeyColumn, 280);
    m_outline->header()->resizeSection(DocumentScreen::ClassColumn, 100);
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

    m_pages = new QStackedWidget(this);
    m_pages->addWidget(m_busyPage);
    m_pages->addWidget(documentPage);
    setCentralWidget(m_pages);

    // The status bar shows only for a read-only document, and says so.
    const QIcon lock = QIcon::fromTheme(QStringLiteral("object-locked"));
    if (!lock.isNull()) {
        auto *lockIcon = new QLabel;
        lockIcon->setPixmap(lock.pixmap(16));
        statusBar()->addPermanentWidget(lockIcon);
    }
    auto *readOnly = new QLabel(tr("Read Only"));
    readOnly->setToolTip(tr("This document cannot be changed: its file may not be written."));
    statusBar()->addPermanentWidget(readOnly);
    statusBar()->setSizeGripEnabled(false);
}

void VXWindowController::createBusyPage()
{
    m_busyPage = new QWidget;
    m_busyText = new QLabel(m_busyPage);
    m_busyText->setTextFormat(Qt::PlainText);
    m_busyText->setAlignment(Qt::AlignCenter);
    auto *busy = new QProgressBar(m_busyPage);
    busy->setRange(0, 0); // no end known: a busy indicator
    busy->setMaximumWidth(240);
    auto *layout = new QVBoxLayout(m_busyPage);
    layout->addStretch();
    layout->addWidget(m_busyText);
    layout->addWidget(busy, 0, Qt::AlignHCenter);
    layout->addStretch();
}

void VXWindowController::createNotices()
{
    m_diskNotice = new NoticeBar;
    m_diskNotice->addButton(tr("Reload"), [this] {
        if (m_document)
            m_document->reloadData();
    });
    m_diskNotice->addButton(tr("Keep"), [this] {
        if (m_document)
            m_document->keepOwnVersion();
    });
    m_warningNotice = new NoticeBar;
    m_warningNotice->addButton(tr("Close"), [] {});
}

void VXWindowController::createActions()
{
    Actions &a = m_actions;
    a.open = WindowActions::make(this, tr("&Open…"), QKeySequence::Open);
    a.close = WindowActions::make(this, tr("&Close"), QKeySequence::Close);
    a.save = WindowActions::make(this, tr("&Save"), QKeySequence::Save);
    a.saveAs = WindowActions::make(this, tr("Save &As…"), QKeySequence::SaveAs,
                                   QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    a.revert = WindowActions::make(this, tr("&Revert to Saved"));
    a.quit = WindowActions::make(this, tr("&Quit"), QKeySequence::Quit);
    a.undo = WindowActions::make(this, tr("&Undo"), QKeySequence::Undo);
    a.redo = WindowActions::make(this, tr("&Redo"), QKeySequence::Redo);
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

    connect(a.open, &QAction::triggered, this, [this] { m_controller->runOpenPanel(this); });
    connect(a.close, &QAction::triggered, this, &QWidget::close);
    connect(a.save, &QAction::triggered, this, [this] { saveDocument(); });
    connect(a.saveAs, &QAction::triggered, this, &VXWindowController::saveDocumentAs);
    connect(a.revert, &QAction::triggered, this, &VXWindowController::revertDocumentToSaved);
    connect(a.quit, &QAction::triggered, m_controller, &VXDocumentController::quit);
    connect(a.undo, &QAction::triggered, this, [this] { m_document->undoManager().undo(); });
    connect(a.redo, &QAction::triggered, this, [this] { m_document->undoManager().redo(); });
    for (QAction *remove : {a.deleteItem, a.deleteTool})
        connect(remove, &QAction::triggered, m_document, &plistDocument::deleteSelections);
    connect(a.addLeaf, &QAction::triggered, m_document, &plistDocument::addLeaf);
    connect(a.addGroup, &QAction::triggered, m_document, &plistDocument::addGroup);
    connect(a.addArray, &QAction::triggered, m_document, &plistDocument::addArray);
    connect(a.sort, &QAction::triggered, m_document, &plistDocument::sortData);
    for (QAction *reload : {a.reload, a.reloadTool})
        connect(reload, &QAction::triggered, m_document, &plistDocument::reloadData);
}

void VXWindowController::createApplicationActions()
{
    Actions &a = m_actions;
    static_cast<WindowActions::ApplicationActions &>(a) = WindowActions::makeApplicationActions(this, [this] {
        const plistDocument::Services &services = m_document->services();
        prefController::showPreferences(services.store.defaults, services.center);
    });
    connect(a.getInfo, &QAction::triggered, this,
            [this] { InfoPanel::getInfoForFiles({m_document->fileName()}); });
    connect(a.domainBrowser, &QAction::triggered, m_controller, &VXDocumentController::domainBrowserRequested);
}

void VXWindowController::createMenus()
{
    const Actions &a = m_actions;
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addActions({a.open, a.close});
    file->addSeparator();
    file->addActions({a.save, a.saveAs, a.revert});
    file->addSeparator();
    file->addAction(a.getInfo);
    file->addSeparator();
    file->addAction(a.quit);
    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    edit->addActions({a.undo, a.redo});
    edit->addSeparator();
    edit->addAction(a.deleteItem);
    edit->addSeparator();
    edit->addActions({a.addLeaf, a.addGroup, a.addArray});
    edit->addSeparator();
    edit->addActions({a.sort, a.reload});
    edit->addSeparator();
    edit->addAction(a.preferences);
    WindowActions::addApplicationMenus(menuBar(), a, a.showToolbar);
}

void VXWindowController::createToolBar()
{
    m_toolBar = new QToolBar(tr("Toolbar"), this);
    m_toolBar->setObjectName(QStringLiteral("documentToolbar"));
    m_toolBar->setMovable(false);
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_toolBar->addActions({m_actions.addLeaf, m_actions.addGroup, m_actions.addArray});
    m_toolBar->addSeparator();
    m_toolBar->addActions({m_actions.deleteTool, m_actions.reloadTool});
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
    connect(m_searchField, &SearchField::searchRequested, m_document, &plistDocument::searchDocument);
    connect(m_searchField, &SearchField::searchCanceled, m_document, &plistDocument::searchCancel);
}

void VXWindowController::connectDocument()
{
    plistDocument *document = m_document;
    connect(document, &plistDocument::editedChanged, this, &VXWindowController::refreshTitle);
    connect(document, &plistDocument::fileNameChanged, this, &VXWindowController::refreshTitle);
    connect(document, &plistDocument::contentAdopted, this, &VXWindowController::contentAdopted);
    connect(document, &plistDocument::changedOnDisk, this, [this] {
        m_diskNotice->showNotice(tr("“%1” was changed by another program. Reload it, losing your changes, "
                                    "or keep your version?")
                                     .arg(displayName()));
    });
    connect(&document->undoManager(), &UndoManager::changed, this, &VXWindowController::refreshActions);
    connect(document->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &VXWindowController::refreshActions);
    connect(qApp, &QGuiApplication::applicationStateChanged, this, &VXWindowController::refreshActions);
}

void VXWindowController::contentAdopted()
{
    // A reload or revert shows the whole tree again: the filter applies anew.
    if (!m_searchField->text().isEmpty())
        m_document->searchDocument(m_searchField->text());
    m_diskNotice->hide();
    showReadWarnings();
    refreshTitle();
    refreshActions();
}

void VXWindowController::showBusy()
{
    m_busyText->setText(tr("Opening “%1”…").arg(displayName()));
    m_pages->setCurrentWidget(m_busyPage);
}

void VXWindowController::showDocument()
{
    m_loading = false;
    m_pages->setCurrentIndex(1);
    m_outline->setFocus();
    m_outline->scrollTo(m_outline->currentIndex());
    refreshTitle();
    refreshActions();
}

QString VXWindowController::displayName() const
{
    // While the content is being read the document has no file yet.
    const bool named = m_document && !m_document->fileName().isEmpty();
    return QFileInfo(named ? m_document->fileName() : windowFilePath()).fileName();
}

void VXWindowController::refreshTitle()
{
    if (!m_document)
        return;
    if (!m_document->fileName().isEmpty())
        setWindowFilePath(m_document->fileName());
    const bool readOnly = !m_loading && !m_document->canEditPlist();
    // An empty title shows the file's name with the modified mark.
    setWindowTitle(readOnly ? tr("%1[*] — Read Only").arg(displayName()) : QString());
    setWindowModified(m_document->isDocumentEdited());
    statusBar()->setVisible(readOnly);
}

void VXWindowController::refreshActions()
{
    if (!m_document)
        return;
    const plistDocument &document = *m_document;
    const bool ready = !m_loading;
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
    a.deleteItem->setEnabled(command(Command::Delete));
    a.addLeaf->setEnabled(command(Command::AddLeaf));
    a.addGroup->setEnabled(command(Command::AddGroup));
    a.addArray->setEnabled(command(Command::AddArray));
    a.sort->setEnabled(command(Command::Sort));
    a.reload->setEnabled(command(Command::Reload));
    a.deleteTool->setEnabled(toolItem(plistDocument::ToolbarItem::DeleteItem));
    a.reloadTool->setEnabled(toolItem(plistDocument::ToolbarItem::Reload));
    m_searchField->setEnabled(ready);
}

void VXWindowController::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange)
        refreshActions();
}

void VXWindowController::showContextMenu(const QPoint &at)
{
    QMenu menu(this);
    menu.addAction(tr("Add New Dictionary"), m_document, &plistDocument::addGroup)
        ->setEnabled(m_actions.addGroup->isEnabled());
    menu.addAction(tr("Add New Array"), m_document, &plistDocument::addArray)
        ->setEnabled(m_actions.addArray->isEnabled());
    menu.addAction(tr("Add New Key"), m_document, &plistDocument::addLeaf)
        ->setEnabled(m_actions.addLeaf->isEnabled());
    menu.addSeparator();
    menu.addAction(tr("Delete"), m_document, &plistDocument::deleteSelections)
        ->setEnabled(m_actions.deleteItem->isEnabled());
    menu.addSeparator();
    menu.addAction(m_actions.showToolbar);
    menu.exec(m_outline->viewport()->mapToGlobal(at));
}
