// The application's own string helpers: its yes/no reading, path cutting, the
// search field's query language, UTF-8 decoding and colour texts.
#include "TestRegistry.h"

#include "model/VXAdditions.h"

#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(CalibratedColor)

class VXAdditionsTest : public QObject {
    Q_OBJECT
private slots:
    void predicates_data();
    void predicates();
    void subPathFromBase_data();
    void subPathFromBase();
    void lastCharacterIsOneUtf16Unit();
    void stringWithData_data();
    void stringWithData();
    void colorText_data();
    void colorText();
};

// boolValue (b), beginsWithString (p) and containsString (c) share one table.
void VXAdditionsTest::predicates_data()
{
    QTest::addColumn<char>("function");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("argument"); // the prefix or the query
    QTest::addColumn<bool>("expected");
    const auto row = [](const char *name, char function, const QString &text, const QString &argument, bool expected) {
        QTest::newRow(name) << function << text << argument << expected;
    };
    row("bool: YES", 'b', u"YES"_s, {}, true);
    row("bool: Yes in mixed case is not a word", 'b', u"Yes"_s, {}, false);
    row("bool: word must match the whole text", 'b', u"yes "_s, {}, false);
    row("bool: minus one is not positive", 'b', u"-1"_s, {}, false);
    row("bool: leading integer with suffix", 'b', u" 12px"_s, {}, true);
    row("prefix: prefix", 'p', u"VXTextFont"_s, u"VX"_s, true);
    row("prefix: case differs", 'p', u"VXTextFont"_s, u"vx"_s, false);
    row("prefix: occurs later only", 'p', u"aVX"_s, u"VX"_s, false);
    row("prefix: empty prefix on empty text", 'p', u""_s, u""_s, false);
    row("search: plain ignores case", 'c', u"fontsize"_s, u"Font"_s, true);
    row("search: a one-letter query ignores case too", 'c', u"Zebra"_s, u"z"_s, true);
    row("search: hash is exact", 'c', u"VXTextFont"_s, u"#Font"_s, true);
    row("search: hash rejects other case", 'c', u"fontsize"_s, u"#Font"_s, false);
    row("search: bang negates ignoring case", 'c', u"ABCdef"_s, u"!abc"_s, false);
    row("search: bang matches when absent", 'c', u"xyz"_s, u"!abc"_s, true);
    row("search: hash-bang negates exactly", 'c', u"ABCdef"_s, u"#!abc"_s, true);
    row("search: bang alone finds a bang", 'c', u"wow!"_s, u"!"_s, true);
    row("search: hash-bang alone is literal", 'c', u"#!/bin/sh"_s, u"#!"_s, true);
    row("search: double hash searches a hash exactly", 'c', u"a#b"_s, u"##"_s, true);
    row("search: empty query", 'c', u"abc"_s, u""_s, false);
    row("search: negation matches empty text", 'c', QString(), u"!abc"_s, true);
}

void VXAdditionsTest::predicates()
{
    QFETCH(char, function);
    QFETCH(QString, text);
    QFETCH(QString, argument);
    QFETCH(bool, expected);
    if (function == 'b')
        QCOMPARE(VXAdditions::boolValue(text), expected);
    else if (function == 'p')
        QCOMPARE(VXAdditions::beginsWithString(text, argument), expected);
    else
        QCOMPARE(VXAdditions::containsString(text, argument), expected);
}

void VXAdditionsTest::subPathFromBase_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("base");
    QTest::addColumn<bool>("removeSlash");
    QTest::addColumn<std::optional<QString>>("expected");
    const QString prefs = u"/Users/demo/Library/Preferences"_s;
    const QString home = u"/Users/demo"_s;
    const std::optional<QString> none;
    QTest::newRow("slash-removed") << prefs << home << true << std::optional(u"Library/Preferences"_s);
    QTest::newRow("base-is-whole-text") << home << home << true << none;
    QTest::newRow("empty-base") << prefs << QString(u""_s) << false << none;
    QTest::newRow("base-absent") << prefs << u"/Users/other"_s << false << none;
    QTest::newRow("base-found-mid-text") << u"/Volumes/X/Users/demo/Desktop"_s << home << true << std::optional(u"Desktop"_s);
    QTest::newRow("first-occurrence-wins") << u"ab/ab/c"_s << u"ab"_s << false << std::optional(u"/ab/c"_s);
    QTest::newRow("skip-runs-past-end-gives-empty") << u"/Users/demo/"_s << home << true << std::optional(u""_s);
    QTest::newRow("skip-is-any-unit-not-only-slash") << u"/Users/demoX/a"_s << home << true << std::optional(u"/a"_s);
}

