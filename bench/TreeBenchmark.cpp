// Speed and size of the node tree on a generated 100 MB XML preferences file of
// about 1.8 million nodes: opening, sorting and saving must stay well under a
// second, and the search filter runs on every keystroke, so it must stay under
// a frame or two (40 ms). Budgets: build 0.5 s, sort 0.1 s, initialValue 0.3 s,
// query 40 ms; at most 160 bytes per node besides the text it holds.
#include "model/PListNode.h"
#include "platform/PropertyListSerialization.h"

#include <QTemporaryFile>

#include "GeneratedPreferences.h"
#include "ProcessMemory.h"

#include <benchmark/benchmark.h>

#include <cstdio>

namespace {

using GeneratedPreferences::kAbsentTerm;
using GeneratedPreferences::kCommonLettersTerm;
using GeneratedPreferences::kRareTerm;
using ProcessMemory::heapBytesInUse;
using ProcessMemory::residentBytes;

struct TreeCounts {
    qint64 nodes = 0;
    qint64 leaves = 0;
};

void count(const PListNode &node, TreeCounts &counts)
{
    ++counts.nodes;
    if (node.isLeaf())
        ++counts.leaves;
    for (const PListNodePtr &child : node.children())
        count(*child, counts);
}

// The generated file, read back from disk, and one tree built from it.
struct Fixture {
    Fixture()
    {
        QTemporaryFile file;
        file.setAutoRemove(true);
        if (!file.open())
            return;
        const QByteArray written = GeneratedPreferences::xml();
        file.write(written);
        file.close();
        fileBytes = written.size();
        const auto read = PropertyListSerialization::readFile(file.fileName());
        if (!read || !read.value.value.isDictionary())
            return;
        value = read.value.value;
        measureTree();
    }

    void measureTree()
    {
        malloc_trim(0);
        const qint64 residentBefore = residentBytes();
        const qint64 heapBefore = heapBytesInUse();
        tree = PListNode::treeFromDictionary(value.dictionaryRef());
        const qint64 residentGrowth = residentBytes() - residentBefore;
        const qint64 heapGrowth = heapBytesInUse() - heapBefore;
        count(*tree, counts);
        const double nodes = static_cast<double>(counts.nodes);
        // Keys and strings are shared with the value read from the file, and
        // display texts and element names are made when asked for, so all the
        // heap growth is the nodes' own.
        std::fprintf(stderr,
                     "generated file: %.1f MB, %lld nodes (%lld leaves); sizeof(PListNode) = %zu\n"
                     "tree: RSS growth %.0f MB, heap growth %.0f MB; per node: RSS %.1f B, heap %.1f B"
                     " (budget 160 besides text)\n",
                     static_cast<double>(fileBytes) / 1e6, static_cast<long long>(counts.nodes),
                     static_cast<long long>(counts.leaves), sizeof(PListNode), residentGrowth / 1e6, heapGrowth / 1e6,
                     residentGrowth / nodes, heapGrowth / nodes);
    }

    qint64 fileBytes = 0;
    PropertyList value;
    PListNodePtr tree;
    TreeCounts counts;
};

Fixture &fixture()
{
    static Fixture instance;
    return instance;
}

qint64 leavesIn(const PListNode &node)
{
    if (node.isLeaf())
        return 1;
    qint64 leaves = 0;
    for (const PListNodePtr &child : node.children())
        leaves += leavesIn(*child);
    return leaves;
}

void buildTree(benchmark::State &state)
{
    Fixture &data = fixture();
    if (!data.tree) {
        state.SkipWithError("the generated file could not be read back");
        return;
    }
    for (auto _ : state) {
        PListNodePtr tree = PListNode::treeFromDictionary(data.value.dictionaryRef());
        benchmark::DoNotOptimize(tree.get());
        state.PauseTiming(); // closing the document is not opening it
        tree.reset();
        state.ResumeTiming();
    }
    state.counters["nodes"] = static_cast<double>(data.counts.nodes);
}

// Closing a large document releases every node.
void dropTree(benchmark::State &state)
{
    Fixture &data = fixture();
    if (!data.tree) {
        state.SkipWithError("the generated file could not be read back");
        return;
    }
    for (auto _ : state) {
        state.PauseTiming();
        PListNodePtr tree = PListNode::treeFromDictionary(data.value.dictionaryRef());
        state.ResumeTiming();
        tree.reset();
    }
}

void recursiveSortChildren(benchmark::State &state)
{
    Fixture &data = fixture();
    if (!data.tree) {
        state.SkipWithError("the generated file could not be read back");
        return;
    }
    for (auto _ : state) {
        state.PauseTiming(); // each round sorts a tree in file order
        PListNodePtr tree = PListNode::treeFromDictionary(data.value.dictionaryRef());
        state.ResumeTiming();
        tree->recursiveSortChildren();
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}

void initialValue(benchmark::State &state)
{
    Fixture &data = fixture();
    if (!data.tree) {
        state.SkipWithError("the generated file could not be read back");
        return;
    }
    for (auto _ : state) {
        PropertyList value = data.tree->initialValue();
        benchmark::DoNotOptimize(value);
        state.PauseTiming();
        value = PropertyList();
        state.ResumeTiming();
    }
}

void queryWithString(benchmark::State &state, const char *term)
{
    Fixture &data = fixture();
    if (!data.tree) {
        state.SkipWithError("the generated file could not be read back");
        return;
    }
    const QString query = QLatin1String(term);
    for (auto _ : state) {
        // The previous filtered tree is dropped on the next keystroke, so that is timed too.
        PListNodePtr filtered = data.tree->queryWithString(query);
        benchmark::DoNotOptimize(filtered.get());
    }
    const PListNodePtr filtered = data.tree->queryWithString(query);
    const qint64 found = filtered ? leavesIn(*filtered) : 0;
    TreeCounts resultCounts;
    if (filtered)
        count(*filtered, resultCounts);
    state.counters["result nodes"] = static_cast<double>(resultCounts.nodes);
    state.counters["found leaves"] = static_cast<double>(found);
    state.counters["% of leaves"] = 100.0 * static_cast<double>(found) / static_cast<double>(data.counts.leaves);
}

void queryRareTerm(benchmark::State &state) { queryWithString(state, kRareTerm); }
void queryAbsentTerm(benchmark::State &state) { queryWithString(state, kAbsentTerm); }
void queryCommonLettersTerm(benchmark::State &state) { queryWithString(state, kCommonLettersTerm); }

} // namespace

BENCHMARK(buildTree)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(dropTree)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(recursiveSortChildren)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(initialValue)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(queryRareTerm)->Unit(benchmark::kMillisecond);
BENCHMARK(queryAbsentTerm)->Unit(benchmark::kMillisecond);
BENCHMARK(queryCommonLettersTerm)->Unit(benchmark::kMillisecond);
