// The node archive carries copied entries between windows and processes, so it
// must give back exactly what went in, and refuse anything else with a reason.
#include "Corpus.h"
#include "TestRegistry.h"

#include "platform/SequentialArchive.h"

#include <QFile>
#include <QTest>

#include <limits>

namespace {

ArchivedNode leaf(const QString &name, const PropertyList &value, int tag)
{
    ArchivedNode node;
    node.name = name;
    node.objectValue = value;
    node.menuValue = PropertyList::integer(tag, 'i');
    node.displayValue = value.description();
    node.valueIsBool = value.isBoolean();
    return node;
}

ArchivedNode group(const QString &name, bool isArray, QList<ArchivedNode> children)
{
    ArchivedNode node;
    node.name = name;
    node.isLeaf = false;
    node.canEditValue = false;
    node.objectValue = isArray ? PropertyList(PropertyArray()) : PropertyList(PropertyDictionary());
    node.menuValue = PropertyList::integer(isArray ? 6 : 7, 'i');
    node.displayValue = isArray ? QStringLiteral("an array") : QStringLiteral("a dictionary");
    node.children = std::move(children);
    return node;
}

// A tree with every kind of value, including the awkward ones.
QList<ArchivedNode> sampleNodes()
{
    const PropertyList nested(PropertyDictionary{
        {QStringLiteral("k"), PropertyArray{PropertyList::uid(7), PropertyList::date(-1.5)}},
        {QStringLiteral("é"), PropertyList(QByteArray("\0\1", 2))}});
    return {
        leaf(QStringLiteral("text"), PropertyList(QStringLiteral("caf\u00e9 \U0001F600")), 0),
        group(QStringLiteral("list"), true,
              {leaf(QStringLiteral("Item 1"), PropertyList::unsignedInteger(std::numeric_limits<quint64>::max()), 2),
               leaf(QStringLiteral("Item 2"), PropertyList::real(0.1, 'f'), 3),
               leaf(QStringLiteral("Item 3"), PropertyList::boolean(true), 4),
               group(QStringLiteral("Item 4"), false, {leaf(QString(), nested, 7)})}),
        leaf(QStringLiteral("empty data"), PropertyList(QByteArray()), 1),
        leaf(QStringLiteral("negative"), PropertyList::integer(-3, 'q'), 2),
    };
}

} // namespace

class SequentialArchiveTest : public QObject {
    Q_OBJECT
private slots:
    void nodesRoundTrip();
    void itemsRoundTripInOrder();
    void everyTruncationFails();
    void malformed_data();
    void malformed();
    void deepNestingIsRefused();
    void archivesOfThisVersionStillRead();
};

void SequentialArchiveTest::nodesRoundTrip()
{
    SequentialArchiveWriter writer;
    writer.encodeNodes(sampleNodes());
    const auto read = SequentialArchiveReader::readNodes(writer.data());
    QVERIFY2(read.ok(), qPrintable(read.errorText()));
    QCOMPARE(read.value, sampleNodes());
}

void SequentialArchiveTest::itemsRoundTripInOrder()
{
    SequentialArchiveWriter writer;
    writer.encodeChar(true);
    writer.encodeObject(PropertyList::integer(12, 'i'));
    writer.encodeChar(false);
    SequentialArchiveReader reader(writer.data());
    QVERIFY(reader.decodeChar().value);
    QVERIFY(reader.decodeObject().value.isIdenticalTo(PropertyList::integer(12, 'i')));
    QVERIFY(!reader.atEnd());
    // Reading an item as the wrong type fails instead of misreading it.
    const auto wrong = reader.decodeObject();
    QCOMPARE(wrong.status, ReadStatus::BadValue);
    QVERIFY(!reader.decodeChar().ok()); // a failed reader stays failed
}

void SequentialArchiveTest::everyTruncationFails()
{
    SequentialArchiveWriter writer;
    writer.encodeNodes(sampleNodes());
    const QByteArray whole = writer.data();
    for (qsizetype length = 0; length < whole.size(); ++length) {
        const auto read = SequentialArchiveReader::readNodes(whole.left(length));
        QVERIFY2(!read.ok(), qPrintable(QStringLiteral("a cut at %1 bytes was accepted").arg(length)));
    }
}

