// The XML codec: broken documents must fail with the right status at the
// right place, values must keep the platform's type codes, the writer must
// produce the platform's bytes, and real files must survive a round trip.
#include "Corpus.h"
#include "TestRegistry.h"
#include "WarningsPicture.h"

#include "platform/XmlPropertyListReader.h"
#include "platform/XmlPropertyListWriter.h"

#include <QFileInfo>
#include <QStringEncoder>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr qint64 kInt64Max = std::numeric_limits<qint64>::max();

QByteArray encoded(QStringConverter::Encoding encoding, const QString &text, bool mark)
{
    QStringEncoder encoder(encoding, mark ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default);
    return encoder(text);
}

PropertyList nestedInArrays(const PropertyList &value, int depth)
{
    PropertyList result = value;
    for (int i = 0; i < depth; ++i)
        result = PropertyArray{result};
    return result;
}

const QByteArray kHeader = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                           "<plist version=\"1.0\">\n";

} // namespace

class XmlPropertyListTest : public QObject {
    Q_OBJECT
private slots:
    void sniff_data();
    void sniff();
    void brokenInput_data();
    void brokenInput();
    void readsValues_data();
    void readsValues();
    void readsWithWarnings_data();
    void readsWithWarnings();
    void writesPlatformBytes_data();
    void writesPlatformBytes();
    void corpusFilesRoundTrip_data();
    void corpusFilesRoundTrip();
};

void XmlPropertyListTest::sniff_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("xml");
    QTest::newRow("declaration") << QByteArray("<?xml version=\"1.0\"?>") << true;
    QTest::newRow("old-style data is not markup") << QByteArray("<0a0b>") << false;
    QTest::newRow("binary magic") << QByteArray("bplist00") << false;
    QTest::newRow("UTF-8 mark then markup") << QByteArray("\xEF\xBB\xBF<plist>") << true;
    QTest::newRow("UTF-16LE mark then markup") << encoded(QStringConverter::Utf16LE, u"<?xml"_s, true) << true;
    QTest::newRow("UTF-32LE mark then markup") << encoded(QStringConverter::Utf32LE, u" <dict/>"_s, true) << true;
    QTest::newRow("NUL in the first two bytes") << QByteArray("\0<\0p", 4) << true;
    QTest::newRow("empty") << QByteArray() << false;
}

void XmlPropertyListTest::sniff()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, xml);
    QCOMPARE(XmlPropertyListReader::sniff(bytes), xml);
}

