#include "crash/CrashHandler.h"
#include "crash/CrashLog.h"
#include "domains/openDomain.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"
#include "ui/AppearanceDefaults.h"
#include "ui/PrefOV.h"
#include "ui/VXDocumentController.h"
#include "ui/VXWindowController.h"

#include <QApplication>
#include <QFileDialog>
#include <QTimer>

int main(int argc, char **argv)
{
    // First of all, so a crash anywhere after this leaves a report for the next start.
    CrashHandler::install(CrashLog::logPath(), QStringLiteral(ORVANE_VERSION));
    QApplication app(argc, argv);
    QApplication::setApplicationVersion(QStringLiteral(ORVANE_VERSION));
    QApplication::setApplicationName(QStringLiteral("Orvane"));
    QApplication::setOrganizationDomain(QStringLiteral("orvane.org"));
    // Before any window exists: every window reads its settings when it is made.
    UserDefaults &defaults = UserDefaults::standardUserDefaults();
    const std::unique_ptr<openDomain> application = openDomain::launch(
        {defaults, NotificationCenter::defaultCenter()}, SystemAppearance::current(), QDateTime::currentDateTimeUtc());
    QObject::connect(&app, &QCoreApplication::aboutToQuit, application.get(),
                     [&application] { application->applicationShouldTerminate(); });
    VXDocumentController documents(
        {{PreferencesService::shared(), defaults}, NotificationCenter::defaultCenter()});

    QStringList paths = app.arguments().mid(1);
    if (paths.isEmpty()) {
        // The domain browser is to be the main window; until then, a file is asked for.
        paths = QFileDialog::getOpenFileNames(nullptr, QApplication::translate("main", "Open"), QString(),
                                              VXDocumentController::openFilters().join(QStringLiteral(";;")));
        if (paths.isEmpty()) {
            application->applicationShouldTerminate();
            return 0;
        }
    }
    // For timing the start (bench/startup.sh): quit once the first document's
    // outline has been painted, so the process's run time is "to a shown tree".
    if (qEnvironmentVariableIsSet("ORVANE_QUIT_WHEN_SHOWN")) {
        QObject::connect(&documents, &VXDocumentController::documentOpened, &app, [](VXWindowController *window) {
            QTimer::singleShot(0, window, [window] {
                window->outlineView()->viewport()->repaint();
                QApplication::exit(0);
            });
        });
        QObject::connect(&documents, &VXDocumentController::openFailed, &app, [] { QApplication::exit(1); });
    }
    documents.openDocuments(paths);
    const int status = QApplication::exec();
    return documents.openedAny() ? status : 1; // every file failed, and each has had its dialog
}
