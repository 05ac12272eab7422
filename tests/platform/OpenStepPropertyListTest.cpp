// The old-style text reader: exact values for every construct of the grammar,
// exact status and place for broken text, and the real files of the corpus.
#include "Corpus.h"
#include "TestRegistry.h"
#include "WarningsPicture.h"

#include "platform/OpenStepPropertyListReader.h"
#include "platform/PropertyListSerialization.h"

#include <QFileInfo>
#include <QStringEncoder>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

PropertyList str(const QString &text) { return PropertyList(text); }

QByteArray encoded(QStringConverter::Encoding encoding, const QString &text, bool mark = true)
{
    QStringEncoder encoder(encoding, mark ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default);
    return encoder(text);
}

PropertyList strings(std::initializer_list<const char *> items)
{
    PropertyArray array;
    for (const char *item : items)
        array.append(PropertyList(QString::fromUtf8(item)));
    return array;
}

QByteArray nested(int depth) { return QByteArray(depth, '(') + QByteArray(depth, ')'); }

QString mismatch(const PropertyList &actual, const PropertyList &expected)
{
    return u"got "_s + actual.description() + u" (type code "_s +
           QLatin1Char(actual.typeCode() ? actual.typeCode() : '-') + u"), expected "_s +
           expected.description();
}

} // namespace

class OpenStepPropertyListTest : public QObject {
    Q_OBJECT
private slots:
    void readsValue_data();
    void readsValue();
    void readsWithWarnings_data();
    void readsWithWarnings();
    void rejectsBrokenText_data();
    void rejectsBrokenText();
    void sniff_data();
    void sniff();
    void corpusFileReads_data();
    void corpusFileReads();
    void anyCorpusFileReadsOrFailsWithAPlace();
};

void OpenStepPropertyListTest::readsValue_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<PropertyList>("expected");
    using P = PropertyList;
    // Strings and escapes
    QTest::newRow("named escapes") << QByteArray(R"("\a\b\f\n\r\t\v\"\'\\")") << str(u"\a\b\f\n\r\t\v\"'\\"_s);
    QTest::newRow("backslash before punctuation or blank is that character")
        << QByteArray(R"("a\/b\ c\{")") << str(u"a/b c{"_s);
    QTest::newRow("octal escapes above 0x7F are NeXTSTEP Latin, not Latin-1")
        << QByteArray(R"("\341\351\200")") << str(u"\u00C6\u00D8\u00A0"_s);
    QTest::newRow("octal escape stops after three digits") << QByteArray(R"("\1011")") << str(u"A1"_s);
    QTest::newRow("U escape with four hex digits, either case of U")
        << QByteArray(R"("\U00e9\u263A")") << str(u"\u00E9\u263A"_s);
    QTest::newRow("U escape with fewer digits stops at a non-hex character")
        << QByteArray(R"("\U41x\U7")") << str(u"Ax\a"_s);
    QTest::newRow("two U escapes form a surrogate pair")
        << QByteArray(R"("\UD83D\UDE00")") << str(QString::fromUcs4(U"\U0001F600"));
    QTest::newRow("single quotes delimit too") << QByteArray(R"('say "hi"')") << str(u"say \"hi\""_s);
    QTest::newRow("unquoted characters") << QByteArray("a_$/:.-Z9") << str(u"a_$/:.-Z9"_s);
    // Comments, whitespace and containers
    QTest::newRow("comments between tokens")
        << QByteArray("/* c */ ( a, // x\n b /* y */ )") << strings({"a", "b"});
    QTest::newRow("slashes inside unquoted strings are not comments")
        << QByteArray("(a/b, /usr/bin)") << strings({"a/b", "/usr/bin"});
    QTest::newRow("vertical tab, form feed and line separators are whitespace")
        << QByteArray("(a,\v\fb\xE2\x80\xA8,\xE2\x80\xA9" "c)") << strings({"a", "b", "c"});
    QTest::newRow("empty text is an empty dictionary") << QByteArray("") << P(PropertyDictionary());
    QTest::newRow("trailing comma in an array") << QByteArray("(a, b,)") << strings({"a", "b"});
    QTest::newRow("key; shorthand inside braces")
        << QByteArray("{ k; \"q\" = v; }") << P(PropertyDictionary{{u"k"_s, str(u"k"_s)}, {u"q"_s, str(u"v"_s)}});
    QTest::newRow("a lone quoted string is a string") << QByteArray(" \"just text\" ") << str(u"just text"_s);
    QTest::newRow("strings file") << QByteArray("/* note */\n\"a\" = \"1\";\nb = c; // tail\n")
                                  << P(PropertyDictionary{{u"a"_s, str(u"1"_s)}, {u"b"_s, str(u"c"_s)}});
    // Encodings
    QTest::newRow("UTF-16LE with byte-order mark") << encoded(QStringConverter::Utf16LE, u"{a = \"\u00E9\";}"_s)
                                                   << P(PropertyDictionary{{u"a"_s, str(u"\u00E9"_s)}});
    QTest::newRow("UTF-16BE without mark, found by its NULs")
        << encoded(QStringConverter::Utf16BE, u"(x)"_s, false) << strings({"x"});
    QTest::newRow("UTF-8 byte-order mark is skipped") << QByteArray("\xEF\xBB\xBFx") << str(u"x"_s);
    QTest::newRow("UTF-32LE with byte-order mark, outside the BMP")
        << encoded(QStringConverter::Utf32LE, QString::fromUcs4(U"(\"\U0001F600\")"))
        << P(PropertyArray{str(QString::fromUcs4(U"\U0001F600"))});
    // Data and GNUstep typed values
    QTest::newRow("hex data, either case, blanks between pairs")
        << QByteArray("<0fA1 b2\nc3>") << P(QByteArray::fromHex("0fa1b2c3"));
    QTest::newRow("GNUstep base64 data") << QByteArray("<[AAEC]>") << P(QByteArray::fromHex("000102"));
    QTest::newRow("<*I> 12 comes from the small-number cache") << QByteArray("<*I12>") << P::integer(12, 'i');
    QTest::newRow("<*I> 13 is 64-bit") << QByteArray("<*I13>") << P::integer(13, 'q');
    QTest::newRow("<*I> above INT64_MAX is unsigned")
        << QByteArray("<*I18446744073709551615>") << P::unsignedInteger(18446744073709551615ULL, 'Q');
    QTest::newRow("<*R> real") << QByteArray("<*R-1.5>") << P::real(-1.5);
    QTest::newRow("<*BY> and <*BN>")
        << QByteArray("(<*BY>, <*BN>)") << P(PropertyArray{P::boolean(true), P::boolean(false)});
    QTest::newRow("<*D> with a zone offset")
        << QByteArray("<*D2001-01-02 00:00:00 +0100>") << P::date(86400.0 - 3600.0);
    P deepest = PropertyArray();
    for (int level = 1; level < PropertyListSerialization::kMaxDepth; ++level)
        deepest = PropertyArray{deepest};
    QTest::newRow("nesting up to the limit") << nested(PropertyListSerialization::kMaxDepth) << deepest;
}

