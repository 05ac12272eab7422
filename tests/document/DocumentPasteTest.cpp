// Copy, paste and drop: the text payload scripts and other programs read,
// what a paste accepts, where nodes land, how clashing keys are merged or
// replaced (asking one question at a time), and undo of all of it.
#include "DocumentFixture.h"
#include "TestRegistry.h"
#include "TreePicture.h"

#include "document/Pasteboard.h"
#include "domains/SettingsKeys.h"
#include "platform/PropertyListSerialization.h"

#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

QList<PListNodePtr> nodesOf(const char *dictionary)
{
    QList<PListNodePtr> nodes;
    const PropertyDictionary entries = valueOf(dictionary).toDictionary();
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const PropertyList &value = entries.valueAt(i);
        nodes << (value.isDictionary() ? PListNode::initFromDictionary(value.toDictionary(), entries.keyAt(i))
                  : value.isArray()    ? PListNode::initFromArray(value.toArray(), entries.keyAt(i))
                                       : PListNode::initWithName(entries.keyAt(i), value));
    }
    return nodes;
}

PListNodePtr shared(plistDocument &document, const QString &path)
{
    return document.sharedNode(nodeAt(document, path));
}

QStringList selectedNames(const plistDocument &document)
{
    QStringList names;
    for (const PListNodePtr &node : document.selectedNodes())
        names << node->name();
    return names;
}

enum class Through { Paste, Apply };
// Duplicate-key answers in order: the answer and whether the warning is turned off.
using Answers = QList<std::pair<int, bool>>;

} // namespace

Q_DECLARE_METATYPE(Through)
Q_DECLARE_METATYPE(Answers)

class DocumentPasteTest : public QObject {
    Q_OBJECT

private slots:
    void textPayload_data();
    void textPayload();
    void canPaste_data();
    void canPaste();
    void merging_data();
    void merging();
    void drops_data();
    void drops();
    void duplicateQuestions_data();
    void duplicateQuestions();
    void hiddenDocumentSelectsLater();
    void cutAndPasteRoundTrip();
};

void DocumentPasteTest::textPayload_data()
{
    QTest::addColumn<QString>("file");   // relative to HOME; empty: a document without a file on disk
    QTest::addColumn<QString>("header"); // HOME stands for the account's folder

    QTest::newRow("user folder: file name, commands one blank line apart")
        << u"Library/Preferences/com.example.app.plist"_s
        << u"\"com.example.app.plist\" :\n\ndefaults:\n\ndefaults write com.example.app a -string \"x y\"\n\n"
           "defaults write com.example.app b -string 1\n\n"_s;
    QTest::newRow("elsewhere: the whole path")
        << u"other/app.plist"_s
        << u"\"HOME/other/app.plist\" :\n\ndefaults:\n\ndefaults write \"~/other/app\" a -string \"x y\"\n\n"
           "defaults write \"~/other/app\" b -string 1\n\n"_s;
    QTest::newRow("no command: the XML alone") << QString() << u"\"HOME/test.plist\" :"_s;
}

void DocumentPasteTest::textPayload()
{
    QFETCH(QString, file);
    QFETCH(QString, header);
    DocumentFixture fixture;
    const PropertyDictionary content = valueOf(R"({a = "x y"; b = 1; c = z;})").toDictionary();
    plistDocument &document = file.isEmpty()
                                  ? fixture.open(content)
                                  : fixture.openFile(fixture.sandbox.writeDictionary(file, content));
    MemoryPasteboard pasteboard;
    document.writeItems({shared(document, u"a"_s), shared(document, u"b"_s)}, pasteboard);

    const QMimeData *data = pasteboard.mimeData();
    QCOMPARE(data->formats().mid(0, 3),
             (QStringList{PasteboardTypes::kPListNodes, PasteboardTypes::kPlainText,
                          PasteboardTypes::kDocumentPath}));
    const QString text = data->text();
    const qsizetype xmlAt = text.indexOf(u"XML:\n\n"_s);
    QVERIFY(xmlAt > 0);
    QCOMPARE(text.left(xmlAt), QString(header).replace(u"HOME"_s, fixture.sandbox.home()) + u"\n\n"_s);
    const auto xml = PropertyListSerialization::read(text.mid(xmlAt + 6).toUtf8());
    QVERIFY(xml);
    QCOMPARE(xml.value.value, PropertyList(valueOf(R"({a = "x y"; b = 1;})")));
}

