#include "domains/ApplicationSettings.h"
#include "platform/UserDefaults.h"
#include "ui/AppearanceDefaults.h"
#include "ui/PropertyListWindow.h"

#include <QApplication>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orvane"));
    QApplication::setOrganizationDomain(QStringLiteral("orvane.org"));
    // Before any window exists: every window reads its settings when it is made.
    ApplicationSettings::registerDefaults(UserDefaults::standardUserDefaults(), SystemAppearance::current(),
                                          QDateTime::currentDateTimeUtc());

    const QStringList paths = app.arguments().mid(1);
    if (paths.isEmpty()) {
        auto *window = new PropertyListWindow;
        window->show();
    } else if (PropertyListWindow::openFiles(paths).isEmpty()) {
        return 1; // every file failed, and each has had its dialog
    }
    return QApplication::exec();
}
