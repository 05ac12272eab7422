// The registered colour and font defaults follow the desktop's theme: each
// named colour comes from its own palette role, and the font from the system's.
#include "TestRegistry.h"

#include "ui/AppearanceDefaults.h"

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QTest>

namespace {

// Every role a different colour, so a role read in place of another shows.
QPalette distinctPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Active, QPalette::Base, QColor(10, 0, 0));
    palette.setColor(QPalette::Active, QPalette::AlternateBase, QColor(20, 0, 0));
    palette.setColor(QPalette::Active, QPalette::Text, QColor(30, 0, 0));
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(40, 0, 0));
    palette.setColor(QPalette::Active, QPalette::Highlight, QColor(50, 0, 0));
    palette.setColor(QPalette::Inactive, QPalette::Highlight, QColor(60, 0, 0));
    palette.setColor(QPalette::Active, QPalette::Light, QColor(70, 0, 0, 128));
    return palette;
}

double redOf(const CalibratedColor &color) { return qRound(color.red * 255.0); }

} // namespace

class AppearanceDefaultsTest : public QObject {
    Q_OBJECT
private slots:
    void coloursComeFromTheirRoles()
    {
        const AppearanceDefaults appearance = SystemAppearance::fromPalette(distinctPalette(), QFont());
        QCOMPARE(redOf(appearance.alternatingRowLight), 10.0);
        QCOMPARE(redOf(appearance.alternatingRowDark), 20.0);
        QCOMPARE(redOf(appearance.text), 30.0);
        QCOMPARE(redOf(appearance.disabledControlText), 40.0);
        QCOMPARE(redOf(appearance.secondarySelectedControl), 60.0); // a window that is not key
        QCOMPARE(redOf(appearance.controlLightHighlight), 70.0);
        QCOMPARE(qRound(appearance.controlLightHighlight.alpha * 255.0), 128);
    }

    void fontSizeInPoints_data()
    {
        QTest::addColumn<QFont>("font");
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("size");
        QFont points(QStringLiteral("Inter"));
        points.setPointSizeF(11.5);
        QFont pixels(QStringLiteral("Inter"));
        pixels.setPixelSize(16); // 12 points on a 96 dpi screen
        QFont nameless;
        nameless.setFamily(QString());
        nameless.setPointSizeF(9);
        QTest::newRow("points") << points << QStringLiteral("Inter") << 11.5;
        QTest::newRow("pixels") << pixels << QStringLiteral("Inter") << 12.0;
        QTest::newRow("no family keeps the fallback name") << nameless << AppearanceDefaults::fallback().userFontName << 9.0;
    }

    void fontSizeInPoints()
    {
        QFETCH(QFont, font);
        QFETCH(QString, name);
        QFETCH(double, size);
        const AppearanceDefaults appearance = SystemAppearance::fromPalette(QPalette(), font);
        QCOMPARE(appearance.userFontName, name);
        QCOMPARE(appearance.boldSystemFontName, name);
        QCOMPARE(appearance.userFontSize, size);
    }
};

ORVANE_TEST(AppearanceDefaultsTest)
#include "AppearanceDefaultsTest.moc"