void SequentialArchiveTest::malformed_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<ReadStatus>("status");

    const QByteArray header("OVSA\x00\x01", 6);
    QTest::newRow("empty") << QByteArray() << ReadStatus::BadHeader;
    QTest::newRow("wrong magic") << QByteArray("XVSA\x00\x01", 6) << ReadStatus::BadHeader;
    QTest::newRow("header cut in version") << QByteArray("OVSA\x00", 5) << ReadStatus::Truncated;
    QTest::newRow("future version") << QByteArray("OVSA\x00\x09", 6) << ReadStatus::BadVersion;
    QTest::newRow("version zero") << QByteArray("OVSA\x00\x00", 6) << ReadStatus::BadVersion;
    QTest::newRow("no list tag") << header + "N" << ReadStatus::BadValue;
    QTest::newRow("count beyond the bytes") << header + QByteArray("L\xff\xff\xff\xff", 5) << ReadStatus::OutOfRange;
    QTest::newRow("trailing bytes") << header + QByteArray("L\0\0\0\0x", 6) << ReadStatus::Syntax;

    // One node whose name object claims a huge string.
    const QByteArray nodeStart = header + QByteArray("L\0\0\0\1N" "L\0\0\0\0", 11);
    QTest::newRow("string longer than the archive") << nodeStart + QByteArray("O\0\xff\xff\xff\xff", 6) << ReadStatus::OutOfRange;
    QTest::newRow("unknown value kind") << nodeStart + QByteArray("O\x63", 2) + QByteArray(8, '\0') << ReadStatus::BadValue;
    QTest::newRow("invalid UTF-8 name") << nodeStart + QByteArray("O\0\0\0\0\2\xc3\x28", 8) + QByteArray(20, '\0')
                                        << ReadStatus::BadEncoding;
    QTest::newRow("integer with a real's code") << nodeStart + QByteArray("O\2d", 3) + QByteArray(8, '\0') << ReadStatus::BadValue;
    QTest::newRow("name that is not a string")
        << nodeStart + QByteArray("O\4\1" "C\1" "O\2i\0\0\0\0\0\0\0\0" "O\4\1" "C\1" "O\0\0\0\0\0" "C\0", 29)
        << ReadStatus::BadValue;
}

void SequentialArchiveTest::malformed()
{
    QFETCH(QByteArray, bytes);
    QFETCH(ReadStatus, status);
    const auto read = SequentialArchiveReader::readNodes(bytes);
    QCOMPARE(read.status, status);
    QVERIFY(!read.message.isEmpty());
}

void SequentialArchiveTest::deepNestingIsRefused()
{
    // An array nested a thousand deep, written by hand: the writer would accept it,
    // but a reader must not recurse without bound on what it is handed.
    QByteArray bytes("OVSA\x00\x01" "O", 7);
    for (int i = 0; i < 1000; ++i)
        bytes += QByteArray("\6\0\0\0\1", 5);
    bytes += QByteArray("\4\1", 2);
    SequentialArchiveReader reader(bytes);
    QCOMPARE(reader.decodeObject().status, ReadStatus::TooDeep);
}

void SequentialArchiveTest::archivesOfThisVersionStillRead()
{
    // Bytes written by version 1 and kept in tests/data (they also seed the fuzzer):
    // a change of the encoding that breaks them breaks pasting between builds.
    QFile file(Corpus::testDataPath(QStringLiteral("archive/two-leaves.ovsa")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const auto read = SequentialArchiveReader::readNodes(file.readAll());
    QVERIFY2(read.ok(), qPrintable(read.errorText()));
    QCOMPARE(read.value.size(), 2);
    QList<ArchivedNode> expected{leaf(QStringLiteral("Greeting"), PropertyList(QStringLiteral("Hello")), 0),
                                 leaf(QStringLiteral("Count"), PropertyList::integer(42, 'q'), 2)};
    expected[0].displayValue = QStringLiteral("Greeting");
    expected[1].displayValue = QStringLiteral("Count");
    QCOMPARE(read.value, expected);
}

ORVANE_TEST(SequentialArchiveTest)
#include "SequentialArchiveTest.moc"
