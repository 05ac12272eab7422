// orvane-plist domains, read and find, run in-process over a sandboxed account.
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "InProcessTool.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {


const PropertyDictionary kContent{{u"Greeting"_s, PropertyList(u"Hello there"_s)},
                                  {u"Count"_s, PropertyList::integer(3)}};

} // namespace

class PlistToolDomainsTest : public QObject {
    Q_OBJECT
private slots:
    void domainsListsTheBrowserRows();
    void readAndFind_data();
    void readAndFind();
};

void PlistToolDomainsTest::domainsListsTheBrowserRows()
{
    DomainSandbox sandbox;
    sandbox.write(sandbox.machineFolder() + u"/com.m.plist"_s, "<plist><dict/></plist>");
    sandbox.writeDictionary(sandbox.userFolder() + u"/ByHost/com.h.ID.plist"_s, {{u"k"_s, PropertyList::integer(1)}});
    const ToolRun run = runToolInProcess({u"domains"_s});
    QCOMPARE(run.status, 0);
    const QString u = sandbox.userFolder();
    const QString m = sandbox.machineFolder();
    QCOMPARE(run.out, u"System Preferences\t"_s + m + u"\n  com.m\t"_s + m + u"/com.m.plist\n"_s
                          + u"NSRegistrationDomain\t"_s + u + u"/NSRegistrationDomain.plist\n"_s
                          + u"ByHost\t"_s + u + u"/ByHost\n  com.h.ID\t"_s + u + u"/ByHost/com.h.ID.plist\n"_s);
}

void PlistToolDomainsTest::readAndFind_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("err"); // a part of standard error
    QTest::newRow("whole domain") << QStringList{u"read"_s, u"com.example.whole"_s} << 0
                                  << PropertyList(kContent).description() + u'\n' << QString();
    QTest::newRow("one key of the global domain by its name") << QStringList{u"read"_s, u"NSGlobalDomain"_s, u"Count"_s}
                                                              << 0 << u"3\n"_s << QString();
    QTest::newRow("unknown domain") << QStringList{u"read"_s, u"com.example.none"_s} << 1 << QString()
                                    << u"'com.example.none' does not exist"_s;
    QTest::newRow("unknown key") << QStringList{u"read"_s, u"com.example.nokey"_s, u"Nope"_s} << 1 << QString()
                                 << u"has no key 'Nope'"_s;
    QTest::newRow("no domain given") << QStringList{u"read"_s} << 2 << QString() << u"usage:"_s;
    QTest::newRow("find: result line, then the tree")
        << QStringList{u"find"_s, u"hello"_s} << 0
        << u"Found 3 matches in these domains:\n.GlobalPreferences\n  Greeting\tHello there\n"
           u"com.example.nokey\n  Greeting\tHello there\ncom.example.whole\n  Greeting\tHello there\n"_s
        << QString();
    QTest::newRow("find without a match") << QStringList{u"find"_s, u"nowhere"_s} << 1 << u"No match found.\n"_s
                                          << QString();
    QTest::newRow("find without a term") << QStringList{u"find"_s} << 2 << QString() << u"usage:"_s;
}

void PlistToolDomainsTest::readAndFind()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QString, out);
    QFETCH(QString, err);
    DomainSandbox sandbox;
    // Each row reads a domain name of its own: the tool uses the process's
    // shared store, which remembers what it read.
    for (const QString &name : {u"com.example.whole"_s, u"com.example.nokey"_s, u".GlobalPreferences"_s})
        sandbox.writeDictionary(sandbox.userFolder() + u'/' + name + u".plist"_s, kContent);
    const ToolRun run = runToolInProcess(arguments);
    QCOMPARE(run.status, status);
    QCOMPARE(run.out, out);
    QVERIFY2(run.err.contains(err), qPrintable(run.err));
}

ORVANE_TEST(PlistToolDomainsTest)
#include "PlistToolDomainsTest.moc"
