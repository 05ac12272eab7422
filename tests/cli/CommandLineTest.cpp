// Both programs answer --help and --version on standard output and exit 0,
// with no display to talk to: they are asked from terminals and scripts.
#include "TestRegistry.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

class CommandLineTest : public QObject {
    Q_OBJECT
private slots:
    void answers_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("argument");
        QTest::addColumn<QString>("startOfOutput");
        const QString tool = QStringLiteral(ORVANE_PLIST_EXECUTABLE);
        QTest::newRow("orvane-plist --version") << tool << u"--version"_s << u"orvane-plist 0.1.0\n"_s;
        QTest::newRow("orvane-plist --help")
            << tool << u"--help"_s << u"usage: orvane-plist lint FILE...\n"_s;
#ifdef ORVANE_EXECUTABLE
        const QString gui = QStringLiteral(ORVANE_EXECUTABLE);
        QTest::newRow("orvane --version") << gui << u"--version"_s << u"orvane 0.1.0\n"_s;
        QTest::newRow("orvane --help") << gui << u"--help"_s << u"Usage: "_s;
#endif
    }
    void answers()
    {
        QFETCH(QString, program);
        QFETCH(QString, argument);
        QFETCH(QString, startOfOutput);
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(QString::fromLatin1(name));
        process.setProcessEnvironment(environment);
        process.start(program, {argument});
        QVERIFY(process.waitForFinished(60000));
        const QString out = QString::fromUtf8(process.readAllStandardOutput());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QVERIFY2(out.startsWith(startOfOutput), qPrintable(out));
        QCOMPARE(process.readAllStandardError(), QByteArray());
        if (argument == u"--help"_s && program.endsWith(u"/orvane"_s))
            QVERIFY(out.contains(u"--version"_s) && out.contains(u"FILE..."_s));
    }
};

ORVANE_TEST(CommandLineTest)
#include "CommandLineTest.moc"
