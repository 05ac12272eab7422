// The old-style text reader: exact values for every construct of the grammar,
// exact status and place for broken text, and the real files of the corpus.
#include "Corpus.h"
#include "TestRegistry.h"

#include "platform/OpenStepPropertyListReader.h"
#include "platform/PropertyListSerialization.h"

#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

PropertyList str(const QString &text)
{
    return PropertyList(text);
}

QByteArray utf16(const QString &text, bool bigEndian, bool bom)
{
    QByteArray bytes;
    if (bom)
        bytes += bigEndian ? QByteArray("\xFE\xFF") : QByteArray("\xFF\xFE");
    for (QChar unit : text) {
        const char high = static_cast<char>(unit.unicode() >> 8);
        const char low = static_cast<char>(unit.unicode() & 0xFF);
        bytes += bigEndian ? QByteArray{&high, 1} + QByteArray{&low, 1}
                           : QByteArray{&low, 1} + QByteArray{&high, 1};
    }
    return bytes;
}

QByteArray utf32le(const QString &text)
{
    QByteArray bytes("\xFF\xFE\0\0", 4);
    for (char32_t code : text.toUcs4()) {
        for (int shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>((code >> shift) & 0xFF);
    }
    return bytes;
}

QByteArray nested(int depth)
{
    return QByteArray(depth, '(') + QByteArray(depth, ')');
}

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
    void rejectsBrokenText_data();
    void rejectsBrokenText();
    void nestingUpToTheLimitReads();
    void sniff_data();
    void sniff();
    void corpusFileReads_data();
    void corpusFileReads();
    void corpusFileSurvivesXmlAndBinary_data();
    void corpusFileSurvivesXmlAndBinary();
    void anyCorpusFileReadsOrFailsWithAPlace();
};

