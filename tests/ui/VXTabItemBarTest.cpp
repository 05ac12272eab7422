// The tab bar as the window and the user drive it: it fits its tabs to its
// width, asks for a tab on a click and for a close on a middle click or the
// close box, reorders by dragging, brings a tab out of its menu, and follows
// the tab colour settings.
#include "DomainSandbox.h"
#include "TestRegistry.h"

#include "domains/ApplicationSettings.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"
#include "ui/AppearanceDefaults.h"
#include "ui/VXTabItemBar.h"

#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

// A window whose bar holds count documents, "doc0" and on, the first shown.
struct Window {
    explicit Window(int count, int width)
    {
        ApplicationSettings::registerDefaults(defaults, AppearanceDefaults::fallback(),
                                              QDateTime::currentDateTimeUtc());
        auto *layout = new QVBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(bar);
        layout->addStretch();
        for (int i = 0; i < count; ++i)
            bar->createNewTabWithTitle(u"doc%1"_s.arg(i), i);
        bar->setSelectedDocument(0);
        // As the window does: a choice is answered by showing that document.
        QObject::connect(bar, &VXTabItemBar::tabSelected, bar, &VXTabItemBar::setSelectedDocument);
        window.resize(width, 120);
        window.show();
    }
    QStringList titles() const
    {
        QStringList shown;
        for (int index : bar->visibleIndexes())
            shown << bar->tabView(index)->title();
        return shown;
    }

    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};
    QWidget window;
    VXTabItemBar *bar = new VXTabItemBar(defaults, center, &window);
};

} // namespace

class VXTabItemBarTest : public QObject {
    Q_OBJECT
private slots:
    void fitsItsWidth_data()
    {
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("then");
        QTest::addColumn<QList<int>>("visible");
        QTest::addColumn<QList<int>>("hidden");
        QTest::addColumn<float>("width");
        using L = QList<int>;
        // Eight tabs need 8 x 161 + 16 = 1304 at full width.
        // Grown from 85 in float steps, the width stops one step short of 160.
        QTest::newRow("room for all at the widest")
            << 300 << 1400 << L{0, 1, 2, 3, 4, 5, 6, 7} << L{} << 159.9f;
        // 484 of room: five tabs of 85 end at 426, six at 511.
        QTest::newRow("at 85 the rest hide") << 1400 << 500 << L{0, 1, 2, 3, 4} << L{5, 6, 7} << 85.0f;
        QTest::newRow("wider again, some come back") << 60 << 600 << L{0, 1, 2, 3, 4, 5} << L{6, 7} << 85.0f;
        QTest::newRow("one tab stays however narrow") << 500 << 60 << L{0} << L{1, 2, 3, 4, 5, 6, 7} << 85.0f;
    }
    void fitsItsWidth()
    {
        QFETCH(int, first);
        QFETCH(int, then);
        QFETCH(QList<int>, visible);
        QFETCH(QList<int>, hidden);
        QFETCH(float, width);
        Window window(8, first);
        window.window.resize(then, 120);
        QCOMPARE(window.bar->width(), then);
        QCOMPARE(window.bar->visibleIndexes(), visible);
        QCOMPARE(window.bar->hiddenIndexes(), hidden);
        QVERIFY2(qAbs(window.bar->currentTabWidth() - width) < 0.01f,
                 qPrintable(QString::number(window.bar->currentTabWidth())));
        QCOMPARE(window.bar->popUpMenu() != nullptr, !hidden.isEmpty());
        const VXTabItemView *last = window.bar->tabView(visible.last());
        QVERIFY(last->geometry().right() < then - 16 || visible.size() == 1);
    }

