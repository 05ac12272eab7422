// The document's commands without a window: where new entries go, deleting
// with and without the confirmation, the filter, cell edits and their refusals.
#include "DocumentFixture.h"
#include "TestRegistry.h"
#include "TreePicture.h"

#include "document/DocumentReader.h"
#include "document/DocumentStrings.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const char *const kTree = "{a = 1; b = {c = x;}; d = (p, q);}";

using Command = void (plistDocument::*)();

} // namespace

Q_DECLARE_METATYPE(Command)

class DocumentEditingTest : public QObject {
    Q_OBJECT

private slots:
    void newEntries_data();
    void newEntries();
    void deleting_data();
    void deleting();
    void filterEditsTheRealTree();
    void filterSelectionRoundTrip();
    void viewStateSurvivesASwitch();
    void cellEdits_data();
    void cellEdits();
    void keys_data();
    void keys();
    void readOnlyRefusesEverything();
};

void DocumentEditingTest::newEntries_data()
{
    QTest::addColumn<QString>("selected");
    QTest::addColumn<Command>("command");
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QString>("newPath");
    QTest::addColumn<int>("editColumn"); // -1: no editor opens

    const Command leaf = &plistDocument::addLeaf;
    const Command group = &plistDocument::addGroup;
    const Command array = &plistDocument::addArray;
    QTest::newRow("nothing selected: at the end") << u""_s << leaf
        << uR"({a = 1; b = {c = x;}; d = (p, q); "New Key" = "";})"_s << u"New Key"_s << 0;
    QTest::newRow("after a selected leaf") << u"a"_s << group
        << uR"({a = 1; "New Dictionary" = {}; b = {c = x;}; d = (p, q);})"_s << u"New Dictionary"_s << 0;
    QTest::newRow("into a selected group, last") << u"b"_s << leaf
        << uR"({a = 1; b = {c = x; "New Key" = "";}; d = (p, q);})"_s << u"b/New Key"_s << 0;
    QTest::newRow("into an array: value edited") << u"d"_s << leaf
        << uR"({a = 1; b = {c = x;}; d = (p, q, "");})"_s << u"d/3"_s << 2;
    QTest::newRow("array after an element: no editor") << u"d/1"_s << array
        << uR"({a = 1; b = {c = x;}; d = (p, (), q);})"_s << u"d/2"_s << -1;
}

void DocumentEditingTest::newEntries()
{
    QFETCH(QString, selected);
    QFETCH(Command, command);
    QFETCH(QString, newPath);
    QFETCH(int, editColumn);
    DocumentFixture fixture;
    plistDocument &document = fixture.open(valueOf(kTree));
    const QString before = TreePicture::of(*document.treeData());
    if (selected.isEmpty())
        document.deselectAll();
    else
        document.selectNodes({document.sharedNode(nodeAt(document, selected))}, false);

    (document.*command)();
    QTEST(TreePicture::of(*document.treeData()), "picture");
    PListNode *added = nodeAt(document, newPath);
    QVERIFY(added);
    QCOMPARE(document.selectedNode(), added);
    if (newPath.startsWith(u"d/"))
        QCOMPARE(added->name(), DocumentStrings::arrayItem());
    QCOMPARE(fixture.screen.edits.size(), editColumn < 0 ? 0 : 1);
    if (editColumn >= 0)
        QCOMPARE(fixture.screen.edits.first().column, editColumn);
    QCOMPARE(document.undoManager().undoActionName(), added->isArray() ? DocumentStrings::newArray()
                                                      : added->isGroup() ? DocumentStrings::newDictionary()
                                                                         : DocumentStrings::newKey());
    document.undoManager().undo();
    QCOMPARE(TreePicture::of(*document.treeData()), before);
}

