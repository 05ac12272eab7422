// The window's documents as tabs: adding, showing, moving and removing them.
// One outline serves every tab, so the document left keeps what it showed
// (selection, expanded rows, scroll position) and gets it back on return.
#include "VXWindowController.h"

#include "document/plistDocument.h"
#include "ui/ClassPopUpDelegate.h"
#include "ui/NoticeBar.h"
#include "ui/OutlineItemDelegate.h"
#include "ui/PrefOV.h"
#include "ui/SearchField.h"
#include "ui/VXDocumentController.h"
#include "ui/VXTabItemBar.h"

#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QStackedWidget>

void VXWindowController::createTabBar()
{
    const plistDocument::Services &services = m_controller->services();
    m_tabBar = new VXTabItemBar(services.store.defaults, services.center);
    connect(m_tabBar, &VXTabItemBar::tabSelected, this, &VXWindowController::selectDocumentAt);
    connect(m_tabBar, &VXTabItemBar::tabCloseRequested, this, &VXWindowController::closeTab);
    connect(m_tabBar, &VXTabItemBar::tabMoved, this, [this](int from, int to) {
        m_tabs.move(from, to);
        refreshActions();
    });
}

QList<plistDocument *> VXWindowController::documents() const
{
    QList<plistDocument *> documents;
    for (const Tab &tab : m_tabs)
        documents.append(tab.document);
    return documents;
}

int VXWindowController::indexOfDocument(const plistDocument *document) const
{
    for (qsizetype i = 0; i < m_tabs.size(); ++i) {
        if (m_tabs[i].document == document)
            return int(i);
    }
    return -1;
}

VXWindowController::Tab *VXWindowController::tabFor(const plistDocument *document)
{
    const int index = indexOfDocument(document);
    return index < 0 ? nullptr : &m_tabs[index];
}

const VXWindowController::Tab *VXWindowController::tabFor(const plistDocument *document) const
{
    const int index = indexOfDocument(document);
    return index < 0 ? nullptr : &m_tabs[index];
}

void VXWindowController::addDocument(plistDocument *document, const QString &path)
{
    m_tabs.append({document, path});
    connectDocument(document);
    const int index = int(m_tabs.size() - 1);
    m_tabBar->createNewTabWithTitle(tabTitle(document), index);
    m_tabBar->setTabToolTip(index, path);
    selectDocumentAt(index);
}

void VXWindowController::selectDocument(plistDocument *document) { selectDocumentAt(indexOfDocument(document)); }

void VXWindowController::selectDocumentAt(int index)
{
    if (index < 0 || index >= m_tabs.size())
        return;
    plistDocument *document = m_tabs[index].document;
    m_tabBar->setSelectedDocument(index);
    if (document == m_document)
        return;
    leaveCurrentDocument();
    m_document = document;
    showCurrentDocument();
}

void VXWindowController::leaveCurrentDocument()
{
    if (!m_document)
        return;
    if (!isLoading())
        m_document->saveCurrentSettings();
    m_document->setScreen(nullptr);
    m_document->undoManager().disconnect(this);
    m_document->selectionModel()->disconnect(this);
}

void VXWindowController::showCurrentDocument()
{
    plistDocument *document = m_document;
    document->setScreen(this);
    m_outline->setDocument(document);
    m_delegate->setDocument(document);
    m_classDelegate->setDocument(document);
    connect(&document->undoManager(), &UndoManager::changed, this, &VXWindowController::refreshActions);
    connect(document->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &VXWindowController::refreshActions);
    showCurrentPage();
}

// The outline of a read document, the busy page of one still being read.
void VXWindowController::showCurrentPage()
{
    const Tab *tab = tabFor(m_document);
    if (tab->loading) {
        m_busyText->setText(tab->busyShown ? tr("Opening “%1”…").arg(displayName()) : QString());
        m_busyIndicator->setVisible(tab->busyShown);
        m_pages->setCurrentWidget(m_busyPage);
        m_diskNotice->hide();
        m_warningNotice->hide();
    } else {
        m_pages->setCurrentIndex(1);
        m_document->windowControllerDidLoadNib();
        // The filter text applies to every tab; a document filtered by it already keeps its rows.
        if (m_searchField->text() != m_document->lastSearchValue())
            m_document->searchDocument(m_searchField->text());
        m_diskNotice->setVisible(tab->diskChanged);
        showReadWarnings();
        if (isActiveWindow() || !isVisible())
            m_outline->setFocus();
    }
    refreshTitle();
    refreshActions();
}

