// The application's own settings: what is registered, what moves over from the
// earlier release, and which notice each preferences control posts.
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "domains/ApplicationSettings.h"
#include "domains/SettingsKeys.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"

#include <QFile>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;
using namespace SettingsKeys;
using namespace SettingsNotifications;
Q_DECLARE_METATYPE(PropertyDictionary)

namespace {

CalibratedColor grey(double level)
{
    return {level, level, level, 1};
}

PropertyList color(double level)
{
    return PropertyList(VXAdditions::stringFromColor(grey(level)));
}

// Every system colour different, so a key wired to the wrong one shows.
AppearanceDefaults distinctAppearance()
{
    return {grey(0.1), grey(0.2), grey(0.3), grey(0.4), grey(0.5), grey(0.6), u"Body"_s, 13.5, u"Tabs"_s};
}

const QDateTime kNow = QDateTime::fromString(u"2024-03-01T12:00:00Z"_s, Qt::ISODate);
constexpr double kNowSinceReference = 730987200.0; // 2024-03-01 12:00 UTC from 2001-01-01

// One control of the preferences window: what it does, the keys it must have
// written by the time its notice goes out, and that notice.
struct Handler {
    const char *row;
    std::function<void(ApplicationSettings &, QObject *)> act;
    QList<std::pair<QString, PropertyList>> written;
    QString notification; // empty: posts nothing
    bool withSender = true;
};

using Box = void (ApplicationSettings::*)(bool, QObject *);
const CalibratedColor kCustom{0.9, 0.8, 0.7, 1};

// A check box turned to the opposite of its registered state.
Handler box(const char *row, Box set, bool on, const QString &key, const QString &notification)
{
    return {row, [set, on](auto &s, auto *o) { (s.*set)(on, o); }, {{key, PropertyList::boolean(on)}}, notification};
}

const QList<Handler> &handlers()
{
    using S = ApplicationSettings;
    const PropertyList custom(VXAdditions::stringFromColor(kCustom));
    static const QList<Handler> table{
        box("document-delete box", &S::setWarnOnDocumentDelete, false, VXWarnOnDocumentDelete,
            VXDocumentWarningChangedNotification),
        box("domain-delete box", &S::setWarnOnDomainDelete, false, VXWarnOnDomainDelete,
            VXDomainWarningChangedNotification),
        box("duplicate-keys box", &S::setWarnOnDuplicateKeys, false, VXWarnOnDuplicateKeys,
            VXWarnOnDuplicateKeysChangedNotification),
        box("custom colours box", &S::setUseCustomColors, true, VXUseCustomColors, VXUseCustomColorsChangedNotification),
        box("custom tab colours box", &S::setTabsUseCustomColors, true, VXTabsUseCustomColors,
            VXTabsUseCustomColorsChangedNotification),
        box("tabs box", &S::setDocumentsUseTabs, false, VXDocumentsUseTabs, VXDocumentsUseTabsChangedNotification),
        box("keep-visible box", &S::setKeepODQWindowVisible, true, VXKeepODQWindowVisible,
            VXKeepODQWindowVisibleChangedNotification),
        // Two colour wells; the resets below reach every colour key.
        {"unreadable well", [](auto &s, auto *o) { s.setListColor(S::ListColorWell::Unreadable, kCustom, o); },
         {{VXDisabledColor, custom}}, VXColorsChangedNotification},
        {"tab overflow well", [](auto &s, auto *o) { s.setTabColor(S::TabColorWell::Overflow, kCustom, o); },
         {{VXTabOverflowChevronColor, custom}}, VXTabColorsChangedNotification},
        // The reset buttons bring back the registered colours of distinctAppearance().
        {"list colour reset", [](auto &s, auto *o) { s.resetListColors(o); },
         {{VXLightColor, color(0.1)}, {VXDarkColor, color(0.2)}, {VXDisabledColor, color(0.4)}, {VXTextColor, color(0.3)}},
         VXColorsChangedNotification},
        {"tab colour reset", [](auto &s, auto *o) { s.resetTabColors(o); },
         {{VXTabActiveTextColor, color(0.3)}, {VXTabActiveBackgroundColor, color(0.6)}, {VXTabBackgroundColor, color(0.5)},
          {VXTabDisabledTextColor, color(0.4)}, {VXTabOverflowChevronColor, color(0.4)}},
         VXTabColorsChangedNotification},
        {"list font chosen", [](auto &s, auto *o) { s.setListFont(u"Mono"_s, 9, o); },
         {{VXTextFont, PropertyList(u"Mono"_s)}, {VXTextFontSize, PropertyList::real(9, 'f')}},
         VXTextFontChangedNotification},
        {"tab font chosen", [](auto &s, auto *o) { s.setTabFont(u"Serif"_s, 12, o); },
         {{VXTabTextFont, PropertyList(u"Serif"_s)}, {VXTabTextFontSize, PropertyList::real(12, 'f')}},
         VXTabTextFontChangedNotification},
        {"preferences window closes", [](auto &s, auto *o) { s.preferencesWindowClosed(o); }, {},
         VXPreferencWindowClosedNotification},
        {"page button", [](auto &s, auto *) { s.setLastSelectedTab(1); },
         {{VXLastSelectedTab, PropertyList::integer(1, 'i')}}, QString()},
        {"font panel change is forwarded without object", [](auto &s, auto *) { s.fontPanelChangedFont(); }, {},
         VXFontPanelDidChangeFontNotification, false},
    };
    return table;
}

// Every key's registered value with distinctAppearance() at kNow, in order.
QList<std::pair<QString, PropertyList>> expectedDefaults()
{
    const PropertyList yes = PropertyList::boolean(true);
    const PropertyList no = PropertyList::boolean(false);
    return {
        {VXWarnOnDocumentDelete, yes}, {VXWarnOnDomainDelete, yes}, {VXWarnOnDuplicateKeys, yes},
        {VXDocumentsUseTabs, yes}, {VXTabsUseCustomColors, no}, {VXLightColor, color(0.1)},
        {VXDarkColor, color(0.2)}, {VXDisabledColor, color(0.4)}, {VXTextColor, color(0.3)},
        {VXLastCrashLogDate, PropertyList::date(kNowSinceReference - 604800)}, // a week before now
        {VXUseCustomColors, no}, {VXTextFont, PropertyList(u"Body"_s)}, {VXTextFontSize, PropertyList::real(13.5, 'f')},
        {VXTabTextFont, PropertyList(u"Tabs"_s)}, {VXTabTextFontSize, PropertyList::real(11, 'f')},
        {VXTabActiveTextColor, color(0.3)}, {VXTabBackgroundColor, color(0.5)}, {VXTabDisabledTextColor, color(0.4)},
        {VXTabActiveBackgroundColor, color(0.6)}, {VXTabOverflowChevronColor, color(0.4)},
        {VXKeepODQWindowVisible, no}, {VXLastSelectedTab, PropertyList::integer(0, 'i')},
    };
}

} // namespace