void DocumentEditingTest::deleting_data()
{
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<bool>("warn");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QString>("question");
    QTest::addColumn<QString>("undoName");
    QTest::addColumn<QString>("selectedAfter");

    const QString whole = uR"({a = 1; b = {c = x;}; d = (p, q);})"_s;
    QTest::newRow("first row: row 0 selected after") << QStringList{u"a"_s} << false << 0
        << uR"({b = {c = x;}; d = (p, q);})"_s << u""_s << u"Delete"_s << u"b"_s;
    QTest::newRow("confirmed: named Cut") << QStringList{u"b"_s} << true << 1
        << uR"({a = 1; d = (p, q);})"_s << u"Do you really wish to delete b ?"_s << u"Cut"_s << u"a"_s;
    QTest::newRow("several, confirmed") << QStringList{u"a"_s, u"d"_s} << true << 1
        << uR"({b = {c = x;};})"_s << u"Do you really wish to deletethese items?"_s << u"Cut"_s << u"b"_s;
    QTest::newRow("canceled: nothing") << QStringList{u"a"_s} << true << 2 << whole
        << u"Do you really wish to delete a ?"_s << u""_s << u"a"_s;
}

void DocumentEditingTest::deleting()
{
    QFETCH(QStringList, selected);
    QFETCH(bool, warn);
    QFETCH(int, answer);
    QFETCH(QString, selectedAfter);
    DocumentFixture fixture;
    fixture.defaults.setBool(warn, QStringLiteral("VXWarnOnDocumentDelete"));
    fixture.screen.answer = answer;
    plistDocument &document = fixture.open(valueOf(kTree));
    const QString before = TreePicture::of(*document.treeData());
    QList<PListNodePtr> nodes;
    for (const QString &path : selected)
        nodes << document.sharedNode(nodeAt(document, path));
    document.selectNodes(nodes, false);

    document.deleteSelections();
    QTEST(TreePicture::of(*document.treeData()), "picture");
    QTEST(fixture.screen.question, "question");
    QTEST(document.undoManager().undoActionName(), "undoName");
    QCOMPARE(document.selectedNode(), nodeAt(document, selectedAfter));
    document.undoManager().undo();
    QCOMPARE(TreePicture::of(*document.treeData()), before);
}

void DocumentEditingTest::filterEditsTheRealTree()
{
    DocumentFixture fixture;
    fixture.screen.answer = DocumentScreen::DeleteConfirmed;
    plistDocument &document = fixture.open(valueOf("{apple = x; banana = y; box = {apricot = z;};}"));
    const QString whole = TreePicture::of(*document.cachedTreeData());
    document.searchDocument(QStringLiteral("ap"));
    QCOMPARE(TreePicture::of(*document.treeData()), QStringLiteral(">{apple = >x; box = >{apricot = >z;};}"));

    document.selectNodes({document.sharedNode(nodeAt(document, QStringLiteral("apple")))}, false);
    document.deleteSelections();
    QCOMPARE(TreePicture::of(*document.cachedTreeData()), QStringLiteral("{banana = y; box = {apricot = z;};}"));
    document.selectNodes({document.sharedNode(nodeAt(document, QStringLiteral("box")))}, false);
    document.addLeaf();
    QCOMPARE(TreePicture::of(*document.cachedTreeData()),
             QStringLiteral(R"({banana = y; box = {apricot = z; "New Key" = "";};})"));

    document.undoManager().undo();
    document.undoManager().undo();
    QCOMPARE(TreePicture::of(*document.cachedTreeData()), whole);
    QCOMPARE(TreePicture::of(*document.treeData()), QStringLiteral(">{apple = >x; box = >{apricot = >z;};}"));
}

void DocumentEditingTest::filterSelectionRoundTrip()
{
    DocumentFixture fixture;
    plistDocument &document = fixture.open(valueOf("{a = {b = {needle = 1;}; c = 2;}; z = 3;}"));
    document.searchDocument(QStringLiteral("needle"));
    QCOMPARE(fixture.document().treeData()->numberOfChildren(), 1);
    document.selectNodes({document.sharedNode(nodeAt(document, QStringLiteral("a/b/needle")))}, false);

    document.searchDocument(QString());
    PListNode *needle = nodeAt(document, QStringLiteral("a/b/needle"));
    QVERIFY(!document.isFiltered());
    QCOMPARE(document.selectedNode(), needle);
    QVERIFY(fixture.screen.expanded.contains(nodeAt(document, QStringLiteral("a"))));
    QVERIFY(fixture.screen.expanded.contains(nodeAt(document, QStringLiteral("a/b"))));
    QCOMPARE(fixture.screen.scrolledTo, needle);

    document.searchDocument(QStringLiteral("nothing matches"));
    QCOMPARE(document.treeData()->name(), QStringLiteral("Search Root"));
    QCOMPARE(document.treeData()->numberOfChildren(), 0);
}