void OpenStepPropertyListTest::readsValue()
{
    QFETCH(QByteArray, input);
    QFETCH(PropertyList, expected);
    const ReadResult<PropertyList> result = OpenStepPropertyListReader::read(input);
    QVERIFY2(result.ok(), qPrintable(result.errorText()));
    QVERIFY2(result.value.isIdenticalTo(expected), qPrintable(mismatch(result.value, expected)));
    QCOMPARE(WarningsPicture::of(result.warnings), QString());
}

// What is resolved instead of refused, read as the application reads a file.
void OpenStepPropertyListTest::readsWithWarnings_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<PropertyList>("expected");
    QTest::addColumn<QString>("warnings");
    using P = PropertyList;
    QTest::newRow("duplicate key: the last one wins")
        << QByteArray("{a = 1; a = 2;}") << P(PropertyDictionary{{u"a"_s, str(u"2"_s)}})
        << u"DuplicateKey at line 1, column 9, byte 8"_s;
    QTest::newRow("octal escape of an unassigned byte, in a strings file read twice")
        << QByteArray(R"("\376" = 1; "\376" = 2;)") << P(PropertyDictionary{{u"\uFFFD"_s, str(u"2"_s)}})
        << u"Adjusted at line 1, column 2, byte 1; DuplicateKey at line 1, column 13, byte 12; "
           "Adjusted at line 1, column 14, byte 13"_s;
    QTest::newRow("<*R> beyond a double is infinity")
        << QByteArray("(\n<*R1e999>)") << P(PropertyArray{P::real(std::numeric_limits<double>::infinity())})
        << u"OutOfRange at line 2, column 1, byte 2"_s;
    QTest::newRow("markup that is not XML is old-style data")
        << QByteArray("<ab>") << P(QByteArray("\xAB")) << u"Reinterpreted at line 1, column 1, byte 0"_s;
}

void OpenStepPropertyListTest::readsWithWarnings()
{
    QFETCH(QByteArray, input);
    QFETCH(PropertyList, expected);
    QFETCH(QString, warnings);
    const ReadResult<PropertyListFile> result = PropertyListSerialization::read(input);
    QVERIFY2(result.ok(), qPrintable(result.errorText()));
    QCOMPARE(result.value.format, PropertyListFormat::OpenStep);
    QVERIFY2(result.value.value.isIdenticalTo(expected), qPrintable(mismatch(result.value.value, expected)));
    QCOMPARE(WarningsPicture::of(result.warnings), warnings);
}

