// The platform's string readings: what typed or pasted text means as a number,
// a boolean or a date.
#include "TestRegistry.h"

#include "platform/StringReadings.h"

#include <QScopeGuard>
#include <QTest>

#include <cfloat>
#include <climits>
#include <clocale>
#include <limits>
#include <string>

using namespace Qt::StringLiterals;

class StringReadingsTest : public QObject {
    Q_OBJECT

private slots:
    void numberReadings_data();
    void numberReadings();
    void doubleValueIgnoresDecimalCommaLocale();
    void dateWithString_data();
    void dateWithString();
};

// int, double, float and bool readings; the expected double is exact and compared in the reading's type.
void StringReadingsTest::numberReadings_data()
{
    QTest::addColumn<char>("reading"); // i, d, f or b
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("expected");
    const auto row = [](const char *name, char reading, const QString &text, double expected) {
        QTest::newRow(name) << reading << text << expected;
    };
    const double inf = std::numeric_limits<double>::infinity();
    row("int: leading blanks then minus", 'i', u"  -7"_s, -7);
    row("int: exponent is not read", 'i', u" 1e3"_s, 1);
    row("int: two signs give nothing", 'i', u"--5"_s, 0);
    row("int: blank after sign is not skipped", 'i', u"- 5"_s, 0);
    row("int: INT_MAX exact", 'i', u"2147483647"_s, INT_MAX);
    row("int: INT_MAX+1 clamps", 'i', u"2147483648"_s, INT_MAX);
    row("int: INT_MIN exact", 'i', u"-2147483648"_s, INT_MIN);
    row("int: INT_MIN-1 clamps", 'i', u"-2147483649"_s, INT_MIN);
    row("int: huge negative clamps, not wraps", 'i', u"-99999999999999999999999999"_s, INT_MIN);
    // The edges of the platform's whitespace ranges.
    row("int: control unit 0x01 is whitespace", 'i', u"\u00015"_s, 5);
    row("int: DEL is whitespace", 'i', u"\u007F5"_s, 5);
    row("int: no-break space is whitespace", 'i', u"\u00A05"_s, 5);
    row("int: inverted exclamation is not whitespace", 'i', u"\u00A15"_s, 0);
    row("int: zero width space is whitespace", 'i', u"\u200B5"_s, 5);
    row("int: zero width non-joiner is not whitespace", 'i', u"\u200C5"_s, 0);
    row("int: ideographic space is whitespace", 'i', u"\u30005"_s, 5);
    row("int: line separator is not whitespace", 'i', u"\u20285"_s, 0);
    row("int: fullwidth digits are not digits", 'i', u"\uFF15"_s, 0);
    row("double: exponent after blank", 'd', u" 1e3"_s, 1000);
    row("double: leading point", 'd', u".5"_s, 0.5);
    row("double: dangling exponent mark", 'd', u"1e"_s, 1);
    row("double: inner minus ends the number", 'd', u"3-4"_s, 3);
    row("double: decimal comma is not read", 'd', u"1,5"_s, 1);
    row("double: no inf word", 'd', u"inf"_s, 0);
    row("double: overflow is infinity", 'd', u"1e999"_s, inf);
    row("double: underflow is zero", 'd', u"1e-999"_s, 0);
    row("double: second point ends the number", 'd', u"1.5.6"_s, 1.5);
    row("double: many digits round correctly", 'd', u"0.1000000000000000055511151231257827"_s, 0.1);
    row("float: plain", 'f', u"0.1"_s, double(0.1f));
    row("float: past float range, negative", 'f', u"-1e39"_s, -inf);
    row("float: just above FLT_MAX rounds down", 'f', u"3.4028235e38"_s, double(FLT_MAX));
    row("float: past the rounding point is infinity", 'f', u"3.4028236e38"_s, inf);
    row("float: double overflow stays infinity", 'f', u"1e999"_s, inf);
    row("float: below float range is zero", 'f', u"1e-50"_s, 0);
    row("bool: Yes", 'b', u"Yes"_s, true);
    row("bool: true", 'b', u"true"_s, true);
    row("bool: sign and zeros then 1", 'b', u"-01"_s, true);
    row("bool: only zeros", 'b', u"000"_s, false);
    row("bool: 0.5 is false", 'b', u"0.5"_s, false);
    row("bool: blank after sign is not skipped", 'b', u"- 1"_s, false);
    row("bool: two signs", 'b', u"+-1"_s, false);
    row("bool: N then true is false", 'b', u"Ntrue"_s, false);
}

