// The application's own string helpers: its yes/no reading, path cutting, the
// search field's query language, UTF-8 decoding and colour texts.
#include "TestRegistry.h"

#include "model/VXAdditions.h"

#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(CalibratedColor)

class VXAdditionsTest : public QObject {
    Q_OBJECT

private slots:
    void boolValue_data();
    void boolValue();
    void beginsWithString_data();
    void beginsWithString();
    void subPathFromBase_data();
    void subPathFromBase();
    void containsString_data();
    void containsString();
    void lastCharacterIsOneUtf16Unit();
    void stringWithData_data();
    void stringWithData();
    void stringFromColor_data();
    void stringFromColor();
    void colorFromString_data();
    void colorFromString();
    void colorRoundTrip_data();
    void colorRoundTrip();
};

void VXAdditionsTest::boolValue_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");
    QTest::newRow("one") << u"1"_s << true;
    QTest::newRow("zero") << u"0"_s << false;
    QTest::newRow("yes") << u"yes"_s << true;
    QTest::newRow("YES") << u"YES"_s << true;
    QTest::newRow("true") << u"true"_s << true;
    QTest::newRow("TRUE") << u"TRUE"_s << true;
    QTest::newRow("Yes-mixed-case-is-not-a-word") << u"Yes"_s << false;
    QTest::newRow("True-mixed-case-is-not-a-word") << u"True"_s << false;
    QTest::newRow("minus-one-is-not-positive") << u"-1"_s << false;
    QTest::newRow("two-is-positive") << u"2"_s << true;
    QTest::newRow("word-must-match-whole-text") << u"yes "_s << false;
    QTest::newRow("leading-integer-with-suffix") << u" 12px"_s << true;
    QTest::newRow("fraction-below-one-is-false") << u"0.9"_s << false;
    QTest::newRow("clamped-overflow-is-positive") << u"99999999999"_s << true;
    QTest::newRow("empty") << QString() << false;
}

void VXAdditionsTest::boolValue()
{
    QFETCH(QString, text);
    QFETCH(bool, expected);
    QCOMPARE(VXAdditions::boolValue(text), expected);
}

void VXAdditionsTest::beginsWithString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<bool>("expected");
    QTest::newRow("prefix") << u"VXTextFont"_s << u"VX"_s << true;
    QTest::newRow("whole-text") << u"VX"_s << u"VX"_s << true;
    QTest::newRow("case-differs") << u"VXTextFont"_s << u"vx"_s << false;
    QTest::newRow("occurs-later-only") << u"aVX"_s << u"VX"_s << false;
    QTest::newRow("longer-than-text") << u"V"_s << u"VX"_s << false;
    QTest::newRow("empty-prefix") << u"abc"_s << QString(u""_s) << false;
    QTest::newRow("null-prefix") << u"abc"_s << QString() << false;
    QTest::newRow("empty-prefix-on-empty-text") << QString(u""_s) << QString(u""_s) << false;
}

void VXAdditionsTest::beginsWithString()
{
    QFETCH(QString, text);
    QFETCH(QString, prefix);
    QFETCH(bool, expected);
    QCOMPARE(VXAdditions::beginsWithString(text, prefix), expected);
}

void VXAdditionsTest::subPathFromBase_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("base");
    QTest::addColumn<bool>("removeSlash");
    QTest::addColumn<std::optional<QString>>("expected");
    const QString prefs = u"/Users/demo/Library/Preferences"_s;
    const QString home = u"/Users/demo"_s;
    QTest::newRow("slash-removed") << prefs << home << true << std::optional(u"Library/Preferences"_s);
    QTest::newRow("slash-kept") << prefs << home << false << std::optional(u"/Library/Preferences"_s);
    QTest::newRow("base-is-whole-text") << home << home << true << std::optional<QString>();
    QTest::newRow("base-longer-than-text") << u"/U"_s << home << false << std::optional<QString>();
    QTest::newRow("empty-base") << prefs << QString(u""_s) << false << std::optional<QString>();
    QTest::newRow("null-base") << prefs << QString() << false << std::optional<QString>();
    QTest::newRow("base-absent") << prefs << u"/Users/other"_s << false << std::optional<QString>();
    QTest::newRow("base-case-differs") << prefs << u"/users/demo"_s << false << std::optional<QString>();
    QTest::newRow("base-found-mid-text") << u"/Volumes/X/Users/demo/Desktop"_s << home << true
                                         << std::optional(u"Desktop"_s);
    QTest::newRow("first-occurrence-wins") << u"ab/ab/c"_s << u"ab"_s << false << std::optional(u"/ab/c"_s);
    QTest::newRow("skip-runs-past-end-gives-empty") << u"/Users/demo/"_s << home << true
                                                    << std::optional(u""_s);
    QTest::newRow("skip-is-any-unit-not-only-slash") << u"/Users/demoX/a"_s << home << true
                                                     << std::optional(u"/a"_s);
}

