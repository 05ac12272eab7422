#pragma once

#include "document/plistDocument.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QEventLoopLocker;
class VXWindowController;

// Opens documents and keeps the list of those open. A path is opened once:
// asking again brings its window and tab forward. This is the one place that
// decides where a document is shown: as a new tab of the document window the
// user worked in last when documents use tabs (the setting is read at each
// opening), else in a window of its own; or in a new window when asked.
//
// A document is read in two steps: what the preferences service holds, on
// this thread, then the file parsed and built into a tree on the global
// thread pool, handed back here when done. The window is made at once but
// shown only when the read is done, or with a busy page once it takes longer
// than kBusyDelayMs. Closing that window drops the read; its result is freed
// where it was made when it is not on its way here yet.
class VXDocumentController : public QObject {
    Q_OBJECT
public:
    static constexpr int kBusyDelayMs = 300;

    explicit VXDocumentController(const plistDocument::Services &services, QObject *parent = nullptr);
    ~VXDocumentController() override;

    const plistDocument::Services &services() const { return m_services; }
    // What every document opened from now on is given: the `defaults write`
    // text hooks of the domain browser.
    void setDefaultsTextHooks(plistDocument::DefaultsTextHook willAccept, plistDocument::DefaultsTextHook import);

    // Runs with the document once it holds its content; never when it fails to open.
    using WhenReady = std::function<void(plistDocument *document)>;

    // The window of the document at path, made and reading if it was not open.
    VXWindowController *openDocument(const QString &path, bool inNewWindow = false, WhenReady whenReady = {});
    // A `defaults write` entry for the domain file at path: its document is
    // opened (or brought forward) and takes the entry once it has its content.
    void applyDefaults(const QString &path, const PropertyDictionary &entry);
    // The first of paths opens in a new window when asked; the others join it.
    void openDocuments(const QStringList &paths, bool inNewWindow = false);
    // The document goes: its read stops, its tab closes. Nothing is asked.
    void closeDocument(plistDocument *document);
    // The document window the user worked in last, nullptr when none is open.
    VXWindowController *currentWindow() const;
    // A document window became the active one.
    void windowActivated(VXWindowController *window);
    // The Open dialog, over parent's window when there is one.
    void runOpenPanel(QWidget *parent);
    // The kinds of file the Open dialogs offer.
    static QStringList openFilters();

    QList<plistDocument *> documents() const;
    VXWindowController *windowForDocument(const plistDocument *document) const;
    // Whether any document has been shown since the start.
    bool openedAny() const { return m_openedAny; }

    // Asks about each edited document in turn; quits the application unless
    // the user cancels one of the questions.
    void quit();

signals:
    void documentOpened(VXWindowController *window);
    // Window › Domain Browser in a document window: the application shows its browser.
    void domainBrowserRequested();
    // Edit › Find in All Domains… in any window: the application shows its one find window.
    void findPanelRequested();
    void openFailed(const QString &path, const QString &reason);

private:
    struct Load;
    struct Entry {
        plistDocument *document;
        VXWindowController *window; // lives as long as the entry
        QString path;
        std::shared_ptr<Load> load; // while reading
        std::shared_ptr<QEventLoopLocker> keepRunning; // the application waits for the read
        QList<WhenReady> whenReady;
    };

    void startLoad(Entry &entry);
    void loadFinished(const std::shared_ptr<Load> &load, ReadResult<DocumentContent> &result);
    VXWindowController *windowForNewDocument(bool inNewWindow);
    void windowDestroyed(QObject *window);
    void askToQuit(QList<QPointer<plistDocument>> edited);
    Entry *entryForPath(const QString &path);
    Entry *entryForLoad(const Load *load);

    plistDocument::Services m_services;
    QList<Entry> m_entries;
    QPointer<VXWindowController> m_currentWindow;
    plistDocument::DefaultsTextHook m_willAcceptDefaultsText;
    plistDocument::DefaultsTextHook m_importDefaultsText;
    bool m_openedAny = false;
};
