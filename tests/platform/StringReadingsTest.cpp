// The platform's string readings: what typed or pasted text means as a number,
// a boolean or a date.
#include "TestRegistry.h"

#include "platform/StringReadings.h"

#include <QTest>

#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <limits>
#include <string>

using namespace Qt::StringLiterals;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// Switches LC_NUMERIC to a locale with a decimal comma for one test and puts
// the old one back, whatever the test's outcome.
class DecimalCommaLocale {
public:
    DecimalCommaLocale()
        : m_previous(std::setlocale(LC_NUMERIC, nullptr))
    {
        for (const char *name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8"}) {
            if (std::setlocale(LC_NUMERIC, name) && std::localeconv()->decimal_point[0] == ',') {
                m_active = true;
                return;
            }
        }
        std::setlocale(LC_NUMERIC, m_previous.c_str());
    }
    ~DecimalCommaLocale() { std::setlocale(LC_NUMERIC, m_previous.c_str()); }
    DecimalCommaLocale(const DecimalCommaLocale &) = delete;
    DecimalCommaLocale &operator=(const DecimalCommaLocale &) = delete;
    bool active() const { return m_active; }

private:
    std::string m_previous;
    bool m_active = false;
};

} // namespace

class StringReadingsTest : public QObject {
    Q_OBJECT

private slots:
    void intValue_data();
    void intValue();
    void doubleValue_data();
    void doubleValue();
    void doubleValueIgnoresDecimalCommaLocale();
    void floatValue_data();
    void floatValue();
    void boolValue_data();
    void boolValue();
    void dateWithString_data();
    void dateWithString();
};

void StringReadingsTest::intValue_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");
    QTest::newRow("trailing-letters-stop-the-number") << u"12abc"_s << 12;
    QTest::newRow("leading-blanks-then-minus") << u"  -7"_s << -7;
    QTest::newRow("plus-sign") << u"+5"_s << 5;
    QTest::newRow("no-hex-prefix") << u"0x1A"_s << 0;
    QTest::newRow("exponent-is-not-read") << u" 1e3"_s << 1;
    QTest::newRow("two-signs-give-nothing") << u"--5"_s << 0;
    QTest::newRow("overflow-clamps-high") << u"99999999999"_s << INT_MAX;
    QTest::newRow("fraction-is-dropped") << u"1.9"_s << 1;
    QTest::newRow("blank-after-sign-is-not-skipped") << u"- 5"_s << 0;
    QTest::newRow("int-max-exact") << u"2147483647"_s << INT_MAX;
    QTest::newRow("int-max-plus-one-clamps") << u"2147483648"_s << INT_MAX;
    QTest::newRow("int-min-exact") << u"-2147483648"_s << INT_MIN;
    QTest::newRow("int-min-minus-one-clamps") << u"-2147483649"_s << INT_MIN;
    QTest::newRow("huge-negative-clamps-not-wraps") << u"-99999999999999999999999999"_s << INT_MIN;
    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("sign-only") << u"-"_s << 0;
    QTest::newRow("tab-and-newline-are-whitespace") << u"\t\n42"_s << 42;
    QTest::newRow("control-unit-0x01-is-whitespace") << u"\u00015"_s << 5;
    QTest::newRow("del-is-whitespace") << u"\u007F5"_s << 5;
    QTest::newRow("next-line-c1-is-whitespace") << u"\u00855"_s << 5;
    QTest::newRow("no-break-space-is-whitespace") << u"\u00A05"_s << 5;
    QTest::newRow("em-space-is-whitespace") << u"\u20035"_s << 5;
    QTest::newRow("zero-width-space-is-whitespace") << u"\u200B5"_s << 5;
    QTest::newRow("ideographic-space-is-whitespace") << u"\u30005"_s << 5;
    QTest::newRow("inverted-exclamation-is-not-whitespace") << u"\u00A15"_s << 0;
    QTest::newRow("zero-width-non-joiner-is-not-whitespace") << u"\u200C5"_s << 0;
    QTest::newRow("line-separator-is-not-whitespace") << u"\u20285"_s << 0;
    QTest::newRow("byte-order-mark-is-not-whitespace") << u"\uFEFF5"_s << 0;
    QTest::newRow("fullwidth-digits-are-not-digits") << u"\uFF15"_s << 0;
    QTest::newRow("arabic-indic-digit-ends-the-number") << u"7\u0663"_s << 7;
}

