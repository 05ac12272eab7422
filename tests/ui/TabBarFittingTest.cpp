// The tab bar's common width and its overflow menu: the width moves in steps
// of 0.1 between 85 and 160, a live resize moves one tab at a time, a maximise
// all at once, and hidden tabs come back at the right end under their index;
// arranged, the visible tabs are consecutive documents around the shown one.
#include "TestRegistry.h"

#include "ui/TabBarFitting.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// shown tabs side by side from x = 1 at width, then hidden ones in the menu;
// document i is titled "di".
TabBarFitting::State arrangement(float bar, int shown, int hidden, float width, int selected)
{
    TabBarFitting::State state;
    state.barWidth = bar;
    state.currentTabWidth = width;
    state.selectedDocument = selected;
    for (int i = 0; i < shown; ++i)
        state.tabItemViews.append({i, u"d%1"_s.arg(i), 1.0f + static_cast<float>(i) * width, width});
    for (int i = shown; i < shown + hidden; ++i)
        state.popUpMenu.append({u"d%1"_s.arg(i), i});
    state.hasPopUp = hidden > 0;
    return state;
}

// Runs "verb [n [m]]" on the bar.
void perform(TabBarFitting &bar, const QString &operation)
{
    const QStringList words = operation.split(u' ');
    const auto number = [&words](int i) { return words.value(i).toFloat(); };
    const auto integer = [&words](int i) { return words.value(i).toInt(); };
    const QString verb = words.first();
    if (verb == u"live" || verb == u"zoom")
        bar.windowDidResize(number(1), verb == u"live");
    else if (verb == u"select")
        bar.setSelectedDocument(integer(1));
    else if (verb == u"remove")
        bar.removeTabView(integer(1));
    else if (verb == u"move")
        bar.moveTab(integer(1), integer(2));
    else if (verb == u"create")
        bar.createNewTabWithTitle(u"new"_s, bar.count());
}

// The visible tabs' titles, then " | ", then the menu's.
QString titles(const TabBarFitting &bar)
{
    QStringList shown, hidden;
    for (const auto &tab : bar.tabItemViews())
        shown << tab.title;
    for (const auto &item : bar.popUpMenu())
        hidden << item.title;
    return shown.join(u' ') + u" | "_s + hidden.join(u' ');
}

} // namespace

class TabBarFittingTest : public QObject {
    Q_OBJECT
private slots:
    void commonWidth_data()
    {
        QTest::addColumn<float>("bar");
        QTest::addColumn<int>("shown");
        QTest::addColumn<int>("hidden");
        QTest::addColumn<bool>("zoom");
        QTest::addColumn<bool>("oneMore");
        QTest::addColumn<float>("start");
        QTest::addColumn<bool>("changed");
        QTest::addColumn<float>("width");
        // Room for tabs is the bar less 16; a tab takes its width plus one.
        QTest::newRow("equal room changes nothing")
            << 499.0f << 3 << 0 << false << false << 160.0f << false << 160.0f;
        QTest::newRow("shrinks no further than 85")
            << 500.0f << 10 << 0 << false << false << 160.0f << true << 85.0f;
        QTest::newRow("at 85 already: false")
            << 500.0f << 10 << 0 << false << false << 85.0f << false << 85.0f;
        // Float steps from below pass 160 by a hair (160.0018 from 120), so the
        // step taken back lands at 159.9: growth never quite reaches the ceiling.
        QTest::newRow("grows no further than 160")
            << 1000.0f << 2 << 0 << false << false << 120.0f << true << 159.9f;
        QTest::newRow("at 160 already: false")
            << 1000.0f << 2 << 0 << false << false << 160.0f << false << 160.0f;
        // 2 x 128.05 of room: 127.1 is too wide, 127.0 fits.
        QTest::newRow("shrinks to the first step that fits")
            << 272.1f << 2 << 0 << false << false << 160.0f << true << 127.0f;
        // 3 x 121.05: growing stops at 120.1 and takes that step back.
        QTest::newRow("grows to the last step short of the room")
            << 379.15f << 3 << 0 << false << false << 85.0f << true << 120.0f;
        QTest::newRow("one step up and back: false")
            << 258.1f << 2 << 0 << false << false << 120.0f << false << 120.0f;
        QTest::newRow("a new tab counts") << 272.1f << 1 << 0 << false << true << 160.0f << true << 127.0f;
        // Counted: 3 shown + 1, less the one the menu spares = 3 of 131.05.
        QTest::newRow("the menu spares one tab")
            << 409.15f << 3 << 2 << false << true << 160.0f << true << 130.0f;
        // Counted: all 5 documents, 101.05 of room each.
        QTest::newRow("zooming counts hidden tabs")
            << 521.25f << 3 << 2 << true << true << 160.0f << true << 100.0f;
    }
    void commonWidth()
    {
        QFETCH(float, bar);
        QFETCH(int, shown);
        QFETCH(int, hidden);
        QFETCH(bool, zoom);
        QFETCH(bool, oneMore);
        QFETCH(float, start);
        QFETCH(bool, changed);
        QFETCH(float, width);
        TabBarFitting::State state = arrangement(bar, shown, hidden, start, 0);
        state.didZoom = zoom;
        TabBarFitting fitting(state);
        QCOMPARE(fitting.tabViewsShouldResize(oneMore), changed);
        // Steps of 0.1 in float drift by far less than a hundredth.
        QVERIFY2(qAbs(fitting.currentTabWidth() - width) < 0.01f,
                 qPrintable(QString::number(fitting.currentTabWidth())));
    }