void OpenStepPropertyListTest::readsValue_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<PropertyList>("expected");

    // Strings and escapes
    QTest::newRow("named escapes") << QByteArray(R"("\a\b\f\n\r\t\v\"\'\\")")
                                   << str(u"\a\b\f\n\r\t\v\"'\\"_s);
    QTest::newRow("backslash before punctuation or blank is that character")
        << QByteArray(R"("a\/b\ c\{")") << str(u"a/b c{"_s);
    QTest::newRow("backslash newline is a newline") << QByteArray("\"a\\\nb\"") << str(u"a\nb"_s);
    QTest::newRow("octal escapes below 0x80 are ASCII") << QByteArray(R"("\101\61\0")") << str(u"A1\0"_s);
    QTest::newRow("octal escapes above 0x7F are NeXTSTEP Latin, not Latin-1")
        << QByteArray(R"("\341\351\200")") << str(u"\u00C6\u00D8\u00A0"_s);
    QTest::newRow("octal escape stops after three digits") << QByteArray(R"("\1011")") << str(u"A1"_s);
    QTest::newRow("U escape with four hex digits, either case of U")
        << QByteArray(R"("\U00e9\u263A")") << str(u"\u00E9\u263A"_s);
    QTest::newRow("U escape with fewer digits stops at a non-hex character")
        << QByteArray(R"("\U41x\U7")") << str(u"Ax\a"_s);
    QTest::newRow("U escape takes at most four digits") << QByteArray(R"("\U00411")") << str(u"A1"_s);
    QTest::newRow("two U escapes form a surrogate pair")
        << QByteArray(R"("\UD83D\UDE00")") << str(QString::fromUcs4(U"\U0001F600"));
    QTest::newRow("single quotes delimit too") << QByteArray(R"('say "hi"')") << str(u"say \"hi\""_s);
    QTest::newRow("unquoted characters") << QByteArray("a_$/:.-Z9") << str(u"a_$/:.-Z9"_s);

    // Comments and whitespace
    QTest::newRow("comments between tokens") << QByteArray("/* c */ ( a, // x\n b /* y */ )")
                                             << PropertyList(PropertyArray{str(u"a"_s), str(u"b"_s)});
    QTest::newRow("slashes inside unquoted strings are not comments")
        << QByteArray("(a/b, /usr/bin)") << PropertyList(PropertyArray{str(u"a/b"_s), str(u"/usr/bin"_s)});
    QTest::newRow("block comments do not nest")
        << QByteArray("( /* a /* b */ c )") << PropertyList(PropertyArray{str(u"c"_s)});
    QTest::newRow("vertical tab, form feed and line separators are whitespace")
        << QByteArray("(a,\v\fb\xE2\x80\xA8,\xE2\x80\xA9"
                      "c)")
        << PropertyList(PropertyArray{str(u"a"_s), str(u"b"_s), str(u"c"_s)});
    QTest::newRow("empty text is an empty dictionary")
        << QByteArray("") << PropertyList(PropertyDictionary());
    QTest::newRow("comment-only text is an empty dictionary")
        << QByteArray(" \n// x\n/* y */\t") << PropertyList(PropertyDictionary());

    // Containers
    QTest::newRow("trailing comma in an array")
        << QByteArray("(a, b,)") << PropertyList(PropertyArray{str(u"a"_s), str(u"b"_s)});
    QTest::newRow("empty array and dictionary")
        << QByteArray("( (), {} )") << PropertyList(PropertyArray{PropertyArray(), PropertyDictionary()});
    QTest::newRow("key; shorthand inside braces")
        << QByteArray("{ k; \"q\" = v; }")
        << PropertyList(PropertyDictionary{{u"k"_s, str(u"k"_s)}, {u"q"_s, str(u"v"_s)}});
    QTest::newRow("duplicate key: the last one wins")
        << QByteArray("{a = 1; a = 2;}") << PropertyList(PropertyDictionary{{u"a"_s, str(u"2"_s)}});
    QTest::newRow("nested containers")
        << QByteArray("{a = (b, {c = <00>;});}")
        << PropertyList(PropertyDictionary{
               {u"a"_s, PropertyArray{str(u"b"_s), PropertyDictionary{{u"c"_s, QByteArray(1, '\0')}}}}});

    // Top level and strings files
    QTest::newRow("a lone quoted string is a string") << QByteArray(" \"just text\" ") << str(u"just text"_s);
    QTest::newRow("strings file") << QByteArray("/* note */\n\"a\" = \"1\";\nb = c; // tail\n")
                                  << PropertyList(
                                         PropertyDictionary{{u"a"_s, str(u"1"_s)}, {u"b"_s, str(u"c"_s)}});
    QTest::newRow("strings file with the key; shorthand")
        << QByteArray("\"a\";\n\"b\" = \"x\";")
        << PropertyList(PropertyDictionary{{u"a"_s, str(u"a"_s)}, {u"b"_s, str(u"x"_s)}});
    QTest::newRow("strings file with container values")
        << QByteArray("k = (1, 2);")
        << PropertyList(PropertyDictionary{{u"k"_s, PropertyArray{str(u"1"_s), str(u"2"_s)}}});

    // Encodings
    QTest::newRow("UTF-16LE with byte-order mark")
        << utf16(u"{a = \"\u00E9\";}"_s, false, true)
        << PropertyList(PropertyDictionary{{u"a"_s, str(u"\u00E9"_s)}});
    QTest::newRow("UTF-16BE with byte-order mark")
        << utf16(u"(x)"_s, true, true) << PropertyList(PropertyArray{str(u"x"_s)});
    QTest::newRow("UTF-16LE without mark, found by its NULs")
        << utf16(u"(x)"_s, false, false) << PropertyList(PropertyArray{str(u"x"_s)});
    QTest::newRow("UTF-16BE without mark, found by its NULs")
        << utf16(u"(x)"_s, true, false) << PropertyList(PropertyArray{str(u"x"_s)});
    QTest::newRow("UTF-8 byte-order mark is skipped") << QByteArray("\xEF\xBB\xBFx") << str(u"x"_s);
    QTest::newRow("UTF-32LE with byte-order mark, outside the BMP")
        << utf32le(QString::fromUcs4(U"(\"\U0001F600\")"))
        << PropertyList(PropertyArray{str(QString::fromUcs4(U"\U0001F600"))});

    // Data
    QTest::newRow("hex data, either case, blanks between pairs")
        << QByteArray("<0fA1 b2\nc3>") << PropertyList(QByteArray::fromHex("0fa1b2c3"));
    QTest::newRow("empty data") << QByteArray("< >") << PropertyList(QByteArray());
    QTest::newRow("GNUstep base64 data")
        << QByteArray("<[AAEC]>") << PropertyList(QByteArray::fromHex("000102"));

    // GNUstep typed values
    QTest::newRow("<*I> 12 comes from the small-number cache")
        << QByteArray("<*I12>") << PropertyList::integer(12, 'i');
    QTest::newRow("<*I> 13 is 64-bit") << QByteArray("<*I13>") << PropertyList::integer(13, 'q');
    QTest::newRow("<*I> -1 is cached") << QByteArray("<*I-1>") << PropertyList::integer(-1, 'i');
    QTest::newRow("<*I> -2 is 64-bit") << QByteArray("<*I-2>") << PropertyList::integer(-2, 'q');
    QTest::newRow("<*I> INT64_MIN") << QByteArray("<*I-9223372036854775808>")
                                    << PropertyList::integer(std::numeric_limits<qint64>::min(), 'q');
    QTest::newRow("<*I> above INT64_MAX is unsigned")
        << QByteArray("<*I18446744073709551615>")
        << PropertyList::unsignedInteger(18446744073709551615ULL, 'Q');
    QTest::newRow("<*R> real") << QByteArray("<*R-1.5>") << PropertyList::real(-1.5);
    QTest::newRow("<*BY> and <*BN>") << QByteArray("(<*BY>, <*BN>)")
                                     << PropertyList(PropertyArray{PropertyList::boolean(true),
                                                                   PropertyList::boolean(false)});
    QTest::newRow("<*D> with a zone offset")
        << QByteArray("<*D2001-01-02 00:00:00 +0100>") << PropertyList::date(86400.0 - 3600.0);
    QTest::newRow("<*D> in double quotes")
        << QByteArray("<*D\"2000-12-31 23:59:59 +0000\">") << PropertyList::date(-1.0);
}