void StringReadingsTest::numberReadings()
{
    QFETCH(char, reading);
    QFETCH(QString, text);
    QFETCH(double, expected);
    if (reading == 'i')
        QCOMPARE(StringReadings::intValue(text), static_cast<int>(expected));
    else if (reading == 'd')
        QCOMPARE(StringReadings::doubleValue(text), expected);
    else if (reading == 'f')
        QCOMPARE(StringReadings::floatValue(text), static_cast<float>(expected));
    else
        QCOMPARE(StringReadings::boolValue(text), expected != 0);
}

void StringReadingsTest::doubleValueIgnoresDecimalCommaLocale()
{
    const std::string previous = std::setlocale(LC_NUMERIC, nullptr);
    const auto restore = qScopeGuard([&previous] { std::setlocale(LC_NUMERIC, previous.c_str()); });
    const auto hasComma = [](const char *name) {
        return std::setlocale(LC_NUMERIC, name) && std::localeconv()->decimal_point[0] == ',';
    };
    if (!hasComma("de_DE.UTF-8") && !hasComma("de_DE.utf8") && !hasComma("de_DE") && !hasComma("fr_FR.UTF-8")
        && !hasComma("fr_FR.utf8"))
        QSKIP("no locale with a decimal comma is installed (tried de_DE and fr_FR)");
    QCOMPARE(StringReadings::doubleValue(u"1.5"_s), 1.5);
    QCOMPARE(StringReadings::doubleValue(u"1,5"_s), 1.0);
    QCOMPARE(StringReadings::floatValue(u"2.25"_s), 2.25f);
}

void StringReadingsTest::dateWithString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<qint64>("seconds");
    const auto good = [](const char *name, const QString &text, qint64 seconds) {
        QTest::newRow(name) << text << true << seconds;
    };
    const auto bad = [](const char *name, const QString &text) { QTest::newRow(name) << text << false << qint64(0); };
    good("reference-date", u"2001-01-01 00:00:00 +0000"_s, 0);
    good("positive-offset-is-subtracted", u"2001-01-01 01:00:00 +0100"_s, 0);
    good("offset-minutes-count", u"2024-03-10 08:30:15 -0530"_s, 731772015);
    good("leap-day-2000", u"2000-02-29 12:00:00 +0000"_s, -26481600);
    good("last-second-of-9999", u"9999-12-31 23:59:59 +0000"_s, 252423993599);
    good("year-zero-is-leap", u"0000-02-29 00:00:00 +0000"_s, -63140428800);
    good("march-after-century-leap", u"1600-03-01 00:00:00 +0000"_s, -12649219200);
    bad("empty", QString());
    bad("offset-without-sign", u"2001-01-01 00:00:00 0000"_s);
    bad("T-separator", u"2001-01-01T00:00:00 +0000"_s);
    bad("sign-in-day-field", u"2001-01-+1 00:00:00 +0000"_s);
    bad("month-zero", u"2001-00-01 00:00:00 +0000"_s);
    bad("month-13", u"2001-13-01 00:00:00 +0000"_s);
    bad("april-31", u"2001-04-31 00:00:00 +0000"_s);
    bad("february-29-in-common-year", u"2001-02-29 00:00:00 +0000"_s);
    bad("february-29-in-1900", u"1900-02-29 00:00:00 +0000"_s);
    bad("hour-24", u"2001-01-01 24:00:00 +0000"_s);
    bad("minute-60", u"2001-01-01 00:60:00 +0000"_s);
    bad("second-60", u"2001-01-01 00:00:60 +0000"_s);
    bad("offset-minutes-60", u"2001-01-01 00:00:00 +0060"_s);
}

void StringReadingsTest::dateWithString()
{
    QFETCH(QString, text);
    QFETCH(bool, valid);
    QFETCH(qint64, seconds);
    const std::optional<double> result = StringReadings::dateWithString(text);
    QCOMPARE(result.has_value(), valid);
    if (valid)
        QCOMPARE(static_cast<qint64>(*result), seconds);
}

ORVANE_TEST(StringReadingsTest)
#include "StringReadingsTest.moc"
