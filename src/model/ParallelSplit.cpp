#include "ParallelSplit.h"

#include <QRunnable>
#include <QScopeGuard>
#include <QSemaphore>
#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <utility>

namespace {

// The walks' own pool, apart from the global one, which other work may keep
// busy. Its threads are kept for the whole run: a filter walks the tree on
// every keystroke, and starting a thread each time costs more than the walk
// gains on a small tree.
class WalkPool : public QThreadPool {
public:
    WalkPool()
    {
        setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1));
        setExpiryTimeout(-1);
    }
};

Q_GLOBAL_STATIC(WalkPool, walkPool)

// The second half of a walk, owned by the caller's stack frame: the caller
// either takes it back from the queue or waits for it, so it never outlives
// the frame.
class SecondHalf final : public QRunnable {
public:
    explicit SecondHalf(const std::function<void()> &work) : m_work(work) { setAutoDelete(false); }

    void run() override
    {
        ParallelSplit::t_inSplit = true;
        m_work();
        ParallelSplit::t_inSplit = false; // the pool's thread lives on
        m_done.release();
    }

    void waitUntilDone() { m_done.acquire(); }

private:
    const std::function<void()> &m_work;
    QSemaphore m_done;
};

} // namespace

namespace ParallelSplit {

void sideBySide(const std::function<void()> &first, const std::function<void()> &second) noexcept
{
    SecondHalf half(second);
    QThreadPool *pool = walkPool();
    bool submitted = false;
    try {
        if (pool) {
            pool->start(&half);
            submitted = true;
        }
    } catch (...) {
        // Nothing submitted: this thread does both halves.
    }
    const bool outer = std::exchange(t_inSplit, true);
    const auto end = qScopeGuard([outer] { t_inSplit = outer; });
    first();
    if (!submitted || pool->tryTake(&half))
        second();
    else
        half.waitUntilDone();
}

} // namespace ParallelSplit
