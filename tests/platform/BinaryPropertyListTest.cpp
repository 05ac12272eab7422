// The binary codec: broken files must fail with the right status at the right
// place, numbers must keep the platform's type codes, the writer must produce
// the platform's bytes, and every real file must survive a round trip.
#include "Corpus.h"
#include "TestRegistry.h"

#include "platform/BinaryPropertyListReader.h"
#include "platform/BinaryPropertyListWriter.h"

#include <QFileInfo>
#include <QTest>

namespace {

void appendBigEndian(QByteArray &out, quint64 value, int width)
{
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        out.append(char(uchar(value >> shift)));
}

QByteArray trailer(int offsetSize, int refSize, quint64 count, quint64 top, quint64 table)
{
    QByteArray out(6, '\0');
    out.append(char(offsetSize));
    out.append(char(refSize));
    appendBigEndian(out, count, 8);
    appendBigEndian(out, top, 8);
    appendBigEndian(out, table, 8);
    return out;
}

// Header, the given body (objects and offset table, in hex) and a trailer with exactly these fields.
QByteArray raw(const QByteArray &bodyHex, int offsetSize, int refSize, quint64 count, quint64 top, quint64 table)
{
    return "bplist00" + QByteArray::fromHex(bodyHex) + trailer(offsetSize, refSize, count, top, table);
}

// A well-formed file around the objects (hex), numbered in order, object 0 the root.
QByteArray bplist(const QList<QByteArray> &objectsHex, int refSize = 1)
{
    QByteArray out("bplist00");
    QList<quint64> offsets;
    for (const QByteArray &hex : objectsHex) {
        offsets << quint64(out.size());
        out += QByteArray::fromHex(hex);
    }
    const auto table = quint64(out.size());
    const int offsetSize = table < 0x100 ? 1 : table < 0x10000 ? 2 : 4;
    for (quint64 offset : offsets)
        appendBigEndian(out, offset, offsetSize);
    return out + trailer(offsetSize, refSize, quint64(offsets.size()), 0, table);
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

QByteArray hexRun(int from, int to, int width, const QByteArray &prefix = {})
{
    QByteArray out;
    for (int i = from; i <= to; ++i)
        out += prefix + QByteArray::number(i, 16).rightJustified(2 * width, '0');
    return out;
}

PropertyList str(const char *utf8) { return PropertyList(QString::fromUtf8(utf8)); }

} // namespace

class BinaryPropertyListTest : public QObject {
    Q_OBJECT
private slots:
    void brokenInput_data();
    void brokenInput();
    void sharedReferencesAreCapped();
    void reads_data();
    void reads();
    void writes_data();
    void writes();
    void corpusRoundTrip_data();
    void corpusRoundTrip();
    void corpusPlatformBytes_data();
    void corpusPlatformBytes();
};

void BinaryPropertyListTest::brokenInput_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<ReadStatus>("status");
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<qint64>("object");
    using S = ReadStatus;

    QTest::newRow("header only") << QByteArray("bplist00") << S::Truncated << 8ll << -1ll;
    QTest::newRow("xml is no binary") << QByteArray("<?xml version") << S::BadHeader << 0ll << -1ll;
    // Body "09 08": true at byte 8, offset table at 9; the trailer starts at 10.
    QTest::newRow("offset size 0") << raw("0908", 0, 1, 1, 0, 9) << S::BadTrailer << 16ll << -1ll;
    QTest::newRow("reference size 0") << raw("0908", 1, 0, 1, 0, 9) << S::BadTrailer << 17ll << -1ll;
    QTest::newRow("no objects") << raw("0908", 1, 1, 0, 0, 9) << S::BadTrailer << 18ll << -1ll;
    QTest::newRow("top object beyond count") << raw("0908", 1, 1, 1, 1, 9) << S::OutOfRange << 26ll << -1ll;
    QTest::newRow("offset table in header") << raw("0908", 1, 1, 1, 0, 8) << S::OutOfRange << 34ll << -1ll;
    QTest::newRow("offset table at trailer") << raw("0908", 1, 1, 1, 0, 10) << S::OutOfRange << 34ll << -1ll;
    QTest::newRow("huge object count") << raw("0908", 1, 1, 1ull << 62, 0, 9) << S::TooLarge << 18ll << -1ll;
    QTest::newRow("count times offset size overflows")
        << raw("0908", 8, 1, (1ull << 61) + 1, 0, 9) << S::TooLarge << 18ll << -1ll;
    QTest::newRow("gap before trailer") << raw("090800", 1, 1, 1, 0, 9) << S::BadTrailer << 10ll << -1ll;
    QTest::newRow("offset width cannot reach table")
        << raw("4f110100" + QByteArray(512, '0') + "08", 1, 1, 1, 0, 268) << S::BadTrailer << 275ll << -1ll;
    QTest::newRow("offset beyond object table") << raw("0909", 1, 1, 1, 0, 9) << S::OutOfRange << 9ll << 0ll;
    QTest::newRow("root inside header") << raw("0907", 1, 1, 1, 0, 9) << S::OutOfRange << 9ll << 0ll;

