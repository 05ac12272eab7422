// The outline model: the texts of its three columns, and exact row signals
// for every kind of change, checked by Qt's model tester throughout.
#include "DocumentFixture.h"
#include "TestRegistry.h"

#include "document/OutlineModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

using Edit = std::function<void(plistDocument &)>;

PListNode *at(plistDocument &document, const char *path) { return nodeAt(document, QString::fromLatin1(path)); }

void select(plistDocument &document, const char *path)
{
    document.selectNodes({document.sharedNode(at(document, path))}, false);
}

} // namespace

Q_DECLARE_METATYPE(Edit)

class OutlineModelTest : public QObject {
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
    void rowSignals_data();
    void rowSignals();
    void arrayLabelsFollowPositions();
};

void OutlineModelTest::texts_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("columns");

    QTest::newRow("leaf") << QString() << u"a"_s << QStringList{u"a"_s, u"Integer"_s, u"7"_s};
    QTest::newRow("dictionary counts its entries")
        << QString() << u"b"_s << QStringList{u"b"_s, u"Dictionary"_s, u"1 Item"_s};
    QTest::newRow("array") << QString() << u"d"_s << QStringList{u"d"_s, u"Array"_s, u"2 Items"_s};
    QTest::newRow("array element by position")
        << QString() << u"d/2"_s << QStringList{u"Item 2"_s, u"String"_s, u"q"_s};
    // The filtered array holds only q, at row 0, labelled by where it really is.
    QTest::newRow("filtered array element by its real position")
        << u"q"_s << u"d/1"_s << QStringList{u"Item 2"_s, u"String"_s, u"q"_s};
}

void OutlineModelTest::texts()
{
    QFETCH(QString, query);
    QFETCH(QString, path);
    QFETCH(QStringList, columns);
    DocumentFixture fixture;
    PropertyDictionary tree = valueOf("{b = {c = x;}; d = (p, q);}").toDictionary();
    tree.insert(QStringLiteral("a"), PropertyList::integer(7));
    plistDocument &document = fixture.open(tree);
    document.searchDocument(query);
    const OutlineModel &model = *document.outlineModel();
    const QModelIndex index = model.indexOf(nodeAt(document, path));
    QVERIFY(index.isValid());
    for (int column = 0; column < OutlineModel::ColumnCount; ++column)
        QCOMPARE(model.data(index.siblingAtColumn(column)).toString(), columns.at(column));
}

void OutlineModelTest::rowSignals_data()
{
    // Signal counts: rows inserted, rows removed, resets, layout changes.
    QTest::addColumn<Edit>("edit");
    QTest::addColumn<QList<int>>("counts");

    QTest::newRow("add") << Edit([](plistDocument &d) { select(d, "b"); d.addLeaf(); }) << QList<int>{1, 0, 0, 0};
    QTest::newRow("delete") << Edit([](plistDocument &d) { select(d, "a"); d.deleteSelections(); })
                            << QList<int>{0, 1, 0, 0};
    QTest::newRow("rename") << Edit([](plistDocument &d) { d.setObjectValue(at(d, "a"), 0, QStringLiteral("z")); })
                            << QList<int>{0, 0, 0, 0};
    QTest::newRow("undo of a delete sorts") << Edit([](plistDocument &d) {
        select(d, "b/c");
        d.deleteSelections();
        d.undoManager().undo();
    }) << QList<int>{1, 1, 0, 1};
    QTest::newRow("redo of an add") << Edit([](plistDocument &d) {
        d.addArray();
        d.undoManager().undo();
        d.undoManager().redo();
    }) << QList<int>{2, 1, 0, 2};
    QTest::newRow("filter") << Edit([](plistDocument &d) { d.searchDocument(QStringLiteral("x")); })
                            << QList<int>{0, 0, 1, 0};
    QTest::newRow("edit through the filter")
        << Edit([](plistDocument &d) {
               d.searchDocument(QStringLiteral("x"));
               d.setObjectValue(at(d, "b/c"), 2, QStringLiteral("y"));
           })
        << QList<int>{0, 0, 1, 0};
}

void OutlineModelTest::rowSignals()
{
    QFETCH(Edit, edit);
    QFETCH(QList<int>, counts);
    DocumentFixture fixture;
    fixture.defaults.setBool(false, QStringLiteral("VXWarnOnDocumentDelete"));
    plistDocument &document = fixture.open(valueOf("{a = 1; b = {c = x;}; d = (p, q);}"));
    // Rows the view has seen, so the tester follows the subtrees too.
    for (const char *path : {"b", "d"})
        fixture.screen.expandItem(at(document, path));
    OutlineModel *model = document.outlineModel();
    QAbstractItemModelTester tester(model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy inserted(model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy reset(model, &QAbstractItemModel::modelReset);
    QSignalSpy layout(model, &QAbstractItemModel::layoutChanged);
    QSignalSpy changed(model, &QAbstractItemModel::dataChanged);

    edit(document);
    QCOMPARE((QList<int>{int(inserted.count()), int(removed.count()), int(reset.count()), int(layout.count())}),
             counts);
    if (counts == QList<int>{0, 0, 0, 0})
        QVERIFY(!changed.isEmpty());
    // Every shown node is found where the model says it is.
    std::function<void(const QModelIndex &)> check = [&](const QModelIndex &parent) {
        for (int row = 0; row < model->rowCount(parent); ++row) {
            const QModelIndex index = model->index(row, 0, parent);
            QCOMPARE(model->indexOf(model->nodeAt(index)), index);
            check(index);
        }
    };
    check({});
}

// Array elements are labelled by position, which Qt's model tester takes for
// data that changed unannounced; the labels behind a change are announced.
void OutlineModelTest::arrayLabelsFollowPositions()
{
    DocumentFixture fixture;
    fixture.defaults.setBool(false, u"VXWarnOnDocumentDelete"_s);
    plistDocument &document = fixture.open(valueOf("{d = (p, q, r);}"));
    OutlineModel *model = document.outlineModel();
    QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
    select(document, "d/1");
    document.deleteSelections();
    const QModelIndex list = model->indexOf(at(document, "d"));
    QCOMPARE(changed.first().at(0).toModelIndex(), model->index(0, 0, list));
    QCOMPARE(changed.first().at(1).toModelIndex(), model->index(1, 0, list));
    QCOMPARE(model->data(model->index(0, 0, list)).toString(), u"Item 1"_s);
}

ORVANE_TEST(OutlineModelTest)
#include "OutlineModelTest.moc"
