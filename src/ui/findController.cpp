#include "findController.h"

#include "domains/DomainOutlineModel.h"
#include "domains/SettingsKeys.h"
#include "domains/openDomain.h"
#include "find/FindOpening.h"
#include "find/FindOutlineModel.h"
#include "find/FindSearch.h"
#include "find/FindStrings.h"
#include "platform/FolderLookup.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "ui/AppearanceDefaults.h"
#include "ui/DomainItemDelegate.h"
#include "ui/InfoPanel.h"
#include "ui/VXDocumentController.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

// The browser's delegate draws the find rows too: both models answer the
// presentation under the same role.
static_assert(int(FindOutlineModel::PresentationRole) == int(DomainOutlineModel::PresentationRole));

findController::findController(VXDocumentController &documents, PreferencesService &service,
                               UserDefaults &defaults, NotificationCenter &center, QWidget *parent)
    : QWidget(parent, Qt::Window), m_documents(documents), m_service(service), m_defaults(defaults),
      m_center(center), m_model(new FindOutlineModel(this)), m_searchField(new QLineEdit(this)),
      m_findButton(new QPushButton(tr("Find"), this)), m_searchResultsText(new QLabel(this)),
      m_spinner(new QProgressBar(this)), m_findOV(new QTreeView(this))
{
    setWindowTitle(tr("Find in All Domains"));
    layOut();
    createActions();
    connect(m_findButton, &QPushButton::clicked, this, &findController::find);
    connect(m_searchField, &QLineEdit::returnPressed, this, &findController::find);
    connect(m_findOV, &QTreeView::doubleClicked, this, &findController::openQuickly);
    connect(m_findOV->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &findController::validateActions);
    using namespace SettingsNotifications;
    for (const QString &name :
         {VXUseCustomColorsChangedNotification, VXColorsChangedNotification, VXTextFontChangedNotification})
        center.addObserver(this, name, [this](const Notification &) { applyAppearance(); });
    applyAppearance();
    validateActions();
}

findController::~findController() = default;

void findController::layOut()
{
    m_searchField->setPlaceholderText(tr("Search keys and values"));
    m_searchField->setClearButtonEnabled(true);
    // A spinning indicator: a progress bar with no range runs busy.
    m_spinner->setRange(0, 0);
    m_spinner->setTextVisible(false);
    m_spinner->setFixedSize(16, 16);
    m_spinner->hide();
    m_findOV->setModel(m_model);
    m_findOV->setItemDelegate(new DomainItemDelegate(m_defaults, m_findOV));
    m_findOV->setUniformRowHeights(true);
    m_findOV->setAlternatingRowColors(true);
    m_findOV->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_findOV->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_findOV->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_findOV->setExpandsOnDoubleClick(false);
    m_findOV->setContextMenuPolicy(Qt::CustomContextMenu);
    m_findOV->header()->setSectionsMovable(true);
    m_findOV->header()->resizeSection(FindOutlineModel::KeyColumn, 240);
    connect(m_findOV, &QWidget::customContextMenuRequested, this, &findController::showContextMenu);

    auto *searchRow = new QHBoxLayout;
    searchRow->addWidget(m_searchField, 1);
    searchRow->addWidget(m_findButton);
    auto *resultRow = new QHBoxLayout;
    resultRow->addWidget(m_spinner);
    resultRow->addWidget(m_searchResultsText, 1);
    auto *column = new QVBoxLayout(this);
    column->addLayout(searchRow);
    column->addLayout(resultRow);
    column->addWidget(m_findOV, 1);
    resize(520, 420);
}