    QTest::newRow("reference beyond objects") << bplist({"a105"}) << S::OutOfRange << 9ll << 0ll;
    QTest::newRow("array contains itself") << bplist({"a100"}) << S::Cycle << 8ll << 0ll;
    QTest::newRow("dictionary value is itself") << bplist({"d10100", "5161"}) << S::Cycle << 8ll << 0ll;
    QTest::newRow("cycle through a child") << bplist({"a101", "a100"}) << S::Cycle << 8ll << 0ll;
    QTest::newRow("string longer than file") << bplist({"556162"}) << S::Truncated << 8ll << 0ll;
    QTest::newRow("data count past end") << bplist({"4f102000"}) << S::Truncated << 8ll << 0ll;
    QTest::newRow("integer cut short") << bplist({"130001"}) << S::Truncated << 8ll << 0ll;
    QTest::newRow("huge array count") << bplist({"af137fffffffffffffff"}) << S::Truncated << 8ll << 0ll;
    QTest::newRow("count above int64") << bplist({"af13ffffffffffffffff"}) << S::TooLarge << 9ll << 0ll;
    QTest::newRow("count not an integer") << bplist({"5f5131"}) << S::BadValue << 9ll << 0ll;
    QTest::newRow("lone high surrogate at end") << bplist({"61d800"}) << S::BadEncoding << 9ll << 0ll;
    QTest::newRow("high surrogate before letter") << bplist({"62d8000041"}) << S::BadEncoding << 9ll << 0ll;
    QTest::newRow("lone low surrogate") << bplist({"620041dc00"}) << S::BadEncoding << 11ll << 0ll;
    QTest::newRow("non-ASCII in ASCII string") << bplist({"5341c3a9"}) << S::BadEncoding << 10ll << 0ll;
    QTest::newRow("integer key") << bplist({"d10102", "1001", "5161"}) << S::Unsupported << 11ll << 1ll;
    QTest::newRow("utf-8 string marker 0x70") << bplist({"70"}) << S::Unsupported << 8ll << 0ll;
    QTest::newRow("null") << bplist({"a101", "00"}) << S::Unsupported << 10ll << 1ll;
    QTest::newRow("uuid") << bplist({"0e"}) << S::Unsupported << 8ll << 0ll;
    QTest::newRow("ordered set") << bplist({"b0"}) << S::Unsupported << 8ll << 0ll;
    QTest::newRow("set") << bplist({"c0"}) << S::Unsupported << 8ll << 0ll;
    QTest::newRow("fill byte") << bplist({"0f"}) << S::BadValue << 8ll << 0ll;
    QTest::newRow("unknown marker 0x90") << bplist({"90"}) << S::BadValue << 8ll << 0ll;
    QTest::newRow("real of 2 bytes") << bplist({"210000"}) << S::BadValue << 8ll << 0ll;
    QTest::newRow("integer of 32 bytes") << bplist({"15"}) << S::BadValue << 8ll << 0ll;
    QTest::newRow("NaN date") << bplist({"337ff8000000000000"}) << S::BadValue << 8ll << 0ll;
    QTest::newRow("date in year 10000") << bplist({"33424d62d23c800000"}) << S::BadValue << 8ll << 0ll;
    QTest::newRow("UID above 32 bits") << bplist({"840100000000"}) << S::BadValue << 8ll << 0ll;
    QTest::newRow("513 nested arrays") << nestedArrays(513) << S::TooDeep << 8ll + 3 * 512 << 512ll;