void OpenStepPropertyListTest::rejectsBrokenText_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<ReadStatus>("status");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<qint64>("offset");
    using S = ReadStatus;
    // Unterminated constructs point at where they start.
    QTest::newRow("unterminated string") << QByteArray("(\n \"abc") << S::Truncated << 2 << 2 << qint64(3);
    QTest::newRow("unterminated comment") << QByteArray("( a /* x") << S::Truncated << 1 << 5 << qint64(4);
    QTest::newRow("unterminated inner array") << QByteArray("{a = (b, c") << S::Truncated << 1 << 6 << qint64(5);
    QTest::newRow("strings file missing the last ;")
        << QByteArray("\"a\" = \"b\"") << S::Truncated << 1 << 10 << qint64(9);
    // Grammar
    QTest::newRow("missing ; before }") << QByteArray("{a = b}") << S::Syntax << 1 << 7 << qint64(6);
    QTest::newRow("missing =") << QByteArray("{a b;}") << S::Syntax << 1 << 4 << qint64(3);
    QTest::newRow("array key") << QByteArray("{(a) = b;}") << S::Syntax << 1 << 2 << qint64(1);
    QTest::newRow("missing comma, after CR LF lines")
        << QByteArray("(\r\n a \r\n b)") << S::Syntax << 3 << 2 << qint64(9);
    QTest::newRow("garbage after the top value") << QByteArray("(a) b") << S::Syntax << 1 << 5 << qint64(4);
    QTest::newRow("non-ASCII unquoted text") << QByteArray("(a, \xC3\xA9)") << S::Syntax << 1 << 5 << qint64(4);
    QTest::newRow("NUL in a string") << QByteArray("\"a\0b\"", 5) << S::Syntax << 1 << 3 << qint64(2);
    QTest::newRow("unknown letter escape \\d") << QByteArray(R"("Worl\d")") << S::Syntax << 1 << 6 << qint64(5);
    QTest::newRow("\\U without hex digits") << QByteArray(R"("\Ux")") << S::Syntax << 1 << 2 << qint64(1);
    QTest::newRow("octal escape above a byte") << QByteArray(R"("\400")") << S::BadValue << 1 << 2 << qint64(1);
    // Data and GNUstep typed values
    QTest::newRow("odd number of hex digits") << QByteArray("<abc>") << S::BadValue << 1 << 4 << qint64(3);
    QTest::newRow("non-hex character in data") << QByteArray("<0g>") << S::Syntax << 1 << 3 << qint64(2);
    QTest::newRow("bad base64") << QByteArray("<[A!==]>") << S::BadValue << 1 << 1 << qint64(0);
    QTest::newRow("<*R> with garbage after the number")
        << QByteArray("(<*R1.5x>)") << S::BadValue << 1 << 2 << qint64(1);
    QTest::newRow("<*D> without zone")
        << QByteArray("<*D2001-01-01 00:00:00>") << S::BadValue << 1 << 1 << qint64(0);
    QTest::newRow("<*I> beyond 64 bits")
        << QByteArray("<*I18446744073709551616>") << S::BadValue << 1 << 1 << qint64(0);
    QTest::newRow("binary marker with a bad version")
        << QByteArray("bplistl") << S::BadHeader << 1 << 1 << qint64(0);
    // Nesting
    const int limit = PropertyListSerialization::kMaxDepth;
    QTest::newRow("one level beyond the limit")
        << nested(limit + 1) << S::TooDeep << 1 << limit + 1 << qint64(limit);
    QTest::newRow("100000 open brackets")
        << QByteArray(100000, '(') << S::TooDeep << 1 << limit + 1 << qint64(limit);
    // Encoding
    QTest::newRow("invalid UTF-8") << QByteArray("(a,\n \xFF)") << S::BadEncoding << 2 << 2 << qint64(5);
    QTest::newRow("UTF-16 with an odd byte count")
        << QByteArray("\xFF\xFE(\0)\0)", 7) << S::BadEncoding << 1 << 3 << qint64(6);
    QTest::newRow("UTF-16 unpaired surrogate")
        << QByteArray("\xFF\xFE\"\0\x00\xD8\"\0", 8) << S::BadEncoding << 1 << 2 << qint64(4);
    QTest::newRow("lone high surrogate from \\U")
        << QByteArray(R"("a\UD800b")") << S::BadEncoding << 1 << 3 << qint64(2);
    // Places count UTF-16 units for the column and bytes for the offset.
    QTest::newRow("column and offset after a two-byte character")
        << QByteArray("(\"\xC3\xA9\" b)") << S::Syntax << 1 << 6 << qint64(6);
    QTest::newRow("offset in UTF-16 input")
        << encoded(QStringConverter::Utf16LE, u"(a b)"_s) << S::Syntax << 1 << 4 << qint64(8);
}