void VXWindowController::removeDocument(plistDocument *document)
{
    const int index = indexOfDocument(document);
    if (index < 0)
        return;
    if (document == m_document) {
        leaveCurrentDocument();
        m_document = nullptr;
        m_outline->setDocument(nullptr);
        m_delegate->setDocument(nullptr);
        m_classDelegate->setDocument(nullptr);
    }
    document->disconnect(this);
    if (document->screen() == this)
        document->setScreen(nullptr);
    m_tabs.removeAt(index);
    m_tabBar->removeTabView(index);
    if (m_tabs.isEmpty()) {
        closeWithoutAsking();
        return;
    }
    if (!m_document) {
        // The tab to the right takes the place of the one closed, as in browsers.
        const int next = int(std::min<qsizetype>(index, m_tabs.size() - 1));
        m_tabBar->setSelectedDocument(next);
        m_document = m_tabs[next].document;
        showCurrentDocument();
    }
    refreshActions();
}

void VXWindowController::moveCurrentTab(int step)
{
    const int from = indexOfDocument(m_document);
    const int to = from + step;
    if (from < 0 || to < 0 || to >= m_tabs.size())
        return;
    m_tabBar->moveTab(from, to);
    m_tabs.move(from, to);
    refreshActions();
}

void VXWindowController::updateTabName(plistDocument *document, const QString &title)
{
    const int index = indexOfDocument(document);
    if (index < 0)
        return;
    m_tabBar->updateTabName(index, title);
    m_tabBar->setTabToolTip(index, document->fileName());
}

void VXWindowController::refreshTab(plistDocument *document)
{
    const int index = indexOfDocument(document);
    if (index >= 0)
        m_tabBar->setTabModified(index, document->isDocumentEdited());
    if (document == m_document)
        refreshTitle();
}

void VXWindowController::connectDocument(plistDocument *document)
{
    connect(document, &plistDocument::editedChanged, this, [this, document] { refreshTab(document); });
    connect(document, &plistDocument::fileNameChanged, this, [this, document] {
        updateTabName(document, tabTitle(document));
        refreshTab(document);
    });
    connect(document, &plistDocument::contentAdopted, this, [this, document] { contentAdopted(document); });
    connect(document, &plistDocument::changedOnDisk, this, [this, document] {
        tabFor(document)->diskChanged = true;
        if (document != m_document)
            return;
        m_diskNotice->showNotice(tr("“%1” was changed by another program. Reload it, losing your changes, "
                                    "or keep your version?")
                                     .arg(displayName()));
    });
}

void VXWindowController::contentAdopted(plistDocument *document)
{
    Tab *tab = tabFor(document);
    tab->diskChanged = false;
    tab->warningsClosed = false;
    if (document != m_document || tab->loading)
        return;
    // A reload or revert shows the whole tree again: the filter applies anew.
    if (!m_searchField->text().isEmpty())
        m_document->searchDocument(m_searchField->text());
    m_diskNotice->hide();
    showReadWarnings();
    refreshTitle();
    refreshActions();
}

bool VXWindowController::isLoading() const { return !m_document || isLoading(m_document); }

bool VXWindowController::isLoading(const plistDocument *document) const
{
    const Tab *tab = tabFor(document);
    return !tab || tab->loading;
}

void VXWindowController::showBusy(plistDocument *document)
{
    if (Tab *tab = tabFor(document)) {
        tab->busyShown = true;
        if (document == m_document)
            showCurrentPage();
    }
}

void VXWindowController::documentLoaded(plistDocument *document)
{
    Tab *tab = tabFor(document);
    if (!tab)
        return;
    tab->loading = false;
    m_tabBar->updateTabName(indexOfDocument(document), tabTitle(document));
    if (document == m_document)
        showCurrentPage();
}

QString VXWindowController::displayName() const { return displayName(m_document); }

QString VXWindowController::displayName(const plistDocument *document) const
{
    const Tab *tab = tabFor(document);
    if (!tab)
        return {};
    // While the content is being read the document has no file yet.
    const QString file = document->fileName().isEmpty() ? tab->path : document->fileName();
    return QFileInfo(file).fileName();
}

QString VXWindowController::tabTitle(const plistDocument *document) const
{
    // Nearly every document is a ".plist": a narrow tab shows more of the name
    // without it. The tooltip has the whole path.
    const QString name = displayName(document);
    const QString suffix = QStringLiteral(".plist");
    return name.endsWith(suffix, Qt::CaseInsensitive) && name.size() > suffix.size() ? name.chopped(suffix.size())
                                                                                     : name;
}
