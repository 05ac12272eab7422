#include "VXDocumentController.h"

#include "document/DocumentReader.h"
#include "ui/VXWindowController.h"

#include <QApplication>
#include <QEventLoopLocker>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMutex>
#include <QPointer>
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
    // The windows go first: each shows, and tells, its document.
    const QList<Entry> entries = std::exchange(m_entries, {});
    for (const Entry &entry : entries) {
        delete entry.window;
        delete entry.document;
    }
}

VXWindowController *VXDocumentController::openDocument(const QString &given)
{
    const QString path = QFileInfo(given).absoluteFilePath();
    if (Entry *open = entryForPath(path)) {
        if (open->window->isVisible()) {
            open->window->raise();
            open->window->activateWindow();
        }
        return open->window;
    }
    auto *document = new plistDocument(m_services, this);
    auto *window = new VXWindowController(document, this);
    window->setWindowFilePath(path);
    connect(window, &QObject::destroyed, this, [this, window] {
        for (qsizetype i = 0; i < m_entries.size(); ++i) {
            if (m_entries[i].window != window)
                continue;
            const Entry entry = m_entries.takeAt(i);
            if (entry.load)
                entry.load->cancel();
            delete entry.document;
            return;
        }
    });
    m_entries.append({document, window, path, nullptr, nullptr});
    startLoad(m_entries.last());
    return window;
}

void VXDocumentController::openDocuments(const QStringList &paths)
{
    for (const QString &path : paths)
        openDocument(path);
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
    QTimer::singleShot(kBusyDelayMs, window, [window] {
        if (window->isLoading()) {
            window->showBusy();
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
    const QString path = entry->path;
    if (!result) {
        const QString reason = result.errorText();
        delete window; // and the document with it
        // The reason names the file and says what is wrong with it, and where.
        auto *box = new QMessageBox(QMessageBox::Warning, QApplication::applicationDisplayName(), reason,
                                    QMessageBox::Ok);
        box->setTextFormat(Qt::PlainText);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->show();
        emit openFailed(path, reason);
        return;
    }
    entry->document->adoptContent(path, std::move(result.value));
    window->showDocument();
    window->show();
    window->raise();
    window->activateWindow();
    m_openedAny = true;
    emit documentOpened(window);
}

void VXDocumentController::runOpenPanel(QWidget *parent)
{
    auto *dialog = new QFileDialog(parent ? parent->window() : nullptr, tr("Open"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setNameFilters(openFilters());
    connect(dialog, &QFileDialog::filesSelected, this, &VXDocumentController::openDocuments);
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
    QList<QPointer<VXWindowController>> edited;
    for (const Entry &entry : std::as_const(m_entries)) {
        if (!entry.load && entry.document->isDocumentEdited())
            edited.append(entry.window);
    }
    askToQuit(edited);
}

void VXDocumentController::askToQuit(QList<QPointer<VXWindowController>> edited)
{
    while (!edited.isEmpty() && !edited.first())
        edited.removeFirst();
    if (edited.isEmpty()) {
        const QList<Entry> entries = m_entries;
        for (const Entry &entry : entries)
            entry.window->closeWithoutAsking();
        QCoreApplication::quit();
        return;
    }
    const QPointer<VXWindowController> window = edited.takeFirst();
    window->confirmClose([this, edited](bool mayClose) {
        if (mayClose)
            askToQuit(edited);
    });
}
