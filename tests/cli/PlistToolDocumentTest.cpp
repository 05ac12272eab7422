// orvane-plist filter, set and print-html, run in-process over a sandboxed
// account: what a window shows for a search text, one entry edited and saved
// as a window saves it (or nothing written at all), and what a window prints.
#include "Corpus.h"
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "InProcessTool.h"
#include "platform/PropertyListSerialization.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {


PropertyList parsed(const char *text)
{
    return PropertyListSerialization::read(QByteArray(text)).value.value;
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class PlistToolDocumentTest : public QObject {
    Q_OBJECT
private slots:
    void filter_data();
    void filter();
    void set_data();
    void set();
    void printHtml();
};

void PlistToolDocumentTest::filter_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<PropertyList>("shown");

    QTest::newRow("a dictionary holds only its shown entries")
        << u"title"_s << parsed("{Window = {Title = Main;};}");
    QTest::newRow("ignoring case; an array holds only its shown items")
        << u"hello"_s << parsed("{Greeting = \"Hello World\"; Recent = (hello.txt);}");
    QTest::newRow("a leaf found by its name shows its real value")
        << u"tok"_s << parsed("{Token = <deadbeef>;}");
    QTest::newRow("# matches case") << u"#hello"_s << parsed("{Recent = (hello.txt);}");
    QTest::newRow("! drops the leaves whose value holds the text")
        << u"!hello"_s
        << parsed(
               "{Window = {Title = Main; Frame = \"0 0 640 480\";}; Recent = (a.txt); Token = <deadbeef>;}");
    QTest::newRow("nothing matching shows an empty dictionary")
        << u"zzz"_s << PropertyList(PropertyDictionary());
}

void PlistToolDocumentTest::filter()
{
    QFETCH(QString, query);
    QFETCH(PropertyList, shown);
    DomainSandbox sandbox;
    const PropertyList content =
        parsed("{Greeting = \"Hello World\"; Window = {Title = Main; Frame = \"0 0 640 480\";};"
               " Recent = (a.txt, hello.txt); Token = <deadbeef>;}");
    const QString path =
        sandbox.write(u"filter.plist"_s, PropertyListSerialization::write(content, PropertyListFormat::Xml));
    const ToolRun run = runToolInProcess({u"filter"_s, path, query});
    QCOMPARE(run.status, 0);
    QCOMPARE(run.out, shown.description() + u'\n');
    QCOMPARE(fileBytes(path), PropertyListSerialization::write(content, PropertyListFormat::Xml));
}

namespace {

enum class Place { PlainFile, ReadOnlyFile, Domain };

const PropertyDictionary kContent{{u"n"_s, PropertyList(u"12abc"_s)},
                                  {u"h"_s, PropertyList(u"hello"_s)},
                                  {u"Count"_s, PropertyList::integer(3)},
                                  {u"list"_s, PropertyArray{PropertyList(u"a"_s), PropertyList(u"b"_s)}},
                                  {u"Group"_s, PropertyDictionary{{u"x"_s, PropertyList(u"1"_s)}}}};

PropertyList contentWith(const QString &key, const PropertyList &value)
{
    PropertyDictionary content = kContent;
    content.insert(key, value);
    return content;
}

} // namespace

Q_DECLARE_METATYPE(Place)