class ApplicationSettingsTest : public QObject {
    Q_OBJECT
private slots:
    void registeredDefaults();
    void transferPreferences_data();
    void transferPreferences();
    void handler_data();
    void handler();
};

// In the table's order, with the table's types, in force while the user has
// set nothing, and never written.
void ApplicationSettingsTest::registeredDefaults()
{
    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults(service, center);
    ApplicationSettings::registerDefaults(defaults, distinctAppearance(), kNow);
    const PropertyDictionary registered = ApplicationSettings::registeredDefaults(distinctAppearance(), kNow);
    const auto expected = expectedDefaults();
    QCOMPARE(registered.size(), expected.size());
    for (qsizetype i = 0; i < expected.size(); ++i) {
        const auto &[key, value] = expected.at(i);
        QCOMPARE(registered.keyAt(i), key);
        const auto found = defaults.objectForKey(key);
        QVERIFY2(found && found->isIdenticalTo(value), qPrintable(key));
    }
    QVERIFY(!defaults.persistentDomainForName(UserDefaults::kBundleIdentifier).has_value());
}

void ApplicationSettingsTest::transferPreferences_data()
{
    QTest::addColumn<PropertyDictionary>("earlier");
    QTest::addColumn<PropertyDictionary>("moved"); // the application's domain afterwards
    const PropertyList frame(u"10 10 400 300 0 0 1440 900 "_s);
    // Every old key present: each arrives under its new name, frames under their own.
    QList<std::pair<QString, QString>> renamed{
        {u"Warn before PLIST Delete?"_s, VXWarnOnDocumentDelete}, {u"Warn before Domain Delete?"_s, VXWarnOnDomainDelete},
        {u"plist window uses tabs"_s, VXDocumentsUseTabs},        {u"tabs use custom colors"_s, VXTabsUseCustomColors},
        {u"light cell color"_s, VXLightColor},                    {u"dark cell color"_s, VXDarkColor},
        {u"disabled cell color"_s, VXDisabledColor},              {u"text cell color"_s, VXTextColor}};
    for (const char *window : {"domain", "findPanel", "getinfo", "plistWindow", "prefs"})
        renamed.append({u"NSWindow Frame "_s + QLatin1String(window), u"NSWindow Frame "_s + QLatin1String(window)});
    PropertyDictionary every;
    PropertyDictionary everyMoved;
    for (int i = 0; i < renamed.size(); ++i) {
        every.insert(renamed.at(i).first, PropertyList::integer(i + 10));
        everyMoved.insert(renamed.at(i).second, PropertyList::integer(i + 10));
    }
    QTest::newRow("every old key present") << every << everyMoved;
    QTest::newRow("absent keys are skipped, unknown keys dropped")
        << PropertyDictionary{{u"dark cell color"_s, color(0.5)},
                              {u"NSWindow Frame prefs"_s, frame},
                              {u"Some other key"_s, PropertyList::integer(3)}}
        << PropertyDictionary{{VXDarkColor, color(0.5)}, {u"NSWindow Frame prefs"_s, frame}};
    QTest::newRow("no earlier release") << PropertyDictionary() << PropertyDictionary();
}

