// The application's user defaults over the preferences service, and the
// notification centre that tells the application when they change.
#include "TemporaryPreferences.h"
#include "TestRegistry.h"

#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"

#include <QTest>

#include <functional>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

using Action = std::function<void(UserDefaults &)>;
using Value = std::optional<PropertyList>;

const QString kApp = UserDefaults::kBundleIdentifier;

} // namespace

Q_DECLARE_METATYPE(Action)

class UserDefaultsTest : public QObject {
    Q_OBJECT

private slots:
    void init() { QVERIFY(m_account.emplace().isValid()); }
    void cleanup() { m_account.reset(); }
    void searchOrder();
    void typedReadings_data();
    void typedReadings();
    void changeNotifications_data();
    void changeNotifications();
    void persistentDomains();
    void notificationFilters_data();
    void notificationFilters();
    void observersGoingAwayDuringDelivery();

private:
    std::optional<TemporaryPreferences> m_account;
};

ORVANE_TEST(UserDefaultsTest)

// Application domain, then NSGlobalDomain, then the registered defaults.
void UserDefaultsTest::searchOrder()
{
    const PropertyList app(u"app"_s), global(u"global"_s), registered(u"registered"_s);
    PreferencesService writer;
    writer.setValue(u"everywhere"_s, app, kApp, PreferencesUser::Current, PreferencesHost::Any);
    writer.setMultiple({{u"everywhere"_s, global}, {u"notInApp"_s, global}}, {}, u"NSGlobalDomain"_s,
                       PreferencesUser::Current, PreferencesHost::Any);
    QVERIFY(writer.appSynchronize(kApp));
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults(service, center);
    defaults.registerDefaults(
        {{u"everywhere"_s, registered}, {u"notInApp"_s, registered}, {u"onlyRegistered"_s, registered}});
    QCOMPARE(defaults.objectForKey(u"everywhere"_s), app);
    QCOMPARE(defaults.objectForKey(u"notInApp"_s), global);
    QCOMPARE(defaults.objectForKey(u"onlyRegistered"_s), registered);
    QCOMPARE(defaults.objectForKey(u"nowhere"_s), std::nullopt);
}

// What each typed accessor makes of each kind of value.
void UserDefaultsTest::typedReadings_data()
{
    QTest::addColumn<Value>("value");
    QTest::addColumn<bool>("asBool");
    QTest::addColumn<qint64>("asInteger");
    QTest::addColumn<double>("asDouble");
    QTest::addColumn<QString>("asString");
    const auto row = [](const char *name, Value value, bool b, qint64 i, double d, const QString &s) {
        QTest::newRow(name) << value << b << i << d << s;
    };
    row("absent", {}, false, 0, 0, {});
    row("string YES reads true", PropertyList(u"YES"_s), true, 0, 0, u"YES"_s);
    row("string with sign and zeros", PropertyList(u" -007.5e1"_s), true, -7, -75, u" -007.5e1"_s);
    row("largest unsigned is non-zero", PropertyList::unsignedInteger(std::numeric_limits<quint64>::max()), true, -1,
        18446744073709551615.0, {});
    row("real below one is true", PropertyList::real(0.25), true, 0, 0.25, {});
    row("real truncates toward zero", PropertyList::real(-2.75), true, -2, -2.75, {});
    row("huge real saturates", PropertyList::real(1e300), true, std::numeric_limits<qint64>::max(), 1e300, {});
    row("data reads as nothing", PropertyList(QByteArray("1")), false, 0, 0, {});
}

void UserDefaultsTest::typedReadings()
{
    QFETCH(Value, value);
    QFETCH(bool, asBool);
    QFETCH(qint64, asInteger);
    QFETCH(double, asDouble);
    QFETCH(QString, asString);
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults(service, center);
    if (value)
        defaults.setObject(*value, u"k"_s);
    QCOMPARE(defaults.boolForKey(u"k"_s), asBool);
    QCOMPARE(defaults.integerForKey(u"k"_s), asInteger);
    QCOMPARE(defaults.doubleForKey(u"k"_s), asDouble);
    QCOMPARE(defaults.stringForKey(u"k"_s), asString);
}

// A notice for every change and none for a no-op, starting from a domain that
// holds k = integer 1 and a registration domain holding r = 1.
void UserDefaultsTest::changeNotifications_data()
{
    QTest::addColumn<Action>("action");
    QTest::addColumn<int>("notices");
    const auto row = [](const char *name, Action action, int notices) { QTest::newRow(name) << action << notices; };
    const PropertyList one = PropertyList::integer(1);
    row("new key", [](UserDefaults &u) { u.setBool(true, u"new"_s); }, 1);
    row("same value", [one](UserDefaults &u) { u.setObject(one, u"k"_s); }, 0);
    row("same number, other type", [](UserDefaults &u) { u.setObject(PropertyList::real(1), u"k"_s); }, 1);
    row("remove present key", [](UserDefaults &u) { u.removeObjectForKey(u"k"_s); }, 1);
    row("remove absent key", [](UserDefaults &u) { u.removeObjectForKey(u"absent"_s); }, 0);
    row("register new default", [](UserDefaults &u) { u.registerDefaults({{u"s"_s, PropertyList(u"x"_s)}}); }, 1);
    row("register same default", [one](UserDefaults &u) { u.registerDefaults({{u"r"_s, one}}); }, 0);
    row("remove application domain", [](UserDefaults &u) { u.removePersistentDomainForName(kApp); }, 1);
    row("replace domain", [](UserDefaults &u) { u.setPersistentDomain({}, kApp); }, 1);
}