void DocumentPasteTest::canPaste_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<bool>("hookAccepts");
    QTest::addColumn<bool>("expected");

    const QByteArray xml = PropertyListSerialization::write(valueOf("{k = v;}"), PropertyListFormat::Xml);
    QTest::newRow("archived nodes") << PasteboardTypes::kPListNodes << QByteArray("anything") << false
                                    << true;
    QTest::newRow("XML text") << PasteboardTypes::kPlainText << xml << false << true;
    QTest::newRow("old-style text") << PasteboardTypes::kPlainText << QByteArray("{k = v;}") << false
                                    << false;
    QTest::newRow("plain words") << PasteboardTypes::kPlainText << QByteArray("hello there") << false
                                 << false;
    QTest::newRow("defaults text: the browser decides, no")
        << PasteboardTypes::kPlainText << QByteArray("defaults write d k v") << false << false;
    QTest::newRow("defaults text: the browser decides, yes")
        << PasteboardTypes::kPlainText << QByteArray("defaults write d k v") << true << true;
    QTest::newRow("an XML file") << PasteboardTypes::kUriList << xml << false << true;
    QTest::newRow("an old-style file")
        << PasteboardTypes::kUriList << QByteArray("{k = v;}") << false << false;
}

void DocumentPasteTest::canPaste()
{
    QFETCH(QString, type);
    QFETCH(QByteArray, payload);
    QFETCH(bool, hookAccepts);
    DocumentFixture fixture;
    plistDocument &document = fixture.open(valueOf("{a = 1; b = {c = x;};}"));
    document.setDefaultsTextHooks([hookAccepts](const QString &) { return hookAccepts; }, {});
    QMimeData data;
    if (type == PasteboardTypes::kUriList)
        data.setUrls({QUrl::fromLocalFile(fixture.sandbox.write(u"dropped.plist"_s, payload))});
    else
        data.setData(type, payload);
    QTEST(document.canPaste(&data), "expected");

    document.searchDocument(u"c"_s);
    QVERIFY(!document.canPaste(&data));
}

void DocumentPasteTest::merging_data()
{
    QTest::addColumn<Through>("through");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QString>("incoming");
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QStringList>("selection");

    const Through paste = Through::Paste;
    QTest::newRow("new keys: all inserted, all selected")
        << paste << u"a"_s << u"{n = 1; m = 2;}"_s << u"{a = 1; b = {c = x;}; d = (p, q); m = 2; n = 1;}"_s
        << QStringList{u"m"_s, u"n"_s};
    QTest::newRow("equal value: nothing changes, the existing one selected")
        << paste << u""_s << u"{a = 1;}"_s << u"{a = 1; b = {c = x;}; d = (p, q);}"_s << QStringList{u"a"_s};
    QTest::newRow("different value: replaced, the rest inserted")
        << paste << u""_s << u"{a = 2; e = 5;}"_s << u"{a = 2; b = {c = x;}; d = (p, q); e = 5;}"_s
        << QStringList{u"a"_s};
    QTest::newRow("dictionary over dictionary: merged one level down")
        << paste << u""_s << u"{b = {y = 2;};}"_s << u"{a = 1; b = {c = x; y = 2;}; d = (p, q);}"_s
        << QStringList{u"y"_s};
    QTest::newRow("merged further down, a clash there replaced")
        << paste << u""_s << u"{b = {c = z; w = 1;};}"_s << u"{a = 1; b = {c = z; w = 1;}; d = (p, q);}"_s
        << QStringList{u"c"_s};
    QTest::newRow("array over dictionary: replaced")
        << paste << u""_s << u"{b = (1);}"_s << u"{a = 1; b = (1); d = (p, q);}"_s << QStringList{u"b"_s};
    QTest::newRow("into an array after the selected element")
        << paste << u"d/1"_s << u"{e = r;}"_s << u"{a = 1; b = {c = x;}; d = (p, r, q);}"_s
        << QStringList{u"e"_s};
    QTest::newRow("into an array, named like the array: goes in all the same")
        << paste << u"d/1"_s << u"{d = r;}"_s << u"{a = 1; b = {c = x;}; d = (p, r, q);}"_s
        << QStringList{u"p"_s};
    QTest::newRow("applied defaults value: replaced at the top")
        << Through::Apply << u"b/c"_s << u"{a = 3;}"_s << u"{a = 3; b = {c = x;}; d = (p, q);}"_s
        << QStringList{u"a"_s, u"c"_s};
    QTest::newRow("applied defaults value: merged at the top")
        << Through::Apply << u"d"_s << u"{b = {c = x; k = v;};}"_s
        << u"{a = 1; b = {c = x; k = v;}; d = (p, q);}"_s << QStringList{u"c"_s, u"d"_s};
}

