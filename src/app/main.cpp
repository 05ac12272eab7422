#include "OrvaneVersion.h"
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
#include <QCommandLineParser>
#include <QFileDialog>
#include <QTimer>

#include <cstring>

namespace {

void describeCommandLine(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QApplication::translate(
        "main",
        "Edits Mac OS X preference domains and property-list files (XML, binary or old-style text)."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("files"),
        QApplication::translate("main", "Property-list files to open, each in a window."),
        QStringLiteral("[FILE...]"));
}

// --help and --version print and leave, and need no display: they work in a
// terminal without one, where making the GUI application would fail.
bool onlyAsksForText(int argc, char **argv)
{
    for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
        for (const char *option : {"-h", "--help", "-?", "--help-all", "-v", "--version"}) {
            if (std::strcmp(argv[i], option) == 0)
                return true;
        }
    }
    return false;
}

int answerText(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvane"));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(OrvaneVersion::kVersion));
    QCommandLineParser parser;
    describeCommandLine(parser);
    parser.process(app); // prints the text asked for and exits
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    // First of all, so a crash anywhere after this leaves a report for the next start.
    CrashHandler::install(CrashLog::logPath(), QString::fromLatin1(OrvaneVersion::kVersion));
    if (onlyAsksForText(argc, argv))
        return answerText(argc, argv);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orvane"));
    QApplication::setApplicationVersion(QString::fromLatin1(OrvaneVersion::kVersion));
    QApplication::setOrganizationDomain(QStringLiteral("orvane.org"));
    // Lets the desktop match the windows to orvane.desktop: its icon and name.
    QGuiApplication::setDesktopFileName(QStringLiteral("orvane"));
    QCommandLineParser parser;
    describeCommandLine(parser);
    parser.process(app); // an unknown option is reported and ends the program
    // Before any window exists: every window reads its settings when it is made.
    UserDefaults &defaults = UserDefaults::standardUserDefaults();
    const std::unique_ptr<openDomain> application = openDomain::launch(
        {defaults, NotificationCenter::defaultCenter()}, SystemAppearance::current(), QDateTime::currentDateTimeUtc());
    QObject::connect(&app, &QCoreApplication::aboutToQuit, application.get(),
                     [&application] { application->applicationShouldTerminate(); });
    VXDocumentController documents(
        {{PreferencesService::shared(), defaults}, NotificationCenter::defaultCenter()});

    QStringList paths = parser.positionalArguments();
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
    // Settings changed on the way (preferences, "do not ask again") reach the disk.
    defaults.synchronize();
    return documents.openedAny() ? status : 1; // every file failed, and each has had its dialog
}