void XmlPropertyListTest::brokenInput_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<ReadStatus>("status");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<qint64>("offset");
    QTest::newRow("empty input") << QByteArray() << ReadStatus::Empty << 0 << 0 << qint64(0);
    QTest::newRow("text where an element belongs") << QByteArray("hello") << ReadStatus::Syntax << 1 << 1 << qint64(0);
    QTest::newRow("element never closed") << QByteArray("<plist><dict>\n<key>a</key><string>x</string>")
                                          << ReadStatus::Truncated << 2 << 31 << qint64(44);
    QTest::newRow("unterminated comment") << QByteArray("<!-- x") << ReadStatus::Truncated << 1 << 1 << qint64(0);
    QTest::newRow("key inside array") << QByteArray("<array><key>k</key></array>") << ReadStatus::Syntax << 1 << 8 << qint64(7);
    QTest::newRow("dangling key") << QByteArray("<dict><key>k</key></dict>") << ReadStatus::Syntax << 1 << 19 << qint64(18);
    QTest::newRow("element inside key") << QByteArray("<dict><key><true/>k</key></dict>") << ReadStatus::Syntax << 1 << 12 << qint64(11);
    QTest::newRow("second value in plist") << QByteArray("<plist><true/><false/></plist>") << ReadStatus::Syntax << 1 << 15 << qint64(14);
    QTest::newRow("mismatched end tag") << QByteArray("<array></dict>") << ReadStatus::Syntax << 1 << 8 << qint64(7);
    QTest::newRow("unknown element") << QByteArray("<plist><foo/></plist>") << ReadStatus::Syntax << 1 << 8 << qint64(7);
    QTest::newRow("entity declaration refused")
        << QByteArray("<!DOCTYPE plist [\n<!ENTITY e \"x\">\n]>\n<string>&e;</string>") << ReadStatus::Unsupported << 2 << 1 << qint64(18);
    QTest::newRow("unknown entity") << QByteArray("<string>&e;</string>") << ReadStatus::Syntax << 1 << 9 << qint64(8);
    QTest::newRow("lone surrogate reference") << QByteArray("<string>&#xD800;</string>") << ReadStatus::BadEncoding << 1 << 9 << qint64(8);
    // The column counts characters but the offset bytes: é is one unit and two bytes.
    QTest::newRow("invalid UTF-8 after multi-byte text")
        << QByteArray("<string>\xC3\xA9</string>\n<string>\xFF") << ReadStatus::BadEncoding << 2 << 9 << qint64(28);
    QTest::newRow("unknown declared charset") << QByteArray("<?xml version=\"1.0\" encoding=\"x-unknown\"?><true/>")
                                              << ReadStatus::BadEncoding << 1 << 31 << qint64(30);
    QTest::newRow("non-ASCII byte in US-ASCII") << QByteArray("<?xml version=\"1.0\" encoding=\"us-ascii\"?><string>\xE9</string>")
                                                << ReadStatus::BadEncoding << 1 << 50 << qint64(49);
    QTest::newRow("bad integer 42xy") << QByteArray("<integer>42xy</integer>") << ReadStatus::BadValue << 1 << 10 << qint64(9);
    QTest::newRow("integer above UINT64_MAX") << QByteArray("<integer>18446744073709551616</integer>") << ReadStatus::BadValue << 1 << 10 << qint64(9);
    QTest::newRow("real with trailing garbage") << QByteArray("<real>1.5x</real>") << ReadStatus::BadValue << 1 << 7 << qint64(6);
    QTest::newRow("date with month 13") << QByteArray("<date>2019-13-01T00:00:00Z</date>") << ReadStatus::BadValue << 1 << 7 << qint64(6);
    QTest::newRow("nesting beyond the limit") << QByteArray("<array>").repeated(513) << ReadStatus::TooDeep << 1 << 3585 << qint64(3584);
    QTest::newRow("CR LF is one line break") << QByteArray("<dict>\r\n<string>") << ReadStatus::Syntax << 2 << 1 << qint64(8);
    QTest::newRow("column counts UTF-16 units") << QByteArray("<dict><key>\xF0\x9F\x98\x80</key></dict>")
                                                << ReadStatus::Syntax << 1 << 20 << qint64(21);
}

void XmlPropertyListTest::brokenInput()
{
    QFETCH(QByteArray, input);
    QFETCH(ReadStatus, status);
    QFETCH(int, line);
    QFETCH(int, column);
    QFETCH(qint64, offset);
    const ReadResult<PropertyList> result = XmlPropertyListReader::read(input);
    QVERIFY2(!result.ok(), "a broken document was accepted");
    QVERIFY(!result.message.isEmpty());
    QCOMPARE(result.status, status);
    QCOMPARE(result.position.line, line);
    QCOMPARE(result.position.column, column);
    QCOMPARE(result.position.offset, offset);
}