void UserDefaultsTest::changeNotifications()
{
    QFETCH(Action, action);
    QFETCH(int, notices);
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults(service, center);
    defaults.setObject(PropertyList::integer(1), u"k"_s);
    defaults.registerDefaults({{u"r"_s, PropertyList::integer(1)}});
    int count = 0;
    QObject observer;
    center.addObserver(&observer, UserDefaults::kDidChangeNotification,
                       [&count](const Notification &) { ++count; });
    action(defaults);
    QCOMPARE(count, notices);
}

// Registered values are merged and never written; replacing a domain drops
// the keys it no longer has; removing it removes its file at the next synchronise.
void UserDefaultsTest::persistentDomains()
{
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults(service, center);
    defaults.registerDefaults({{u"r"_s, PropertyList::integer(1)}, {u"b"_s, PropertyList::integer(1)}});
    defaults.registerDefaults({{u"b"_s, PropertyList::integer(2)}});
    QCOMPARE(defaults.volatileDomainForName(UserDefaults::kRegistrationDomain),
             (PropertyDictionary{{u"r"_s, PropertyList::integer(1)}, {u"b"_s, PropertyList::integer(2)}}));
    QCOMPARE(defaults.volatileDomainForName(u"NSArgumentDomain"_s), PropertyDictionary());
    const QString path = service.pathForDomain(kApp, PreferencesUser::Current, PreferencesHost::Any);
    defaults.setObject(PropertyList::integer(1), u"a"_s);
    defaults.setObject(PropertyList::integer(1), u"b"_s);
    const PropertyDictionary replacement{{u"b"_s, PropertyList::integer(2)}, {u"c"_s, PropertyList::integer(3)}};
    defaults.setPersistentDomain(replacement, kApp);
    QVERIFY(defaults.synchronize());
    QCOMPARE(PreferencesService().copyDomain(kApp, PreferencesUser::Current, PreferencesHost::Any), replacement);
    defaults.setObject(PropertyList(u"g"_s), u"nope"_s);
    defaults.setPersistentDomain({{u"x"_s, PropertyList::integer(1)}}, UserDefaults::kRegistrationDomain);
    QVERIFY(!defaults.volatileDomainForName(UserDefaults::kRegistrationDomain).contains(u"x"_s));
    defaults.removePersistentDomainForName(kApp);
    QVERIFY(!defaults.persistentDomainForName(kApp));
    QVERIFY(QFile::exists(path));
    QVERIFY(defaults.synchronize());
    QVERIFY(!QFile::exists(path));
}

// Who hears what: name and sender filters.
void UserDefaultsTest::notificationFilters_data()
{
    QTest::addColumn<QString>("observedName"); // empty: every name
    QTest::addColumn<int>("observedSender");   // 0 any, 1 the first object, 2 the second
    QTest::addColumn<QString>("postedName");
    QTest::addColumn<int>("postedSender"); // 0 none
    QTest::addColumn<bool>("heard");
    QTest::newRow("name matches, any sender") << u"N"_s << 0 << u"N"_s << 1 << true;
    QTest::newRow("other name") << u"N"_s << 0 << u"M"_s << 0 << false;
    QTest::newRow("empty name hears every name") << QString() << 0 << u"M"_s << 0 << true;
    QTest::newRow("wanted sender") << u"N"_s << 1 << u"N"_s << 1 << true;
    QTest::newRow("other sender") << u"N"_s << 1 << u"N"_s << 2 << false;
    QTest::newRow("no sender when one is wanted") << u"N"_s << 1 << u"N"_s << 0 << false;
}

void UserDefaultsTest::notificationFilters()
{
    QFETCH(QString, observedName);
    QFETCH(int, observedSender);
    QFETCH(QString, postedName);
    QFETCH(int, postedSender);
    QFETCH(bool, heard);
    QObject senders[3];
    const auto sender = [&senders](int index) { return index ? &senders[index] : nullptr; };
    NotificationCenter center;
    QObject observer;
    bool got = false;
    center.addObserver(&observer, observedName, [&](const Notification &n) { got = n.name == postedName; },
                       sender(observedSender));
    center.post(postedName, sender(postedSender));
    QCOMPARE(got, heard);
}

// A handler that destroys a later observer or removes registrations must not
// crash the delivery, and the removed ones hear nothing more.
void UserDefaultsTest::observersGoingAwayDuringDelivery()
{
    NotificationCenter center;
    QStringList heard;
    auto doomed = std::make_unique<QObject>();
    QObject remover, removed, survivor;
    center.addObserver(&remover, u"N"_s, [&](const Notification &) {
        heard << u"remover"_s;
        doomed.reset();
        center.removeObserver(&removed);
        center.removeObserver(&remover);
    });
    center.addObserver(doomed.get(), u"N"_s, [&](const Notification &) { heard << u"doomed"_s; });
    center.addObserver(&removed, u"N"_s, [&](const Notification &) { heard << u"removed"_s; });
    center.addObserver(&survivor, u"N"_s, [&](const Notification &) { heard << u"survivor"_s; });
    center.post(u"N"_s);
    center.post(u"N"_s);
    QCOMPARE(heard, (QStringList{u"remover"_s, u"survivor"_s, u"survivor"_s}));
}

#include "UserDefaultsTest.moc"