void DocumentEditingTest::viewStateSurvivesASwitch()
{
    DocumentFixture fixture;
    fixture.screen.answer = DocumentScreen::DeleteConfirmed;
    plistDocument &document = fixture.open(valueOf("{a = {b = {c = 1;}; d = 2;}; e = {f = 3;}; z = 4;}"));
    document.windowControllerDidLoadNib();
    QCOMPARE(document.selectedNode(), nodeAt(document, QStringLiteral("a")));

    FakeScreen &screen = fixture.screen;
    for (const char *path : {"a", "a/b", "e/f"})
        screen.expandItem(nodeAt(document, QString::fromLatin1(path)));
    document.selectNodes({document.sharedNode(nodeAt(document, QStringLiteral("a/b/c"))),
                          document.sharedNode(nodeAt(document, QStringLiteral("z")))},
                         false);
    screen.shownRect = QRect(0, 40, 300, 200);
    document.saveCurrentSettings();
    // Only rows count: "e/f" lies under a closed group and is no group itself.
    QCOMPARE(document.currentSelections()->expandedNodes.size(), 2);

    // Another document had the outline meanwhile, and "z" went.
    screen.expanded.clear();
    screen.shownRect = QRect();
    document.selectNodes({document.sharedNode(nodeAt(document, QStringLiteral("z")))}, false);
    document.deleteSelections();
    document.selectRow(0);
    document.windowControllerDidLoadNib();

    QCOMPARE(screen.expanded, (QSet<const PListNode *>{nodeAt(document, QStringLiteral("a")),
                                                       nodeAt(document, QStringLiteral("a/b"))}));
    QCOMPARE(document.selectedNodes(), QList<PListNodePtr>{document.sharedNode(nodeAt(document, QStringLiteral("a/b/c")))});
    QCOMPARE(screen.shownRect, QRect(0, 40, 300, 200));
    QVERIFY(!document.currentSelections());
}

void DocumentEditingTest::cellEdits_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("mayEdit");  // shouldEditColumn
    QTest::addColumn<bool>("mayEnd");   // textShouldEndEditing
    QTest::addColumn<int>("beeps");
    QTest::addColumn<QString>("picture"); // after applying the text
    QTest::addColumn<QString>("undoName");

    const QString whole = uR"({a = 1; b = {c = x;}; d = (p, q);})"_s;
    QTest::newRow("rename a key") << u"a"_s << 0 << u"e"_s << true << true << 0
        << uR"({e = 1; b = {c = x;}; d = (p, q);})"_s << u"Change Name"_s;
    QTest::newRow("own name: no change, no undo") << u"a"_s << 0 << u"a"_s << true << true << 0 << whole << u""_s;
    QTest::newRow("a sibling's name keeps the editor") << u"a"_s << 0 << u"b"_s << true << false << 0 << whole << u""_s;
    QTest::newRow("empty keeps the editor") << u"a"_s << 0 << u""_s << true << false << 0 << whole << u""_s;
    QTest::newRow("array element's key: beep") << u"d/1"_s << 0 << u"k"_s << false << true << 1 << whole << u""_s;
    QTest::newRow("a value") << u"b/c"_s << 2 << u"y"_s << true << true << 0
        << uR"({a = 1; b = {c = y;}; d = (p, q);})"_s << u"Change Value"_s;
    QTest::newRow("the same value: no undo") << u"b/c"_s << 2 << u"x"_s << true << true << 0 << whole << u""_s;
    QTest::newRow("a group's value: beep") << u"b"_s << 2 << u"x"_s << false << true << 1 << whole << u""_s;
}

