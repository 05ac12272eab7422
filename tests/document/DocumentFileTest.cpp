// Opening, saving, reloading and watching a document's file or domain.
#include "Corpus.h"
#include "DocumentFixture.h"
#include "TestRegistry.h"
#include "TreePicture.h"

#include "platform/PropertyListSerialization.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

PropertyListFile fileAt(const QString &path) { return PropertyListSerialization::readFile(path).value; }

QByteArray bytesOf(const PropertyList &value, PropertyListFormat format)
{
    return PropertyListSerialization::write(value, format);
}

void rename(plistDocument &document, const char *from, const char *to)
{
    document.setObjectValue(nodeAt(document, QString::fromLatin1(from)), 0, QString::fromLatin1(to));
}

} // namespace

Q_DECLARE_METATYPE(PropertyListFormat)

class DocumentFileTest : public QObject {
    Q_OBJECT

private slots:
    void plainFileKeepsItsFormat_data();
    void plainFileKeepsItsFormat();
    void oldStyleTextIsSavedAsXmlOnlyWhenAsked();
    void corpusFilesSaveWhatTheyRead();
    void domainSaveRemovesExactlyTheDeletedKeys();
    void domainWithoutKeysIsNotWritten();
    void failedSaveKeepsTheEdits();
    void duplicateKeysAreReported_data();
    void duplicateKeysAreReported();
    void unreadableFiles_data();
    void unreadableFiles();
    void reloadForgetsTheHistory();
    void changesByOtherPrograms();
};

void DocumentFileTest::plainFileKeepsItsFormat_data()
{
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<PropertyListFormat>("format");
    QTest::addColumn<PropertyList>("saved");

    const PropertyList dictionary = valueOf("{a = 1; b = 2;}");
    const PropertyList renamed = valueOf("{z = 1; b = 2;}");
    QTest::newRow("xml") << dictionary << PropertyListFormat::Xml << renamed;
    QTest::newRow("binary") << dictionary << PropertyListFormat::Binary << renamed;
    QTest::newRow("array top level") << valueOf("({a = 1;}, x)") << PropertyListFormat::Binary
                                     << valueOf("({z = 1;}, x)");
}

void DocumentFileTest::plainFileKeepsItsFormat()
{
    QFETCH(PropertyList, value);
    QFETCH(PropertyListFormat, format);
    DocumentFixture fixture;
    const QString path = fixture.sandbox.write(QStringLiteral("plain/file.plist"), bytesOf(value, format));
    const auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;
    QFile::setPermissions(path, ownerOnly);
    plistDocument &document = fixture.openFile(path);
    QVERIFY(!document.loadedByUserDefaults());
    rename(document, value.isArray() ? "1/a" : "a", "z");
    QVERIFY(document.isDocumentEdited());

    QString error;
    QVERIFY2(document.saveDocument(&error), qPrintable(error));
    QVERIFY(!document.isDocumentEdited());
    const PropertyListFile saved = fileAt(path);
    QCOMPARE(saved.format, format);
    QTEST(saved.value, "saved");
    QCOMPARE(QFile::permissions(path) & 0x7077, ownerOnly); // owner, group, others
}

void DocumentFileTest::oldStyleTextIsSavedAsXmlOnlyWhenAsked()
{
    DocumentFixture fixture;
    const QString path = fixture.sandbox.write(QStringLiteral("old.plist"), "{a = 1;}");
    plistDocument &document = fixture.openFile(path);
    rename(document, "a", "b");
    QVERIFY(document.needsFormatChangeToSave());
    QString error;
    QVERIFY(!document.saveDocument(&error));
    QVERIFY(!error.isEmpty());
    QCOMPARE(fileAt(path).format, PropertyListFormat::OpenStep);

    document.setFileFormat(PropertyListFormat::Xml);
    QVERIFY2(document.saveDocument(&error), qPrintable(error));
    QCOMPARE(fileAt(path).format, PropertyListFormat::Xml);
    QCOMPARE(fileAt(path).value, valueOf("{b = 1;}"));
}