void XmlPropertyListTest::readsValues_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<PropertyList>("expected");

    QTest::newRow("hex integer") << QByteArray("<integer>0x1F</integer>") << PropertyList::integer(31, 'q');
    QTest::newRow("white space around and after sign") << QByteArray("<integer> - 42\n</integer>") << PropertyList::integer(-42, 'q');
    QTest::newRow("-1 from the cache") << QByteArray("<integer>-1</integer>") << PropertyList::integer(-1, 'i');
    QTest::newRow("13 is 64-bit") << QByteArray("<integer>13</integer>") << PropertyList::integer(13, 'q');
    QTest::newRow("INT64_MAX stays signed") << QByteArray("<integer>9223372036854775807</integer>") << PropertyList::integer(kInt64Max, 'q');
    QTest::newRow("INT64_MAX+1 is Q") << QByteArray("<integer>9223372036854775808</integer>")
                                      << PropertyList::unsignedInteger(quint64(kInt64Max) + 1, 'Q');
    QTest::newRow("real with white space") << QByteArray("<real> -1e3 </real>") << PropertyList::real(-1000.0);
    QTest::newRow("NaN in mixed case") << QByteArray("<real>NaN</real>") << PropertyList::real(std::numeric_limits<double>::quiet_NaN());
    QTest::newRow("+infinity") << QByteArray("<real>+infinity</real>") << PropertyList::real(kInf);
    QTest::newRow("CDATA beside text") << QByteArray("<string>a<![CDATA[<&>]]>b</string>") << PropertyList(u"a<&>b"_s);
    QTest::newRow("entities and character references") << QByteArray("<string>&lt;&gt;&amp;&apos;&quot;&#65;&#x1F600;</string>")
                                                       << PropertyList(u"<>&'\"A\U0001F600"_s);
    QTest::newRow("raw control character kept") << QByteArray("<string>a\x01\tb</string>") << PropertyList(u"a\x01\tb"_s);
    QTest::newRow("UTF-16LE with mark") << encoded(QStringConverter::Utf16LE, u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><string>é😀</string>"_s, true)
                                        << PropertyList(u"é😀"_s);
    QTest::newRow("UTF-32LE with mark") << encoded(QStringConverter::Utf32LE, u"<string>é😀</string>"_s, true) << PropertyList(u"é😀"_s);
    QTest::newRow("declared ISO-8859-1") << QByteArray("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><string>\xE9</string>")
                                         << PropertyList(u"é"_s);
    QTest::newRow("CF$UID dictionary is a UID") << QByteArray("<dict><key>CF$UID</key><integer>7</integer></dict>") << PropertyList::uid(7);
    QTest::newRow("CF$UID beside another key stays a dictionary")
        << QByteArray("<dict><key>CF$UID</key><integer>7</integer><key>x</key><true/></dict>")
        << PropertyList(PropertyDictionary{{u"CF$UID"_s, PropertyList::integer(7, 'i')}, {u"x"_s, PropertyList::boolean(true)}});
    QTest::newRow("empty plist wrapper is an empty dictionary") << QByteArray("<plist version=\"1.0\">\n</plist>")
                                                                << PropertyList(PropertyDictionary());
    QTest::newRow("date in year 0") << QByteArray("<date>0000-12-30T00:00:00Z</date>") << PropertyList::date(-63114076800.0);
    QTest::newRow("empty-element forms")
        << QByteArray("<array><string/><data/><dict/><array/><true></true></array>")
        << PropertyList(PropertyArray{PropertyList(QString()), PropertyList(QByteArray()), PropertyList(PropertyDictionary()),
                                      PropertyList(PropertyArray()), PropertyList::boolean(true)});
    QTest::newRow("attributes and space in tags")
        << QByteArray("<plist version=\"1.0\"><dict ><key>a</key><string x='>'>v</string ></dict></plist>")
        << PropertyList(PropertyDictionary{{u"a"_s, PropertyList(u"v"_s)}});
    QTest::newRow("old DOCTYPE, comments and instructions")
        << QByteArray("<?xml version=\"1.0\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple Computer//DTD PLIST 1.0//EN\" \"x.dtd\">\n"
                      "<plist><!-- c --><?pi x?><false/><!-- d --></plist>")
        << PropertyList::boolean(false);
    QTest::newRow("nesting up to the limit")
        << QByteArray("<array>").repeated(511) + "<dict/>" + QByteArray("</array>").repeated(511)
        << nestedInArrays(PropertyDictionary(), 511);
}

void XmlPropertyListTest::readsValues()
{
    QFETCH(QByteArray, input);
    QFETCH(PropertyList, expected);
    const ReadResult<PropertyList> result = XmlPropertyListReader::read(input);
    QVERIFY2(result.ok(), qPrintable(result.errorText()));
    QVERIFY2(result.value.isIdenticalTo(expected),
             qPrintable(result.value.description() + u" type "_s + QLatin1Char(result.value.typeCode() ? result.value.typeCode() : '-')));
    QCOMPARE(WarningsPicture::of(result.warnings), QString());
}

