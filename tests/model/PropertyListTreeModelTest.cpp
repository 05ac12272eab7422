// The viewer's model: rows appear lazily, so the tree it answers must still be
// consistent however a view walks it.
#include "TestRegistry.h"

#include "model/PropertyListTreeModel.h"

#include <QAbstractItemModelTester>
#include <QTest>

namespace {

PropertyList sample()
{
    return PropertyDictionary{
        {QStringLiteral("Name"), PropertyList(QStringLiteral("Orvane"))},
        {QStringLiteral("Sizes"), PropertyArray{PropertyList::integer(3), PropertyList::real(2.5),
                                                PropertyDictionary{{QStringLiteral("deep"), PropertyList::boolean(false)}}}},
        {QStringLiteral("Blob"), PropertyList(QByteArray("\x01\x02", 2))},
        {QStringLiteral("When"), PropertyList::date(0)},
    };
}

QString cell(const QAbstractItemModel &model, const QModelIndex &index, int column)
{
    return model.data(index.siblingAtColumn(column)).toString();
}

} // namespace

class PropertyListTreeModelTest : public QObject {
    Q_OBJECT
private slots:
    void passesTheModelTester();
    void rows_data();
    void rows();
    void scalarRootIsOneRow();
};

void PropertyListTreeModelTest::passesTheModelTester()
{
    PropertyListTreeModel model(sample());
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    // Walk everything so the tester sees every lazily made row.
    std::function<void(const QModelIndex &)> walk = [&](const QModelIndex &parent) {
        for (int row = 0; row < model.rowCount(parent); ++row)
            walk(model.index(row, 0, parent));
    };
    walk({});
}

void PropertyListTreeModelTest::rows_data()
{
    QTest::addColumn<QList<int>>("path");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("children");

    // Rows follow the dictionary's own order: the file's order.
    QTest::newRow("string") << QList<int>{0} << QStringLiteral("Name") << QStringLiteral("String") << QStringLiteral("Orvane") << 0;
    QTest::newRow("array") << QList<int>{1} << QStringLiteral("Sizes") << QStringLiteral("Array")
                           << QStringLiteral("an array (3 items)") << 3;
    QTest::newRow("array items by position") << QList<int>{1, 0} << QStringLiteral("Item 1") << QStringLiteral("Integer")
                                             << QStringLiteral("3") << 0;
    QTest::newRow("real") << QList<int>{1, 1} << QStringLiteral("Item 2") << QStringLiteral("Float") << QStringLiteral("2.5") << 0;
    QTest::newRow("dictionary in array") << QList<int>{1, 2} << QStringLiteral("Item 3") << QStringLiteral("Dictionary")
                                         << QStringLiteral("a dictionary (1 item)") << 1;
    QTest::newRow("boolean") << QList<int>{1, 2, 0} << QStringLiteral("deep") << QStringLiteral("Boolean")
                             << QStringLiteral("false") << 0;
    QTest::newRow("data") << QList<int>{2} << QStringLiteral("Blob") << QStringLiteral("Data") << QStringLiteral("(Data Item)") << 0;
    QTest::newRow("date") << QList<int>{3} << QStringLiteral("When") << QStringLiteral("Date")
                          << PropertyList::date(0).description() << 0;
}

void PropertyListTreeModelTest::rows()
{
    QFETCH(QList<int>, path);
    QFETCH(QString, key);
    QFETCH(QString, className);
    QFETCH(QString, value);
    QFETCH(int, children);

    PropertyListTreeModel model(sample());
    QModelIndex index;
    for (int row : path)
        index = model.index(row, 0, index);
    QVERIFY(index.isValid());
    QCOMPARE(cell(model, index, PropertyListTreeModel::KeyColumn), key);
    QCOMPARE(cell(model, index, PropertyListTreeModel::ClassColumn), className);
    QCOMPARE(cell(model, index, PropertyListTreeModel::ValueColumn), value);
    QCOMPARE(model.rowCount(index), children);
    QCOMPARE(model.parent(index).row(), path.size() > 1 ? path.at(path.size() - 2) : -1);
}

void PropertyListTreeModelTest::scalarRootIsOneRow()
{
    PropertyListTreeModel model(PropertyList(QStringLiteral("just text")));
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(cell(model, model.index(0, 0), PropertyListTreeModel::ValueColumn), QStringLiteral("just text"));
}

ORVANE_TEST(PropertyListTreeModelTest)
#include "PropertyListTreeModelTest.moc"