void DocumentPasteTest::merging()
{
    QFETCH(Through, through);
    QFETCH(QString, selected);
    QFETCH(QString, incoming);
    DocumentFixture fixture;
    fixture.defaults.setBool(false, SettingsKeys::VXWarnOnDuplicateKeys);
    plistDocument &document = fixture.open(valueOf("{a = 1; b = {c = x;}; d = (p, q);}"));
    fixture.screen.expanded = {nodeAt(document, u"b"_s), nodeAt(document, u"d"_s)};
    MemoryPasteboard pasteboard;
    document.setPasteboard(&pasteboard);
    document.writeItems(nodesOf(qPrintable(incoming)), pasteboard);
    if (selected.isEmpty())
        document.deselectAll();
    else
        document.selectNodes({shared(document, selected)}, false);
    const QString before = detailedPicture(*document.cachedTreeData(), true);

    if (through == Through::Paste)
        document.paste();
    else
        document.addNewDefaultsValue(valueOf(qPrintable(incoming)).toDictionary());
    QTEST(TreePicture::of(*document.treeData()), "picture");
    QTEST(selectedNames(document), "selection");
    QCOMPARE(fixture.screen.beeps, 0);
    const QString after = detailedPicture(*document.cachedTreeData(), true);
    QCOMPARE(document.undoManager().canUndo(), after != before);
    if (after == before)
        return;
    const QString actionName = through == Through::Paste ? u"Paste"_s : u"Apply Defaults Value"_s;
    QCOMPARE(document.undoManager().undoActionName(), actionName);
    document.undoManager().undo();
    QCOMPARE(detailedPicture(*document.cachedTreeData(), true), before);
    document.undoManager().redo();
    QCOMPARE(detailedPicture(*document.cachedTreeData(), true), after);
    document.undoManager().undo();
    QCOMPARE(detailedPicture(*document.cachedTreeData(), true), before);
}

void DocumentPasteTest::drops_data()
{
    QTest::addColumn<QStringList>("dragged"); // nodes of this document; none: XML text from elsewhere
    QTest::addColumn<QString>("source");      // the payload's document path instead of this one's
    QTest::addColumn<QString>("item");
    QTest::addColumn<int>("childIndex");
    QTest::addColumn<bool>("move");
    QTest::addColumn<bool>("offered");
    QTest::addColumn<QString>("picture"); // after the drop; empty: nothing happens, "-": not tried

    const QStringList text;
    const QString own;
    QTest::newRow("own entry copied into another group: renamed")
        << QStringList{u"a"_s} << own << u"b"_s << 0 << false << true
        << u"{a = 1; b = {\"a Copy\" = 1; c = x;}; d = (p, q, r);}"_s;
    QTest::newRow("copy from another document: names kept")
        << QStringList{u"b/c"_s} << u"/elsewhere.plist"_s << u""_s << 0 << false << true
        << u"{a = 1; b = {c = x;}; c = x; d = (p, q, r);}"_s;
    QTest::newRow("move down an array: lands after the one it passed")
        << QStringList{u"d/1"_s} << own << u"d"_s << 2 << true << true
        << u"{a = 1; b = {c = x;}; d = (q, p, r);}"_s;
    QTest::newRow("move two up an array, keeping their order")
        << QStringList{u"d/2"_s, u"d/3"_s} << own << u"d"_s << 0 << true << true
        << u"{a = 1; b = {c = x;}; d = (q, r, p);}"_s;
    QTest::newRow("move into another group") << QStringList{u"a"_s} << own << u"b"_s << 0 << true << true
                                             << u"{b = {a = 1; c = x;}; d = (p, q, r);}"_s;
    QTest::newRow("own entry within its dictionary")
        << QStringList{u"a"_s} << own << u""_s << 3 << true << false << QString();
    QTest::newRow("own group into itself")
        << QStringList{u"b"_s} << own << u"b"_s << 0 << true << false << QString();
    QTest::newRow("onto a leaf: not offered, but performed beside it")
        << text << own << u"d/2"_s << -1 << false << false << u"{a = 1; b = {c = x;}; d = (p, 1, q, r);}"_s;
    QTest::newRow("past the end") << text << own << u"b"_s << 2 << false << false << u"-"_s;
    QTest::newRow("text into a group, between rows")
        << text << own << u"b"_s << 1 << false << true << u"{a = 1; b = {c = x; z = 1;}; d = (p, q, r);}"_s;
}

