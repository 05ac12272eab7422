// The value type: its description texts, which users see in the viewer and in
// orvane-plist print, and its equality, which round-trip tests rely on.
#include "TestRegistry.h"

#include "platform/PropertyList.h"

#include <QTest>

#include <cmath>
#include <limits>

using Type = PropertyList::Type;

namespace {

PropertyList str(const char *utf8) { return PropertyList(QString::fromUtf8(utf8)); }

} // namespace

class PropertyListTest : public QObject {
    Q_OBJECT
private slots:
    void description_data();
    void description();
    void nestedDescription();
    void dateDescriptionUsesLocalZone_data();
    void dateDescriptionUsesLocalZone();
    void equality_data();
    void equality();
    void dictionaryKeepsInsertionOrder();
    void lookupAcrossTheIndexThreshold();
    void copiesAreIndependent();
};

void PropertyListTest::description_data()
{
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<QString>("expected");

    QTest::newRow("string alone is bare") << str("hello world") << QStringLiteral("hello world");
    QTest::newRow("integer") << PropertyList::integer(-5) << QStringLiteral("-5");
    QTest::newRow("unsigned above int64") << PropertyList::unsignedInteger(18446744073709551615ULL)
                                          << QStringLiteral("18446744073709551615");
    QTest::newRow("boolean true prints 1") << PropertyList::boolean(true) << QStringLiteral("1");
    QTest::newRow("double 2.5") << PropertyList::real(2.5) << QStringLiteral("2.5");
    QTest::newRow("double 0.1") << PropertyList::real(0.1) << QStringLiteral("0.1");
    QTest::newRow("double 1e20") << PropertyList::real(1e20) << QStringLiteral("1e+20");
    QTest::newRow("double 1.0 looks like an integer") << PropertyList::real(1.0) << QStringLiteral("1");
    QTest::newRow("double 1e16") << PropertyList::real(1e16) << QStringLiteral("1e+16");
    QTest::newRow("double one third") << PropertyList::real(1.0 / 3) << QStringLiteral("0.3333333333333333");
    QTest::newRow("double 1e-5") << PropertyList::real(1e-5) << QStringLiteral("1e-05");
    QTest::newRow("negative zero") << PropertyList::real(-0.0) << QStringLiteral("-0");
    QTest::newRow("float 0.1 at seven digits") << PropertyList::real(0.1, 'f') << QStringLiteral("0.1");
    QTest::newRow("float 16777217") << PropertyList::real(16777217.0, 'f') << QStringLiteral("1.677722e+07");
    QTest::newRow("data in groups of four") << PropertyList(QByteArray::fromHex("0a0b0c0d0e"))
                                            << QStringLiteral("<0a0b0c0d 0e>");
    QTest::newRow("exactly four bytes, no blank") << PropertyList(QByteArray::fromHex("deadbeef"))
                                                  << QStringLiteral("<deadbeef>");
    QTest::newRow("empty data") << PropertyList(QByteArray()) << QStringLiteral("<>");
    QTest::newRow("empty array") << PropertyList(PropertyArray()) << QStringLiteral("(\n)");
    QTest::newRow("empty dictionary") << PropertyList(PropertyDictionary()) << QStringLiteral("{\n}");

    // Inside a container only non-empty alphanumeric text stays bare.
    auto inArray = [](const PropertyList &v) { return PropertyList(PropertyArray{v}); };
    auto quoted = [](const char *inner) { return QStringLiteral("(\n    %1\n)").arg(QString::fromUtf8(inner)); };
    QTest::newRow("alphanumeric stays bare") << inArray(str("hello")) << quoted("hello");
    QTest::newRow("digits stay bare") << inArray(str("123")) << quoted("123");
    QTest::newRow("blank is quoted") << inArray(str("hello world")) << quoted("\"hello world\"");
    QTest::newRow("dot is quoted") << inArray(str("com.apple.dock")) << quoted("\"com.apple.dock\"");
    QTest::newRow("underscore is quoted") << inArray(str("a_b")) << quoted("\"a_b\"");
    QTest::newRow("empty string") << inArray(str("")) << quoted("\"\"");
    QTest::newRow("newline and tab") << inArray(str("x\ny\tz")) << quoted("\"x\\ny\\tz\"");
    QTest::newRow("quote and backslash") << inArray(str("a\"b\\c")) << quoted("\"a\\\"b\\\\c\"");
    QTest::newRow("non-ASCII lower-case hex") << inArray(str("café")) << quoted("\"caf\\U00e9\"");
    QTest::newRow("outside the BMP as two units") << inArray(str("\xF0\x9F\x98\x80"))
                                                  << quoted("\"\\Ud83d\\Ude00\"");
    QTest::newRow("other control character") << inArray(str("a\rb")) << quoted("\"a\\U000db\"");
    QTest::newRow("negative number is quoted") << inArray(PropertyList::integer(-5)) << quoted("\"-5\"");
    QTest::newRow("real is quoted") << inArray(PropertyList::real(2.5)) << quoted("\"2.5\"");
    QTest::newRow("whole real is bare") << inArray(PropertyList::real(1.0)) << quoted("1");
    QTest::newRow("data is never quoted") << inArray(PropertyList(QByteArray::fromHex("0a"))) << quoted("<0a>");
}