    QTest::newRow("512 nested arrays are fine") << nestedArrays(512) << S::Ok << -1ll << -1ll;
    QTest::newRow("shared reference is fine") << bplist({"a20101", "5161"}) << S::Ok << -1ll << -1ll;
    // Object 2 starts inside object 1 ("52 41 42"), at its second byte: data holding 0x42.
    QTest::newRow("overlapping objects are fine")
        << raw("a20102524142" "080b0c", 1, 1, 3, 0, 14) << S::Ok << -1ll << -1ll;
}

void BinaryPropertyListTest::brokenInput()
{
    QFETCH(QByteArray, input);
    QFETCH(ReadStatus, status);
    QFETCH(qint64, offset);
    QFETCH(qint64, object);

    const ReadResult<PropertyList> result = BinaryPropertyListReader::read(input);
    QCOMPARE(result.status, status);
    QCOMPARE(result.position.offset, offset);
    QCOMPARE(result.position.object, object);
    QCOMPARE(result.message.isEmpty(), status == ReadStatus::Ok);
}

void BinaryPropertyListTest::sharedReferencesAreCapped()
{
    // An array holding another 1100 times, which holds one number 1100 times:
    // 1.2 million values from 4.4 KB, beyond the budget of a million.
    const QByteArray count = "af110" + QByteArray::number(1100, 16);
    const QByteArray bytes = bplist({count + QByteArray("0001").repeated(1100), count + QByteArray("0002").repeated(1100),
                                     "1001"}, 2);
    const ReadResult<PropertyList> result = BinaryPropertyListReader::read(bytes);
    QCOMPARE(result.status, ReadStatus::TooLarge);

    // One data object referenced three times is not copied for each reference.
    const ReadResult<PropertyList> data = BinaryPropertyListReader::read(bplist({"a3010101", "43616263"}));
    QVERIFY2(data.ok(), qPrintable(data.errorText()));
    const PropertyArray &items = data.value.arrayRef();
    QVERIFY(items.at(1).toData().isSharedWith(items.at(2).toData()));
}

void BinaryPropertyListTest::reads_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<PropertyList>("expected");
    using P = PropertyList;

    QTest::newRow("0 is i") << bplist({"1000"}) << P::integer(0, 'i');
    QTest::newRow("12 is i") << bplist({"100c"}) << P::integer(12, 'i');
    QTest::newRow("13 is q") << bplist({"100d"}) << P::integer(13, 'q');
    QTest::newRow("4 bytes read unsigned") << bplist({"12ffffffff"}) << P::integer(4294967295, 'q');
    QTest::newRow("8-byte -1 is i") << bplist({"13ffffffffffffffff"}) << P::integer(-1, 'i');
    QTest::newRow("8-byte -2 is q") << bplist({"13fffffffffffffffe"}) << P::integer(-2, 'q');
    QTest::newRow("16 bytes keep low half as Q")
        << bplist({"14ffffffffffffffff0000000000000005"}) << P::unsignedInteger(5, 'Q');
    QTest::newRow("4-byte real is f") << bplist({"223f800000"}) << P::real(1.0, 'f');
    QTest::newRow("8-byte real is d") << bplist({"233ff0000000000000"}) << P::real(1.0, 'd');
    QTest::newRow("distant past date") << bplist({"33c22d63c8c5000000"}) << P::date(-63114076800.0);
    QTest::newRow("last second of 9999") << bplist({"33424d62d23c7f8000"}) << P::date(252423993599.0);
    QTest::newRow("true") << bplist({"09"}) << P::boolean(true);
    QTest::newRow("uid of 2 bytes") << bplist({"810102"}) << P::uid(258);
    QTest::newRow("surrogate pair") << bplist({"62d83dde00"}) << str("\xF0\x9F\x98\x80");
    QTest::newRow("count 15 as integer object") << bplist({"5f100f" + QByteArray("61").repeated(15)})
                                                << str("aaaaaaaaaaaaaaa");
    QTest::newRow("duplicate key keeps first")
        << bplist({"d201010203", "5161", "1001", "1002"})
        << P(PropertyDictionary{{QStringLiteral("a"), P::integer(1, 'i')}});
    QTest::newRow("3-byte references") << bplist({"d1000001000002", "5161", "5162"}, 3)
                                       << P(PropertyDictionary{{QStringLiteral("a"), str("b")}});
}

