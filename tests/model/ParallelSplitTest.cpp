// Large walks hand their second half to a shared pool of threads.
#include "TestRegistry.h"

#include "model/ParallelSplit.h"

#include <QSemaphore>
#include <QTest>

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

    // Every item is walked once, in two ranges that meet, split by weight.
    void rangesCoverEveryItemOnce()
    {
        std::vector<int> visits(1000);
        std::vector<std::pair<qsizetype, qsizetype>> ranges(2);
        std::atomic<int> next{0};
        ParallelSplit::run(
            qsizetype(visits.size()), [](qsizetype i) { return i < 10 ? 2000 : 1; },
            [&](qsizetype first, qsizetype last) {
                ranges[static_cast<size_t>(first == 0 ? 0 : 1)] = {first, last};
                ++next;
                for (qsizetype i = first; i < last; ++i)
                    ++visits[static_cast<size_t>(i)];
            });
        QCOMPARE(next.load(), 2);
        QCOMPARE(ranges[0], std::make_pair(qsizetype(0), qsizetype(6)));
        QCOMPARE(ranges[1], std::make_pair(qsizetype(6), qsizetype(1000)));
        QVERIFY(std::all_of(visits.cbegin(), visits.cend(), [](int n) { return n == 1; }));
    }
};

ORVANE_TEST(ParallelSplitTest)
#include "ParallelSplitTest.moc"
