// The binary codec: exact failure places, the platform's type codes and bytes, real files.
#include "Corpus.h"
#include "TestRegistry.h"
#include "WarningsPicture.h"

#include "platform/BinaryPropertyListReader.h"
#include "platform/BinaryPropertyListWriter.h"
#include "platform/PropertyListSerialization.h"

#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

void appendBigEndian(QByteArray &out, quint64 value, int width)
{
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        out.append(char(uchar(value >> shift)));
}
// Header, the given body (objects and offset table, in hex) and a trailer with exactly these fields.
QByteArray raw(const QByteArray &bodyHex, int offsetSize, int refSize, quint64 count, quint64 top, quint64 table)
{
    QByteArray out = "bplist00" + QByteArray::fromHex(bodyHex) + QByteArray(6, '\0');
    out.append(char(offsetSize));
    out.append(char(refSize));
    for (quint64 field : {count, top, table})
        appendBigEndian(out, field, 8);
    return out;
}

// A well-formed file around the objects (hex), numbered in order, object 0 the root.
QByteArray bplist(const QList<QByteArray> &objectsHex, int refSize = 1)
{
    QByteArray body;
    QList<quint64> offsets;
    for (const QByteArray &hex : objectsHex) {
        offsets << quint64(8 + body.size());
        body += QByteArray::fromHex(hex);
    }
    const auto table = quint64(8 + body.size());
    const int offsetSize = table < 0x100 ? 1 : table < 0x10000 ? 2 : 4;
    for (quint64 offset : offsets)
        appendBigEndian(body, offset, offsetSize);
    return raw(body.toHex(), offsetSize, refSize, quint64(offsets.size()), 0, table);
}

// levels arrays, each holding the next; the innermost is empty.
QByteArray nestedArrays(int levels)
{
    QList<QByteArray> objects;
    for (int i = 1; i < levels; ++i)
        objects << "a1" + QByteArray::number(i, 16).rightJustified(4, '0');
    objects << "a0";
    return bplist(objects, 2);
}

PropertyList str(const char *utf8) { return PropertyList(QString::fromUtf8(utf8)); }

} // namespace

class BinaryPropertyListTest : public QObject {
    Q_OBJECT
private slots:
    void reads_data();
    void reads();
    void writes_data();
    void writes();
    void corpusRoundTrip_data();
    void corpusRoundTrip();
    void loneSurrogatesAreNotWritten_data();
    void loneSurrogatesAreNotWritten();
};