void VXAdditionsTest::subPathFromBase()
{
    QFETCH(QString, text);
    QFETCH(QString, base);
    QFETCH(bool, removeSlash);
    QFETCH(std::optional<QString>, expected);
    const std::optional<QString> result = VXAdditions::subPathFromBase(text, base, removeSlash);
    QCOMPARE(result.has_value(), expected.has_value());
    if (expected)
        QCOMPARE(*result, *expected);
}

void VXAdditionsTest::containsString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("query");
    QTest::addColumn<bool>("expected");
    QTest::newRow("plain-ignores-case") << u"VXTextFont"_s << u"Font"_s << true;
    QTest::newRow("plain-ignores-case-lower-text") << u"fontsize"_s << u"Font"_s << true;
    QTest::newRow("plain-absent") << u"colour"_s << u"Font"_s << false;
    QTest::newRow("hash-is-exact") << u"VXTextFont"_s << u"#Font"_s << true;
    QTest::newRow("hash-rejects-other-case") << u"fontsize"_s << u"#Font"_s << false;
    QTest::newRow("bang-negates") << u"abcdef"_s << u"!abc"_s << false;
    QTest::newRow("bang-negates-ignoring-case") << u"ABCdef"_s << u"!abc"_s << false;
    QTest::newRow("bang-matches-when-absent") << u"xyz"_s << u"!abc"_s << true;
    QTest::newRow("hash-bang-negates-exactly") << u"ABCdef"_s << u"#!abc"_s << true;
    QTest::newRow("hash-bang-present") << u"abcdef"_s << u"#!abc"_s << false;
    QTest::newRow("bang-hash-negates-exactly") << u"ABCdef"_s << u"!#abc"_s << true;
    QTest::newRow("bang-hash-present") << u"abcdef"_s << u"!#abc"_s << false;
    QTest::newRow("bang-alone-finds-bang") << u"wow!"_s << u"!"_s << true;
    QTest::newRow("bang-alone-without-bang") << u"wow"_s << u"!"_s << false;
    QTest::newRow("hash-alone-finds-hash") << u"#1"_s << u"#"_s << true;
    QTest::newRow("hash-alone-without-hash") << u"1"_s << u"#"_s << false;
    QTest::newRow("hash-bang-alone-is-literal") << u"#!/bin/sh"_s << u"#!"_s << true;
    QTest::newRow("hash-bang-alone-absent") << u"sh"_s << u"#!"_s << false;
    QTest::newRow("bang-hash-alone-is-literal") << u"x!#y"_s << u"!#"_s << true;
    QTest::newRow("bang-hash-alone-absent") << u"x#!y"_s << u"!#"_s << false;
    QTest::newRow("double-hash-searches-hash-exactly") << u"a#b"_s << u"##"_s << true;
    QTest::newRow("double-bang-negates-bang") << u"a!b"_s << u"!!"_s << false;
    QTest::newRow("empty-query") << u"abc"_s << QString(u""_s) << false;
    QTest::newRow("null-query") << u"abc"_s << QString() << false;
    QTest::newRow("negation-matches-empty-text") << QString() << u"!abc"_s << true;
    QTest::newRow("plain-on-empty-text") << QString() << u"abc"_s << false;
}

void VXAdditionsTest::containsString()
{
    QFETCH(QString, text);
    QFETCH(QString, query);
    QFETCH(bool, expected);
    QCOMPARE(VXAdditions::containsString(text, query), expected);
}

void VXAdditionsTest::lastCharacterIsOneUtf16Unit()
{
    QCOMPARE(VXAdditions::lastCharacter(u"abc"_s), QChar(u'c'));
    // A character outside the BMP ends with its low surrogate.
    QCOMPARE(VXAdditions::lastCharacter(u"a\U0001F600"_s), QChar(char16_t(0xDE00)));
}

void VXAdditionsTest::stringWithData_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<std::optional<QString>>("expected");
    QTest::newRow("ascii") << QByteArray("abc") << std::optional(u"abc"_s);
    QTest::newRow("two-byte-sequence") << QByteArray("\xC3\xA9") << std::optional(u"\u00E9"_s);
    QTest::newRow("four-byte-sequence") << QByteArray("\xF0\x9F\x98\x80") << std::optional(u"\U0001F600"_s);
    QTest::newRow("empty-is-valid") << QByteArray() << std::optional(u""_s);
    QTest::newRow("nul-byte-is-valid") << QByteArray("a\0b", 3) << std::optional(u"a\u0000b"_s);
    QTest::newRow("latin1-byte") << QByteArray("caf\xE9") << std::optional<QString>();
    QTest::newRow("sequence-cut-at-end") << QByteArray("\xE2\x82") << std::optional<QString>();
    QTest::newRow("lone-continuation-byte") << QByteArray("a\x80" "b") << std::optional<QString>();
    QTest::newRow("overlong-nul") << QByteArray("\xC0\x80") << std::optional<QString>();
    QTest::newRow("encoded-surrogate") << QByteArray("\xED\xA0\x80") << std::optional<QString>();
    QTest::newRow("beyond-unicode") << QByteArray("\xF4\x90\x80\x80") << std::optional<QString>();
}