void DocumentEditingTest::cellEdits()
{
    QFETCH(QString, path);
    QFETCH(int, column);
    QFETCH(QString, text);
    DocumentFixture fixture;
    plistDocument &document = fixture.open(valueOf(kTree));
    const QString before = TreePicture::of(*document.treeData());
    PListNode *node = nodeAt(document, path);
    const bool mayEdit = document.shouldEditColumn(node, column);
    const bool mayEnd = document.textShouldEndEditing(node, column, text);
    QTEST(mayEdit, "mayEdit");
    QTEST(mayEnd, "mayEnd");
    QTEST(fixture.screen.beeps, "beeps");
    if (mayEdit && mayEnd)
        document.setObjectValue(node, column, text);
    QTEST(TreePicture::of(*document.treeData()), "picture");
    QTEST(document.undoManager().undoActionName(), "undoName");
    document.undoManager().undo();
    QCOMPARE(TreePicture::of(*document.treeData()), before);
}

void DocumentEditingTest::keys_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("character");
    QTest::addColumn<bool>("shift");
    QTest::addColumn<bool>("leftToOutline");
    QTest::addColumn<int>("editColumn"); // -1: none
    QTest::addColumn<QString>("picture");

    const QString whole = uR"({a = 1; b = {c = x;}; d = (p, q); f = true;})"_s;
    QTest::newRow("return edits the key") << u"a"_s << 0x0d << false << false << 0 << whole;
    QTest::newRow("shift+return edits the value") << u"a"_s << 0x0d << true << false << 2 << whole;
    QTest::newRow("enter on an element edits its value") << u"d/2"_s << 0x03 << false << false << 2 << whole;
    QTest::newRow("shift+return toggles a boolean") << u"f"_s << 0x0d << true << false << -1
        << uR"({a = 1; b = {c = x;}; d = (p, q); f = false;})"_s;
    QTest::newRow("shift+return on a group: the outline's") << u"b"_s << 0x0d << true << true << -1 << whole;
    QTest::newRow("delete deletes") << u"a"_s << 0x7f << false << false << -1
        << uR"({b = {c = x;}; d = (p, q); f = true;})"_s;
    QTest::newRow("other keys: the outline's") << u"a"_s << int('x') << false << true << -1 << whole;
}

void DocumentEditingTest::keys()
{
    QFETCH(QString, path);
    QFETCH(int, character);
    QFETCH(bool, shift);
    QFETCH(int, editColumn);
    DocumentFixture fixture;
    PropertyDictionary tree = valueOf(kTree).toDictionary();
    tree.insert(QStringLiteral("f"), PropertyList::boolean(true));
    fixture.screen.answer = DocumentScreen::DeleteConfirmed;
    plistDocument &document = fixture.open(tree);
    document.selectNodes({document.sharedNode(nodeAt(document, path))}, false);
    fixture.screen.edits.clear();

    QTEST(document.shouldHandleKeyDown({char16_t(character), shift, false}), "leftToOutline");
    QCOMPARE(fixture.screen.edits.isEmpty() ? -1 : fixture.screen.edits.first().column, editColumn);
    QTEST(TreePicture::of(*document.treeData()), "picture");
}

void DocumentEditingTest::readOnlyRefusesEverything()
{
    DocumentFixture fixture;
    plistDocument &document = fixture.open(valueOf(kTree));
    document.adoptContent(document.fileName(), DocumentReader::contentOf(valueOf(kTree), false, false));
    const QString before = TreePicture::of(*document.treeData());
    document.selectNodes({document.sharedNode(nodeAt(document, QStringLiteral("a")))}, false);
    for (const auto command : {plistDocument::Command::AddLeaf, plistDocument::Command::Delete,
                               plistDocument::Command::Sort, plistDocument::Command::Reload})
        QVERIFY(!document.validateCommand(command));
    QVERIFY(document.validateCommand(plistDocument::Command::Copy));
    document.deleteSelections();
    document.menuAction(StringClass);
    QVERIFY(!document.shouldEditColumn(nodeAt(document, QStringLiteral("a")), 0));
    QCOMPARE(fixture.screen.beeps, 3);
    QCOMPARE(TreePicture::of(*document.treeData()), before);
    QVERIFY(!document.undoManager().canUndo());
}

ORVANE_TEST(DocumentEditingTest)
#include "DocumentEditingTest.moc"