void StringReadingsTest::intValue()
{
    QFETCH(QString, text);
    QFETCH(int, expected);
    QCOMPARE(StringReadings::intValue(text), expected);
}

void StringReadingsTest::doubleValue_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("expected");
    QTest::newRow("exponent-after-blank") << u" 1e3"_s << 1000.0;
    QTest::newRow("trailing-letters-stop-the-number") << u"12abc"_s << 12.0;
    QTest::newRow("leading-point") << u".5"_s << 0.5;
    QTest::newRow("dangling-exponent-mark") << u"1e"_s << 1.0;
    QTest::newRow("inner-minus-ends-the-number") << u"3-4"_s << 3.0;
    QTest::newRow("decimal-comma-is-not-read") << u"1,5"_s << 1.0;
    QTest::newRow("no-hex-input") << u"0x1A"_s << 0.0;
    QTest::newRow("no-inf-word") << u"inf"_s << 0.0;
    QTest::newRow("no-nan-word") << u"nan"_s << 0.0;
    QTest::newRow("no-hex-float") << u"0x1p3"_s << 0.0;
    QTest::newRow("two-signs-give-nothing") << u"+-3"_s << 0.0;
    QTest::newRow("overflow-is-infinity") << u"1e999"_s << kInf;
    QTest::newRow("negative-overflow-is-minus-infinity") << u"-1e999"_s << -kInf;
    QTest::newRow("underflow-is-zero") << u"1e-999"_s << 0.0;
    QTest::newRow("point-alone") << u"."_s << 0.0;
    QTest::newRow("signed-leading-point-with-exponent") << u"+.5e1"_s << 5.0;
    QTest::newRow("second-point-ends-the-number") << u"1.5.6"_s << 1.5;
    QTest::newRow("signed-exponent") << u"25E-2"_s << 0.25;
    QTest::newRow("exponent-mark-alone") << u"e5"_s << 0.0;
    QTest::newRow("blank-inside-ends-the-number") << u"12 34"_s << 12.0;
    QTest::newRow("ideographic-space-skipped") << u"\u3000-2.5"_s << -2.5;
    QTest::newRow("line-separator-not-skipped") << u"\u20282.5"_s << 0.0;
    QTest::newRow("empty") << QString() << 0.0;
    QTest::newRow("many-digits-round-correctly") << u"0.1000000000000000055511151231257827"_s << 0.1;
}

void StringReadingsTest::doubleValue()
{
    QFETCH(QString, text);
    QFETCH(double, expected);
    QCOMPARE(StringReadings::doubleValue(text), expected);
}

void StringReadingsTest::doubleValueIgnoresDecimalCommaLocale()
{
    DecimalCommaLocale locale;
    if (!locale.active())
        QSKIP("no locale with a decimal comma is installed (tried de_DE and fr_FR)");
    QCOMPARE(StringReadings::doubleValue(u"1.5"_s), 1.5);
    QCOMPARE(StringReadings::doubleValue(u"1,5"_s), 1.0);
    QCOMPARE(StringReadings::floatValue(u"2.25"_s), 2.25f);
}

void StringReadingsTest::floatValue_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<float>("expected");
    const float inf = std::numeric_limits<float>::infinity();
    QTest::newRow("plain") << u"0.1"_s << 0.1f;
    QTest::newRow("past-float-range-is-infinity") << u"1e39"_s << inf;
    QTest::newRow("past-float-range-negative") << u"-1e39"_s << -inf;
    QTest::newRow("just-above-flt-max-rounds-down") << u"3.4028235e38"_s << FLT_MAX;
    QTest::newRow("past-rounding-point-is-infinity") << u"3.4028236e38"_s << inf;
    QTest::newRow("double-overflow-stays-infinity") << u"1e999"_s << inf;
    QTest::newRow("below-float-range-is-zero") << u"1e-50"_s << 0.0f;
    QTest::newRow("letters-give-zero") << u"abc"_s << 0.0f;
}