    void tabsMoveInAndOut_data()
    {
        QTest::addColumn<float>("bar");
        QTest::addColumn<int>("shown");
        QTest::addColumn<int>("hidden");
        QTest::addColumn<float>("start");
        QTest::addColumn<int>("selected");
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QList<int>>("visible");
        QTest::addColumn<QList<int>>("menu");
        QTest::addColumn<float>("width");
        QTest::addColumn<float>("lastX");
        QTest::addColumn<QString>("names");
        using L = QList<int>;
        QTest::newRow("live narrower: only the last goes")
            << 600.0f << 6 << 0 << 85.0f << 0 << u"live 300"_s << L{0, 1, 2, 3, 4} << L{5} << 85.0f << 341.0f
            << u"d0 d1 d2 d3 d4 | d5"_s;
        QTest::newRow("live narrower again: to the menu's top")
            << 600.0f << 5 << 1 << 85.0f << 0 << u"live 300"_s << L{0, 1, 2, 3} << L{4, 5} << 85.0f << 256.0f
            << u"d0 d1 d2 d3 | d4 d5"_s;
        QTest::newRow("the shown tab stays, its neighbour goes")
            << 600.0f << 6 << 0 << 85.0f << 5 << u"live 300"_s << L{0, 1, 2, 3, 5} << L{4} << 85.0f << 341.0f
            << u"d0 d1 d2 d3 d5 | d4"_s;
        // All six counted fit at the widest; the first hidden comes back one point beyond.
        QTest::newRow("live wider: the first hidden comes back")
            << 400.0f << 4 << 2 << 85.0f << 0 << u"live 1000"_s << L{0, 1, 2, 3, 4} << L{5} << 159.9f
            << 641.6f << u"d0 d1 d2 d3 d4 | d5"_s;
        // Right edge 256: it needs more than 256 + 1 + 85 of room.
        QTest::newRow("resize: room of one tab plus one point is not enough")
            << 300.0f << 3 << 1 << 85.0f << 0 << u"live 358"_s << L{0, 1, 2} << L{3} << 85.0f << 171.0f
            << u"d0 d1 d2 | d3"_s;
        QTest::newRow("resize: a little more is")
            << 300.0f << 3 << 1 << 85.0f << 0 << u"live 358.5"_s << L{0, 1, 2, 3} << L{} << 85.0f << 257.0f
            << u"d0 d1 d2 d3 | "_s;
        // After the removal the right edge is 256: more than 256 + 85 is enough.
        QTest::newRow("removal: one tab's room is not enough")
            << 357.0f << 4 << 1 << 85.0f << 0 << u"remove 0"_s << L{0, 1, 2} << L{3} << 85.0f << 171.0f
            << u"d1 d2 d3 | d4"_s;
        QTest::newRow("removal: without the extra point")
            << 357.5f << 4 << 1 << 85.0f << 0 << u"remove 0"_s << L{0, 1, 2, 3} << L{} << 85.0f << 257.0f
            << u"d1 d2 d3 d4 | "_s;
        QTest::newRow("removing a hidden tab renumbers the menu")
            << 300.0f << 3 << 3 << 85.0f << 0 << u"remove 4"_s << L{0, 1, 2} << L{3, 4} << 85.0f << 171.0f
            << u"d0 d1 d2 | d3 d5"_s;
        // Three counted (two shown and the one to come back) grow to 93.6 in 284.
        QTest::newRow("removing a shown tab: regrowth and a return")
            << 300.0f << 3 << 3 << 85.0f << 0 << u"remove 1"_s << L{0, 1, 2} << L{3, 4} << 93.6f << 189.2f
            << u"d0 d2 d3 | d4 d5"_s;
        QTest::newRow("a maximise brings every tab back")
            << 300.0f << 3 << 5 << 85.0f << 0 << u"zoom 2000"_s << L{0, 1, 2, 3, 4, 5, 6, 7} << L{} << 159.9f
            << 1120.3f << u"d0 d1 d2 d3 d4 d5 d6 d7 | "_s;
        QTest::newRow("a restore hides as many as needed")
            << 2000.0f << 8 << 0 << 160.0f << 0 << u"zoom 400"_s << L{0, 1, 2, 3} << L{4, 5, 6, 7} << 85.0f
            << 256.0f << u"d0 d1 d2 d3 | d4 d5 d6 d7"_s;
        QTest::newRow("a chosen hidden tab swaps with the last")
            << 300.0f << 3 << 3 << 85.0f << 0 << u"select 4"_s << L{0, 1, 4} << L{3, 2, 5} << 85.0f << 171.0f
            << u"d0 d1 d4 | d3 d2 d5"_s;
        // Document 0 goes to position 2; its tab takes the place of document 2's.
        QTest::newRow("drag onto a visible tab")
            << 300.0f << 3 << 2 << 85.0f << 0 << u"move 0 2"_s << L{0, 1, 2} << L{3, 4} << 85.0f << 171.0f
            << u"d1 d2 d0 | d3 d4"_s;
        QTest::newRow("move to a hidden place renumbers only")
            << 300.0f << 3 << 2 << 85.0f << 0 << u"move 4 0"_s << L{1, 2, 3} << L{4, 0} << 85.0f << 171.0f
            << u"d0 d1 d2 | d3 d4"_s;
        QTest::newRow("a new tab that fits joins the right end")
            << 500.0f << 2 << 0 << 160.0f << 0 << u"create"_s << L{0, 1, 2} << L{} << 160.0f << 321.0f
            << u"d0 d1 new | "_s;
        QTest::newRow("a new tab that does not fit is hidden")
            << 460.0f << 5 << 0 << 85.0f << 0 << u"create"_s << L{0, 1, 2, 3, 4} << L{5} << 85.0f << 341.0f
            << u"d0 d1 d2 d3 d4 | new"_s;
        QTest::newRow("with tabs hidden a new one joins the menu's end")
            << 300.0f << 3 << 2 << 85.0f << 0 << u"create"_s << L{0, 1, 2} << L{3, 4, 5} << 85.0f << 171.0f
            << u"d0 d1 d2 | d3 d4 new"_s;
    }
    void tabsMoveInAndOut()
    {
        QFETCH(float, bar);
        QFETCH(int, shown);
        QFETCH(int, hidden);
        QFETCH(float, start);
        QFETCH(int, selected);
        QFETCH(QString, operation);
        QFETCH(QList<int>, visible);
        QFETCH(QList<int>, menu);
        QFETCH(float, width);
        QFETCH(float, lastX);
        QFETCH(QString, names);
        TabBarFitting fitting(arrangement(bar, shown, hidden, start, selected));
        perform(fitting, operation);
        QCOMPARE(fitting.visibleIndexes(), visible);
        QCOMPARE(fitting.hiddenIndexes(), menu);
        QCOMPARE(fitting.hasPopUp(), !menu.isEmpty());
        QVERIFY2(qAbs(fitting.currentTabWidth() - width) < 0.01f,
                 qPrintable(QString::number(fitting.currentTabWidth())));
        QVERIFY2(qAbs(fitting.tabItemViews().last().x - lastX) < 0.01f,
                 qPrintable(QString::number(fitting.tabItemViews().last().x)));
        for (const auto &tab : fitting.tabItemViews())
            QCOMPARE(tab.width, fitting.currentTabWidth());
        QCOMPARE(titles(fitting), names);
    }