void DocumentFileTest::corpusFilesSaveWhatTheyRead()
{
    ORVANE_REQUIRE_CORPUS();
    DocumentFixture fixture;
    for (const QString &name : {QStringLiteral("com.apple.dock.plist"), QStringLiteral("com.apple.Terminal.plist")}) {
        const QString path = fixture.sandbox.copyCorpus(name, QStringLiteral("copies/") + name);
        const PropertyList original = fileAt(path).value;
        plistDocument &document = fixture.openFile(path);
        document.deselectAll();
        document.addLeaf();
        QString error;
        QVERIFY2(document.saveDocument(&error), qPrintable(error));
        PropertyDictionary expected = original.toDictionary();
        expected.insert(QStringLiteral("New Key"), PropertyList(QString()));
        QCOMPARE(fileAt(path).format, PropertyListFormat::Binary);
        QCOMPARE(fileAt(path).value, PropertyList(expected));
    }
}

void DocumentFileTest::domainSaveRemovesExactlyTheDeletedKeys()
{
    DocumentFixture fixture;
    fixture.defaults.setBool(false, QStringLiteral("VXWarnOnDocumentDelete"));
    const QString path = fixture.sandbox.writeDictionary(fixture.sandbox.userFolder() + QStringLiteral("/com.x.plist"),
                                                         valueOf("{a = 1; b = 2; c = 3;}").toDictionary());
    plistDocument &document = fixture.openFile(path);
    QVERIFY(document.loadedByUserDefaults());
    document.selectNodes({document.sharedNode(nodeAt(document, QStringLiteral("b")))}, false);
    document.deleteSelections();
    QString error;
    QVERIFY2(document.saveDocument(&error), qPrintable(error));
    QCOMPARE(fileAt(path).value, valueOf("{a = 1; c = 3;}"));
    QCOMPARE(fileAt(path).format, PropertyListFormat::Binary);
}

void DocumentFileTest::domainWithoutKeysIsNotWritten()
{
    DocumentFixture fixture;
    const QString path = fixture.sandbox.writeDictionary(fixture.sandbox.userFolder() + QStringLiteral("/com.y.plist"),
                                                         valueOf("{a = 1;}").toDictionary());
    plistDocument &document = fixture.openFile(path);
    rename(document, "a", "b");
    QFile::remove(path);
    fixture.service.synchronize(QStringLiteral("com.y"), PreferencesUser::Current, PreferencesHost::Any);
    QString error;
    QVERIFY(!document.saveDocument(&error));
    QVERIFY(error.contains(QStringLiteral("Save As")));
    QVERIFY(!QFile::exists(path));
    QVERIFY(document.isDocumentEdited());
}