// What the reader resolves instead of refusing: the value read and one warning
// per resolution, at its place.
void XmlPropertyListTest::readsWithWarnings_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<PropertyList>("expected");
    QTest::addColumn<QString>("warnings");
    const auto row = [](const char *name, const QByteArray &input, const PropertyList &expected, const char *warnings) {
        QTest::newRow(name) << input << expected << QString::fromLatin1(warnings);
    };
    row("duplicate key: last wins", "<dict><key>a</key><integer>1</integer><key>a</key><integer>20</integer></dict>",
        PropertyList(PropertyDictionary{{u"a"_s, PropertyList::integer(20, 'q')}}),
        "DuplicateKey at line 1, column 39, byte 38");
    row("real beyond a double is infinity", "<array><real>-1e999</real></array>", PropertyList(PropertyArray{PropertyList::real(-kInf)}),
        "OutOfRange at line 1, column 14, byte 13");
    row("real below a double's least is zero", "<real>\n1e-999</real>", PropertyList::real(0.0), "OutOfRange at line 1, column 7, byte 6");
    row("day past the month's end runs on", "<date>2019-02-30T00:00:00Z</date>", PropertyList::date(573177600.0),
        "Adjusted at line 1, column 7, byte 6");
    row("data skips non-base64 characters", "<data>\n\tQU\n\tJD !</data>", PropertyList(QByteArray("ABC")),
        "Dropped at line 1, column 7, byte 6");
    row("text after the first element ignored", "<true/> trailing <garbage", PropertyList::boolean(true),
        "Dropped at line 1, column 9, byte 8");
    row("declared UTF-16 in 8-bit text is UTF-8", "<?xml version='1.0' encoding='utf-16'?><string>\xC3\xA9</string>",
        PropertyList(u"é"_s), "Reinterpreted at line 1, column 31, byte 30");
    row("warnings in text order, nested ones first",
        "<dict><key>k</key><real>1</real>\n<key>k</key><array><real>1e400</real></array></dict>",
        PropertyList(PropertyDictionary{{u"k"_s, PropertyList(PropertyArray{PropertyList::real(kInf)})}}),
        "DuplicateKey at line 2, column 1, byte 33; OutOfRange at line 2, column 26, byte 58");
    // Each pair takes 19 bytes after the 6 of "<dict>"; every key but the first is a repeat.
    QByteArray repeated = "<dict>";
    QStringList listed;
    for (int pair = 0; pair <= ReadWarnings::kLimit + 1; ++pair) {
        if (pair > 0 && pair <= ReadWarnings::kLimit)
            listed << u"DuplicateKey at line 1, column %1, byte %2"_s.arg(7 + 19 * pair).arg(6 + 19 * pair);
        repeated += "<key>k</key><true/>";
    }
    QTest::newRow("beyond the limit only a count") << repeated + "</dict>"
                                                   << PropertyList(PropertyDictionary{{u"k"_s, PropertyList::boolean(true)}})
                                                   << listed.join(u"; "_s) + u"; More"_s;
}

void XmlPropertyListTest::readsWithWarnings()
{
    QFETCH(QByteArray, input);
    QFETCH(PropertyList, expected);
    QFETCH(QString, warnings);
    const ReadResult<PropertyList> result = XmlPropertyListReader::read(input);
    QVERIFY2(result.ok(), qPrintable(result.errorText()));
    QVERIFY2(result.value.isIdenticalTo(expected), qPrintable(result.value.description()));
    QCOMPARE(WarningsPicture::of(result.warnings), warnings);
}

