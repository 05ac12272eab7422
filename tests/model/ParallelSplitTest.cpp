// Large walks hand their second half to a shared pool of threads.
#include "TestRegistry.h"

#include "model/ParallelSplit.h"

#include <QSemaphore>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <vector>

class ParallelSplitTest : public QObject {
    Q_OBJECT
private slots:
    // While the pool's threads are busy, a walk's caller runs the second half
    // itself instead of waiting for a thread: here the only thread waits for
    // the walk that would wait for it.
    void busyPoolLeavesNoOneWaiting()
    {
        QSemaphore innerDone;
        std::atomic<int> halves{0};
        ParallelSplit::sideBySide(
            [&] {
                ParallelSplit::sideBySide([&] { ++halves; }, [&] { ++halves; });
                innerDone.release();
            },
            [&] {
                innerDone.acquire();
                ++halves;
            });
        QCOMPARE(halves.load(), 3);
    }

    // Every item is walked once, in pieces that meet, none of them much
    // heavier than its share unless a single item is.
    void piecesCoverEveryItemOnce()
    {
        std::vector<std::atomic<int>> visits(1000);
        std::atomic<int> pieces{0};
        std::atomic<int> overweight{0};
        const auto weightOf = [](qsizetype i) -> qint64 { return i % 100 == 7 ? 2000 : 1; };
        ParallelSplit::run(qsizetype(visits.size()), weightOf, [&](qsizetype first, qsizetype last) {
            ++pieces;
            qint64 weight = 0;
            for (qsizetype i = first; i < last; ++i) {
                ++visits[static_cast<size_t>(i)];
                weight += weightOf(i);
            }
            if (last - first > 1 && weight > 2 * (20990 / ParallelSplit::kPieces) + 2000)
                ++overweight;
        });
        QVERIFY(pieces.load() > 2);
        QCOMPARE(overweight.load(), 0);
        QVERIFY(std::all_of(visits.cbegin(), visits.cend(), [](const std::atomic<int> &n) { return n == 1; }));
    }
};

ORVANE_TEST(ParallelSplitTest)
#include "ParallelSplitTest.moc"