void PlistToolDocumentTest::set_data()
{
    QTest::addColumn<Place>("place");
    QTest::addColumn<int>("format"); // a PropertyListFormat
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out"); // on success; on failure a part of the error
    QTest::addColumn<PropertyList>("saved");

    const PropertyList unchanged;
    const auto plain = Place::PlainFile;
    const int binary = int(PropertyListFormat::Binary);
    const int xml = int(PropertyListFormat::Xml);
    QTest::newRow("a class change takes the leading number")
        << plain << binary << QStringList{u"n"_s, u"--class"_s, u"Integer"_s} << 0 << u"Integer 12\n"_s
        << contentWith(u"n"_s, PropertyList::integer(12));
    QTest::newRow("a typed value keeps the class")
        << plain << xml << QStringList{u"Count"_s, u"--value"_s, u"42"_s} << 0 << u"Integer 42\n"_s
        << contentWith(u"Count"_s, PropertyList::integer(42));
    QTest::newRow("an array element by position")
        << plain << xml << QStringList{u"list"_s, u"2"_s, u"--value"_s, u"z"_s} << 0 << u"String z\n"_s
        << contentWith(u"list"_s, PropertyArray{PropertyList(u"a"_s), PropertyList(u"z"_s)});
    // Written directly, the domain would become XML, the document's format for what the service gave.
    QTest::newRow("a domain is saved through the service")
        << Place::Domain << binary << QStringList{u"Count"_s, u"--value"_s, u"7"_s} << 0 << u"Integer 7\n"_s
        << contentWith(u"Count"_s, PropertyList::integer(7));

    QTest::newRow("a missing key") << plain << xml << QStringList{u"nope"_s, u"--value"_s, u"1"_s} << 1
                                   << u"has no entry nope"_s << unchanged;
    QTest::newRow("a group's value") << plain << xml << QStringList{u"Group"_s, u"--value"_s, u"1"_s} << 1
                                     << u"cannot be edited in place"_s << unchanged;
    QTest::newRow("a refused class change") << plain << xml << QStringList{u"h"_s, u"--class"_s, u"Date"_s}
                                            << 1 << u"cannot be changed to the class Date"_s << unchanged;
    QTest::newRow("an unwritable file")
        << Place::ReadOnlyFile << xml << QStringList{u"h"_s, u"--value"_s, u"x"_s} << 1
        << u"cannot be written"_s << unchanged;
    QTest::newRow("old-style text") << plain << int(PropertyListFormat::OpenStep)
                                    << QStringList{u"h"_s, u"--value"_s, u"x"_s} << 1 << u"old-style text"_s
                                    << unchanged;
    QTest::newRow("a class the pop-up does not offer")
        << plain << xml << QStringList{u"h"_s, u"--class"_s, u"Data"_s} << 2 << u"a class is one of"_s
        << unchanged;
}

void PlistToolDocumentTest::set()
{
    QFETCH(Place, place);
    QFETCH(int, format);
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QString, out);
    QFETCH(PropertyList, saved);
    if (place == Place::ReadOnlyFile && geteuid() == 0)
        QSKIP("root writes any file");
    DomainSandbox sandbox;
    const QByteArray bytes =
        format == int(PropertyListFormat::OpenStep)
            ? PropertyList(kContent).description().toUtf8()
            : PropertyListSerialization::write(PropertyList(kContent), PropertyListFormat(format));
    const QString path = sandbox.write(
        place == Place::Domain ? sandbox.userFolder() + u"/com.example.set.plist"_s : u"set.plist"_s, bytes);
    if (place == Place::ReadOnlyFile)
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));

    const ToolRun run = runToolInProcess(QStringList{u"set"_s, path} + arguments);
    QCOMPARE(run.status, status);
    if (status != 0) {
        QVERIFY2(run.err.contains(out), qPrintable(run.err));
        QCOMPARE(run.out, QString());
        QCOMPARE(fileBytes(path), bytes);
        return;
    }
    QCOMPARE(run.out, out);
    const auto written = PropertyListSerialization::read(fileBytes(path));
    QVERIFY2(written.ok(), qPrintable(written.errorText()));
    QCOMPARE(int(written.value.format), format);
    QVERIFY2(written.value.value == saved, qPrintable(written.value.value.description()));
}

void PlistToolDocumentTest::printHtml()
{
    DomainSandbox sandbox;
    const ToolRun run = runToolInProcess({u"print-html"_s, Corpus::testDataPath(u"sample.plist"_s)});
    QCOMPARE(run.status, 0);
    QCOMPARE(run.err, QString());
    for (const QString &expected :
         {u"<span class=\"purple\">&lt;</span><span class=\"brown\">?xml version=</span>"
          "<span class=\"blue\">&quot;1.0&quot;</span>"_s,
          u"<span class=\"purple\">&lt;key&gt;</span>Greeting<span class=\"purple\">&lt;/key&gt;</span>"_s})
        QVERIFY2(run.out.contains(expected), qPrintable(run.out));
    const qsizetype start = run.out.indexOf(u"<pre>"_s) + 5;
    const QString text = run.out.mid(start, run.out.indexOf(u"</pre>"_s) - start);
    // Every "<" left in the text opens or closes a span, and spans never nest.
    QCOMPARE(text.count(u'<'), text.count(u"<span class="_s) + text.count(u"</span>"_s));
    QVERIFY(!text.contains(QRegularExpression(u"<span[^>]*>[^<]*<span"_s)));

    const ToolRun missing = runToolInProcess({u"print-html"_s, sandbox.home() + u"/none.plist"_s});
    QCOMPARE(missing.status, 1);
    QCOMPARE(missing.out, QString());
    QCOMPARE(missing.err.count(u'\n'), 1);
}

ORVANE_TEST(PlistToolDocumentTest)
#include "PlistToolDocumentTest.moc"