void DocumentPasteTest::drops()
{
    QFETCH(QStringList, dragged);
    QFETCH(QString, source);
    QFETCH(QString, item);
    QFETCH(int, childIndex);
    QFETCH(QString, picture);
    DocumentFixture fixture;
    plistDocument &document = fixture.open(valueOf("{a = 1; b = {c = x;}; d = (p, q, r);}"));
    QList<PListNodePtr> nodes;
    for (const QString &path : dragged)
        nodes << shared(document, path);
    QFETCH(bool, move);
    const std::unique_ptr<QMimeData> data =
        dragged.isEmpty() ? std::make_unique<QMimeData>() : document.mimeDataForItems(nodes);
    if (dragged.isEmpty())
        data->setText(QString::fromUtf8(
            PropertyListSerialization::write(valueOf("{z = 1;}"), PropertyListFormat::Xml)));
    if (!source.isEmpty())
        data->setData(PasteboardTypes::kDocumentPath, source.toUtf8());
    const PListNodePtr target = item.isEmpty() ? nullptr : shared(document, item);
    QTEST(document.validateDrop(*data, target, childIndex).has_value(), "offered");
    if (picture == u"-")
        return;

    const QString before = detailedPicture(*document.cachedTreeData(), true);
    const bool done = document.acceptDrop(
        *data, target, childIndex, move ? plistDocument::DragType::Move : plistDocument::DragType::Copy);
    QCOMPARE(done, !picture.isEmpty());
    if (!done) {
        QCOMPARE(detailedPicture(*document.cachedTreeData(), true), before);
        return;
    }
    QCOMPARE(TreePicture::of(*document.treeData()), picture);
    QCOMPARE(document.undoManager().undoActionName(), move ? u"Move"_s : u"Drag"_s);
    const QString after = detailedPicture(*document.cachedTreeData(), true);
    document.undoManager().undo();
    QCOMPARE(detailedPicture(*document.cachedTreeData(), true), before);
    document.undoManager().redo();
    QCOMPARE(detailedPicture(*document.cachedTreeData(), true), after);
}

void DocumentPasteTest::duplicateQuestions_data()
{
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<QStringList>("asked");
    QTest::addColumn<int>("waiting"); // questions still queued behind an unanswered one
    QTest::addColumn<QString>("picture");

    const std::pair<int, bool> replace{DocumentScreen::ReplaceConfirmed, false};
    const std::pair<int, bool> cancel{DocumentScreen::ReplaceCanceled, false};
    QTest::newRow("three clashes, three questions in order")
        << Answers{replace, cancel, replace} << QStringList{u"a"_s, u"b"_s, u"c"_s} << 0
        << u"{a = 9; b = 2; c = 7; e = 5;}"_s;
    QTest::newRow("warning turned off in the first: the others replace unasked")
        << Answers{{DocumentScreen::ReplaceCanceled, true}} << QStringList{u"a"_s} << 0
        << u"{a = 1; b = 8; c = 7; e = 5;}"_s;
    QTest::newRow("one question on screen at a time")
        << Answers{replace} << QStringList{u"a"_s, u"b"_s} << 1 << u"{a = 9; b = 2; c = 3; e = 5;}"_s;
}