// Broken files fail with the status, byte offset and object number given; good
// ones read as the value given, type codes included, with the warnings given.
void BinaryPropertyListTest::reads_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<ReadStatus>("status");
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<qint64>("object");
    QTest::addColumn<PropertyList>("expected");
    QTest::addColumn<QString>("warnings");
    using S = ReadStatus;
    using P = PropertyList;
    const auto bad = [](const char *name, const QByteArray &input, S status, qint64 offset, qint64 object) {
        QTest::newRow(name) << input << status << offset << object << P() << QString();
    };
    const auto warned = [](const char *name, const QByteArray &input, const P &expected, const char *warnings) {
        QTest::newRow(name) << input << S::Ok << qint64(-1) << qint64(-1) << expected << QString::fromLatin1(warnings);
    };
    const auto good = [warned](const char *name, const QByteArray &input, const P &expected) {
        warned(name, input, expected, "");
    };
    bad("header only", QByteArray("bplist00"), S::Truncated, 8, -1);
    bad("xml is no binary", QByteArray("<?xml version"), S::BadHeader, 0, -1);
    // Body "09 08": true at byte 8, offset table at 9; the trailer starts at 10.
    bad("offset size 0", raw("0908", 0, 1, 1, 0, 9), S::BadTrailer, 16, -1);
    bad("top object beyond count", raw("0908", 1, 1, 1, 1, 9), S::OutOfRange, 26, -1);
    bad("count times offset size overflows", raw("0908", 8, 1, (1ull << 61) + 1, 0, 9), S::TooLarge, 18, -1);
    bad("gap before trailer", raw("090800", 1, 1, 1, 0, 9), S::BadTrailer, 10, -1);
    bad("offset width cannot reach table", raw("4f110100" + QByteArray(512, '0') + "08", 1, 1, 1, 0, 268),
        S::BadTrailer, 275, -1);
    bad("offset beyond object table", raw("0909", 1, 1, 1, 0, 9), S::OutOfRange, 9, 0);
    bad("reference beyond objects", bplist({"a105"}), S::OutOfRange, 9, 0);
    bad("cycle through a child", bplist({"a101", "a100"}), S::Cycle, 8, 0);
    bad("huge array count", bplist({"af137fffffffffffffff"}), S::Truncated, 8, 0);
    bad("count above int64", bplist({"af13ffffffffffffffff"}), S::TooLarge, 9, 0);
    bad("count not an integer", bplist({"5f5131"}), S::BadValue, 9, 0);
    bad("high surrogate before letter", bplist({"62d8000041"}), S::BadEncoding, 9, 0);
    bad("non-ASCII in ASCII string", bplist({"5341c3a9"}), S::BadEncoding, 10, 0);
    bad("integer key", bplist({"d10102", "1001", "5161"}), S::Unsupported, 11, 1);
    bad("unknown marker 0x90", bplist({"90"}), S::BadValue, 8, 0);
    bad("NaN date", bplist({"337ff8000000000000"}), S::BadValue, 8, 0);
    bad("date in year 10000", bplist({"33424d62d23c800000"}), S::BadValue, 8, 0);
    bad("UID above 32 bits", bplist({"840100000000"}), S::BadValue, 8, 0);
    bad("513 nested arrays", nestedArrays(513), S::TooDeep, 8 + 3 * 512, 512);

    P deep = PropertyArray();
    for (int level = 1; level < 512; ++level)
        deep = PropertyArray{deep};
    good("512 nested arrays are fine", nestedArrays(512), deep);
    good("shared reference is fine", bplist({"a20101", "5161"}), P(PropertyArray{str("a"), str("a")}));
    // Object 2 starts inside object 1 ("52 41 42"), at its second byte: data holding 0x42.
    good("overlapping objects are fine", raw("a20102524142" "080b0c", 1, 1, 3, 0, 14),
         P(PropertyArray{str("AB"), P(QByteArray("B"))}));
    good("13 is q", bplist({"100d"}), P::integer(13, 'q'));
    good("4 bytes read unsigned", bplist({"12ffffffff"}), P::integer(4294967295, 'q'));
    good("8-byte -1 is i", bplist({"13ffffffffffffffff"}), P::integer(-1, 'i'));
    warned("16 bytes keep low half as Q", bplist({"14ffffffffffffffff0000000000000005"}), P::unsignedInteger(5, 'Q'),
           "OutOfRange at object 0, byte 8");
    good("4-byte real is f", bplist({"223f800000"}), P::real(1.0, 'f'));
    good("last second of 9999", bplist({"33424d62d23c7f8000"}), P::date(252423993599.0));
    good("uid of 2 bytes", bplist({"810102"}), P::uid(258));
    good("surrogate pair", bplist({"62d83dde00"}), str("\xF0\x9F\x98\x80"));
    good("count 15 as integer object", bplist({"5f100f" + QByteArray("61").repeated(15)}), str("aaaaaaaaaaaaaaa"));
    warned("duplicate key keeps first", bplist({"d201010203", "5161", "1001", "1002"}),
           P(PropertyDictionary{{u"a"_s, P::integer(1, 'i')}}), "DuplicateKey at object 0, byte 10");
    warned("a shared dictionary warns once", bplist({"a20101", "d202020303", "5161", "1001"}),
           P(PropertyArray{P(PropertyDictionary{{u"a"_s, P::integer(1, 'i')}}),
                           P(PropertyDictionary{{u"a"_s, P::integer(1, 'i')}})}),
           "DuplicateKey at object 1, byte 13");
    good("3-byte references", bplist({"d1000001000002", "5161", "5162"}, 3), P(PropertyDictionary{{u"a"_s, str("b")}}));
    // An array holding another 1100 times, which holds one number 1100 times:
    // 1.2 million values from 4.4 KB, beyond the budget of a million.
    const QByteArray count = "af110" + QByteArray::number(1100, 16);
    bad("shared references beyond the value budget",
        bplist({count + QByteArray("0001").repeated(1100), count + QByteArray("0002").repeated(1100), "1001"}, 2),
        S::TooLarge, 4416, 2);
}

