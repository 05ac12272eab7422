// How a document path maps onto the preference store, and what reading and
// saving through it do to the files.
#include "Corpus.h"
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "domains/CFReadWriteMethods.h"
#include "platform/NotificationCenter.h"
#include "platform/PropertyListSerialization.h"
#include "platform/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace CFReadWriteMethods;

namespace {

// $U is the user's preferences folder, $M the machine's, $H the sandbox, $ID
// the current host's identifier.
QString expand(QString text, const DomainSandbox &sandbox)
{
    return text.replace(u"$U"_s, sandbox.userFolder())
        .replace(u"$M"_s, sandbox.machineFolder())
        .replace(u"$H"_s, sandbox.home())
        .replace(u"$ID"_s, DomainSandbox::kHostId);
}

PropertyList fileValue(const QString &path)
{
    return PropertyListSerialization::readFile(path).value.value;
}

// One process's store over the sandbox.
struct TestStore {
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};
    Store store() { return Store{service, defaults}; }
};

} // namespace

Q_DECLARE_METATYPE(CFReadWriteMethods::PathKind)

class CFReadWriteMethodsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { ORVANE_REQUIRE_CORPUS(); }
    void pathKinds_data();
    void pathKinds();
    void readFromFile_data();
    void readFromFile();
    void perHostFileOfAnotherHost();
    void saveRemovesExactlyTheDeletedKeys_data();
    void saveRemovesExactlyTheDeletedKeys();
    void domainWithoutKeysIsNotWritten_data();
    void domainWithoutKeysIsNotWritten();
    void plainFileIsNeverTouchedThroughTheStore();
    void writeToFileKeepsTheTopLevel();
};

void CFReadWriteMethodsTest::pathKinds_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<PathKind>("kind");
    QTest::addColumn<QString>("domain");
    QTest::addColumn<bool>("anyUser");
    QTest::addColumn<bool>("anyHost");
    const auto row = [](const char *name, const QString &path, PathKind kind, const QString &domain, bool anyUser,
                        bool anyHost) { QTest::newRow(name) << path << kind << domain << anyUser << anyHost; };
    row("per-host: extension and host id go", u"$U/ByHost/.GlobalPreferences.$ID.plist"_s, PathKind::PerHost,
        u".GlobalPreferences"_s, false, false);
    row("prefix test is plain text", u"$U/ByHostile.plist"_s, PathKind::PerHost, u"le"_s, false, false);
    row("user: one extension goes", u"$U/com.a.b.plist"_s, PathKind::User, u"com.a.b"_s, false, true);
    row("sub-folder stays in the name", u"$U/com.foo/bar.plist"_s, PathKind::User, u"com.foo/bar"_s, false, true);
    row("machine: any user, current host", u"$M/com.apple.x.plist"_s, PathKind::Machine, u"com.apple.x"_s, true, false);
    row("elsewhere is a plain file", u"$H/Desktop/x.plist"_s, PathKind::PlainFile, u""_s, false, true);
}

void CFReadWriteMethodsTest::pathKinds()
{
    QFETCH(QString, path);
    QFETCH(PathKind, kind);
    QFETCH(QString, domain);
    QFETCH(bool, anyUser);
    QFETCH(bool, anyHost);
    DomainSandbox sandbox;
    const DomainLocation location = locationForPath(expand(path, sandbox));
    QCOMPARE(location.kind, kind);
    QCOMPARE(location.domainName, domain);
    if (kind != PathKind::PlainFile) {
        QCOMPARE(location.user, anyUser ? PreferencesUser::Any : PreferencesUser::Current);
        QCOMPARE(location.host, anyHost ? PreferencesHost::Any : PreferencesHost::Current);
    }
}

