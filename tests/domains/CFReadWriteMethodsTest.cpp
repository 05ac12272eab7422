// How a document path maps onto the preference store, and what reading and
// saving through it do to the files.
#include "Corpus.h"
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "domains/CFReadWriteMethods.h"
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
    UserDefaults defaults{service};
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
    void writeToFileKeepsTheTopLevel_data();
    void writeToFileKeepsTheTopLevel();
};

void CFReadWriteMethodsTest::pathKinds_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<PathKind>("kind");
    QTest::addColumn<QString>("domain");
    QTest::addColumn<int>("user"); // 0 current, 1 any
    QTest::addColumn<int>("host"); // 0 current, 1 any
    QTest::newRow("per-host: extension and host id go") << u"$U/ByHost/com.x.0A1B.plist"_s << PathKind::PerHost
                                                        << u"com.x"_s << 0 << 0;
    QTest::newRow("per-host global") << u"$U/ByHost/.GlobalPreferences.$ID.plist"_s << PathKind::PerHost
                                     << u".GlobalPreferences"_s << 0 << 0;
    QTest::newRow("prefix test is plain text") << u"$U/ByHostile.plist"_s << PathKind::PerHost << u"le"_s << 0 << 0;
    QTest::newRow("user domain: one extension goes") << u"$U/com.a.b.plist"_s << PathKind::User << u"com.a.b"_s
                                                     << 0 << 1;
    QTest::newRow("user global domain") << u"$U/.GlobalPreferences.plist"_s << PathKind::User
                                        << u".GlobalPreferences"_s << 0 << 1;
    QTest::newRow("sub-folder stays in the name") << u"$U/com.foo/bar.plist"_s << PathKind::User << u"com.foo/bar"_s
                                                  << 0 << 1;
    QTest::newRow("the user folder itself has no name") << u"$U"_s << PathKind::User << u""_s << 0 << 1;
    QTest::newRow("machine: any user, current host") << u"$M/com.apple.x.plist"_s << PathKind::Machine
                                                     << u"com.apple.x"_s << 1 << 0;
    QTest::newRow("elsewhere is a plain file") << u"$H/Desktop/x.plist"_s << PathKind::PlainFile << u""_s << 0 << 1;
}

void CFReadWriteMethodsTest::pathKinds()
{
    QFETCH(QString, path);
    QFETCH(PathKind, kind);
    QFETCH(QString, domain);
    QFETCH(int, user);
    QFETCH(int, host);
    DomainSandbox sandbox;
    const DomainLocation location = locationForPath(expand(path, sandbox));
    QCOMPARE(location.kind, kind);
    QCOMPARE(location.domainName, domain);
    if (kind != PathKind::PlainFile) {
        QCOMPARE(location.user, user == 0 ? PreferencesUser::Current : PreferencesUser::Any);
        QCOMPARE(location.host, host == 0 ? PreferencesHost::Current : PreferencesHost::Any);
    }
}

void CFReadWriteMethodsTest::readFromFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("content"); // empty: no file; "corpus:NAME" copies a corpus file
    QTest::addColumn<QString>("type");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<bool>("isArray");
    QTest::addColumn<bool>("loadedByUserDefaults");
    QTest::addColumn<bool>("canEdit");
    const auto row = [](const char *name, const char *path, const char *content, bool ok, bool isArray,
                        bool loaded, bool canEdit, const QString &type = kDocumentType) {
        QTest::newRow(name) << QString::fromUtf8(path) << QByteArray(content) << type << ok << isArray << loaded
                            << canEdit;
    };
    const char *array = "<plist><array><string>a</string><integer>2</integer></array></plist>";
    row("user domain from the store", "$U/com.apple.dock.plist", "corpus:com.apple.dock.plist", true, false, true, true);
    row("machine domain from the store", "$M/com.apple.TimeMachine.plist", "corpus:com.apple.TimeMachine.plist", true,
        false, true, true);
    row("array in the user folder comes from the file", "$U/list.plist", array, true, true, false, true);
    row("plain dictionary file", "$H/docs/finder.plist", "corpus:com.apple.finder.plist", true, false, false, true);
    row("plain array file", "$H/docs/list.plist", array, true, true, false, true);
    row("registration domain has no file and is read-only", "$U/NSRegistrationDomain.plist", "", true, false, true,
        false);
    row("empty user domain falls back to the file", "$U/com.empty.plist", "<plist><dict/></plist>", true, false, false,
        true);
    row("corrupt file fails", "$H/docs/bad.plist", "bplist00garbage", false, false, false, false);
    row("scalar top level fails", "$H/docs/s.plist", "<plist><string>x</string></plist>", false, false, false, false);
    row("missing plain file fails", "$H/docs/none.plist", "", false, false, false, false);
    row("other document type fails", "$H/docs/list.plist", array, false, false, false, false, u"Text"_s);
}