    // Each operation of a comma-separated list is followed by the arrangement,
    // as the bar does it.
    void keepsDocumentOrder_data()
    {
        QTest::addColumn<float>("bar");
        QTest::addColumn<int>("shown");
        QTest::addColumn<int>("hidden");
        QTest::addColumn<int>("selected");
        QTest::addColumn<QString>("operations");
        QTest::addColumn<QList<int>>("visible");
        QTest::addColumn<QString>("names");
        using L = QList<int>;
        // The fitting keeps 0, 1 and 5; the run of three ends at the shown tab.
        QTest::newRow("the run holds the shown tab")
            << 600.0f << 6 << 4 << 5 << u"zoom 300"_s << L{3, 4, 5} << u"d3 d4 d5 | d0 d1 d2 d6 d7 d8 d9"_s;
        QTest::newRow("a choice from the menu comes in without reordering")
            << 300.0f << 3 << 5 << 0 << u"select 6"_s << L{4, 5, 6} << u"d4 d5 d6 | d0 d1 d2 d3 d7"_s;
        QTest::newRow("the run slides no further than needed")
            << 300.0f << 3 << 5 << 0 << u"select 6, select 3"_s << L{3, 4, 5}
            << u"d3 d4 d5 | d0 d1 d2 d6 d7"_s;
        // The removal brings document 0 back; the run ends at the list's end.
        QTest::newRow("at the list's end the run takes tabs from before it")
            << 300.0f << 3 << 5 << 0 << u"select 7, remove 7"_s << L{4, 5, 6} << u"d4 d5 d6 | d0 d1 d2 d3"_s;
        QTest::newRow("a tab moved past the run's end takes the run along")
            << 300.0f << 3 << 3 << 2 << u"move 2 3"_s << L{1, 2, 3} << u"d1 d3 d2 | d0 d4 d5"_s;
    }
    void keepsDocumentOrder()
    {
        QFETCH(float, bar);
        QFETCH(int, shown);
        QFETCH(int, hidden);
        QFETCH(int, selected);
        QFETCH(QString, operations);
        QFETCH(QList<int>, visible);
        QFETCH(QString, names);
        TabBarFitting fitting(arrangement(bar, shown, hidden, 85.0f, selected));
        for (const QString &operation : operations.split(u", "_s)) {
            perform(fitting, operation);
            fitting.arrangeAround(fitting.selectedDocument());
        }
        QCOMPARE(fitting.visibleIndexes(), visible);
        QCOMPARE(titles(fitting), names);
        float x = 1.0f;
        for (const auto &tab : fitting.tabItemViews()) {
            QCOMPARE(tab.x, x);
            x += fitting.currentTabWidth();
        }
    }
};

ORVANE_TEST(TabBarFittingTest)
#include "TabBarFittingTest.moc"