void StringReadingsTest::floatValue()
{
    QFETCH(QString, text);
    QFETCH(float, expected);
    QCOMPARE(StringReadings::floatValue(text), expected);
}

void StringReadingsTest::boolValue_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");
    QTest::newRow("Yes") << u"Yes"_s << true;
    QTest::newRow("true") << u"true"_s << true;
    QTest::newRow("blank-then-2") << u" 2"_s << true;
    QTest::newRow("sign-and-zeros-then-1") << u"-01"_s << true;
    QTest::newRow("no") << u"no"_s << false;
    QTest::newRow("zero") << u"0"_s << false;
    QTest::newRow("only-zeros") << u"000"_s << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("abc") << u"abc"_s << false;
    QTest::newRow("capital-T") << u"T"_s << true;
    QTest::newRow("zero-point-five-is-false") << u"0.5"_s << false;
    QTest::newRow("blank-after-sign-is-not-skipped") << u"- 1"_s << false;
    QTest::newRow("two-signs") << u"+-1"_s << false;
    QTest::newRow("ideographic-space-skipped") << u"\u3000y"_s << true;
    QTest::newRow("N-then-true-is-false") << u"Ntrue"_s << false;
}

void StringReadingsTest::boolValue()
{
    QFETCH(QString, text);
    QFETCH(bool, expected);
    QCOMPARE(StringReadings::boolValue(text), expected);
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
    good("negative-offset-is-added", u"2000-12-31 23:00:00 -0100"_s, 0);
    good("offset-minutes-count", u"2024-03-10 08:30:15 -0530"_s, 731772015);
    good("odd-offset", u"2013-07-04 12:34:56 +0545"_s, 394613396);
    good("unix-epoch", u"1970-01-01 00:00:00 +0000"_s, -978307200);
    good("leap-day-2000", u"2000-02-29 12:00:00 +0000"_s, -26481600);
    good("leap-day-2400", u"2400-02-29 00:00:00 +0000"_s, 12596256000);
    good("last-second-of-9999", u"9999-12-31 23:59:59 +0000"_s, 252423993599);
    good("year-one", u"0001-01-01 00:00:00 +0000"_s, -63113904000);
    good("year-zero-is-leap", u"0000-02-29 00:00:00 +0000"_s, -63140428800);
    good("march-after-century-leap", u"1600-03-01 00:00:00 +0000"_s, -12649219200);
    bad("empty", QString());
    bad("missing-offset", u"2001-01-01 00:00:00"_s);
    bad("offset-without-sign", u"2001-01-01 00:00:00 0000"_s);
    bad("offset-with-colon", u"2001-01-01 00:00:00 +01:00"_s);
    bad("one-digit-month", u"2001-1-01 00:00:00 +0000"_s);
    bad("T-separator", u"2001-01-01T00:00:00 +0000"_s);
    bad("leading-blank", u" 2001-01-01 00:00:00 +0000"_s);
    bad("trailing-blank", u"2001-01-01 00:00:00 +0000 "_s);
    bad("two-blanks-before-offset", u"2001-01-01 00:00:00  +000"_s);
    bad("letter-in-year", u"20O1-01-01 00:00:00 +0000"_s);
    bad("sign-in-day-field", u"2001-01-+1 00:00:00 +0000"_s);
    bad("fullwidth-digit", u"2001-01-0\uFF11 00:00:00 +0000"_s);
    bad("month-zero", u"2001-00-01 00:00:00 +0000"_s);
    bad("month-13", u"2001-13-01 00:00:00 +0000"_s);
    bad("day-zero", u"2001-01-00 00:00:00 +0000"_s);
    bad("day-32", u"2001-01-32 00:00:00 +0000"_s);
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