void OpenStepPropertyListTest::rejectsBrokenText()
{
    QFETCH(QByteArray, input);
    QFETCH(ReadStatus, status);
    QFETCH(int, line);
    QFETCH(int, column);
    QFETCH(qint64, offset);
    const ReadResult<PropertyList> result = OpenStepPropertyListReader::read(input);
    QVERIFY2(!result.ok(), qPrintable(u"read as "_s + result.value.description()));
    QVERIFY2(!result.message.isEmpty(), "a failure must say what is wrong");
    QCOMPARE(result.status, status);
    QCOMPARE(result.position.line, line);
    QCOMPARE(result.position.column, column);
    QCOMPARE(result.position.offset, offset);
}

void OpenStepPropertyListTest::sniff_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<bool>("expected");
    QTest::newRow("dictionary after a comment") << QByteArray("// !$*UTF8*$!\n{") << true;
    QTest::newRow("unquoted string") << QByteArray("\nKEY = v;") << true;
    QTest::newRow("blank text is an empty dictionary") << QByteArray(" \n\t") << true;
    QTest::newRow("UTF-16LE with mark") << encoded(QStringConverter::Utf16LE, u" {"_s) << true;
    QTest::newRow("closing brace") << QByteArray(" }") << false;
    QTest::newRow("damaged binary property list") << QByteArray("bplist0") << false;
    QTest::newRow("non-ASCII letter") << QByteArray("\xC3\xA9t\xC3\xA9") << false;
    QTest::newRow("unterminated comment in short text") << QByteArray("/* x") << false;
    QTest::newRow("comment longer than the part looked at")
        << QByteArray("/*") + QByteArray(10000, 'x') + QByteArray("*/ {") << true;
}

void OpenStepPropertyListTest::sniff()
{
    QFETCH(QByteArray, input);
    QFETCH(bool, expected);
    QCOMPARE(OpenStepPropertyListReader::sniff(input), expected);
}

void OpenStepPropertyListTest::corpusFileReads_data()
{
    ORVANE_REQUIRE_CORPUS();
    QTest::addColumn<QString>("path");
    for (const QString &path : Corpus::files(u"plists/openstep"_s))
        QTest::newRow(qPrintable(QFileInfo(path).fileName())) << path;
}

// Each real file reads, content detection arrives at the same reading, and the
// value survives being written as XML and as binary.
void OpenStepPropertyListTest::corpusFileReads()
{
    QFETCH(QString, path);
    const QByteArray bytes = Corpus::readAll(path);
    const ReadResult<PropertyList> direct = OpenStepPropertyListReader::read(bytes);
    QVERIFY2(direct.ok(), qPrintable(direct.errorText()));
    QVERIFY(direct.value.isContainer());
    const ReadResult<PropertyListFile> detected = PropertyListSerialization::read(bytes);
    QVERIFY2(detected.ok(), qPrintable(detected.errorText()));
    QCOMPARE(detected.value.format, PropertyListFormat::OpenStep);
    QVERIFY(detected.value.value.isIdenticalTo(direct.value));
    for (PropertyListFormat format : {PropertyListFormat::Xml, PropertyListFormat::Binary}) {
        const QByteArray written = PropertyListSerialization::write(direct.value, format);
        QVERIFY2(!written.isEmpty(), "the writer produced nothing");
        const ReadResult<PropertyListFile> back = PropertyListSerialization::read(written);
        QVERIFY2(back.ok(), qPrintable(back.errorText()));
        QCOMPARE(back.value.format, format);
        QVERIFY(back.value.value.isIdenticalTo(direct.value));
    }
}

// Every file of the corpus, whatever its format, handed to this reader: it must
// come back, and a failure must say where.
void OpenStepPropertyListTest::anyCorpusFileReadsOrFailsWithAPlace()
{
    ORVANE_REQUIRE_CORPUS();
    for (const QString &folder : {u"plists/binary"_s, u"plists/xml"_s, u"plists/malformed"_s}) {
        for (const QString &path : Corpus::files(folder)) {
            const QByteArray bytes = Corpus::readAll(path);
            const ReadResult<PropertyList> result = OpenStepPropertyListReader::read(bytes);
            QVERIFY2(result.ok() || result.position.isKnown(), qPrintable(path));
            QVERIFY2(result.ok() || !result.message.isEmpty(), qPrintable(path));
        }
    }
}

ORVANE_TEST(OpenStepPropertyListTest)
#include "OpenStepPropertyListTest.moc"
