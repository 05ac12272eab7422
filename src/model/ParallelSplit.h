#pragma once

#include <QtGlobal>

#include <array>
#include <atomic>
#include <functional>

// Opening, sorting and filtering a large file walk millions of nodes, and the
// machine has more than one core. A walk over a node's children can share them
// with a thread of a pool that every walk shares, when the subtrees are large
// enough to repay it. Only the outermost walk splits: a
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

// How many pieces a split walk is cut into, of about equal weight.
constexpr int kPieces = 64;

// The pieces of one split walk: where each ends, and the next one to take.
struct Pieces {
    std::array<qsizetype, kPieces + 1> ends{};
    int count = 0;
    std::atomic<int> next{0};
};

// Runs work(first, last) over ranges that together cover [0, count) once: on
// this thread and on a pool thread side by side, each taking the next piece
// of about 1/kPieces of the weight weightOf(i) as it is done with the last, so
// the two finish together however fast each runs; or work(0, count) alone for
// a small or nested walk. The work must touch only what belongs to its own
// items. Which thread runs a range never changes what it does, so results do
// not depend on it.
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
    // A piece ends after the item that takes the weight past the next
    // multiple of total / kPieces; one heavy item may pass several.
    Pieces pieces;
    qint64 weight = 0;
    qint64 passed = 0;
    for (qsizetype i = 0; i + 1 < count && pieces.count + 1 < kPieces; ++i) {
        weight += weightOf(i);
        const qint64 reached = weight * kPieces / total;
        if (reached > passed) {
            passed = reached;
            pieces.ends[static_cast<size_t>(++pieces.count)] = i + 1;
        }
    }
    pieces.ends[static_cast<size_t>(++pieces.count)] = count;
    // Two references, so std::function keeps it without allocating.
    const auto takePieces = [&work, &pieces] {
        for (int p = pieces.next.fetch_add(1, std::memory_order_relaxed); p < pieces.count;
             p = pieces.next.fetch_add(1, std::memory_order_relaxed))
            work(pieces.ends[static_cast<size_t>(p)], pieces.ends[static_cast<size_t>(p) + 1]);
    };
    sideBySide(takePieces, takePieces);
}

} // namespace ParallelSplit
