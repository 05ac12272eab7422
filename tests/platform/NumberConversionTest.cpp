// Reals read as 64-bit integers: truncation, and an answer for every real.
#include "TestRegistry.h"

#include "platform/NumberConversion.h"

#include <QTest>

#include <limits>

class NumberConversionTest : public QObject {
    Q_OBJECT

private slots:
    void saturation_data();
    void saturation();
};

void NumberConversionTest::saturation_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<qint64>("asSigned");
    QTest::addColumn<quint64>("asUnsigned");
    constexpr qint64 kMin = std::numeric_limits<qint64>::min(), kMax = std::numeric_limits<qint64>::max();
    constexpr quint64 kUMax = std::numeric_limits<quint64>::max();
    QTest::newRow("truncates towards zero") << -2.9 << qint64(-2) << quint64(0);
    QTest::newRow("NaN reads 0") << std::numeric_limits<double>::quiet_NaN() << qint64(0) << quint64(0);
    QTest::newRow("2^63 is past the signed range only") << 0x1p63 << kMax << (quint64(1) << 63);
    QTest::newRow("below -2^63") << -1e300 << kMin << quint64(0);
    QTest::newRow("2^64 is past the unsigned range") << 0x1p64 << kMax << kUMax;
    QTest::newRow("infinity") << std::numeric_limits<double>::infinity() << kMax << kUMax;
}

void NumberConversionTest::saturation()
{
    QFETCH(double, value);
    QFETCH(qint64, asSigned);
    QFETCH(quint64, asUnsigned);
    QCOMPARE(NumberConversion::saturatedInt64(value), asSigned);
    QCOMPARE(NumberConversion::saturatedUInt64(value), asUnsigned);
}

ORVANE_TEST(NumberConversionTest)
#include "NumberConversionTest.moc"