void OpenStepPropertyListTest::readsValue()
{
    QFETCH(QByteArray, input);
    QFETCH(PropertyList, expected);
    const ReadResult<PropertyList> result = OpenStepPropertyListReader::read(input);
    QVERIFY2(result.ok(), qPrintable(result.errorText()));
    QVERIFY2(result.value.isIdenticalTo(expected), qPrintable(mismatch(result.value, expected)));
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
    QTest::newRow("a single double quote") << QByteArray("\"") << S::Truncated << 1 << 1 << qint64(0);
    QTest::newRow("backslash at the very end") << QByteArray("\"a\\") << S::Truncated << 1 << 1 << qint64(0);
    QTest::newRow("unterminated comment") << QByteArray("( a /* x") << S::Truncated << 1 << 5 << qint64(4);
    QTest::newRow("comment end inside its opener")
        << QByteArray("/*/") << S::Truncated << 1 << 1 << qint64(0);
    QTest::newRow("unterminated inner array")
        << QByteArray("{a = (b, c") << S::Truncated << 1 << 6 << qint64(5);
    QTest::newRow("unterminated dictionary")
        << QByteArray("(\r\n{a = b;") << S::Truncated << 2 << 1 << qint64(3);
    QTest::newRow("unterminated data: (<") << QByteArray("(<") << S::Truncated << 1 << 2 << qint64(1);
    QTest::newRow("unterminated typed value") << QByteArray("<*I12") << S::Truncated << 1 << 1 << qint64(0);
    QTest::newRow("strings file missing the last ;")
        << QByteArray("\"a\" = \"b\"") << S::Truncated << 1 << 10 << qint64(9);

    // Grammar
    QTest::newRow("missing ; before }") << QByteArray("{a = b}") << S::Syntax << 1 << 7 << qint64(6);
    QTest::newRow("missing =") << QByteArray("{a b;}") << S::Syntax << 1 << 4 << qint64(3);
    QTest::newRow("missing value") << QByteArray("{a = ;}") << S::Syntax << 1 << 6 << qint64(5);
    QTest::newRow("array key") << QByteArray("{(a) = b;}") << S::Syntax << 1 << 2 << qint64(1);
    QTest::newRow("empty array element") << QByteArray("(a,,b)") << S::Syntax << 1 << 4 << qint64(3);
    QTest::newRow("missing comma, after CR LF lines")
        << QByteArray("(\r\n a \r\n b)") << S::Syntax << 3 << 2 << qint64(9);
    QTest::newRow("garbage after the top value") << QByteArray("(a) b") << S::Syntax << 1 << 5 << qint64(4);
    QTest::newRow("strings file entry without =")
        << QByteArray("\"a\" = \"b\"; \"c\" \"d\";") << S::Syntax << 1 << 16 << qint64(15);
    QTest::newRow("non-ASCII unquoted text")
        << QByteArray("(a, \xC3\xA9)") << S::Syntax << 1 << 5 << qint64(4);
    QTest::newRow("NUL in a string") << QByteArray("\"a\0b\"", 5) << S::Syntax << 1 << 3 << qint64(2);
    QTest::newRow("escaped NUL in a string")
        << QByteArray("\"a\\\0\"", 5) << S::Syntax << 1 << 4 << qint64(3);
    QTest::newRow("unknown letter escape \\d")
        << QByteArray(R"("Worl\d")") << S::Syntax << 1 << 6 << qint64(5);
    QTest::newRow("\\U without hex digits") << QByteArray(R"("\Ux")") << S::Syntax << 1 << 2 << qint64(1);
    QTest::newRow("octal escape above a byte")
        << QByteArray(R"("\400")") << S::BadValue << 1 << 2 << qint64(1);

    // Data
    QTest::newRow("odd number of hex digits") << QByteArray("<abc>") << S::BadValue << 1 << 4 << qint64(3);
    QTest::newRow("blank inside a hex pair") << QByteArray("<a b0>") << S::BadValue << 1 << 2 << qint64(1);
    QTest::newRow("non-hex character in data") << QByteArray("<0g>") << S::Syntax << 1 << 3 << qint64(2);
    QTest::newRow("vertical tab is not a data blank")
        << QByteArray("<00\v11>") << S::Syntax << 1 << 4 << qint64(3);
    QTest::newRow("bad base64") << QByteArray("<[A!==]>") << S::BadValue << 1 << 1 << qint64(0);

    // GNUstep typed values
    QTest::newRow("<*R> with garbage after the number")
        << QByteArray("(<*R1.5x>)") << S::BadValue << 1 << 2 << qint64(1);
    QTest::newRow("<*D> month 13") << QByteArray("<*D2001-13-01 00:00:00 +0000>") << S::BadValue << 1 << 1
                                   << qint64(0);
    QTest::newRow("<*D> without zone")
        << QByteArray("<*D2001-01-01 00:00:00>") << S::BadValue << 1 << 1 << qint64(0);
    QTest::newRow("<*I> beyond 64 bits")
        << QByteArray("<*I18446744073709551616>") << S::BadValue << 1 << 1 << qint64(0);
    QTest::newRow("<*I> below INT64_MIN")
        << QByteArray("<*I-9223372036854775809>") << S::BadValue << 1 << 1 << qint64(0);
    QTest::newRow("<*B> other than Y or N") << QByteArray("<*BT>") << S::BadValue << 1 << 1 << qint64(0);

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
    QTest::newRow("lone low surrogate from \\U")
        << QByteArray(R"("\UDC00")") << S::BadEncoding << 1 << 2 << qint64(1);
    QTest::newRow("two high surrogates from \\U")
        << QByteArray(R"("\UD800\UD800")") << S::BadEncoding << 1 << 2 << qint64(1);

    // Places count UTF-16 units for the column and bytes for the offset.
    QTest::newRow("column and offset after a two-byte character")
        << QByteArray("(\"\xC3\xA9\" b)") << S::Syntax << 1 << 6 << qint64(6);
    QTest::newRow("offset in UTF-16 input")
        << utf16(u"(a b)"_s, false, true) << S::Syntax << 1 << 4 << qint64(8);
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

void OpenStepPropertyListTest::nestingUpToTheLimitReads()
{
    const ReadResult<PropertyList> result =
        OpenStepPropertyListReader::read(nested(PropertyListSerialization::kMaxDepth));
    QVERIFY2(result.ok(), qPrintable(result.errorText()));
    int depth = 0;
    for (PropertyList value = result.value; value.isArray(); ++depth)
        value = value.arrayRef().isEmpty() ? PropertyList() : value.arrayRef().at(0);
    QCOMPARE(depth, PropertyListSerialization::kMaxDepth);
}

void OpenStepPropertyListTest::sniff_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<bool>("expected");
    QTest::newRow("dictionary after a comment") << QByteArray("// !$*UTF8*$!\n{") << true;
    QTest::newRow("quoted string") << QByteArray("  'a'") << true;
    QTest::newRow("unquoted string") << QByteArray("\nKEY = v;") << true;
    QTest::newRow("blank text is an empty dictionary") << QByteArray(" \n\t") << true;
    QTest::newRow("UTF-16LE with mark") << utf16(u" {"_s, false, true) << true;
    QTest::newRow("no bytes") << QByteArray() << false;
    QTest::newRow("closing brace") << QByteArray(" }") << false;
    QTest::newRow("damaged binary property list") << QByteArray("bplist0") << false;
    QTest::newRow("control character") << QByteArray("\x7f") << false;
    QTest::newRow("non-ASCII letter") << QByteArray("\xC3\xA9t\xC3\xA9") << false;
    QTest::newRow("invalid UTF-8") << QByteArray("\xFF\x01") << false;
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

void OpenStepPropertyListTest::corpusFileReads()
{
    QFETCH(QString, path);
    const QByteArray bytes = Corpus::readAll(path);
    const ReadResult<PropertyList> direct = OpenStepPropertyListReader::read(bytes);
    QVERIFY2(direct.ok(), qPrintable(direct.errorText()));
    QVERIFY(direct.value.isContainer());
    // Content detection must arrive at the same reading.
    const ReadResult<PropertyListFile> detected = PropertyListSerialization::read(bytes);
    QVERIFY2(detected.ok(), qPrintable(detected.errorText()));
    QCOMPARE(detected.value.format, PropertyListFormat::OpenStep);
    QVERIFY(detected.value.value.isIdenticalTo(direct.value));
}

void OpenStepPropertyListTest::corpusFileSurvivesXmlAndBinary_data()
{
    ORVANE_REQUIRE_CORPUS();
    QTest::addColumn<QString>("path");
    QTest::addColumn<PropertyListFormat>("format");
    for (const QString &path : Corpus::files(u"plists/openstep"_s)) {
        const QString name = QFileInfo(path).fileName();
        QTest::addRow("%s as XML", qPrintable(name)) << path << PropertyListFormat::Xml;
        QTest::addRow("%s as binary", qPrintable(name)) << path << PropertyListFormat::Binary;
    }
}

void OpenStepPropertyListTest::corpusFileSurvivesXmlAndBinary()
{
    QFETCH(QString, path);
    QFETCH(PropertyListFormat, format);
    const ReadResult<PropertyList> original = OpenStepPropertyListReader::read(Corpus::readAll(path));
    QVERIFY2(original.ok(), qPrintable(original.errorText()));
    const QByteArray written = PropertyListSerialization::write(original.value, format);
    QVERIFY2(!written.isEmpty(), "the writer produced nothing");
    const ReadResult<PropertyListFile> back = PropertyListSerialization::read(written);
    QVERIFY2(back.ok(), qPrintable(back.errorText()));
    QCOMPARE(back.value.format, format);
    QVERIFY(back.value.value.isIdenticalTo(original.value));
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