void VXAdditionsTest::stringWithData()
{
    QFETCH(QByteArray, bytes);
    QFETCH(std::optional<QString>, expected);
    const std::optional<QString> result = VXAdditions::stringWithData(bytes);
    QCOMPARE(result.has_value(), expected.has_value());
    if (expected)
        QCOMPARE(*result, *expected);
}

void VXAdditionsTest::stringFromColor_data()
{
    QTest::addColumn<CalibratedColor>("color");
    QTest::addColumn<QString>("expected");
    QTest::newRow("six-decimals-single-blanks") << CalibratedColor{1, 0.5, 0, 1}
                                                << u"1.000000 0.500000 0.000000 1.000000"_s;
    QTest::newRow("rounds-to-six-decimals") << CalibratedColor{0.1234564, 0.9999996, 1.0 / 3, 0}
                                            << u"0.123456 1.000000 0.333333 0.000000"_s;
    QTest::newRow("out-of-range-components-kept") << CalibratedColor{-0.25, 2, 10, 0.5}
                                                  << u"-0.250000 2.000000 10.000000 0.500000"_s;
}

void VXAdditionsTest::stringFromColor()
{
    QFETCH(CalibratedColor, color);
    QFETCH(QString, expected);
    QCOMPARE(VXAdditions::stringFromColor(color), expected);
}

void VXAdditionsTest::colorFromString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<CalibratedColor>("expected");
    const CalibratedColor black{0, 0, 0, 1};
    QTest::newRow("opaque-red") << u"1 0 0 1"_s << CalibratedColor{1, 0, 0, 1};
    QTest::newRow("three-parts-is-black") << u"1 0 0"_s << black;
    QTest::newRow("five-parts-is-black") << u"1 0 0 1 1"_s << black;
    QTest::newRow("double-blank-is-black") << u"1  0 0 1"_s << black;
    QTest::newRow("trailing-blank-is-black") << u"1 0 0 1 "_s << black;
    QTest::newRow("tab-is-not-a-separator") << u"1\t0 0 1"_s << black;
    QTest::newRow("empty-is-black") << QString() << black;
    QTest::newRow("non-numbers-read-as-zero") << u"x 0.5 y z"_s << CalibratedColor{0, 0.5, 0, 0};
    QTest::newRow("half-values") << u"0.5 0.25 0.125 0.75"_s << CalibratedColor{0.5, 0.25, 0.125, 0.75};
    QTest::newRow("empty-part-reads-zero") << u" 1 1 1"_s << CalibratedColor{0, 1, 1, 1};
}

void VXAdditionsTest::colorFromString()
{
    QFETCH(QString, text);
    QFETCH(CalibratedColor, expected);
    const CalibratedColor color = VXAdditions::colorFromString(text);
    QCOMPARE(color.red, expected.red);
    QCOMPARE(color.green, expected.green);
    QCOMPARE(color.blue, expected.blue);
    QCOMPARE(color.alpha, expected.alpha);
}

void VXAdditionsTest::colorRoundTrip_data()
{
    QTest::addColumn<CalibratedColor>("color");
    QTest::newRow("primaries") << CalibratedColor{1, 0, 0, 1};
    QTest::newRow("fractions") << CalibratedColor{0.123456, 0.654321, 0.999999, 0.000001};
    QTest::newRow("thirds") << CalibratedColor{1.0 / 3, 2.0 / 3, 0.5, 0.25};
}

void VXAdditionsTest::colorRoundTrip()
{
    QFETCH(CalibratedColor, color);
    const QString text = VXAdditions::stringFromColor(color);
    const CalibratedColor back = VXAdditions::colorFromString(text);
    // Components pass through a float on the way back, so they agree to the
    // six decimals that were written, not to the last bit.
    QCOMPARE(VXAdditions::stringFromColor(back), text);
    const double components[][2] = {
        {color.red, back.red}, {color.green, back.green}, {color.blue, back.blue}, {color.alpha, back.alpha}};
    for (const auto &pair : components)
        QVERIFY2(std::abs(pair[0] - pair[1]) < 5e-7, qPrintable(text));
}

ORVANE_TEST(VXAdditionsTest)
#include "VXAdditionsTest.moc"
