// The information panel: one section per file with the labels the rest of
// the application names, a refresh that happens only while it shows, and a
// long selection cut short with a count.
#include "TestRegistry.h"

#include "ui/InfoPanel.h"

#include <QFile>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList texts(const InfoPanel &panel, const QString &name)
{
    QStringList found;
    for (const QLabel *label : panel.findChildren<QLabel *>(name))
        found << label->text();
    return found;
}

} // namespace

class InfoPanelTest : public QObject {
    Q_OBJECT
private slots:
    void sections_data()
    {
        QTest::addColumn<int>("files");
        QTest::addColumn<int>("sections");
        QTest::addColumn<QString>("more");
        QTest::newRow("one") << 1 << 1 << QString();
        QTest::newRow("several") << 3 << 3 << QString();
        QTest::newRow("more than it shows") << InfoPanel::kMaxSections + 2 << int(InfoPanel::kMaxSections)
                                            << u"and 2 more item(s)"_s;
    }
    void sections()
    {
        QFETCH(int, files);
        QFETCH(int, sections);
        QFETCH(QString, more);
        QTemporaryDir dir;
        QStringList paths;
        for (int i = 0; i < files; ++i) {
            QFile file(dir.filePath(u"f%1.plist"_s.arg(i)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray(i, 'x'));
            paths << file.fileName();
        }
        InfoPanel panel;
        panel.showFiles(paths);
        QCOMPARE(texts(panel, u"pathField"_s), paths.mid(0, sections));
        QCOMPARE(texts(panel, u"diskSize"_s).size(), sections);
        QCOMPARE(texts(panel, u"diskSize"_s).last(), u"%1 bytes"_s.arg(sections - 1));
        QCOMPARE(texts(panel, u"moreItems"_s), more.isEmpty() ? QStringList() : QStringList{more});
        for (const char *field :
             {"creationDate", "modifiedDate", "accessDate", "ownerGroup", "plistPermissions"})
            QCOMPARE(texts(panel, QString::fromLatin1(field)).size(), sections);
    }

    void refreshesOnlyWhileShowing()
    {
        const QString first = u"/nonexistent/first.plist"_s;
        const QString second = u"/nonexistent/second.plist"_s;
        QVERIFY(!InfoPanel::getPrefInfoIfOpen({first}));
        QVERIFY(!InfoPanel::sharedPanel());
        InfoPanel *panel = InfoPanel::getInfoForFiles({first});
        QVERIFY(panel->isVisible());
        QCOMPARE(texts(*panel, u"missing"_s).size(), 1); // a vanished file says so
        QVERIFY(InfoPanel::getPrefInfoIfOpen({second}));
        QCOMPARE(texts(*panel, u"pathField"_s), QStringList{second});
        panel->close();
        QTRY_VERIFY(!InfoPanel::sharedPanel());
        QVERIFY(!InfoPanel::getPrefInfoIfOpen({first}));
    }
};

ORVANE_TEST(InfoPanelTest)
#include "InfoPanelTest.moc"
