// What the document asks of its window, the sheets among it, and the notice
// of what the reader resolved on its own.
#include "VXWindowController.h"

#include "document/plistDocument.h"
#include "domains/ApplicationSettings.h"
#include "ui/DeleteSheet.h"
#include "ui/DuplicateKeySheet.h"
#include "ui/NoticeBar.h"
#include "ui/PrefOV.h"
#include "ui/Sheet.h"

#include <QApplication>
#include <QTimer>

namespace {

// The first few warnings go into the notice; the rest wait behind "Details".
constexpr qsizetype kWarningsShown = 3;

QString warningText(const ReadWarning &warning)
{
    QString text = warning.message;
    if (warning.position.isKnown())
        text += QStringLiteral(" (%1)").arg(warning.position.toString());
    if (warning.kind == ReadWarning::Kind::DuplicateKey)
        text += QCoreApplication::translate("VXWindowController", ". Saving keeps only the value shown.");
    return text;
}

} // namespace

void VXWindowController::expandItem(const PListNode *node) { m_outline->expand(m_outline->indexOf(node)); }

bool VXWindowController::isItemExpanded(const PListNode *node) const
{
    return m_outline->isExpanded(m_outline->indexOf(node));
}

void VXWindowController::scrollToItem(const PListNode *node)
{
    m_outline->scrollTo(m_outline->indexOf(node));
}

void VXWindowController::editColumn(const PListNode *node, int column)
{
    const QModelIndex index = m_outline->indexOf(node, column);
    if (!index.isValid())
        return;
    m_outline->scrollTo(index);
    m_outline->edit(index);
}

void VXWindowController::confirmDelete(const QString &question, std::function<void(int answer)> done)
{
    auto *sheet = new DeleteSheet(question, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    connect(sheet, &DeleteSheet::askAgainChanged, this, [this](bool ask) {
        const plistDocument::Services &services = m_document->services();
        ApplicationSettings(services.store.defaults, services.center).setWarnOnDocumentDelete(ask, this);
    });
    connect(sheet, &QDialog::finished, this, [done = std::move(done)](int result) {
        done(result == QDialog::Accepted ? DocumentScreen::DeleteConfirmed : DocumentScreen::DeleteCanceled);
    });
    sheet->open();
}

void VXWindowController::askDuplicateKey(const QString &key, const QString &oldValue, const QString &newValue,
                                         std::function<void(int answer, bool stopWarning)> done)
{
    auto *sheet = new DuplicateKeySheet(key, oldValue, newValue, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    connect(sheet, &QDialog::finished, this, [sheet, done = std::move(done)](int result) {
        done(result == QDialog::Accepted ? DocumentScreen::ReplaceConfirmed : DocumentScreen::ReplaceCanceled,
             sheet->stopsWarning());
    });
    sheet->open();
}

void VXWindowController::showBadPermissions()
{
    Sheet::tell(this, QMessageBox::Warning,
                tr("This document cannot be changed: you may not write to “%1”.").arg(displayName()),
                QString());
}

void VXWindowController::beep() { QApplication::beep(); }

bool VXWindowController::isKeyWindow() const { return isActiveWindow(); }

bool VXWindowController::isApplicationActive() const
{
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}

bool VXWindowController::isShowingDocument() const { return true; }

void VXWindowController::focusOutlineLater()
{
    QTimer::singleShot(0, m_outline, [outline = m_outline] { outline->setFocus(); });
}

QRect VXWindowController::visibleRect() const { return m_outline->visibleRect(); }

void VXWindowController::scrollRectToVisible(const QRect &rect) { m_outline->setVisibleRect(rect); }

void VXWindowController::showReadWarnings()
{
    const QList<ReadWarning> &warnings = m_document->readWarnings();
    if (warnings.isEmpty() || tabFor(m_document)->warningsClosed) {
        m_warningNotice->hide();
        return;
    }
    QStringList shown;
    QStringList more;
    for (const ReadWarning &warning : warnings)
        (shown.size() < kWarningsShown ? shown : more).append(warningText(warning));
    const QString heading = tr("“%1” was read with warnings:").arg(displayName());
    m_warningNotice->showNotice(heading + QLatin1Char('\n') + shown.join(QLatin1Char('\n')),
                                more.join(QLatin1Char('\n')));
}