void BinaryPropertyListTest::reads()
{
    QFETCH(QByteArray, input);
    QFETCH(ReadStatus, status);
    QFETCH(qint64, offset);
    QFETCH(qint64, object);
    QFETCH(PropertyList, expected);
    QFETCH(QString, warnings);
    const ReadResult<PropertyList> result = BinaryPropertyListReader::read(input);
    QCOMPARE(result.status, status);
    QCOMPARE(WarningsPicture::of(result.warnings), warnings);
    QCOMPARE(result.position.offset, offset);
    QCOMPARE(result.position.object, object);
    QCOMPARE(result.message.isEmpty(), status == ReadStatus::Ok);
    if (status == ReadStatus::Ok) {
        QVERIFY2(result.value.isIdenticalTo(expected), qPrintable(result.value.description()));
        QCOMPARE(result.value.typeCode(), expected.typeCode());
    }
}

void BinaryPropertyListTest::writes_data()
{
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<QByteArray>("expected");
    using P = PropertyList;
    QTest::newRow("{a: 1}, 50 bytes")
        << P(PropertyDictionary{{u"a"_s, P::integer(1)}})
        << QByteArray::fromHex("62706c6973743030d1010251611001080b0d"
                               "00000000000001010000000000000003"
                               "0000000000000000000000000000000f");
    // Each boolean is an object of its own, but references go to the first of equal value.
    PropertyArray sixteen;
    for (int i = 0; i < 16; ++i)
        sixteen.append(P::boolean(i % 4 != 1));
    QTest::newRow("16 booleans: count object, first of each referenced")
        << P(sixteen)
        << bplist({"af1010" + QByteArray("01020101").repeated(4), "09", "08", "09", "09", "09", "08", "09", "09",
                   "09", "08", "09", "09", "09", "08", "09", "09"});
    QTest::newRow("key and value share a string")
        << P(PropertyDictionary{{u"a"_s, str("a")}}) << bplist({"d10101", "5161"});
    QTest::newRow("1 and 1.0 are two objects")
        << P(PropertyArray{P::integer(1), P::real(1.0)}) << bplist({"a20102", "1001", "233ff0000000000000"});
    QTest::newRow("depth first, keys before values, own order")
        << P(PropertyDictionary{{u"b"_s, P(PropertyArray{str("z")})}, {u"a"_s, P::integer(2)}})
        << bplist({"d201020305", "5162", "5161", "a104", "517a", "1002"});
    PropertyArray many;
    QList<QByteArray> manyObjects{"af10ff"};
    for (int i = 0; i < 255; ++i) {
        many.append(P::integer(i));
        manyObjects[0] += QByteArray::number(i + 1, 16).rightJustified(4, '0');
        manyObjects << "10" + QByteArray::number(i, 16).rightJustified(2, '0');
    }
    QTest::newRow("256 objects need 2-byte references") << P(many) << bplist(manyObjects, 2);
    QTest::newRow("scalar encodings")
        << P(PropertyArray{P::integer(-1), P::unsignedInteger(1ull << 63), P::unsignedInteger(5, 'Q'),
                           P::real(0.5, 'f'), str("é"), P::uid(300), P(QByteArray::fromHex("0a")),
                           P::date(0), P::boolean(false), P::integer(70000)})
        << bplist({"aa0102030405060708090a", "13ffffffffffffffff", "1400000000000000008000000000000000",
                   "1400000000000000000000000000000005", "223f000000", "6100e9", "81012c", "410a",
                   "330000000000000000", "08", "1200011170"});
}

