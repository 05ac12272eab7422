// Documents as tabs of one window: where the document controller puts them,
// what a tab keeps while another is shown, closing tabs and quitting, and the
// window's warning buttons in step with the settings.
#include "DocumentSession.h"
#include "TestRegistry.h"

#include "document/plistDocument.h"
#include "domains/SettingsKeys.h"
#include "ui/DocumentPrinter.h"
#include "ui/PrefOV.h"
#include "ui/SearchField.h"
#include "ui/VXTabItemBar.h"

#include <QApplication>
#include <QFile>
#include <QPrinter>
#include <QHeaderView>

namespace {

// The window of each path, in order, once each document is shown.
QList<VXWindowController *> openAll(Session &session, const QStringList &paths)
{
    QList<VXWindowController *> windows;
    for (const QString &path : paths)
        windows.append(session.open(path));
    return windows;
}

} // namespace

class TabbedWindowTest : public QObject {
    Q_OBJECT
private slots:
    void tabsOrWindows_data();
    void tabsOrWindows();
    void switchingKeepsEachDocumentsView();
    void closingTabsAndQuitting();
    void warningButtonsFollowTheSettings();
    void manyTabsInANarrowWindowThenPrinted();
};

void TabbedWindowTest::tabsOrWindows_data()
{
    QTest::addColumn<bool>("useTabs");
    QTest::addColumn<bool>("secondInNewWindow");
    QTest::addColumn<int>("windows");
    QTest::newRow("tabs") << true << false << 1;
    QTest::newRow("tabs, Open In New Window") << true << true << 2;
    QTest::newRow("a window each") << false << false << 2;
}

void TabbedWindowTest::tabsOrWindows()
{
    QFETCH(bool, useTabs);
    QFETCH(bool, secondInNewWindow);
    QFETCH(int, windows);
    Session session;
    ApplicationSettings(session.defaults, session.center).setDocumentsUseTabs(useTabs, nullptr);
    const QString first = session.write("{a = 1;}", u"first.plist"_s);
    const QString second = session.write("{b = 2;}", u"second.plist"_s);
    const QString third = session.write("{c = 3;}", u"third.plist"_s);
    VXWindowController *firstWindow = session.open(first);
    session.documents.openDocument(second, secondInNewWindow);
    VXWindowController *secondWindow = session.open(second);
    QVERIFY(firstWindow && secondWindow);
    QCOMPARE(firstWindow == secondWindow ? 1 : 2, windows);

    // A path already open comes forward in its window and tab.
    QCOMPARE(session.open(first), firstWindow);
    QCOMPARE(firstWindow->document()->fileName(), first);
    // A later document joins the window worked in last.
    QCOMPARE(session.open(third) == firstWindow, useTabs);
    QCOMPARE(session.documents.documents().size(), 3);
}

void TabbedWindowTest::switchingKeepsEachDocumentsView()
{
    Session session;
    const QString first = session.write("{a = {b = {c = 1;};}; d = 2;}", u"first.plist"_s);
    const QString second = session.write("{apple = 1; pear = {pip = 2;};}", u"second.plist"_s);
    const QList<VXWindowController *> windows = openAll(session, {first, second});
    VXWindowController *window = windows.first();
    QVERIFY(window && windows.last() == window);
    QCOMPARE(window->tabBar()->count(), 2);
    plistDocument *firstDocument = window->documents().first();
    PrefOV *outline = window->outlineView();

    window->selectDocument(firstDocument);
    outline->header()->resizeSection(0, 123);
    outline->expandAll();
    firstDocument->selectRow(2); // a/b/c
    const PListNode *selected = firstDocument->selectedNode();
    QCOMPARE(selected->name(), u"c"_s);
    window->actions().nextTab->trigger();
    QCOMPARE(window->document()->fileName(), second);
    QCOMPARE(window->document()->selectedNode()->name(), u"apple"_s);
    QCOMPARE(outline->header()->sectionSize(0), 123); // the columns are the window's
    QVERIFY(!outline->isExpanded(outline->indexOf(window->document()->treeData()->childAtIndex(1).get())));
    window->actions().previousTab->trigger();
    QCOMPARE(firstDocument->selectedNode(), selected);
    QVERIFY(outline->isExpanded(outline->indexOf(selected->nodeParent())));
    QVERIFY(outline->hasFocus());

    // The filter text applies to whichever tab is shown.
    QTest::keyClicks(window->searchField(), u"pi"_s);
    QCOMPARE(names(*firstDocument), u""_s);
    window->actions().nextTab->trigger();
    QCOMPARE(names(*window->document()), u"pear"_s);
}