void XmlPropertyListTest::writesPlatformBytes_data()
{
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<QByteArray>("body"); // between the header and "</plist>\n"
    QTest::addColumn<bool>("readsBackIdentical");

    QTest::newRow("the documented example")
        << PropertyList(PropertyDictionary{{u"c"_s, PropertyList(QByteArray("\x0a"))},
                                           {u"a"_s, PropertyList::integer(1, 'i')},
                                           {u"b"_s, PropertyList(PropertyArray{PropertyList(u"x"_s)})}})
        << QByteArray("<dict>\n\t<key>a</key>\n\t<integer>1</integer>\n\t<key>b</key>\n\t<array>\n\t\t<string>x</string>\n"
                      "\t</array>\n\t<key>c</key>\n\t<data>\n\tCg==\n\t</data>\n</dict>\n")
        << true;
    QTest::newRow("only & < > escaped") << PropertyList(u"a&b<c>d\"e'f\x01"_s)
                                         << QByteArray("<string>a&amp;b&lt;c&gt;d\"e'f\x01</string>\n") << true;
    QTest::newRow("keys sorted by UTF-16 code unit")
        << PropertyList(PropertyDictionary{{u"b"_s, PropertyList::boolean(true)}, {u"é"_s, PropertyList::boolean(true)},
                                           {u"a&"_s, PropertyList::boolean(false)}, {u"B"_s, PropertyList::boolean(false)}})
        << QByteArray("<dict>\n\t<key>B</key>\n\t<false/>\n\t<key>a&amp;</key>\n\t<false/>\n\t<key>b</key>\n\t<true/>\n"
                      "\t<key>\xC3\xA9</key>\n\t<true/>\n</dict>\n")
        << true;
    QTest::newRow("reals as %.17g with the platform's words")
        << PropertyList(PropertyArray{PropertyList::real(2.5), PropertyList::real(0.1), PropertyList::real(1e20),
                                      PropertyList::real(1.0), PropertyList::real(-0.0), PropertyList::real(kInf),
                                      PropertyList::real(-kInf), PropertyList::real(std::numeric_limits<double>::quiet_NaN())})
        << QByteArray("<array>\n\t<real>2.5</real>\n\t<real>0.10000000000000001</real>\n\t<real>1e+20</real>\n\t<real>1</real>\n"
                      "\t<real>0.0</real>\n\t<real>+infinity</real>\n\t<real>-infinity</real>\n\t<real>nan</real>\n</array>\n")
        << true;
    QTest::newRow("float written as its double") << PropertyList::real(0.1, 'f') << QByteArray("<real>0.10000000149011612</real>\n") << false;
    const QByteArray sixty = QByteArray::fromBase64("AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEyMzQ1Njc4OTo7");
    QTest::newRow("data lines of 76 at depth 0")
        << PropertyList(sixty)
        << QByteArray("<data>\nAAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEyMzQ1Njc4\nOTo7\n</data>\n")
        << true;
    QTest::newRow("data lines keep 12 characters past depth 8")
        << nestedInArrays(QByteArray("0123456789abcde"), 9)
        << QByteArray("<array>\n\t<array>\n\t\t<array>\n\t\t\t<array>\n\t\t\t\t<array>\n\t\t\t\t\t<array>\n\t\t\t\t\t\t<array>\n"
                      "\t\t\t\t\t\t\t<array>\n\t\t\t\t\t\t\t\t<array>\n\t\t\t\t\t\t\t\t\t<data>\n\t\t\t\t\t\t\t\t\tMDEyMzQ1Njc4\n"
                      "\t\t\t\t\t\t\t\t\tOWFiY2Rl\n\t\t\t\t\t\t\t\t\t</data>\n\t\t\t\t\t\t\t\t</array>\n\t\t\t\t\t\t\t</array>\n"
                      "\t\t\t\t\t\t</array>\n\t\t\t\t\t</array>\n\t\t\t\t</array>\n\t\t\t</array>\n\t\t</array>\n\t</array>\n</array>\n")
        << true;
    QTest::newRow("empty containers and string")
        << PropertyList(PropertyArray{PropertyList(PropertyDictionary()), PropertyList(PropertyArray()), PropertyList(QString())})
        << QByteArray("<array>\n\t<dict/>\n\t<array/>\n\t<string></string>\n</array>\n") << true;
    QTest::newRow("dates in UTC with seconds floored")
        << PropertyList(PropertyArray{PropertyList::date(0), PropertyList::date(59.9), PropertyList::date(-0.5)})
        << QByteArray("<array>\n\t<date>2001-01-01T00:00:00Z</date>\n\t<date>2001-01-01T00:00:59Z</date>\n"
                      "\t<date>2000-12-31T23:59:59Z</date>\n</array>\n")
        << false;
    QTest::newRow("dates outside years 0-9999")
        << PropertyList(PropertyArray{PropertyList::date(-63114076800.0), PropertyList::date(-63145612800.0),
                                      PropertyList::date(252423993600.0)})
        << QByteArray("<array>\n\t<date>0000-12-30T00:00:00Z</date>\n\t<date>-0001-12-31T00:00:00Z</date>\n"
                      "\t<date>10000-01-01T00:00:00Z</date>\n</array>\n")
        << true;
    QTest::newRow("UID as a CF$UID dictionary") << PropertyList::uid(42)
                                                << QByteArray("<dict>\n\t<key>CF$UID</key>\n\t<integer>42</integer>\n</dict>\n") << true;
}

