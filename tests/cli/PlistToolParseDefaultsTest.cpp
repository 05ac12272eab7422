// orvane-plist parse-defaults: the record layout scripts depend on, line
// numbering, skipped lines, and --whole reading the input as one drop.
#include "TestRegistry.h"

#include "PlistTool.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

int runTool(const QStringList &arguments, QString &out, QString &err)
{
    QTextStream outStream(&out);
    QTextStream errStream(&err);
    const int status = PlistTool(outStream, errStream).run(arguments);
    outStream.flush();
    errStream.flush();
    return status;
}

} // namespace

class PlistToolParseDefaultsTest : public QObject {
    Q_OBJECT
private slots:
    void records_data();
    void records();
    void readsStandardInput();
};

void PlistToolParseDefaultsTest::records_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("expected");

    QTest::newRow("comments and blanks skipped, numbers kept")
        << QByteArray("# source: a script\n\ndefaults write d k -int 42\n  # indented comment\n"
                      "defaults write d k -float 1\ndefaults write d k\n")
        << QStringList() << u"3: entry \"d\" \"k\" Integer 42\n5: no result\n6: error: Nothing follows the key (column 18)\n"_s;
    QTest::newRow("container description indented under its record")
        << QByteArray("defaults write d k -array a \"b c\"\n") << QStringList()
        << u"1: entry \"d\" \"k\" Array (\n        a,\n        \"b c\"\n    )\n"_s;
    QTest::newRow("domain and key quoted with escapes")
        << QByteArray("defaults write a\\\"b My\\ Key -bool yes\n") << QStringList()
        << u"1: entry \"a\\\\\\\"b\" \"My Key\" Boolean 1\n"_s;
    QTest::newRow("CRLF line end is not part of the value")
        << QByteArray("defaults write d k -bool true\r\n") << QStringList()
        << u"1: entry \"d\" \"k\" Boolean 1\n"_s;
    QTest::newRow("whole text reads one command across lines")
        << QByteArray("defaults write d\nx k v\nw\n") << QStringList{u"--whole"_s}
        << u"1: entry \"d\\nx\" \"k\" String v\n    w\n    \n"_s;
    QTest::newRow("whole text error gives line and column")
        << QByteArray("x\ndefaults write d  k\n") << QStringList{u"--whole"_s}
        << u"1: error: A blank stands where the key should start (line 2, column 18)\n"_s;
}

void PlistToolParseDefaultsTest::records()
{
    QFETCH(QByteArray, input);
    QFETCH(QStringList, options);
    QFETCH(QString, expected);
    QTemporaryDir folder;
    QFile file(folder.filePath(u"commands.txt"_s));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(input) == input.size());
    file.close();
    QString out;
    QString err;
    QCOMPARE(runTool(QStringList{u"parse-defaults"_s, file.fileName()} + options, out, err), 0);
    QCOMPARE(out, expected);
    QCOMPARE(err, QString());
}

void PlistToolParseDefaultsTest::readsStandardInput()
{
    QProcess process;
    process.start(QStringLiteral(ORVANE_PLIST_EXECUTABLE), {u"parse-defaults"_s});
    QVERIFY(process.waitForStarted());
    process.write("defaults write d k -dict a -int 1\n");
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(process.readAllStandardOutput(), QByteArray("1: entry \"d\" \"k\" Dictionary {\n        a = 1;\n    }\n"));
    // A file that cannot be read, and arguments the command does not take.
    QString out;
    QString err;
    QCOMPARE(runTool({u"parse-defaults"_s, u"/nonexistent/commands.txt"_s}, out, err), 1);
    QCOMPARE(runTool({u"parse-defaults"_s, u"a"_s, u"b"_s}, out, err), 2);
    QCOMPARE(runTool({u"parse-defaults"_s, u"--all"_s}, out, err), 2);
}

ORVANE_TEST(PlistToolParseDefaultsTest)
#include "PlistToolParseDefaultsTest.moc"
