#pragma once

#include <QtGlobal>

#include <functional>

// Opening, sorting and filtering a large file walk millions of nodes, and the
// machine has more than one core. A walk over a node's children can hand the
// second half of them to a thread of a pool that every walk shares, when the
// subtrees are large enough to repay it. Only the outermost walk splits: a
// walk already running on behalf of a split goes on in its own thread.
namespace ParallelSplit {

// Total weight (roughly nodes) below which one thread does all the work.
constexpr qint64 kWorthAThread = 20000;

inline thread_local bool t_inSplit = false;

// Whether a walk over count items of these weights is worth a second thread.
template<typename WeightOf>
bool worthSplitting(qsizetype count, WeightOf weightOf)
{
    if (t_inSplit || count < 2)
        return false;
    qint64 total = 0;
    for (qsizetype i = 0; i < count && total < kWorthAThread; ++i)
        total += weightOf(i);
    return total >= kWorthAThread;
}

// Runs first here and second on the shared pool, side by side. When no pool
// thread has taken second up by the time first is done (the pool is busy, or
// gone at exit), this thread runs it itself rather than wait idle. Never
// throws: releasing a tree comes here from a destructor.
void sideBySide(const std::function<void()> &first, const std::function<void()> &second) noexcept;

// Runs work(first, last) over the ranges of [0, count) so that each range
// carries about half of the weight weightOf(i) of the items, the second one on
// another thread; or work(0, count) alone for a small or nested walk. The work
// must touch only what belongs to its own items. Which thread runs a range
// never changes what it does, so results do not depend on it.
template<typename WeightOf, typename Work>
void run(qsizetype count, WeightOf weightOf, Work work)
{
    if (!worthSplitting(count, weightOf)) {
        work(qsizetype(0), count);
        return;
    }
    qint64 total = 0;
    for (qsizetype i = 0; i < count; ++i)
        total += weightOf(i);
    qsizetype middle = 0;
    for (qint64 weight = 0; middle < count - 1 && weight * 2 < total; ++middle)
        weight += weightOf(middle);
    // Two references each, so neither std::function allocates.
    const qsizetype ends[3] = {0, middle, count};
    sideBySide([&work, &ends] { work(ends[0], ends[1]); }, [&work, &ends] { work(ends[1], ends[2]); });
}

} // namespace ParallelSplit