void CFReadWriteMethodsTest::readFromFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("content"); // empty: no file; "corpus:NAME" copies a corpus file
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("outcome"); // what opened, where from, whether editable
    const auto row = [](const char *name, const char *path, const char *content, const char *outcome,
                        const QString &type = kDocumentType) {
        QTest::newRow(name) << QString::fromUtf8(path) << QByteArray(content) << type << QString::fromUtf8(outcome);
    };
    const char *array = "<plist><array><string>a</string><integer>2</integer></array></plist>";
    row("user domain from the store", "$U/com.apple.dock.plist", "corpus:com.apple.dock.plist", "dict store");
    row("machine domain from the store", "$M/com.apple.TimeMachine.plist", "corpus:com.apple.TimeMachine.plist",
        "dict store");
    row("array in the user folder comes from the file", "$U/list.plist", array, "array file");
    row("registration domain has no file", "$U/NSRegistrationDomain.plist", "", "dict store read-only");
    row("empty user domain falls back to the file", "$U/com.empty.plist", "<plist><dict/></plist>", "dict file");
    row("corrupt file fails", "$H/docs/bad.plist", "bplist00garbage", "fails");
    row("scalar top level fails", "$H/docs/s.plist", "<plist><string>x</string></plist>", "fails");
    row("other document type fails", "$H/docs/list.plist", array, "fails", u"Text"_s);
}

void CFReadWriteMethodsTest::readFromFile()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, content);
    QFETCH(QString, type);
    QFETCH(QString, outcome);
    DomainSandbox sandbox;
    path = expand(path, sandbox);
    if (content.startsWith("corpus:"))
        sandbox.copyCorpus(QString::fromLatin1(content.mid(7)), path);
    else if (!content.isEmpty())
        sandbox.write(path, content);
    TestStore test;
    const PropertyDictionary registered{{u"VXProbe"_s, PropertyList::boolean(true)}};
    test.defaults.registerDefaults(registered);

    const auto result = CFReadWriteMethods::readFromFile(path, type, test.store());
    if (!result.ok()) {
        QCOMPARE(u"fails"_s, outcome);
        QVERIFY2(result.errorText().contains(path), qPrintable(result.errorText()));
        return;
    }
    const DocumentContent &document = result.value;
    QCOMPARE((document.value.isArray() ? u"array"_s : u"dict"_s)
                 + (document.loadedByUserDefaults ? u" store"_s : u" file"_s)
                 + (document.canEditPlist ? u""_s : u" read-only"_s),
             outcome);
    const PropertyList expected = QFile::exists(path) ? fileValue(path) : PropertyList(registered);
    QVERIFY(document.value == expected);
}

void CFReadWriteMethodsTest::perHostFileOfAnotherHost()
{
    DomainSandbox sandbox;
    const QString other = sandbox.copyCorpus(u"com.knollsoft.Rectangle.plist"_s,
                                             sandbox.userFolder() + u"/ByHost/com.x.000D93A1B2C3.plist"_s);
    const PropertyDictionary current{{u"Host"_s, PropertyList(u"current"_s)}};
    // Nothing for this host yet: the file itself is the document. Once this
    // host's domain of the same name exists, that is what opens.
    for (const bool hostDomain : {false, true}) {
        if (hostDomain)
            sandbox.writeDictionary(sandbox.userFolder() + u"/ByHost/com.x."_s + DomainSandbox::kHostId + u".plist"_s,
                                    current);
        TestStore test;
        const auto result = CFReadWriteMethods::readFromFile(other, kDocumentType, test.store());
        QVERIFY(result.ok());
        QCOMPARE(result.value.loadedByUserDefaults, hostDomain);
        QVERIFY(result.value.value == (hostDomain ? PropertyList(current) : fileValue(other)));
    }
}

void CFReadWriteMethodsTest::saveRemovesExactlyTheDeletedKeys_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("corpusFile");
    QTest::addColumn<QList<int>>("deleted"); // key indexes; -1 is the last key
    QTest::newRow("user: first and last key") << u"$U/com.apple.finder.plist"_s << u"com.apple.finder.plist"_s
                                              << QList<int>{0, -1};
    QTest::newRow("per-host: middle key") << u"$U/ByHost/com.apple.Terminal.$ID.plist"_s
                                          << u"com.apple.Terminal.plist"_s << QList<int>{3};
    QTest::newRow("machine: all but one") << u"$M/com.knollsoft.Rectangle.plist"_s
                                          << u"com.knollsoft.Rectangle.plist"_s << QList<int>{0, 1, 2, 3, 4, 5, 6, 7};
}