void XmlPropertyListTest::writesPlatformBytes()
{
    QFETCH(PropertyList, value);
    QFETCH(QByteArray, body);
    QFETCH(bool, readsBackIdentical);
    const QByteArray written = XmlPropertyListWriter::write(value);
    QCOMPARE(written, kHeader + body + "</plist>\n");
    if (readsBackIdentical) {
        const ReadResult<PropertyList> back = XmlPropertyListReader::read(written);
        QVERIFY2(back.ok(), qPrintable(back.errorText()));
        QVERIFY2(back.value.isIdenticalTo(value), qPrintable(back.value.description()));
    }
}

// Every corpus XML file survives a round trip; files the platform's own
// serialiser wrote must come back byte for byte. That list was found by writing
// every file back and looking at each one that differs: all of them show another
// writer or a hand edit (two- or four-space indentation, keys out of code order,
// comments, <data> on one line as Xcode writes Info.plists, &apos; escapes, no
// header, UTF-16, an empty <plist>), or the 10.4 "-//Apple Computer//" header,
// which this writer does not produce. The KCN file from the malformed folder is
// a real preference file with dates in years 0 and 4001.
void XmlPropertyListTest::corpusFilesRoundTrip_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("byteForByte");
    ORVANE_REQUIRE_CORPUS();
    const QStringList platformWritten{
        u"cloudflare-default-https.mobileconfig"_s, u"com.apple.quicktime.plugin.preferences.plist"_s,
        u"com.googlecode.iterm2-xml.plist"_s, u"ddplist-issue22-emoji-xml.plist"_s, u"Dusk.xccolortheme"_s,
        u"InstallHistory.plist"_s, u"Ladi.idekeybindings"_s, u"LaunchBar-Configuration.plist"_s,
        u"launchd.minimal.plist"_s, u"launchd.noprogram.plist"_s, u"QLColorCode-Info.plist"_s,
        u"Quicksilver-PlugIns.plist"_s, u"SetTimeServerandTimeZone.mobileconfig"_s,
        u"Solarized Dark xterm-256color.terminal"_s, u"VolumeConfiguration.plist"_s};
    for (const QString &path : Corpus::files(u"plists/xml"_s))
        QTest::newRow(qPrintable(QFileInfo(path).fileName())) << path << platformWritten.contains(QFileInfo(path).fileName());
    QTest::newRow("plaso-com.apple.security.KCN-year0-date.plist")
        << Corpus::root() + u"/plists/malformed/plaso-com.apple.security.KCN-year0-date.plist"_s << true;
}

void XmlPropertyListTest::corpusFilesRoundTrip()
{
    QFETCH(QString, path);
    QFETCH(bool, byteForByte);
    const QByteArray bytes = Corpus::readAll(path);
    QVERIFY2(!bytes.isEmpty(), qPrintable(path));
    const ReadResult<PropertyList> original = XmlPropertyListReader::read(bytes);
    QVERIFY2(original.ok(), qPrintable(original.errorText()));
    const QByteArray written = XmlPropertyListWriter::write(original.value);
    if (byteForByte)
        QCOMPARE(written, bytes);
    const ReadResult<PropertyList> again = XmlPropertyListReader::read(written);
    QVERIFY2(again.ok(), qPrintable(again.errorText()));
    QVERIFY(again.value.isIdenticalTo(original.value));
}

ORVANE_TEST(XmlPropertyListTest)
#include "XmlPropertyListTest.moc"
