// orvane-plist as scripts use it: exit statuses, what goes to which stream, and
// that a failed conversion never touches the output file.
#include "Corpus.h"
#include "TestRegistry.h"

#include "platform/PropertyListSerialization.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Run {
    int status = -1;
    QByteArray out;
    QByteArray err;
};

Run runTool(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(ORVANE_PLIST_EXECUTABLE), arguments);
    process.waitForFinished(60000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

QString data(const char *name) { return Corpus::testDataPath(QString::fromLatin1(name)); }

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class PlistToolTest : public QObject {
    Q_OBJECT
private slots:
    void lint_data();
    void lint();
    void convertToStandardOutput_data();
    void convertToStandardOutput();
    void convertInPlaceKeepsTheValue();
    void failedConvertLeavesOutputAlone();
    void printShowsTheDescription();
    void defaultsCommands_data();
    void defaultsCommands();
    void defaultsRefusesANonDictionary();
    void usageErrors_data();
    void usageErrors();
};

void PlistToolTest::lint_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("lines");

    const QString good = data("sample.plist");
    const QString bad = data("broken.plist");
    QTest::newRow("one good file") << QStringList{good} << 0 << QStringList{good + QStringLiteral(": OK")};
    QTest::newRow("a bad file fails the run") << QStringList{good, bad} << 1
                                              << QStringList{good + QStringLiteral(": OK"), bad + QStringLiteral(": ")};
    QTest::newRow("missing file") << QStringList{data("no-such.plist")} << 1
                                  << QStringList{data("no-such.plist") + QStringLiteral(": Cannot open")};
}

void PlistToolTest::lint()
{
    QFETCH(QStringList, files);
    QFETCH(int, status);
    QFETCH(QStringList, lines);
    const Run run = runTool(QStringList{QStringLiteral("lint")} + files);
    QCOMPARE(run.status, status);
    const QStringList printed = QString::fromUtf8(run.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(printed.size(), lines.size());
    for (qsizetype i = 0; i < lines.size(); ++i)
        QVERIFY2(printed.at(i).startsWith(lines.at(i)), qPrintable(printed.at(i)));
    if (status != 0 && files.contains(data("broken.plist")))
        QVERIFY2(printed.last().contains(QStringLiteral("line")), "a lint error must say where");
}

void PlistToolTest::convertToStandardOutput_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("expectedFormat");
    QTest::newRow("binary") << QStringLiteral("binary1") << int(PropertyListFormat::Binary);
    QTest::newRow("xml") << QStringLiteral("xml1") << int(PropertyListFormat::Xml);
}

void PlistToolTest::convertToStandardOutput()
{
    QFETCH(QString, format);
    QFETCH(int, expectedFormat);
    const Run run = runTool({QStringLiteral("convert"), format, QStringLiteral("-o"), QStringLiteral("-"), data("sample.plist")});
    QCOMPARE(run.status, 0);
    const auto original = PropertyListSerialization::readFile(data("sample.plist"));
    const auto converted = PropertyListSerialization::read(run.out);
    QVERIFY2(converted.ok(), qPrintable(converted.errorText()));
    QCOMPARE(int(converted.value.format), expectedFormat);
    QVERIFY(converted.value.value.isIdenticalTo(original.value.value));
}

void PlistToolTest::convertInPlaceKeepsTheValue()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("copy.plist"));
    QVERIFY(QFile::copy(data("sample.plist"), path));
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    QCOMPARE(runTool({QStringLiteral("convert"), QStringLiteral("binary1"), path}).status, 0);
    QVERIFY(fileBytes(path).startsWith("bplist00"));
    QCOMPARE(runTool({QStringLiteral("convert"), QStringLiteral("xml1"), path}).status, 0);
    // Written by our own XML writer, the sample comes back byte for byte.
    QCOMPARE(fileBytes(path), fileBytes(data("sample.plist")));
}

void PlistToolTest::failedConvertLeavesOutputAlone()
{
    QTemporaryDir dir;
    const QString output = dir.filePath(QStringLiteral("out.plist"));
    QFile existing(output);
    QVERIFY(existing.open(QIODevice::WriteOnly));
    existing.write("precious");
    existing.close();
    const Run run = runTool({QStringLiteral("convert"), QStringLiteral("binary1"), QStringLiteral("-o"), output,
                             data("broken.plist")});
    QCOMPARE(run.status, 1);
    QVERIFY(!run.err.isEmpty());
    QCOMPARE(fileBytes(output), QByteArray("precious"));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 1); // no temporary left behind
}