void DocumentPasteTest::duplicateQuestions()
{
    QFETCH(Answers, answers);
    QFETCH(int, waiting);
    DocumentFixture fixture;
    plistDocument &document = fixture.open(valueOf("{a = 1; b = 2; c = 3;}"));
    fixture.screen.duplicateAnswers = answers;
    const QString before = detailedPicture(*document.cachedTreeData(), true);
    const std::unique_ptr<QMimeData> data =
        document.mimeDataForItems(nodesOf("{a = 9; b = 8; c = 7; e = 5;}"));
    data->setData(PasteboardTypes::kDocumentPath, QByteArray("/elsewhere.plist"));

    QVERIFY(document.readFromPasteboard(*data, nullptr, 0, plistDocument::DragType::Copy,
                                        plistDocument::ReadType::Paste));
    QStringList asked;
    for (const QStringList &question : std::as_const(fixture.screen.duplicateQuestions))
        asked << question.first();
    QTEST(asked, "asked");
    QCOMPARE(fixture.screen.duplicateQuestions.first().mid(1),
             (QStringList{u"\n<string>1</string>\n"_s, u"\n<string>9</string>\n"_s}));
    QCOMPARE(document.pendingDuplicateKeys(), waiting);
    QTEST(TreePicture::of(*document.treeData()), "picture");
    QCOMPARE(fixture.defaults.boolForKey(SettingsKeys::VXWarnOnDuplicateKeys),
             answers.size() != 1 || !answers.first().second);
    if (fixture.screen.pendingDuplicate)
        return;
    while (document.undoManager().canUndo())
        document.undoManager().undo();
    QCOMPARE(detailedPicture(*document.cachedTreeData(), true), before);
}

void DocumentPasteTest::hiddenDocumentSelectsLater()
{
    DocumentFixture fixture;
    plistDocument &document = fixture.open(valueOf("{a = 1;}"));
    fixture.screen.showing = false;
    const std::unique_ptr<QMimeData> nodes = document.mimeDataForItems(nodesOf("{n = 1;}"));
    QVERIFY(document.readFromPasteboard(*nodes, nullptr, 0, plistDocument::DragType::Copy,
                                        plistDocument::ReadType::Paste));
    QVERIFY(document.currentSelections());
    QCOMPARE(document.currentSelections()->selectedNodes, QList<PListNodePtr>{shared(document, u"n"_s)});

    // What came from files is not selected when the document shows again.
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(
        fixture.sandbox.writeDictionary(u"f.plist"_s, valueOf("{m = 2;}").toDictionary()))});
    QVERIFY(document.readFromPasteboard(files, nullptr, 0, plistDocument::DragType::Copy,
                                        plistDocument::ReadType::Drop));
    QVERIFY(document.currentSelections()->selectedNodes.isEmpty());
    QCOMPARE(TreePicture::of(*document.treeData()), u"{a = 1; m = 2; n = 1;}"_s);
}

void DocumentPasteTest::cutAndPasteRoundTrip()
{
    DocumentFixture fixture;
    fixture.defaults.setBool(false, u"VXWarnOnDocumentDelete"_s);
    plistDocument &document = fixture.open(valueOf("{a = 1; b = {c = x;};}"));
    MemoryPasteboard pasteboard;
    document.setPasteboard(&pasteboard);
    QVERIFY(!document.validateCommand(plistDocument::Command::Paste));
    document.selectNodes({shared(document, u"b"_s)}, false);
    document.cut();
    QCOMPARE(TreePicture::of(*document.treeData()), u"{a = 1;}"_s);
    QCOMPARE(document.undoManager().undoActionName(), u"Cut"_s);
    QVERIFY(document.validateCommand(plistDocument::Command::Paste));
    document.undoManager().closeGroup();

    document.paste();
    QCOMPARE(TreePicture::of(*document.treeData()), u"{a = 1; b = {c = x;};}"_s);
    QCOMPARE(document.undoManager().undoActionName(), u"Paste"_s);
    document.undoManager().undo();
    QCOMPARE(TreePicture::of(*document.treeData()), u"{a = 1;}"_s);
    document.undoManager().undo();
    QCOMPARE(TreePicture::of(*document.treeData()), u"{a = 1; b = {c = x;};}"_s);

    // A filtered view takes nothing in: it would miss the real tree.
    document.searchDocument(u"c"_s);
    QVERIFY(!document.validateCommand(plistDocument::Command::Paste));
    document.paste();
    QCOMPARE(fixture.screen.beeps, 1);
}

ORVANE_TEST(DocumentPasteTest)
#include "DocumentPasteTest.moc"
