#pragma once

#include <QtGlobal>

#include <system_error>
#include <thread>

// Opening, sorting and filtering a large file walk millions of nodes, and the
// machine has more than one core. A walk over a node's children can hand the
// second half of them to another thread, when the subtrees are large enough to
// repay starting one. Only the outermost walk splits: a walk already running on
// a second thread goes on in that thread.
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

// Runs work(first, last) over the ranges of [0, count) so that each range
// carries about half of the weight weightOf(i) of the items, the second one on
// another thread; or work(0, count) alone for a small or nested walk. The work
// must touch only what belongs to its own items.
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
    t_inSplit = true;
    std::thread second;
    try {
        second = std::thread([&] {
            t_inSplit = true;
            work(middle, count);
        });
    } catch (const std::system_error &) {
        // No thread to be had: this one does both halves. Releasing a tree
        // runs here from a destructor, which must not throw.
        work(qsizetype(0), count);
        t_inSplit = false;
        return;
    }
    work(qsizetype(0), middle);
    second.join();
    t_inSplit = false;
}

} // namespace ParallelSplit