void ApplicationSettingsTest::transferPreferences()
{
    QFETCH(PropertyDictionary, earlier);
    QFETCH(PropertyDictionary, moved);
    DomainSandbox sandbox;
    const QString earlierFile = sandbox.userFolder() + u'/' + ApplicationSettings::kEarlierReleaseDomain + u".plist"_s;
    if (!earlier.isEmpty())
        sandbox.writeDictionary(earlierFile, earlier);
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults(service, center);
    QCOMPARE(ApplicationSettings::transferPreferences(defaults), !earlier.isEmpty());
    // What a later start reads from disk.
    PreferencesService later;
    QVERIFY(!QFile::exists(earlierFile));
    const auto domain = later.copyDomain(UserDefaults::kBundleIdentifier, PreferencesUser::Current,
                                         PreferencesHost::Any);
    QVERIFY(domain.value_or(PropertyDictionary()) == moved);
}

void ApplicationSettingsTest::handler_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < handlers().size(); ++i)
        QTest::newRow(handlers().at(i).row) << i;
}

void ApplicationSettingsTest::handler()
{
    QFETCH(int, index);
    const Handler &handler = handlers().at(index);
    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter defaultsCenter; // apart, so only the settings' own notices are seen
    UserDefaults defaults(service, defaultsCenter);
    ApplicationSettings::registerDefaults(defaults, distinctAppearance(), kNow);
    NotificationCenter center;
    ApplicationSettings settings(defaults, center);
    QObject window;
    QObject observer;

    // The colours a reset must take away: set by the user first.
    for (const auto &[key, value] : handler.written) {
        if (key.endsWith(u"Color"_s))
            defaults.setObject(PropertyList(u"1 0 0 1"_s), key);
    }

    const auto allWritten = [&] {
        for (const auto &[key, value] : handler.written) {
            const auto now = defaults.objectForKey(key);
            if (!now || !now->isIdenticalTo(value))
                return false;
        }
        return true;
    };
    QStringList seen;
    center.addObserver(&observer, QString(), [&](const Notification &notice) {
        seen << notice.name + (notice.object == (handler.withSender ? &window : nullptr) ? u""_s : u" wrong sender"_s)
                    + (allWritten() ? u""_s : u" before the keys were written"_s);
    });
    handler.act(settings, &window);
    QCOMPARE(seen, handler.notification.isEmpty() ? QStringList() : QStringList{handler.notification});
    QVERIFY(allWritten());
    // After a reset the user's own colour keys are gone again.
    if (QByteArray(handler.row).contains("reset")) {
        const PropertyDictionary own = defaults.persistentDomainForName(UserDefaults::kBundleIdentifier)
                                           .value_or(PropertyDictionary());
        for (const auto &[key, value] : handler.written)
            QVERIFY2(!own.contains(key), qPrintable(key));
    }
}

ORVANE_TEST(ApplicationSettingsTest)
#include "ApplicationSettingsTest.moc"
