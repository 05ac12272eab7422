// The viewer window as a user meets it: a file opens into a tree, and a broken
// file is refused with a reason that says where it is broken.
#include "Corpus.h"
#include "TestRegistry.h"

#include "ui/PropertyListWindow.h"

#include <QTest>
#include <QTreeView>

class PropertyListWindowTest : public QObject {
    Q_OBJECT
private slots:
    void opensAFile();
    void refusesABrokenFile();
};

void PropertyListWindowTest::opensAFile()
{
    PropertyListWindow window;
    QString error;
    QVERIFY2(window.openFile(Corpus::testDataPath(QStringLiteral("sample.plist")), &error), qPrintable(error));
    const QAbstractItemModel *model = window.treeView()->model();
    QVERIFY(model);
    QCOMPARE(model->rowCount(), 3);
    QCOMPARE(model->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Key"));
    QCOMPARE(model->index(0, 0).data().toString(), QStringLiteral("Greeting"));
    QVERIFY(window.windowTitle().startsWith(QStringLiteral("sample.plist")));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
}

void PropertyListWindowTest::refusesABrokenFile()
{
    PropertyListWindow window;
    QString error;
    QVERIFY(!window.openFile(Corpus::testDataPath(QStringLiteral("broken.plist")), &error));
    QVERIFY2(error.contains(QStringLiteral("line")), qPrintable(error));
    QVERIFY(!window.treeView()->model());
}

ORVANE_TEST(PropertyListWindowTest)
#include "PropertyListWindowTest.moc"