void VXAdditionsTest::subPathFromBase()
{
    QFETCH(QString, text);
    QFETCH(QString, base);
    QFETCH(bool, removeSlash);
    QFETCH(std::optional<QString>, expected);
    QCOMPARE(VXAdditions::subPathFromBase(text, base, removeSlash), expected);
}

void VXAdditionsTest::lastCharacterIsOneUtf16Unit()
{
    // A character outside the BMP ends with its low surrogate.
    QCOMPARE(VXAdditions::lastCharacter(u"a\U0001F600"_s), QChar(char16_t(0xDE00)));
}

void VXAdditionsTest::stringWithData_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<std::optional<QString>>("expected");
    QTest::newRow("empty-is-valid") << QByteArray() << std::optional(u""_s);
    QTest::newRow("nul-byte-is-valid") << QByteArray("a\0b", 3) << std::optional(u"a\u0000b"_s);
    QTest::newRow("latin1-byte") << QByteArray("caf\xE9") << std::optional<QString>();
    QTest::newRow("sequence-cut-at-end") << QByteArray("\xE2\x82") << std::optional<QString>();
    QTest::newRow("encoded-surrogate") << QByteArray("\xED\xA0\x80") << std::optional<QString>();
}

void VXAdditionsTest::stringWithData()
{
    QFETCH(QByteArray, bytes);
    QFETCH(std::optional<QString>, expected);
    QCOMPARE(VXAdditions::stringWithData(bytes), expected);
}

// Written rows (w) also read back (through a float) to the six decimals written.
void VXAdditionsTest::colorText_data()
{
    QTest::addColumn<char>("direction");
    QTest::addColumn<QString>("text");
    QTest::addColumn<CalibratedColor>("color");
    const auto row = [](const char *name, char direction, const QString &text, CalibratedColor color) {
        QTest::newRow(name) << direction << text << color;
    };
    row("write: rounds to six decimals", 'w', u"0.123456 1.000000 0.333333 0.000000"_s, {0.1234564, 0.9999996, 1.0 / 3, 0});
    row("write: out-of-range components kept", 'w', u"-0.250000 2.000000 10.000000 0.500000"_s, {-0.25, 2, 10, 0.5});
    row("write: fractions survive the float", 'w', u"0.123456 0.654321 0.999999 0.000001"_s,
        {0.123456, 0.654321, 0.999999, 0.000001});
    row("read: double blank is black", 'r', u"1  0 0 1"_s, {0, 0, 0, 1});
    row("read: tab is not a separator", 'r', u"1\t0 0 1"_s, {0, 0, 0, 1});
    row("read: non-numbers read as zero", 'r', u"x 0.5 y z"_s, {0, 0.5, 0, 0});
    row("read: empty part reads zero", 'r', u" 1 1 1"_s, {0, 1, 1, 1});
}

void VXAdditionsTest::colorText()
{
    QFETCH(char, direction);
    QFETCH(QString, text);
    QFETCH(CalibratedColor, color);
    const CalibratedColor read = VXAdditions::colorFromString(text);
    QVERIFY2(direction == 'w' || read == color, qPrintable(VXAdditions::stringFromColor(read)));
    if (direction == 'r')
        return;
    QCOMPARE(VXAdditions::stringFromColor(color), text);
    QCOMPARE(VXAdditions::stringFromColor(read), text);
    const double pairs[][2] = {
        {color.red, read.red}, {color.green, read.green}, {color.blue, read.blue}, {color.alpha, read.alpha}};
    for (const auto &pair : pairs)
        QVERIFY2(std::abs(pair[0] - pair[1]) < 5e-7, qPrintable(text));
}

ORVANE_TEST(VXAdditionsTest)
#include "VXAdditionsTest.moc"