void PlistToolTest::printShowsTheDescription()
{
    const Run run = runTool({QStringLiteral("print"), data("sample.plist")});
    QCOMPARE(run.status, 0);
    QCOMPARE(QString::fromUtf8(run.out), QStringLiteral("{\n"
                                                        "    Greeting = \"Hello world\";\n"
                                                        "    Items =     (\n"
                                                        "        1,\n"
                                                        "        \"2.5\",\n"
                                                        "        1\n"
                                                        "    );\n"
                                                        "    Token = <deadbeef>;\n"
                                                        "}\n"));
}

void PlistToolTest::defaultsCommands_data()
{
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("error"); // a text stderr must hold; empty: stderr stays empty

    const QString greeting = QStringLiteral("defaults write defaults-sample Greeting -string \"Hello world\"");
    const QString count = QStringLiteral("defaults write defaults-sample Count -int 42");
    QTest::newRow("every key in file order, refusal and trailing blanks included")
        << QStringList{} << 0
        << QStringList{greeting,
                       count,
                       QStringLiteral("defaults write defaults-sample Enabled -bool true"),
                       QStringLiteral("defaults write defaults-sample Recent -array -string a.txt -int 7  "),
                       QStringLiteral("Sorry, defaults can't handle the nested dictionaries / arrays found in the key \"Grid\""),
                       QStringLiteral("defaults write defaults-sample \"Window Frame\" -string \"{{0, 0}, {640, 480}}\"")}
        << QString();
    QTest::newRow("named keys in the order given") << QStringList{QStringLiteral("Count"), QStringLiteral("Greeting")} << 0
                                                   << QStringList{count, greeting} << QString();
    QTest::newRow("an unknown key is named and fails the run, the rest still print")
        << QStringList{QStringLiteral("Count"), QStringLiteral("Nope"), QStringLiteral("Greeting")} << 1
        << QStringList{count, greeting} << QStringLiteral("'Nope'");
    QTest::newRow("keys match exactly") << QStringList{QStringLiteral("greeting")} << 1 << QStringList{}
                                        << QStringLiteral("'greeting'");
}

void PlistToolTest::defaultsCommands()
{
    QFETCH(QStringList, keys);
    QFETCH(int, status);
    QFETCH(QStringList, lines);
    QFETCH(QString, error);
    const Run run = runTool(QStringList{QStringLiteral("defaults"), data("defaults-sample.plist")} + keys);
    QCOMPARE(run.status, status);
    QCOMPARE(QString::fromUtf8(run.out), lines.isEmpty() ? QString() : lines.join(QLatin1Char('\n')) + QLatin1Char('\n'));
    if (error.isEmpty())
        QCOMPARE(run.err, QByteArray());
    else
        QVERIFY2(QString::fromUtf8(run.err).contains(error), run.err.constData());
}

void PlistToolTest::defaultsRefusesANonDictionary()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("list.plist"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(PropertyListSerialization::write(PropertyArray{PropertyList(QStringLiteral("a"))}, PropertyListFormat::Xml));
    file.close();
    const Run run = runTool({QStringLiteral("defaults"), path});
    QCOMPARE(run.status, 1);
    QCOMPARE(run.out, QByteArray());
    QVERIFY2(run.err.contains("not a dictionary"), run.err.constData());

    const Run broken = runTool({QStringLiteral("defaults"), data("broken.plist")});
    QCOMPARE(broken.status, 1);
    QCOMPARE(broken.out, QByteArray());
    QVERIFY(!broken.err.isEmpty());
}

void PlistToolTest::usageErrors_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no command") << QStringList{};
    QTest::newRow("unknown command") << QStringList{QStringLiteral("frobnicate")};
    QTest::newRow("unknown format") << QStringList{QStringLiteral("convert"), QStringLiteral("json"), data("sample.plist")};
    QTest::newRow("old-style text cannot be written")
        << QStringList{QStringLiteral("convert"), QStringLiteral("openstep1"), data("sample.plist")};
    QTest::newRow("-o without a name") << QStringList{QStringLiteral("convert"), QStringLiteral("xml1"), QStringLiteral("-o")};
    QTest::newRow("two inputs") << QStringList{QStringLiteral("convert"), QStringLiteral("xml1"), data("sample.plist"),
                                               data("sample.plist")};
    QTest::newRow("lint without files") << QStringList{QStringLiteral("lint")};
    QTest::newRow("defaults without a file") << QStringList{QStringLiteral("defaults")};
    QTest::newRow("print-html without a file") << QStringList{QStringLiteral("print-html")};
}

void PlistToolTest::usageErrors()
{
    QFETCH(QStringList, arguments);
    const Run run = runTool(arguments);
    QCOMPARE(run.status, 2);
    QVERIFY(run.err.contains("usage: orvane-plist"));
}

ORVANE_TEST(PlistToolTest)
#include "PlistToolTest.moc"
