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
#include "ui/findController.h"
#include "ui/openQuicklyOV.h"
#include "ui/openQuicklyPanel.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
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

// For timing the start (bench/startup.sh): quit once the first window's
// outline has been painted, so the process's run time is "to a shown tree".
void quitWhenShown(VXDocumentController &documents, bool browser)
{
    const auto paintAndQuit = [](QWidget *window, QAbstractItemView *outline) {
        QTimer::singleShot(0, window, [outline] {
            outline->viewport()->repaint();
            QApplication::exit(0);
        });
    };
    if (browser) {
        QTimer::singleShot(0, qApp, [paintAndQuit] {
            for (QWidget *window : QApplication::topLevelWidgets()) {
                if (auto *panel = qobject_cast<openQuicklyPanel *>(window))
                    paintAndQuit(panel, panel->outlineView());
            }
        });
        return;
    }
    QObject::connect(
        &documents, &VXDocumentController::documentOpened, qApp,
        [paintAndQuit](VXWindowController *window) { paintAndQuit(window, window->outlineView()); });
    QObject::connect(&documents, &VXDocumentController::openFailed, qApp, [] { QApplication::exit(1); });
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
    const std::unique_ptr<openDomain> application =
        openDomain::launch({defaults, NotificationCenter::defaultCenter()}, SystemAppearance::current(),
                           QDateTime::currentDateTimeUtc());
    QObject::connect(&app, &QCoreApplication::aboutToQuit, application.get(),
                     [&application] { application->applicationShouldTerminate(); });
    VXDocumentController documents(
        {{PreferencesService::shared(), defaults}, NotificationCenter::defaultCenter()});

    // The browser is made when first asked for: `orvane FILE` shows only the documents.
    std::unique_ptr<openQuicklyPanel> browser;
    const auto showBrowser = [&] {
        if (!browser)
            browser = std::make_unique<openQuicklyPanel>(*application, documents, defaults,
                                                         NotificationCenter::defaultCenter());
        browser->bringForward();
    };
    QObject::connect(&documents, &VXDocumentController::domainBrowserRequested, &app, showBrowser);
    // The find window too is made when first asked for, and then kept.
    std::unique_ptr<findController> finder;
    QObject::connect(&documents, &VXDocumentController::findPanelRequested, &app, [&] {
        if (!finder)
            finder = std::make_unique<findController>(documents, PreferencesService::shared(), defaults,
                                                      NotificationCenter::defaultCenter());
        finder->bringFindToFront();
    });
    // A `defaults write` line, dropped or pasted on the browser or pasted into
    // a document, applies to its domain's document.
    documents.setDefaultsTextHooks(&openDomain::willAccept,
                                   [&application](const QString &text) { return application->acceptDrop(text); });
    QObject::connect(application.get(), &openDomain::applyDefaultsRequested, &documents,
                     &VXDocumentController::applyDefaults);

    const QStringList paths = parser.positionalArguments();
    if (qEnvironmentVariableIsSet("ORVANE_QUIT_WHEN_SHOWN"))
        quitWhenShown(documents, paths.isEmpty());
    if (paths.isEmpty())
        showBrowser();
    else
        documents.openDocuments(paths);
    const int status = QApplication::exec();
    // Settings changed on the way (preferences, "do not ask again") reach the disk.
    defaults.synchronize();
    // Every file given failed, and each has had its dialog.
    const int exitStatus = paths.isEmpty() || documents.openedAny() ? status : 1;
    // The settings are on disk and every document was saved or given up on the
    // way out; what is left is memory, which the system takes back at once
    // where destructors would free a large document's tree value by value.
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(exitStatus);
}
