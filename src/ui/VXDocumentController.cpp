#include "VXDocumentController.h"

#include "document/DocumentReader.h"
#include "domains/SettingsKeys.h"
#include "platform/UserDefaults.h"
#include "ui/ClipboardPasteboard.h"
#include "ui/VXWindowController.h"

#include <QApplication>
#include <QEventLoopLocker>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMutex>
#include <QPointer>
#include <QSet>
#include <QThreadPool>
#include <QTimer>

// A read under way. The worker hands its result to the receiver, or frees it
// itself once nobody wants it any more.
struct VXDocumentController::Load {
    QMutex mutex;
    VXDocumentController *receiver = nullptr;

    void cancel()
    {
        QMutexLocker lock(&mutex);
        receiver = nullptr;
    }
};

VXDocumentController::VXDocumentController(const plistDocument::Services &services, QObject *parent)
    : QObject(parent), m_services(services)
{
}

VXDocumentController::~VXDocumentController()
{
    for (const Entry &entry : std::as_const(m_entries)) {
        if (entry.load)
            entry.load->cancel();
    }
    // The windows go first: each shows, and tells, its documents.
    const QList<Entry> entries = std::exchange(m_entries, {});
    QSet<VXWindowController *> windows;
    for (const Entry &entry : entries)
        windows.insert(entry.window);
    qDeleteAll(windows);
    for (const Entry &entry : entries)
        delete entry.document;
}

VXWindowController *VXDocumentController::openDocument(const QString &given, bool inNewWindow,
                                                       WhenReady whenReady)
{
    const QString path = QFileInfo(given).absoluteFilePath();
    if (Entry *open = entryForPath(path)) {
        VXWindowController *window = open->window;
        window->selectDocument(open->document);
        if (window->isVisible()) {
            window->raise();
            window->activateWindow();
        }
        if (whenReady && open->load)
            open->whenReady.append(std::move(whenReady));
        else if (whenReady)
            whenReady(open->document);
        return window;
    }
    auto *document = new plistDocument(m_services, this);
    document->setPasteboard(&ClipboardPasteboard::shared());
    document->setDefaultsTextHooks(m_willAcceptDefaultsText, m_importDefaultsText);
    VXWindowController *window = windowForNewDocument(inNewWindow);
    m_entries.append({document, window, path, nullptr, nullptr, {}});
    if (whenReady)
        m_entries.last().whenReady.append(std::move(whenReady));
    window->addDocument(document, path);
    startLoad(m_entries.last());
    return window;
}

void VXDocumentController::setDefaultsTextHooks(plistDocument::DefaultsTextHook willAccept,
                                                plistDocument::DefaultsTextHook import)
{
    m_willAcceptDefaultsText = std::move(willAccept);
    m_importDefaultsText = std::move(import);
}

VXWindowController *VXDocumentController::windowForNewDocument(bool inNewWindow)
{
    const bool tabs = m_services.store.defaults.boolForKey(SettingsKeys::VXDocumentsUseTabs);
    if (tabs && !inNewWindow && m_currentWindow)
        return m_currentWindow;
    auto *window = new VXWindowController(this);
    connect(window, &QObject::destroyed, this, &VXDocumentController::windowDestroyed);
    // Later documents join the newest window until the user works in another.
    m_currentWindow = window;
    return window;
}

VXWindowController *VXDocumentController::currentWindow() const { return m_currentWindow; }

void VXDocumentController::windowActivated(VXWindowController *window) { m_currentWindow = window; }

void VXDocumentController::windowDestroyed(QObject *window)
{
    for (qsizetype i = m_entries.size() - 1; i >= 0; --i) {
        if (static_cast<QObject *>(m_entries[i].window) != window)
            continue;
        const Entry entry = m_entries.takeAt(i);
        if (entry.load)
            entry.load->cancel();
        delete entry.document;
    }
}

void VXDocumentController::closeDocument(plistDocument *document)
{
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        if (m_entries[i].document != document)
            continue;
        const Entry entry = m_entries.takeAt(i);
        if (entry.load)
            entry.load->cancel();
        if (entry.window)
            entry.window->removeDocument(document);
        // The document may be the caller's caller: a sheet's answer, a save's completion.
        document->deleteLater();
        return;
    }
}

void VXDocumentController::applyDefaults(const QString &path, const PropertyDictionary &entry)
{
    openDocument(path, false, [entry](plistDocument *document) { document->addNewDefaultsValue(entry); });
}

void VXDocumentController::openDocuments(const QStringList &paths, bool inNewWindow)
{
    for (const QString &path : paths) {
        openDocument(path, inNewWindow);
        inNewWindow = false;
    }
}

