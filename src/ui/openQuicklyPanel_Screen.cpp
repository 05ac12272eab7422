// What the application object asks of the browser window, the delete sheet,
// the window's comings and goings with the application's activation, and the
// crash-log check once the window is shown.
#include "openQuicklyPanel.h"

#include "crash/CrashLog.h"
#include "domains/SettingsKeys.h"
#include "domains/openDomain.h"
#include "platform/UserDefaults.h"
#include "ui/CrashReportDialog.h"
#include "ui/DeleteSheet.h"
#include "ui/InfoPanel.h"
#include "ui/openQuicklyOV.h"

#include <QApplication>
#include <QDesktopServices>
#include <QTimer>

void openQuicklyPanel::beep()
{
    QApplication::beep();
}

void openQuicklyPanel::confirmDelete(const QString &question, std::function<void(int answer)> done)
{
    auto *sheet = new DeleteSheet(question, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    connect(sheet, &DeleteSheet::askAgainChanged, this,
            [this](bool ask) { m_application.domainWarnClicked(!ask); });
    connect(sheet, &QDialog::finished, this, [this, done = std::move(done)](int result) {
        done(result == QDialog::Accepted ? DeleteConfirmed : DeleteCanceled);
        bringForward();
        focusOutlineLater();
    });
    sheet->open();
}

void openQuicklyPanel::expandItem(const openNode *node)
{
    m_outline->expand(m_outline->indexOf(node));
}

void openQuicklyPanel::collapseItem(const openNode *node)
{
    m_outline->collapse(m_outline->indexOf(node));
}

bool openQuicklyPanel::isItemExpanded(const openNode *node) const
{
    return m_outline->isExpanded(m_outline->indexOf(node));
}

void openQuicklyPanel::scrollToItem(const openNode *node)
{
    m_outline->scrollTo(m_outline->indexOf(node));
}

void openQuicklyPanel::expandAll()
{
    m_outline->expandAll();
}

bool openQuicklyPanel::isKeyWindow() const
{
    return isActiveWindow();
}

bool openQuicklyPanel::isApplicationActive() const
{
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}

bool openQuicklyPanel::isOutlineFocused() const
{
    return m_outline->hasFocus();
}

void openQuicklyPanel::focusOutlineLater()
{
    QTimer::singleShot(0, m_outline, [outline = m_outline] { outline->setFocus(); });
}

void openQuicklyPanel::bringForward()
{
    m_minimizedOnDeactivation = false;
    setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    show();
    raise();
    activateWindow();
}

void openQuicklyPanel::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (!std::exchange(m_crashLogChecked, true))
        QTimer::singleShot(0, this, &openQuicklyPanel::checkCrashLog);
}

void openQuicklyPanel::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange)
        return;
    refreshActions();
    // The information panel follows the browser's selection when the browser comes forward.
    if (isActiveWindow())
        InfoPanel::getPrefInfoIfOpen(m_application.selectedPaths());
}

void openQuicklyPanel::applicationStateChanged(Qt::ApplicationState state)
{
    refreshActions();
    // The browser steps aside while another application is used, unless the
    // user keeps it visible. There is no dock to bring a withdrawn window
    // back from, so it is minimised rather than hidden, and comes back with
    // the application.
    if (state == Qt::ApplicationActive) {
        if (std::exchange(m_minimizedOnDeactivation, false) && isMinimized()) {
            setAttribute(Qt::WA_ShowWithoutActivating);
            showNormal();
            setAttribute(Qt::WA_ShowWithoutActivating, false);
        }
        return;
    }
    if (state == Qt::ApplicationInactive && isVisible() && !isMinimized() &&
        !m_defaults.boolForKey(SettingsKeys::VXKeepODQWindowVisible)) {
        m_minimizedOnDeactivation = true;
        showMinimized();
    }
}

void openQuicklyPanel::checkCrashLog()
{
    const std::optional<QString> report = CrashLog::checkCrashLog(m_defaults);
    if (!report)
        return;
    auto *dialog = new CrashReportDialog(*report, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // Sending and cancelling both leave the log marked as seen: the check did that.
    connect(dialog, &CrashReportDialog::sendRequested, this, [report = *report](const QString &note) {
        QDesktopServices::openUrl(CrashLog::mailtoUrl(note, report));
    });
    dialog->open();
}