void DocumentFileTest::failedSaveKeepsTheEdits()
{
    DocumentFixture fixture;
    const QString path = fixture.sandbox.write(QStringLiteral("keep.plist"), bytesOf(valueOf("{a = 1;}"), PropertyListFormat::Xml));
    plistDocument &document = fixture.openFile(path);
    rename(document, "a", "b");
    QString error;
    QVERIFY(!document.saveDocumentAs(fixture.sandbox.home() + QStringLiteral("/missing/folder/x.plist"),
                                     PropertyListFormat::Xml, &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(document.isDocumentEdited());
    QCOMPARE(document.fileName(), path);
    QCOMPARE(fileAt(path).value, valueOf("{a = 1;}"));
}

void DocumentFileTest::duplicateKeysAreReported_data()
{
    QTest::addColumn<bool>("domain");
    QTest::newRow("a plain file") << false;
    QTest::newRow("a domain read through the service") << true;
}

void DocumentFileTest::duplicateKeysAreReported()
{
    QFETCH(bool, domain);
    DocumentFixture fixture;
    const QString folder = domain ? fixture.sandbox.userFolder() : fixture.sandbox.home();
    const QString path = fixture.sandbox.write(
        folder + u"/com.twice.plist"_s,
        "<plist><dict><key>k</key><string>first</string><key>k</key><string>second</string></dict></plist>");
    plistDocument &document = fixture.openFile(path);
    QCOMPARE(document.loadedByUserDefaults(), domain);
    QCOMPARE(TreePicture::of(*document.treeData()), u"{k = second;}"_s);
    QCOMPARE(document.readWarnings().size(), 1);
    QCOMPARE(document.readWarnings().first().kind, ReadWarning::Kind::DuplicateKey);
    QVERIFY(document.readWarnings().first().message.contains(u"\"k\""_s));
}

void DocumentFileTest::unreadableFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes"); // empty: nothing is written there
    QTest::addColumn<QString>("reason");

    QTest::newRow("missing") << u"missing.plist"_s << QByteArray() << u"Cannot open"_s;
    QTest::newRow("scalar top level") << u"scalar.plist"_s << QByteArray("<plist><string>x</string></plist>")
                                      << u"neither a dictionary nor an array"_s;
    QTest::newRow("not a property list") << u"broken.plist"_s << QByteArray("<plist><dict><key>a</key></plist>") << u"line"_s;
    QTest::newRow("a folder") << u"folder.plist"_s << QByteArray("folder") << u"folder"_s;
}

void DocumentFileTest::unreadableFiles()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    DocumentFixture fixture;
    QString path = fixture.sandbox.home() + QLatin1Char('/') + name;
    if (bytes == "folder")
        QDir().mkpath(path);
    else if (!bytes.isEmpty())
        fixture.sandbox.write(path, bytes);
    plistDocument document({{fixture.service, fixture.defaults}, fixture.center});
    QString error;
    QVERIFY(!document.readFromFile(path, &error));
    QVERIFY2(error.contains(path) && error.contains(reason), qPrintable(error));
    QVERIFY(document.fileName().isEmpty());
}

void DocumentFileTest::reloadForgetsTheHistory()
{
    DocumentFixture fixture;
    const QString path = fixture.sandbox.write(QStringLiteral("r.plist"), bytesOf(valueOf("{a = 1;}"), PropertyListFormat::Xml));
    plistDocument &document = fixture.openFile(path);
    rename(document, "a", "b");
    QVERIFY(document.reloadData());
    QVERIFY(!document.isDocumentEdited());
    QVERIFY(!document.undoManager().canUndo());
    QCOMPARE(TreePicture::of(*document.treeData()), QStringLiteral("{a = 1;}"));
}

void DocumentFileTest::changesByOtherPrograms()
{
    DocumentFixture fixture;
    const QString path = fixture.sandbox.write(QStringLiteral("w.plist"), bytesOf(valueOf("{a = 1;}"), PropertyListFormat::Xml));
    plistDocument &document = fixture.openFile(path);
    QSignalSpy asked(&document, &plistDocument::changedOnDisk);

    // A clean document follows the file by itself.
    fixture.sandbox.write(path, bytesOf(valueOf("{b = 2;}"), PropertyListFormat::Xml));
    QTRY_COMPARE(TreePicture::of(*document.treeData()), QStringLiteral("{b = 2;}"));

    // Its own save is not taken for another program's.
    rename(document, "b", "c");
    QString error;
    QVERIFY2(document.saveDocument(&error), qPrintable(error));
    QTest::qWait(200);
    QCOMPARE(asked.count(), 0);
    QCOMPARE(TreePicture::of(*document.treeData()), QStringLiteral("{c = 2;}"));

    // An edited one asks, and keeps its edits meanwhile.
    rename(document, "c", "d");
    fixture.sandbox.write(path, bytesOf(valueOf("{e = 5;}"), PropertyListFormat::Xml));
    QTRY_VERIFY(asked.count() >= 1);
    QCOMPARE(TreePicture::of(*document.treeData()), QStringLiteral("{d = 2;}"));
    QVERIFY(document.fileChangedOnDisk());
    document.keepOwnVersion();
    QVERIFY(!document.fileChangedOnDisk());
}

ORVANE_TEST(DocumentFileTest)
#include "DocumentFileTest.moc"