void BinaryPropertyListTest::reads()
{
    QFETCH(QByteArray, input);
    QFETCH(PropertyList, expected);

    const ReadResult<PropertyList> result = BinaryPropertyListReader::read(input);
    QVERIFY2(result.ok(), qPrintable(result.errorText()));
    QVERIFY2(result.value.isIdenticalTo(expected), qPrintable(result.value.description()));
    QCOMPARE(result.value.typeCode(), expected.typeCode());
}

void BinaryPropertyListTest::writes_data()
{
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<QByteArray>("expected");
    using P = PropertyList;

    QTest::newRow("{a: 1}, 50 bytes")
        << P(PropertyDictionary{{QStringLiteral("a"), P::integer(1)}})
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
    QTest::newRow("repeated string stored once") << P(PropertyArray{str("x"), str("x")}) << bplist({"a20101", "5178"});
    QTest::newRow("key and value share a string")
        << P(PropertyDictionary{{QStringLiteral("a"), str("a")}}) << bplist({"d10101", "5161"});
    QTest::newRow("1 and 1.0 are two objects")
        << P(PropertyArray{P::integer(1), P::real(1.0)}) << bplist({"a20102", "1001", "233ff0000000000000"});
    QTest::newRow("depth first, keys before values, own order")
        << P(PropertyDictionary{{QStringLiteral("b"), P(PropertyArray{str("z")})}, {QStringLiteral("a"), P::integer(2)}})
        << bplist({"d201020305", "5162", "5161", "a104", "517a", "1002"});
    PropertyArray many;
    for (int i = 0; i < 255; ++i)
        many.append(P::integer(i));
    QList<QByteArray> manyObjects{"af10ff" + hexRun(1, 255, 2)};
    for (int i = 0; i < 255; ++i)
        manyObjects << hexRun(i, i, 1, "10");
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

void BinaryPropertyListTest::corpusRoundTrip_data()
{
    QTest::addColumn<QString>("path");
    ORVANE_REQUIRE_CORPUS();
    const QStringList files = Corpus::files(QStringLiteral("plists/binary"));
    QVERIFY(files.size() > 50);
    for (const QString &path : files)
        QTest::newRow(qPrintable(QFileInfo(path).fileName())) << path;
}

void BinaryPropertyListTest::corpusRoundTrip()
{
    QFETCH(QString, path);
    const ReadResult<PropertyList> first = BinaryPropertyListReader::read(Corpus::readAll(path));
    QVERIFY2(first.ok(), qPrintable(first.errorText()));
    const QByteArray written = BinaryPropertyListWriter::write(first.value);
    QVERIFY(BinaryPropertyListReader::sniff(written));
    const ReadResult<PropertyList> second = BinaryPropertyListReader::read(written);
    QVERIFY2(second.ok(), qPrintable(second.errorText()));
    QVERIFY(second.value.isIdenticalTo(first.value));
}

void BinaryPropertyListTest::corpusPlatformBytes_data()
{
    QTest::addColumn<QString>("path");
    ORVANE_REQUIRE_CORPUS();
    // Preference files the platform itself wrote, without the stray duplicate
    // strings some of its versions leave: written back, they must match byte for byte.
    const char *names[] = {"co.gitup.mac.plist", "com.apple.CarPlayApp.plist", "com.apple.HIToolbox.plist",
                           "com.apple.SoftwareUpdate.plist", "com.apple.iTunes.eq.plist",
                           "com.apple.loginitems.plist", "com.axosoft.gitkraken.plist",
                           "com.blackpixel.kaleidoscope.plist", "com.divisiblebyzero.Spectacle.plist",
                           "com.if.Amphetamine.plist", "com.mizage.direct.Divvy.plist",
                           "com.pilotmoon.popclip.plist", "org.pqrs.ShowyEdge.plist", "Downloads.plist",
                           "InfoPlist.loctable"};
    for (const char *name : names)
        QTest::newRow(name) << Corpus::root() + QStringLiteral("/plists/binary/") + QLatin1String(name);
}

void BinaryPropertyListTest::corpusPlatformBytes()
{
    QFETCH(QString, path);
    const QByteArray original = Corpus::readAll(path);
    const ReadResult<PropertyList> result = BinaryPropertyListReader::read(original);
    QVERIFY2(result.ok(), qPrintable(result.errorText()));
    QCOMPARE(BinaryPropertyListWriter::write(result.value).toHex(' '), original.toHex(' '));
}

ORVANE_TEST(BinaryPropertyListTest)
#include "BinaryPropertyListTest.moc"
