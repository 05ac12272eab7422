// Undo puts back exactly what the user saw, and redo what the edit made: for
// every kind of record, and for every pair of classes of a class change.
#include "DocumentFixture.h"
#include "TestRegistry.h"

#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

using Edit = std::function<void(plistDocument &)>;

PListNodePtr shared(plistDocument &document, const char *path)
{
    return document.sharedNode(nodeAt(document, QString::fromLatin1(path)));
}

PListNode *at(plistDocument &document, const char *path) { return nodeAt(document, QString::fromLatin1(path)); }

void select(plistDocument &document, const char *path) { document.selectNodes({shared(document, path)}, false); }

// One value of each class, and an unsigned integer whose width a change must keep.
QList<std::pair<const char *, PropertyList>> valuesOfEachClass()
{
    return {
        {"string", PropertyList(QStringLiteral("12abc"))},
        {"data", PropertyList(QByteArray("\x01\x02", 2))},
        {"integer", PropertyList::integer(7, 'q')},
        {"unsigned", PropertyList::unsignedInteger(4294967295u, 'I')},
        {"float", PropertyList::real(2.5, 'f')},
        {"boolean", PropertyList::boolean(true)},
        {"date", PropertyList::date(1000.0)},
        {"array", PropertyArray{PropertyList(QStringLiteral("x"))}},
        {"dictionary", PropertyDictionary{{QStringLiteral("k"), PropertyList(QStringLiteral("v"))}}},
    };
}

} // namespace

Q_DECLARE_METATYPE(Edit)

class DocumentUndoTest : public QObject {
    Q_OBJECT

private slots:
    void recordKinds_data();
    void recordKinds();
    void classChanges_data();
    void classChanges();
};

void DocumentUndoTest::recordKinds_data()
{
    QTest::addColumn<Edit>("edit");
    QTest::addColumn<QString>("actionName");

    QTest::newRow("new key") << Edit([](plistDocument &d) { select(d, "b"); d.addLeaf(); }) << u"New Key"_s;
    QTest::newRow("new array in an array")
        << Edit([](plistDocument &d) { select(d, "d/1"); d.addArray(); }) << u"New Array"_s;
    QTest::newRow("delete") << Edit([](plistDocument &d) { select(d, "b"); d.deleteSelections(); }) << u"Delete"_s;
    QTest::newRow("change name") << Edit([](plistDocument &d) { d.setObjectValue(at(d, "a"), 0, QStringLiteral("e")); })
                                 << u"Change Name"_s;
    QTest::newRow("change an element's value, renaming it")
        << Edit([](plistDocument &d) { d.setObjectValue(at(d, "d/2"), 2, QStringLiteral("r")); }) << u"Change Value"_s;
    QTest::newRow("toggle a boolean") << Edit([](plistDocument &d) { d.shouldEditColumn(at(d, "f"), 2); })
                                      << u"Change Value"_s;
    QTest::newRow("change class") << Edit([](plistDocument &d) { select(d, "a"); d.menuAction(IntegerClass); })
                                  << u"Change Class"_s;
    QTest::newRow("replacement") << Edit([](plistDocument &d) {
        d.undoReplacement(shared(d, "b"), PListNode::initWithName(QStringLiteral("b"), PropertyList::boolean(false)), 1);
        d.undoManager().setActionName(QStringLiteral("Paste"));
    }) << u"Paste"_s;
    QTest::newRow("move into another group") << Edit([](plistDocument &d) {
        d.undoMove(shared(d, "a"), shared(d, "b"), 0);
        d.undoManager().setActionName(QStringLiteral("Move"));
    }) << u"Move"_s;
    QTest::newRow("drop of two nodes") << Edit([](plistDocument &d) {
        d.redoDrag({PListNode::initWithName(QStringLiteral("m"), PropertyList(QStringLiteral("1"))),
                    PListNode::initWithName(QStringLiteral("n"), PropertyList(QStringLiteral("2")))},
                   shared(d, "b"), 0);
        d.undoManager().setActionName(QStringLiteral("Drag"));
    }) << u"Drag"_s;
}

void DocumentUndoTest::recordKinds()
{
    QFETCH(Edit, edit);
    DocumentFixture fixture;
    fixture.defaults.setBool(false, QStringLiteral("VXWarnOnDocumentDelete"));
    PropertyDictionary tree = valueOf("{a = 1; b = {c = x;}; d = (p, q);}").toDictionary();
    tree.insert(QStringLiteral("f"), PropertyList::boolean(true));
    plistDocument &document = fixture.open(tree);
    const QString before = detailedPicture(*document.cachedTreeData());

    edit(document);
    QTEST(document.undoManager().undoActionName(), "actionName");
    QVERIFY(document.isDocumentEdited());
    const QString after = detailedPicture(*document.cachedTreeData(), true);
    QVERIFY(detailedPicture(*document.cachedTreeData()) != before);

    document.undoManager().undo();
    QCOMPARE(detailedPicture(*document.cachedTreeData()), before);
    QVERIFY(!document.isDocumentEdited());
    QTEST(document.undoManager().redoActionName(), "actionName");
    // A redo ends in a sort, which the edit itself need not have done.
    document.undoManager().redo();
    QCOMPARE(detailedPicture(*document.cachedTreeData(), true), after);
    document.undoManager().undo();
    QCOMPARE(detailedPicture(*document.cachedTreeData()), before);
}

void DocumentUndoTest::classChanges_data()
{
    QTest::addColumn<PropertyList>("value");
    QTest::addColumn<int>("tag");
    for (const auto &[name, value] : valuesOfEachClass()) {
        for (int tag = StringClass; tag <= DictionaryClass; ++tag)
            QTest::addRow("%s to %d", name, tag) << value << tag;
    }
}

void DocumentUndoTest::classChanges()
{
    QFETCH(PropertyList, value);
    QFETCH(int, tag);
    DocumentFixture fixture;
    // The node is an array element too, whose name its value gives.
    plistDocument &document = fixture.open(PropertyDictionary{{QStringLiteral("k"), value},
                                                              {QStringLiteral("list"), PropertyArray{value}}});
    for (const char *path : {"k", "list/1"}) {
        select(document, path);
        const QString before = detailedPicture(*document.cachedTreeData());
        const bool refused = !at(document, path)->canEditValue() || at(document, path)->menu() == tag;
        const int beeps = fixture.screen.beeps;
        document.menuAction(tag);
        const QString after = detailedPicture(*document.cachedTreeData());
        QCOMPARE(document.undoManager().canUndo(), !refused);
        if (refused) {
            QCOMPARE(fixture.screen.beeps, beeps + 1);
            QCOMPARE(after, before);
            continue;
        }
        document.undoManager().undo();
        QCOMPARE(detailedPicture(*document.cachedTreeData()), before);
        document.undoManager().redo();
        QCOMPARE(detailedPicture(*document.cachedTreeData()), after);
        document.undoManager().undo();
        document.undoManager().removeAllActions();
    }
}

ORVANE_TEST(DocumentUndoTest)
#include "DocumentUndoTest.moc"
