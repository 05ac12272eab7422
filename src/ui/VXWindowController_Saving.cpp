// Saving, reverting and closing: the flows that need the user's answer before
// the document writes or forgets anything.
#include "VXWindowController.h"

#include "document/plistDocument.h"
#include "ui/NoticeBar.h"
#include "ui/Sheet.h"
#include "ui/VXDocumentController.h"

#include <QCloseEvent>
#include <QFileDialog>

namespace {

QString xmlFilter() { return VXWindowController::tr("XML Property List (*.plist)"); }
QString binaryFilter() { return VXWindowController::tr("Binary Property List (*.plist)"); }

} // namespace

void VXWindowController::saveDocument(std::function<void(bool saved)> done)
{
    if (!done)
        done = [](bool) {};
    if (m_document->needsFormatChangeToSave()) {
        Sheet::ask(this, QMessageBox::Question,
                   tr("“%1” was read as old-style text, which cannot be written.").arg(displayName()),
                   tr("Save it as an XML property list instead?"),
                   {{tr("Save as XML"), QMessageBox::AcceptRole}, {tr("Cancel"), QMessageBox::RejectRole}},
                   [this, done](int button) {
                       if (button != 0)
                           return done(false);
                       m_document->setFileFormat(PropertyListFormat::Xml);
                       saveDocument(done);
                   });
        return;
    }
    if (m_document->fileChangedOnDisk()) {
        Sheet::ask(this, QMessageBox::Warning,
                   tr("“%1” has been changed by another program since it was read.").arg(displayName()),
                   tr("Saving replaces that version with yours."),
                   {{tr("Overwrite"), QMessageBox::AcceptRole}, {tr("Cancel"), QMessageBox::RejectRole}},
                   [this, done](int button) {
                       if (button != 0)
                           return done(false);
                       writeDocument(done);
                   });
        return;
    }
    writeDocument(done);
}

void VXWindowController::writeDocument(const std::function<void(bool)> &done)
{
    QString reason;
    if (!m_document->saveDocument(&reason)) {
        showSaveError(reason);
        done(false);
        return;
    }
    forgetDiskChange();
    done(true);
}

void VXWindowController::forgetDiskChange()
{
    m_diskNotice->hide();
    if (Tab *tab = tabFor(m_document))
        tab->diskChanged = false;
}

void VXWindowController::showSaveError(const QString &reason)
{
    Sheet::tell(this, QMessageBox::Warning, tr("“%1” could not be saved.").arg(displayName()), reason);
}

void VXWindowController::saveDocumentAs()
{
    auto *dialog = new QFileDialog(this, tr("Save As"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilters({xmlFilter(), binaryFilter()});
    dialog->selectNameFilter(m_document->fileFormat() == PropertyListFormat::Binary ? binaryFilter()
                                                                                    : xmlFilter());
    dialog->setDefaultSuffix(QStringLiteral("plist"));
    dialog->selectFile(m_document->fileName());
    connect(dialog, &QFileDialog::fileSelected, this, [this, dialog](const QString &path) {
        const bool binary = dialog->selectedNameFilter() == binaryFilter();
        saveDocumentTo(path, binary ? PropertyListFormat::Binary : PropertyListFormat::Xml);
    });
    dialog->open();
}

bool VXWindowController::saveDocumentTo(const QString &path, PropertyListFormat format)
{
    QString reason;
    if (!m_document->saveDocumentAs(path, format, &reason)) {
        showSaveError(reason);
        return false;
    }
    forgetDiskChange();
    return true;
}

void VXWindowController::revertDocumentToSaved()
{
    Sheet::ask(this, QMessageBox::Question,
               tr("Do you want to revert “%1” to the version on disk?").arg(displayName()),
               tr("Your changes will be lost."),
               {{tr("Revert"), QMessageBox::AcceptRole}, {tr("Cancel"), QMessageBox::RejectRole}},
               [this](int button) {
                   if (button == 0)
                       m_document->reloadData();
               });
}

void VXWindowController::confirmClose(plistDocument *document, std::function<void(bool mayClose)> done)
{
    if (isLoading(document) || !document->isDocumentEdited())
        return done(true);
    if (m_asking)
        return done(false); // a question is on screen already
    m_asking = true;
    selectDocument(document);
    raise();
    activateWindow();
    Sheet::ask(this, QMessageBox::Warning,
               tr("Do you want to save the changes you made to “%1”?").arg(displayName()),
               tr("Your changes will be lost if you don't save them."),
               {{tr("Save"), QMessageBox::AcceptRole},
                {tr("Don't Save"), QMessageBox::DestructiveRole},
                {tr("Cancel"), QMessageBox::RejectRole}},
               [this, done = std::move(done)](int button) {
                   m_asking = false;
                   if (button == 0)
                       saveDocument(done);
                   else
                       done(button == 1);
               });
}

void VXWindowController::closeTab(int index)
{
    if (index < 0 || index >= m_tabs.size())
        return;
    const QPointer<plistDocument> document = m_tabs[index].document;
    confirmClose(document, [this, document](bool mayClose) {
        if (mayClose && document)
            m_controller->closeDocument(document);
    });
}

void VXWindowController::closeWithoutAsking()
{
    m_closeAnswered = true;
    close();
}

void VXWindowController::closeEvent(QCloseEvent *event)
{
    QList<QPointer<plistDocument>> edited;
    for (const Tab &tab : std::as_const(m_tabs)) {
        if (!tab.loading && tab.document->isDocumentEdited())
            edited.append(tab.document);
    }
    if (m_closeAnswered || edited.isEmpty()) {
        event->accept();
        return;
    }
    event->ignore();
    closeDocuments(edited);
}

// Asks about each edited document in turn, closing its tab once answered;
// the window closes after the last, and stays with the rest when one is cancelled.
void VXWindowController::closeDocuments(QList<QPointer<plistDocument>> edited)
{
    while (!edited.isEmpty() && !edited.first())
        edited.removeFirst();
    if (edited.isEmpty())
        return closeWithoutAsking();
    const QPointer<plistDocument> document = edited.takeFirst();
    confirmClose(document, [this, document, edited](bool mayClose) {
        if (!mayClose)
            return;
        if (document)
            m_controller->closeDocument(document);
        // Closing the last tab has closed the window.
        closeDocuments(edited);
    });
}