void BinaryPropertyListTest::writes()
{
    QFETCH(PropertyList, value);
    QFETCH(QByteArray, expected);
    const QByteArray written = BinaryPropertyListWriter::write(value);
    QCOMPARE(written.toHex(' '), expected.toHex(' '));
    const ReadResult<PropertyList> back = BinaryPropertyListReader::read(written);
    QVERIFY2(back.ok(), qPrintable(back.errorText()));
}

// Every real file survives a round trip; preference files the platform itself
// wrote (without the stray duplicate strings some of its versions leave) must
// also come back byte for byte.
// Our readers refuse half of a UTF-16 pair, so no writer may produce one: a
// saved file must always read back.
void BinaryPropertyListTest::loneSurrogatesAreNotWritten_data()
{
    using P = PropertyList;
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<bool>("writable");
    const QString high(QChar(0xD800));
    const QString low(QChar(0xDC00));
    QTest::newRow("lone high in a string") << P(PropertyArray{P(u"a"_s + high)}) << false;
    QTest::newRow("low before high in a key") << P(PropertyDictionary{{low + high, P::integer(1)}}) << false;
    QTest::newRow("high at the end") << P(u"x"_s + high) << false;
    QTest::newRow("a whole pair") << P(u"\U0001F600"_s) << true;
}

void BinaryPropertyListTest::loneSurrogatesAreNotWritten()
{
    QFETCH(PropertyList, value);
    QFETCH(bool, writable);
    QCOMPARE(PropertyListSerialization::writeProblem(value).isEmpty(), writable);
    for (const PropertyListFormat format : {PropertyListFormat::Binary, PropertyListFormat::Xml}) {
        const QByteArray bytes = PropertyListSerialization::write(value, format);
        QCOMPARE(!bytes.isEmpty(), writable);
        if (writable)
            QVERIFY(PropertyListSerialization::read(bytes).value.value.isIdenticalTo(value));
    }
}

void BinaryPropertyListTest::corpusRoundTrip_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("byteForByte");
    ORVANE_REQUIRE_CORPUS();
    const QStringList platformWritten{
        u"co.gitup.mac.plist"_s, u"com.apple.CarPlayApp.plist"_s, u"com.apple.HIToolbox.plist"_s,
        u"com.apple.SoftwareUpdate.plist"_s, u"com.apple.iTunes.eq.plist"_s, u"com.apple.loginitems.plist"_s,
        u"com.axosoft.gitkraken.plist"_s, u"com.blackpixel.kaleidoscope.plist"_s,
        u"com.divisiblebyzero.Spectacle.plist"_s, u"com.if.Amphetamine.plist"_s, u"com.mizage.direct.Divvy.plist"_s,
        u"com.pilotmoon.popclip.plist"_s, u"org.pqrs.ShowyEdge.plist"_s, u"Downloads.plist"_s, u"InfoPlist.loctable"_s};
    const QStringList files = Corpus::files(QStringLiteral("plists/binary"));
    QVERIFY(files.size() > 50);
    for (const QString &path : files)
        QTest::newRow(qPrintable(QFileInfo(path).fileName())) << path << platformWritten.contains(QFileInfo(path).fileName());
}

void BinaryPropertyListTest::corpusRoundTrip()
{
    QFETCH(QString, path);
    QFETCH(bool, byteForByte);
    const QByteArray original = Corpus::readAll(path);
    const ReadResult<PropertyList> first = BinaryPropertyListReader::read(original);
    QVERIFY2(first.ok(), qPrintable(first.errorText()));
    const QByteArray written = BinaryPropertyListWriter::write(first.value);
    if (byteForByte)
        QCOMPARE(written.toHex(' '), original.toHex(' '));
    QVERIFY(BinaryPropertyListReader::sniff(written));
    const ReadResult<PropertyList> second = BinaryPropertyListReader::read(written);
    QVERIFY2(second.ok(), qPrintable(second.errorText()));
    QVERIFY(second.value.isIdenticalTo(first.value));
}

ORVANE_TEST(BinaryPropertyListTest)
#include "BinaryPropertyListTest.moc"