void CFReadWriteMethodsTest::saveRemovesExactlyTheDeletedKeys()
{
    QFETCH(QString, path);
    QFETCH(QString, corpusFile);
    QFETCH(QList<int>, deleted);
    DomainSandbox sandbox;
    path = expand(path, sandbox);
    sandbox.copyCorpus(corpusFile, path);
    PropertyDictionary edited;
    {
        TestStore test;
        const auto read = CFReadWriteMethods::readFromFile(path, kDocumentType, test.store());
        QVERIFY(read.ok() && read.value.loadedByUserDefaults);
        edited = read.value.value.toDictionary();
        const QStringList keys = edited.keys();
        for (int index : deleted)
            edited.remove(keys.at(index < 0 ? keys.size() - 1 : index));
        edited.insert(u"OrvaneAdded"_s, PropertyList::real(1.5));
        QVERIFY(writePreferenceDictionary(edited, path, test.store()));
        QVERIFY(synchronizePreferencesAtPath(path, test.store()));
    }
    // Another process sees exactly the edited domain, and so does the file.
    TestStore fresh;
    const auto stored = preferenceDictionaryFromPath(path, fresh.store());
    QVERIFY(stored.has_value() && *stored == edited);
    QVERIFY(fileValue(path) == PropertyList(edited));
}

void CFReadWriteMethodsTest::domainWithoutKeysIsNotWritten_data()
{
    QTest::addColumn<QByteArray>("content"); // empty: no file
    QTest::newRow("no file") << QByteArray();
    QTest::newRow("empty dictionary") << QByteArray("<plist><dict/></plist>");
}

void CFReadWriteMethodsTest::domainWithoutKeysIsNotWritten()
{
    QFETCH(QByteArray, content);
    DomainSandbox sandbox;
    const QString path = sandbox.userFolder() + u"/com.new.plist"_s;
    if (!content.isEmpty())
        sandbox.write(path, content);
    TestStore test;
    QVERIFY(!writePreferenceDictionary({{u"a"_s, PropertyList::integer(1)}}, path, test.store()));
    synchronizePreferencesAtPath(path, test.store());
    QCOMPARE(Corpus::readAll(path), content);
    QCOMPARE(QFile::exists(path), !content.isEmpty());
}

void CFReadWriteMethodsTest::plainFileIsNeverTouchedThroughTheStore()
{
    DomainSandbox sandbox;
    const QString folder = sandbox.home() + u"/docs"_s;
    const QString path = sandbox.copyCorpus(u"com.apple.spotlight.plist"_s, folder + u"/com.apple.spotlight.plist"_s);
    const QByteArray before = Corpus::readAll(path);
    TestStore test;
    const auto read = CFReadWriteMethods::readFromFile(path, kDocumentType, test.store());
    QVERIFY(read.ok());
    QVERIFY(!read.value.loadedByUserDefaults);
    QVERIFY(!preferenceDictionaryFromPath(path, test.store()).has_value());
    QVERIFY(!writePreferenceDictionary({{u"x"_s, PropertyList::integer(1)}}, path, test.store()));
    QVERIFY(synchronizePreferencesAtPath(path, test.store()));
    QCOMPARE(Corpus::readAll(path), before);
    // No lock or temporary file appeared beside it either.
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{u"com.apple.spotlight.plist"_s});
}

void CFReadWriteMethodsTest::writeToFileKeepsTheTopLevel()
{
    DomainSandbox sandbox;
    const QString path = sandbox.write(u"docs/out.plist"_s, "old");
    QVERIFY(!writeToFile(PropertyList(u"x"_s), path).isEmpty()); // a scalar top level is refused
    QCOMPARE(Corpus::readAll(path), QByteArray("old"));
    const PropertyList array(PropertyArray{PropertyList(u"a"_s), PropertyList::integerFromFile(2)});
    QCOMPARE(writeToFile(array, path), QString());
    const auto read = PropertyListSerialization::readFile(path);
    QVERIFY(read.ok());
    QCOMPARE(read.value.format, PropertyListFormat::Xml);
    QVERIFY(read.value.value.isIdenticalTo(array));
}

ORVANE_TEST(CFReadWriteMethodsTest)
#include "CFReadWriteMethodsTest.moc"