void TabbedWindowTest::closingTabsAndQuitting()
{
    Session session;
    const QString first = session.write("{a = 1;}", u"first.plist"_s);
    const QString second = session.write("{b = 2;}", u"second.plist"_s);
    const QString third = session.write("{c = 3;}", u"third.plist"_s);
    QPointer<VXWindowController> window = openAll(session, {first, second, third}).first();
    QVERIFY(window);
    window->actions().close->trigger(); // the third, unedited: no question
    QCOMPARE(window->documents().size(), 2);
    QCOMPARE(window->document()->fileName(), second);
    QCOMPARE(window->tabBar()->selectedDocument(), 1);

    for (plistDocument *document : window->documents()) {
        window->selectDocument(document);
        window->actions().addLeaf->trigger();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    }
    // Quitting asks about each edited document, in its tab; Cancel stops it all.
    window->actions().quit->trigger();
    QCOMPARE(window->document()->fileName(), first);
    answer(window, u"Don't Save"_s);
    QTRY_COMPARE(window->document()->fileName(), second);
    answer(window, u"Cancel"_s);
    QVERIFY(window);
    QCOMPARE(window->documents().size(), 2);

    // Closing the window asks the same, tab by tab; the last tab takes the window with it.
    window->actions().closeWindow->trigger();
    answer(window, u"Don't Save"_s);
    QTRY_COMPARE(window->documents().size(), 1);
    answer(window, u"Don't Save"_s);
    QTRY_VERIFY(window.isNull());
    QVERIFY(session.documents.documents().isEmpty());
}

void TabbedWindowTest::warningButtonsFollowTheSettings()
{
    Session session;
    ApplicationSettings(session.defaults, session.center).setDocumentsUseTabs(false, nullptr);
    const QList<VXWindowController *> windows =
        openAll(session, {session.write("{a = 1;}", u"first.plist"_s), session.write("{b = 2;}", u"second.plist"_s)});
    QVERIFY(windows.first() && windows.last() && windows.first() != windows.last());
    const VXWindowController::Actions &mine = windows.first()->actions();
    const VXWindowController::Actions &other = windows.last()->actions();
    QVERIFY(mine.warnOnDelete->isChecked() && mine.warnOnDuplicates->isChecked());

    mine.warnOnDelete->trigger();
    QVERIFY(!session.defaults.boolForKey(SettingsKeys::VXWarnOnDocumentDelete));
    QVERIFY(!other.warnOnDelete->isChecked());
    other.warnOnDuplicates->trigger();
    QVERIFY(!session.defaults.boolForKey(SettingsKeys::VXWarnOnDuplicateKeys));
    QVERIFY(!mine.warnOnDuplicates->isChecked());
    // The preferences window's box posts the same notice.
    ApplicationSettings(session.defaults, session.center).setWarnOnDocumentDelete(true, nullptr);
    QVERIFY(mine.warnOnDelete->isChecked() && other.warnOnDelete->isChecked());
}

void TabbedWindowTest::manyTabsInANarrowWindowThenPrinted()
{
    Session session;
    QStringList paths;
    for (int i = 0; i < 8; ++i)
        paths << session.write("{a = 1; b = {c = 2;};}", u"document%1.plist"_s.arg(i));
    VXWindowController *window = openAll(session, paths).last();
    QVERIFY(window);
    const VXTabItemBar *bar = window->tabBar();
    window->resize(400, 300);
    QTRY_VERIFY(!bar->hiddenIndexes().isEmpty());
    QCOMPARE(bar->numberOfTabs() + bar->hiddenIndexes().size(), 8);
    QVERIFY(bar->visibleIndexes().contains(bar->selectedDocument()));
    window->resize(1400, 300);
    QTRY_COMPARE(bar->numberOfTabs(), 8);

    QPrinter *printer = DocumentPrinter::printInfo(window->document());
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setOutputFileName(session.sandbox.home() + u"/printed.pdf"_s);
    DocumentPrinter::printShowingPrintPanel(window->document(), window, false);
    QFile printed(printer->outputFileName());
    QVERIFY(printed.open(QIODevice::ReadOnly));
    const QByteArray pdf = printed.readAll();
    QVERIFY(pdf.startsWith("%PDF-") && pdf.contains("/Type /Page"));
}

ORVANE_TEST(TabbedWindowTest)
#include "TabbedWindowTest.moc"