void PropertyListTest::description()
{
    QFETCH(PropertyList, value);
    QFETCH(QString, expected);
    QCOMPARE(value.description(), expected);
}

void PropertyListTest::nestedDescription()
{
    // Nested containers begin with their own indent, which doubles it after "= ".
    const PropertyList value(PropertyDictionary{
        {QStringLiteral("d"), PropertyArray{PropertyDictionary{{QStringLiteral("e"), PropertyList::integer(1)}}}},
        {QStringLiteral("b"), PropertyDictionary{{QStringLiteral("c"), str("x y")}}},
        {QStringLiteral("a"), PropertyArray{PropertyList::integer(1), PropertyList::integer(2)}},
    });
    const QString expected = QStringLiteral("{\n"
                                            "    a =     (\n"
                                            "        1,\n"
                                            "        2\n"
                                            "    );\n"
                                            "    b =     {\n"
                                            "        c = \"x y\";\n"
                                            "    };\n"
                                            "    d =     (\n"
                                            "                {\n"
                                            "            e = 1;\n"
                                            "        }\n"
                                            "    );\n"
                                            "}");
    QCOMPARE(value.description(), expected);

    const PropertyList arrayOfDictionary(PropertyArray{PropertyDictionary{{QStringLiteral("a"), PropertyList::integer(1)}}});
    QCOMPARE(arrayOfDictionary.description(), QStringLiteral("(\n        {\n        a = 1;\n    }\n)"));

    // Upper case sorts before "_", and "_" before lower case.
    const PropertyList order(PropertyDictionary{{QStringLiteral("b"), str("1")},
                                                {QStringLiteral("_"), str("2")},
                                                {QStringLiteral("B"), str("3")}});
    QCOMPARE(order.description(), QStringLiteral("{\n    B = 3;\n    \"_\" = 2;\n    b = 1;\n}"));
}

void PropertyListTest::dateDescriptionUsesLocalZone_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("expected");
    // 2007-03-14 08:30:00 UTC is 195553800 seconds after the reference date.
    QTest::newRow("utc") << QByteArray("UTC") << 195553800.0 << QStringLiteral("2007-03-14 08:30:00 +0000");
    QTest::newRow("east of utc") << QByteArray("Europe/Berlin") << 195553800.0
                                 << QStringLiteral("2007-03-14 09:30:00 +0100");
    QTest::newRow("west, half hour") << QByteArray("America/St_Johns") << 190456200.0
                                     << QStringLiteral("2007-01-14 05:00:00 -0330");
    QTest::newRow("fraction truncated towards the past") << QByteArray("UTC") << -0.5
                                                        << QStringLiteral("2000-12-31 23:59:59 +0000");
    QTest::newRow("reference date") << QByteArray("UTC") << 0.0 << QStringLiteral("2001-01-01 00:00:00 +0000");
}

void PropertyListTest::dateDescriptionUsesLocalZone()
{
    QFETCH(QByteArray, zone);
    QFETCH(double, seconds);
    QFETCH(QString, expected);
    const QByteArray saved = qgetenv("TZ");
    qputenv("TZ", zone);
    tzset();
    const QString text = PropertyList::date(seconds).description();
    qputenv("TZ", saved);
    tzset();
    QCOMPARE(text, expected);
}

