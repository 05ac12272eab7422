// The preferences window driven as a user drives it: each control writes its
// setting and announces it, the window follows changes made elsewhere, resets
// bring the registered colours back, and the window remembers its page.
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "domains/ApplicationSettings.h"
#include "domains/SettingsKeys.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"
#include "ui/AppearanceDefaults.h"
#include "ui/ColorWell.h"
#include "ui/prefController.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QFontDialog>
#include <QLabel>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace SettingsKeys;
using namespace SettingsNotifications;

namespace {

struct Session {
    Session()
    {
        ApplicationSettings::registerDefaults(defaults, AppearanceDefaults::fallback(),
                                              QDateTime::currentDateTimeUtc());
    }
    // Whether the user's own settings hold key (a reset removes it).
    bool stored(const QString &key) const
    {
        const auto domain = defaults.persistentDomainForName(defaults.applicationDomain());
        return domain && domain->find(key);
    }

    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};
};

// The settings notices posted, with whether the window itself posted them.
struct Heard : QObject {
    Heard(NotificationCenter &center, const QObject *window)
    {
        center.addObserver(this, QString(), [this, window](const Notification &notice) {
            if (notice.name != UserDefaults::kDidChangeNotification)
                names << notice.name + (notice.object == window ? u""_s : u" (not from the window)"_s);
        });
    }
    QStringList names;
};

const QColor kPicked(0x33, 0x66, 0x99);

// Picks color in the well's dialog, as the user does: open, choose, OK.
void pick(ColorWell *well, const QColor &color)
{
    well->click();
    QColorDialog *dialog = well->colorDialog();
    QVERIFY(dialog && dialog->isVisible());
    dialog->setCurrentColor(color);
    dialog->accept();
}

} // namespace