void CFReadWriteMethodsTest::readFromFile()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, content);
    QFETCH(QString, type);
    QFETCH(bool, ok);
    QFETCH(bool, isArray);
    QFETCH(bool, loadedByUserDefaults);
    QFETCH(bool, canEdit);
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
    QCOMPARE(result.ok(), ok);
    if (!ok) {
        QVERIFY2(result.errorText().contains(path), qPrintable(result.errorText()));
        return;
    }
    const DocumentContent &document = result.value;
    QCOMPARE(document.value.isArray(), isArray);
    QCOMPARE(document.loadedByUserDefaults, loadedByUserDefaults);
    QCOMPARE(document.canEditPlist, canEdit);
    const PropertyList expected = QFile::exists(path) ? fileValue(path) : PropertyList(registered);
    QVERIFY(document.value == expected);
}

void CFReadWriteMethodsTest::perHostFileOfAnotherHost()
{
    DomainSandbox sandbox;
    const QString other = sandbox.copyCorpus(u"com.knollsoft.Rectangle.plist"_s,
                                             sandbox.userFolder() + u"/ByHost/com.x.000D93A1B2C3.plist"_s);
    // Nothing for this host yet: the file itself is the document.
    {
        TestStore test;
        const auto result = CFReadWriteMethods::readFromFile(other, kDocumentType, test.store());
        QVERIFY(result.ok());
        QVERIFY(!result.value.loadedByUserDefaults);
        QVERIFY(result.value.value == fileValue(other));
    }
    // With this host's domain of the same name present, that is what opens.
    const PropertyDictionary current{{u"Host"_s, PropertyList(u"current"_s)}};
    sandbox.writeDictionary(sandbox.userFolder() + u"/ByHost/com.x."_s + DomainSandbox::kHostId + u".plist"_s, current);
    TestStore test;
    const auto result = CFReadWriteMethods::readFromFile(other, kDocumentType, test.store());
    QVERIFY(result.ok());
    QVERIFY(result.value.loadedByUserDefaults);
    QVERIFY(result.value.value == PropertyList(current));
}

void CFReadWriteMethodsTest::saveRemovesExactlyTheDeletedKeys_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("corpusFile");
    QTest::addColumn<QList<int>>("deleted"); // key indexes; -1 is the last key
    QTest::newRow("user: first and last key") << u"$U/com.apple.finder.plist"_s << u"com.apple.finder.plist"_s
                                              << QList<int>{0, -1};
    QTest::newRow("user: nothing deleted, one added") << u"$U/com.apple.dock.plist"_s << u"com.apple.dock.plist"_s
                                                      << QList<int>{};
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
    QVERIFY(stored.has_value());
    QCOMPARE(stored->size(), edited.size());
    QVERIFY(*stored == edited);
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

void CFReadWriteMethodsTest::writeToFileKeepsTheTopLevel_data()
{
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<bool>("ok");
    QTest::newRow("array stays an array")
        << PropertyList(PropertyArray{PropertyList(u"a"_s), PropertyList::integerFromFile(2)}) << true;
    QTest::newRow("a scalar is refused") << PropertyList(u"x"_s) << false;
}

void CFReadWriteMethodsTest::writeToFileKeepsTheTopLevel()
{
    QFETCH(PropertyList, value);
    QFETCH(bool, ok);
    DomainSandbox sandbox;
    const QString path = sandbox.write(u"docs/out.plist"_s, "old");
    QCOMPARE(writeToFile(value, path).isEmpty(), ok);
    if (!ok) {
        QCOMPARE(Corpus::readAll(path), QByteArray("old"));
        return;
    }
    const auto read = PropertyListSerialization::readFile(path);
    QVERIFY(read.ok());
    QCOMPARE(read.value.format, PropertyListFormat::Xml);
    QVERIFY(read.value.value.isIdenticalTo(value));
}

ORVANE_TEST(CFReadWriteMethodsTest)
#include "CFReadWriteMethodsTest.moc"