void findController::createActions()
{
    m_open = new QAction(tr("Open"), this);
    m_openInNewWindow = new QAction(tr("Open In New Window"), this);
    m_getInfo = new QAction(tr("Get Info"), this);
    connect(m_open, &QAction::triggered, this, &findController::openQuickly);
    connect(m_openInNewWindow, &QAction::triggered, this, &findController::openQuicklyInNewWindow);
    connect(m_getInfo, &QAction::triggered, this, &findController::getPrefInfo);
    // Return on the outline opens what is selected, as a double click does.
    auto *openKey = new QAction(m_findOV);
    openKey->setShortcuts({QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
    openKey->setShortcutContext(Qt::WidgetShortcut);
    m_findOV->addAction(openKey);
    connect(openKey, &QAction::triggered, this, &findController::openQuickly);
}

void findController::validateActions()
{
    const bool any = m_findOV->selectionModel()->hasSelection();
    m_open->setEnabled(any);
    m_getInfo->setEnabled(any);
    m_openInNewWindow->setEnabled(any && m_defaults.boolForKey(SettingsKeys::VXDocumentsUseTabs));
}

void findController::showContextMenu(const QPoint &at)
{
    validateActions();
    QMenu menu(this);
    menu.setTitle(tr("ContextMenu"));
    menu.addActions({m_open, m_openInNewWindow, m_getInfo});
    menu.exec(m_findOV->viewport()->mapToGlobal(at));
}

void findController::applyAppearance()
{
    const QFont font = SystemAppearance::listFont(m_defaults, QApplication::font(m_findOV));
    m_findOV->setFont(font);
    m_model->redrawAll();
}

void findController::find()
{
    m_findButton->setEnabled(false);
    m_spinner->show();
    // The search runs here, on the event thread; the indicator gets its paint first.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    FindSearch::Result result = FindSearch::find(m_searchField->text(), m_service, m_defaults);
    m_searchResultsText->setText(result.resultLine);
    m_findButton->setEnabled(true);
    m_model->resetRoot(std::move(result.tree));
    if (result.hits > 0) {
        const QModelIndex first = m_model->index(0, 0);
        m_findOV->selectionModel()->setCurrentIndex(first, QItemSelectionModel::ClearAndSelect |
                                                               QItemSelectionModel::Rows);
        m_findOV->scrollTo(first);
        QTimer::singleShot(0, m_findOV, [view = m_findOV] { view->setFocus(Qt::OtherFocusReason); });
    }
    m_spinner->hide();
    validateActions();
}

QList<const findNode *> findController::selectedNodes() const
{
    QList<const findNode *> nodes;
    for (const QModelIndex &index : m_findOV->selectionModel()->selectedRows(FindOutlineModel::KeyColumn))
        nodes.append(m_model->nodeAt(index));
    return nodes;
}

QString findController::preferencesFolder() const
{
    return openDomain::preferencesFolderPathForDomain(FolderLookup::kUserDomain).value_or(QString());
}

void findController::openQuickly()
{
    FindOpening::openFoundResult(selectedNodes(), preferencesFolder(),
                                 [this](const QString &path, bool newWindow) {
                                     return m_documents.openDocument(path, newWindow) != nullptr;
                                 });
}

void findController::openQuicklyInNewWindow()
{
    FindOpening::openQuicklyInNewWindow(selectedNodes(), preferencesFolder(),
                                        [this](const QString &path, bool newWindow) {
                                            return m_documents.openDocument(path, newWindow) != nullptr;
                                        });
}

void findController::getPrefInfo()
{
    const QStringList paths = FindOpening::infoPaths(selectedNodes(), preferencesFolder());
    if (!paths.isEmpty())
        InfoPanel::getInfoForFiles(paths);
}

void findController::bringFindToFront()
{
    if (!m_frameRestored) {
        restoreFrame();
        m_frameRestored = true;
    }
    show();
    raise();
    activateWindow();
    m_searchField->setFocus(Qt::OtherFocusReason);
    m_searchField->selectAll();
}

void findController::restoreFrame()
{
    // "x y width height", as the frame is stored.
    const QStringList parts = m_defaults.stringForKey(FindStrings::kFrameKey).split(QLatin1Char(' '));
    if (parts.size() != 4)
        return;
    int numbers[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        numbers[i] = parts.at(i).toInt(&ok);
        if (!ok)
            return;
    }
    if (numbers[2] > 0 && numbers[3] > 0)
        setGeometry(numbers[0], numbers[1], numbers[2], numbers[3]);
}

void findController::saveFrame()
{
    const QRect frame = geometry();
    m_defaults.setObject(PropertyList(QStringLiteral("%1 %2 %3 %4")
                                          .arg(frame.x())
                                          .arg(frame.y())
                                          .arg(frame.width())
                                          .arg(frame.height())),
                         FindStrings::kFrameKey);
}

void findController::closeEvent(QCloseEvent *event)
{
    saveFrame();
    m_center.post(FindStrings::kFindPanelDidCloseNotification);
    event->accept();
}