class prefControllerTest : public QObject {
    Q_OBJECT
private slots:
    void controlWritesItsSetting_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("notification");
        const auto row = [](const char *control, const QString &key, const QString &notification) {
            QTest::newRow(control) << QString::fromLatin1(control) << key << notification;
        };
        row("documentWarnBox", VXWarnOnDocumentDelete, VXDocumentWarningChangedNotification);
        row("domainWarnBox", VXWarnOnDomainDelete, VXDomainWarningChangedNotification);
        row("duplicateWarnBox", VXWarnOnDuplicateKeys, VXWarnOnDuplicateKeysChangedNotification);
        row("docsUseTabs", VXDocumentsUseTabs, VXDocumentsUseTabsChangedNotification);
        row("keepODQVisible", VXKeepODQWindowVisible, VXKeepODQWindowVisibleChangedNotification);
        row("useCustomColors", VXUseCustomColors, VXUseCustomColorsChangedNotification);
        row("useCustomTabColors", VXTabsUseCustomColors, VXTabsUseCustomColorsChangedNotification);
        row("lightWell", VXLightColor, VXColorsChangedNotification);
        row("darkWell", VXDarkColor, VXColorsChangedNotification);
        row("unreadableWell", VXDisabledColor, VXColorsChangedNotification);
        row("textWell", VXTextColor, VXColorsChangedNotification);
        row("tabActiveTextWell", VXTabActiveTextColor, VXTabColorsChangedNotification);
        row("tabActiveBackgroundWell", VXTabActiveBackgroundColor, VXTabColorsChangedNotification);
        row("tabBackgroundWell", VXTabBackgroundColor, VXTabColorsChangedNotification);
        row("tabDisabledTextWell", VXTabDisabledTextColor, VXTabColorsChangedNotification);
        row("tabOverflowWell", VXTabOverflowChevronColor, VXTabColorsChangedNotification);
    }
    void controlWritesItsSetting()
    {
        QFETCH(QString, control);
        QFETCH(QString, key);
        QFETCH(QString, notification);
        Session session;
        prefController window(session.defaults, session.center);
        window.show();
        Heard heard(session.center, &window);
        if (auto *box = window.findChild<QCheckBox *>(control)) {
            const bool before = session.defaults.boolForKey(key);
            box->click();
            QCOMPARE(session.defaults.boolForKey(key), !before);
        } else {
            auto *well = window.findChild<ColorWell *>(control);
            QVERIFY(well);
            well->setEnabled(true);
            pick(well, kPicked);
            QCOMPARE(session.defaults.stringForKey(key),
                     VXAdditions::stringFromColor(SystemAppearance::calibratedColor(kPicked)));
        }
        QCOMPARE(heard.names, QStringList{notification});
    }

    // A change announced by somebody else shows in the open window.
    void followsChangesMadeElsewhere_data()
    {
        QTest::addColumn<int>("change");
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("shown");
        QTest::newRow("sheet's do not ask again") << 0 << u"documentWarnBox"_s << u"off"_s;
        QTest::newRow("browser's warning box") << 1 << u"domainWarnBox"_s << u"off"_s;
        QTest::newRow("custom colours enable the wells") << 2 << u"lightWell"_s << u"enabled"_s;
        QTest::newRow("a colour") << 3 << u"darkWell"_s << u"#336699"_s;
        QTest::newRow("the tab font") << 4 << u"tabFontTF"_s << u"Mono, 9pt."_s;
    }
    void followsChangesMadeElsewhere()
    {
        QFETCH(int, change);
        QFETCH(QString, control);
        QFETCH(QString, shown);
        Session session;
        prefController window(session.defaults, session.center);
        QObject elsewhere;
        ApplicationSettings settings(session.defaults, session.center);
        const std::function<void()> changes[] = {
            [&] { settings.setWarnOnDocumentDelete(false, &elsewhere); },
            [&] { settings.setWarnOnDomainDelete(false, &elsewhere); },
            [&] { settings.setUseCustomColors(true, &elsewhere); },
            [&] {
                settings.setListColor(ApplicationSettings::ListColorWell::Dark,
                                      SystemAppearance::calibratedColor(kPicked), &elsewhere);
            },
            [&] { settings.setTabFont(u"Mono"_s, 9, &elsewhere); },
        };
        changes[change]();
        QWidget *widget = window.findChild<QWidget *>(control);
        QVERIFY(widget);
        QString state;
        if (auto *box = qobject_cast<QCheckBox *>(widget))
            state = box->isChecked() ? u"on"_s : u"off"_s;
        else if (auto *label = qobject_cast<QLabel *>(widget))
            state = label->text();
        else if (auto *well = qobject_cast<ColorWell *>(widget))
            state =
                shown.startsWith(u'#') ? well->color().name() : (well->isEnabled() ? u"enabled"_s : u"off"_s);
        QCOMPARE(state, shown);
    }

    void resetRemovesTheColors_data()
    {
        QTest::addColumn<QString>("well");
        QTest::addColumn<QString>("reset");
        QTest::addColumn<QString>("key");
        QTest::newRow("list") << u"textWell"_s << u"resetListColors"_s << VXTextColor;
        QTest::newRow("tabs") << u"tabOverflowWell"_s << u"resetTabColors"_s << VXTabOverflowChevronColor;
    }
    void resetRemovesTheColors()
    {
        QFETCH(QString, well);
        QFETCH(QString, reset);
        QFETCH(QString, key);
        Session session;
        prefController window(session.defaults, session.center);
        window.show();
        auto *colorWell = window.findChild<ColorWell *>(well);
        const QColor registered = colorWell->color();
        colorWell->setEnabled(true);
        pick(colorWell, kPicked);
        QVERIFY(session.stored(key));
        window.findChild<QPushButton *>(reset)->click();
        QVERIFY(!session.stored(key));
        QCOMPARE(colorWell->color(), registered);
    }

    void fontPanelSetsTheFont_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("sizeKey");
        QTest::addColumn<QString>("notification");
        QTest::newRow("list") << u"listFontButton"_s << u"listFontTF"_s << VXTextFontSize
                              << VXTextFontChangedNotification;
        QTest::newRow("tabs") << u"tabFontButton"_s << u"tabFontTF"_s << VXTabTextFontSize
                              << VXTabTextFontChangedNotification;
    }
    void fontPanelSetsTheFont()
    {
        QFETCH(QString, button);
        QFETCH(QString, label);
        QFETCH(QString, sizeKey);
        QFETCH(QString, notification);
        Session session;
        prefController window(session.defaults, session.center);
        window.show();
        Heard heard(session.center, &window);
        window.findChild<QPushButton *>(button)->click();
        QFontDialog *panel = window.fontPanel();
        QVERIFY(panel && panel->isVisible());
        QFont font = panel->currentFont();
        font.setPointSize(17);
        panel->setCurrentFont(font);
        panel->accept();
        QCOMPARE(session.defaults.doubleForKey(sizeKey), 17.0);
        QVERIFY(window.findChild<QLabel *>(label)->text().endsWith(u", 17pt."_s));
        // The window answers the font panel's notice while it is being delivered, so the order is not fixed.
        QStringList expected{VXFontPanelDidChangeFontNotification + u" (not from the window)"_s,
                             notification};
        expected.sort();
        heard.names.sort();
        QCOMPARE(heard.names, expected);
    }

    // The page chosen by the keyboard comes back in the next window; Escape
    // closes and announces it.
    void remembersItsPage()
    {
        Session session;
        prefController *window = prefController::showPreferences(session.defaults, session.center);
        QVERIFY(QTest::qWaitForWindowActive(window));
        auto *pages = window->findChild<QTabWidget *>(u"pages"_s);
        QCOMPARE(pages->currentIndex(), int(prefController::OptionsPage));
        window->findChild<QCheckBox *>(u"documentWarnBox"_s)->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(pages->currentIndex(), int(prefController::ColorsPage));
        QCOMPARE(session.defaults.integerForKey(VXLastSelectedTab), qint64(prefController::ColorsPage));
        Heard heard(session.center, window);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QCOMPARE(heard.names, QStringList{VXPreferencWindowClosedNotification});
        QTRY_VERIFY(!prefController::sharedWindow()); // freed once closed
        window = prefController::showPreferences(session.defaults, session.center);
        QCOMPARE(window->findChild<QTabWidget *>(u"pages"_s)->currentIndex(),
                 int(prefController::ColorsPage));
        window->close();
        QTRY_VERIFY(!prefController::sharedWindow());
    }
};

ORVANE_TEST(prefControllerTest)
#include "prefControllerTest.moc"