void PropertyListTest::equality_data()
{
    QTest::addColumn<PropertyList>("a");
    QTest::addColumn<PropertyList>("b");
    QTest::addColumn<bool>("equal");
    QTest::addColumn<bool>("identical");

    const double nan = std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("same integer, other width") << PropertyList::integer(5, 'i') << PropertyList::integer(5, 'q') << true << false;
    QTest::newRow("integer is not a real") << PropertyList::integer(1) << PropertyList::real(1.0) << false << false;
    QTest::newRow("integer is not a boolean") << PropertyList::integer(1, 'c') << PropertyList::boolean(true) << false << false;
    QTest::newRow("float and double of one value") << PropertyList::real(0.5, 'f') << PropertyList::real(0.5) << true << false;
    QTest::newRow("unsigned max is not -1") << PropertyList::unsignedInteger(~0ULL) << PropertyList::integer(-1) << false << false;
    QTest::newRow("unsigned equals positive signed") << PropertyList::unsignedInteger(7) << PropertyList::integer(7) << true << false;
    QTest::newRow("nan equals itself") << PropertyList::real(nan) << PropertyList::real(nan) << true << true;
    QTest::newRow("date is not a real") << PropertyList::date(3) << PropertyList::real(3) << false << false;
    QTest::newRow("string is not data") << str("a") << PropertyList(QByteArray("a")) << false << false;
    QTest::newRow("uid by value") << PropertyList::uid(3) << PropertyList::uid(3) << true << true;
    QTest::newRow("dictionary order ignored")
        << PropertyList(PropertyDictionary{{QStringLiteral("a"), str("1")}, {QStringLiteral("b"), str("2")}})
        << PropertyList(PropertyDictionary{{QStringLiteral("b"), str("2")}, {QStringLiteral("a"), str("1")}}) << true << true;
    QTest::newRow("array order matters") << PropertyList(PropertyArray{str("1"), str("2")})
                                         << PropertyList(PropertyArray{str("2"), str("1")}) << false << false;
    QTest::newRow("nested type code differs")
        << PropertyList(PropertyArray{PropertyList::integer(1, 'i')})
        << PropertyList(PropertyArray{PropertyList::integer(1, 'q')}) << true << false;
    QTest::newRow("missing key") << PropertyList(PropertyDictionary{{QStringLiteral("a"), str("1")}})
                                 << PropertyList(PropertyDictionary{{QStringLiteral("b"), str("1")}}) << false << false;
}

void PropertyListTest::equality()
{
    QFETCH(PropertyList, a);
    QFETCH(PropertyList, b);
    QFETCH(bool, equal);
    QFETCH(bool, identical);
    QCOMPARE(a == b, equal);
    QCOMPARE(b == a, equal);
    QCOMPARE(a.isIdenticalTo(b), identical);
    QCOMPARE(b.isIdenticalTo(a), identical);
}

void PropertyListTest::dictionaryKeepsInsertionOrder()
{
    PropertyDictionary d;
    d.insert(QStringLiteral("z"), str("1"));
    d.insert(QStringLiteral("a"), str("2"));
    d.insert(QStringLiteral("m"), str("3"));
    d.insert(QStringLiteral("z"), str("4")); // replaces in place
    QCOMPARE(d.keys(), (QStringList{QStringLiteral("z"), QStringLiteral("a"), QStringLiteral("m")}));
    QCOMPARE(d.find(QStringLiteral("z"))->toString(), QStringLiteral("4"));
    QVERIFY(d.remove(QStringLiteral("a")));
    QVERIFY(!d.remove(QStringLiteral("a")));
    // The index must follow the removal, or lookups answer the wrong value.
    QCOMPARE(d.find(QStringLiteral("m"))->toString(), QStringLiteral("3"));
    QCOMPARE(d.keys(), (QStringList{QStringLiteral("z"), QStringLiteral("m")}));
    QVERIFY(!d.find(QStringLiteral("a")));
}

void PropertyListTest::lookupAcrossTheIndexThreshold()
{
    // Small dictionaries are searched in order and large ones through an index;
    // every size on either side must find, replace and remove the same way.
    for (int size = 1; size <= 20; ++size) {
        PropertyDictionary d;
        for (int i = 0; i < size; ++i)
            d.insert(QString::number(i), PropertyList::integer(i));
        d.insert(QString::number(size - 1), PropertyList::integer(-1));
        QCOMPARE(d.size(), size);
        QCOMPARE(d.find(QString::number(size - 1))->toInteger(), -1);
        QVERIFY(d.remove(QString::number(0)));
        for (int i = 1; i < size - 1; ++i)
            QCOMPARE(d.find(QString::number(i))->toInteger(), i);
        QVERIFY(!d.contains(QString::number(0)));
        d.insert(QString::number(0), PropertyList::integer(0));
        QCOMPARE(d.keyAt(d.size() - 1), QString::number(0));
    }
}

void PropertyListTest::copiesAreIndependent()
{
    PropertyDictionary original{{QStringLiteral("k"), str("v")}};
    PropertyDictionary copy = original;
    copy.insert(QStringLiteral("k"), str("changed"));
    copy.insert(QStringLiteral("new"), str("x"));
    QCOMPARE(original.size(), 1);
    QCOMPARE(original.find(QStringLiteral("k"))->toString(), QStringLiteral("v"));

    PropertyArray items{str("a")};
    const PropertyList wrapped(items);
    items.append(str("b"));
    QCOMPARE(wrapped.arrayRef().size(), 1);
}

ORVANE_TEST(PropertyListTest)
#include "PropertyListTest.moc"