void VXDocumentController::startLoad(Entry &entry)
{
    auto load = std::make_shared<Load>();
    load->receiver = this;
    entry.load = load;
    entry.keepRunning = std::make_shared<QEventLoopLocker>();
    // The preferences service answers on this thread only; the parse and the
    // tree, which take the time, are made on the pool.
    std::optional<PropertyDictionary> stored = DocumentReader::storedContent(entry.path, m_services.store);
    QThreadPool::globalInstance()->start([load, path = entry.path, stored]() {
        auto result =
            std::make_shared<ReadResult<DocumentContent>>(DocumentReader::buildContent(path, stored));
        QMutexLocker lock(&load->mutex);
        if (!load->receiver)
            return; // nobody waits for it: the tree is freed here, after the lock
        VXDocumentController *receiver = load->receiver;
        QMetaObject::invokeMethod(
            receiver, [receiver, load, result] { receiver->loadFinished(load, *result); },
            Qt::QueuedConnection);
    });
    QPointer<VXWindowController> window = entry.window;
    QPointer<plistDocument> document = entry.document;
    QTimer::singleShot(kBusyDelayMs, window, [window, document] {
        if (document && window->isLoading(document)) {
            window->showBusy(document);
            window->show();
        }
    });
}

void VXDocumentController::loadFinished(const std::shared_ptr<Load> &load,
                                        ReadResult<DocumentContent> &result)
{
    Entry *entry = entryForLoad(load.get());
    if (!entry)
        return; // its window was closed meanwhile
    entry->load.reset();
    // Released last, when a window or a message is up, so that the
    // application does not take the moment between for its end.
    const std::shared_ptr<QEventLoopLocker> keepRunning = std::move(entry->keepRunning);
    VXWindowController *window = entry->window;
    plistDocument *document = entry->document;
    const QString path = entry->path;
    if (!result) {
        const QString reason = result.errorText();
        closeDocument(document); // and its window, when it had no other
        // The reason names the file and says what is wrong with it, and where.
        auto *box = new QMessageBox(QMessageBox::Warning, QApplication::applicationDisplayName(), reason,
                                    QMessageBox::Ok);
        box->setTextFormat(Qt::PlainText);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->show();
        emit openFailed(path, reason);
        return;
    }
    const QList<WhenReady> whenReady = std::exchange(entry->whenReady, {});
    document->adoptContent(path, std::move(result.value));
    window->documentLoaded(document);
    window->show();
    window->raise();
    window->activateWindow();
    m_openedAny = true;
    emit documentOpened(window);
    // Last: what runs may ask a question on the window, or open more.
    const QPointer<plistDocument> opened = document;
    for (const WhenReady &ready : whenReady) {
        if (opened)
            ready(opened);
    }
}

void VXDocumentController::runOpenPanel(QWidget *parent)
{
    auto *dialog = new QFileDialog(parent ? parent->window() : nullptr, tr("Open"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setNameFilters(openFilters());
    connect(dialog, &QFileDialog::filesSelected, this, [this](const QStringList &paths) { openDocuments(paths); });
    dialog->open();
}

QStringList VXDocumentController::openFilters()
{
    // Property lists are told by their content, whatever their names.
    return {tr("Property Lists (*.plist *.strings *.pbxproj)"), tr("All Files (*)")};
}

QList<plistDocument *> VXDocumentController::documents() const
{
    QList<plistDocument *> documents;
    for (const Entry &entry : m_entries)
        documents.append(entry.document);
    return documents;
}

VXWindowController *VXDocumentController::windowForDocument(const plistDocument *document) const
{
    for (const Entry &entry : m_entries) {
        if (entry.document == document)
            return entry.window;
    }
    return nullptr;
}

VXDocumentController::Entry *VXDocumentController::entryForPath(const QString &path)
{
    for (Entry &entry : m_entries) {
        const QString current =
            entry.document->fileName().isEmpty() ? entry.path : entry.document->fileName();
        if (current == path)
            return &entry;
    }
    return nullptr;
}

VXDocumentController::Entry *VXDocumentController::entryForLoad(const Load *load)
{
    for (Entry &entry : m_entries) {
        if (entry.load.get() == load)
            return &entry;
    }
    return nullptr;
}

void VXDocumentController::quit()
{
    QList<QPointer<plistDocument>> edited;
    for (const Entry &entry : std::as_const(m_entries)) {
        if (!entry.load && entry.document->isDocumentEdited())
            edited.append(entry.document);
    }
    askToQuit(edited);
}

void VXDocumentController::askToQuit(QList<QPointer<plistDocument>> edited)
{
    while (!edited.isEmpty() && !edited.first())
        edited.removeFirst();
    if (edited.isEmpty()) {
        QSet<VXWindowController *> windows;
        for (const Entry &entry : std::as_const(m_entries))
            windows.insert(entry.window);
        for (VXWindowController *window : std::as_const(windows))
            window->closeWithoutAsking();
        QCoreApplication::quit();
        return;
    }
    const QPointer<plistDocument> document = edited.takeFirst();
    windowForDocument(document)->confirmClose(document, [this, edited](bool mayClose) {
        if (mayClose)
            askToQuit(edited);
    });
}