    void mouseAsksTheWindow_data()
    {
        QTest::addColumn<Qt::MouseButton>("button");
        QTest::addColumn<bool>("onCloseBox");
        QTest::addColumn<int>("selected");
        QTest::addColumn<int>("closed");
        QTest::newRow("click selects") << Qt::LeftButton << false << 2 << -1;
        QTest::newRow("middle click closes") << Qt::MiddleButton << false << 0 << 2;
        QTest::newRow("close box closes") << Qt::LeftButton << true << 0 << 2;
    }
    void mouseAsksTheWindow()
    {
        QFETCH(Qt::MouseButton, button);
        QFETCH(bool, onCloseBox);
        QFETCH(int, selected);
        QFETCH(int, closed);
        Window window(4, 800);
        QSignalSpy closes(window.bar, &VXTabItemBar::tabCloseRequested);
        VXTabItemView *tab = window.bar->tabView(2);
        QTest::mouseClick(tab, button, {}, onCloseBox ? tab->closeBoxRect().center() : tab->rect().center());
        QCOMPARE(window.bar->selectedDocument(), selected);
        QCOMPARE(window.bar->tabView(selected)->isActiveTab(), true);
        QCOMPARE(closes.isEmpty() ? -1 : closes.first().first().toInt(), closed);
        QCOMPARE(window.bar->count(), 4); // the window decides
    }

    void dragReorders()
    {
        Window window(4, 800);
        QSignalSpy moves(window.bar, &VXTabItemBar::tabMoved);
        const QPoint grip = window.bar->tabView(0)->geometry().center();
        const int step = window.bar->tabView(0)->width();
        const int left = window.bar->tabView(0)->x();
        QTest::mousePress(window.bar->tabView(0), Qt::LeftButton, {},
                          window.bar->tabView(0)->rect().center());
        // Past the middles of two neighbours: two moves, each told at once.
        int dx = 0;
        while (dx < 2 * step + 5) {
            dx += 10;
            QTest::mouseMove(window.bar, grip + QPoint(dx, 0));
        }
        QCOMPARE(window.bar->tabView(2)->x(), left + dx); // the dragged tab follows the mouse
        QTest::mouseRelease(window.bar, Qt::LeftButton, {}, grip + QPoint(2 * step, 0));
        QCOMPARE(window.titles(), (QStringList{u"doc1"_s, u"doc2"_s, u"doc0"_s, u"doc3"_s}));
        QCOMPARE(moves.size(), 2);
        QCOMPARE(moves.at(1), (QVariantList{1, 2}));
        QCOMPARE(window.bar->tabView(2)->x(), qRound(1 + 2 * window.bar->currentTabWidth()));
    }

    void menuBringsAHiddenTabOut()
    {
        Window window(8, 500);
        QCOMPARE(window.bar->hiddenIndexes(), (QList<int>{5, 6, 7}));
        // Under the chevron at the window's right end, right-aligned to stay on screen.
        const QRect chevron = window.bar->chevronRect();
        QTest::mouseClick(window.bar, Qt::LeftButton, {}, chevron.center());
        QMenu *menu = window.bar->popUpMenu();
        QTRY_VERIFY(menu->isVisible());
        QCOMPARE(menu->geometry().topRight(), window.bar->mapToGlobal(chevron.bottomRight() + QPoint(0, 1)));
        menu->actions().at(1)->trigger();
        QCOMPARE(window.bar->visibleIndexes(), (QList<int>{2, 3, 4, 5, 6}));
        QCOMPARE(window.bar->hiddenIndexes(), (QList<int>{0, 1, 7}));
        QCOMPARE(window.titles().first(), u"doc2"_s);
        QCOMPARE(window.bar->tabView(6)->isActiveTab(), true);
        QCOMPARE(window.bar->popUpMenu()->actions().at(1)->text(), u"doc1"_s);
    }

    void followsTheSettings()
    {
        Window window(3, 600);
        ApplicationSettings settings(window.defaults, window.center);
        const QColor picked(0x33, 0x66, 0x99);
        const auto activePixel = [&window] {
            const VXTabItemView *tab = window.bar->tabView(0);
            return window.bar->grab().toImage().pixelColor(tab->geometry().right() - 4, tab->height() - 3);
        };
        settings.setTabColor(ApplicationSettings::TabColorWell::ActiveBackground,
                             SystemAppearance::calibratedColor(picked), nullptr);
        QCOMPARE_NE(activePixel(), picked); // custom colours are off
        settings.setTabsUseCustomColors(true, nullptr);
        QCOMPARE(activePixel(), picked);
        const int height = window.bar->height();
        settings.setTabFont(QString(), 22, nullptr);
        QCOMPARE_GT(window.bar->height(), height);
        QCOMPARE(window.bar->tabView(0)->height(), window.bar->height() - 3);
    }
};

ORVANE_TEST(VXTabItemBarTest)
#include "VXTabItemBarTest.moc"
