// Speed and size of the node tree on a generated 100 MB XML preferences file of
// about 1.8 million nodes: opening, sorting and saving must stay well under a
// second, and the search filter runs on every keystroke, so it must stay under
// a frame or two (40 ms). Budgets: build 0.5 s, sort 0.1 s, initialValue 0.3 s,
// query 40 ms; at most 160 bytes per node besides the text it holds.
#include "model/PListNode.h"
#include "platform/PropertyListSerialization.h"

#include <QFile>
#include <QTemporaryFile>

#include "SplitMix.h"

#include <benchmark/benchmark.h>

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

namespace {

class Random : public SplitMix {
public:
    Random() : SplitMix(20070314ULL) {}
};

// The term the "~1 % of leaves" query looks for, and one found nowhere. The
// filter passes over whole groups whose texts lack a letter of the query, so a
// third term, found nowhere but made of letters found everywhere, shows the
// walk that cannot pass over anything for its letters alone.
constexpr auto kRareTerm = "quasar";
constexpr auto kAbsentTerm = "zqxj";
constexpr auto kCommonLettersTerm = "ownerdoc";

const std::array<const char *, 24> kWords = {
    "Window", "Document", "Library", "Music", "Photos", "Project", "Notes", "Draft",
    "Server", "Account", "Backup", "Sync", "Toolbar", "Sidebar", "Preview", "Export",
    "Import", "Recent", "Search", "Folder", "Layout", "Theme", "Update", "Cache"};

// Leaves and groups as real preference files have them: window frames, fonts,
// counters, flags, timestamps, archived state, recent-item lists and nested
// bookmark records. About one leaf in a hundred carries the rare term, in its
// key or (for array elements, which are found only by value) in its text.
class Generator {
public:
    PropertyDictionary domain(int index)
    {
        PropertyDictionary entries;
        const int settings = 20 + m_random.below(40);
        for (int i = 0; i < settings; ++i)
            entries.insert(key(i), scalar());
        PropertyArray recent;
        const int recentCount = 5 + m_random.below(30);
        for (int i = 0; i < recentCount; ++i)
            recent.append(PropertyList(path(i)));
        entries.insert(QStringLiteral("NSRecentDocuments"), recent);
        PropertyArray bookmarks;
        const int bookmarkCount = 10 + m_random.below(120);
        for (int i = 0; i < bookmarkCount; ++i)
            bookmarks.append(bookmark(i));
        entries.insert(QStringLiteral("Bookmarks"), bookmarks);
        PropertyDictionary panels;
        for (int i = 0; i < 4 + m_random.below(8); ++i) {
            PropertyDictionary panel;
            for (int j = 0; j < 6 + m_random.below(10); ++j)
                panel.insert(key(j), scalar());
            panels.insert(QStringLiteral("Panel %1").arg(i), panel);
        }
        entries.insert(QStringLiteral("Panels"), panels);
        entries.insert(QStringLiteral("DomainIndex"), PropertyList::integer(index, 'q'));
        return entries;
    }

private:
    QString word() { return QLatin1String(kWords[static_cast<size_t>(m_random.below(kWords.size()))]); }

    // One key in a hundred holds the rare term.
    QString key(int position)
    {
        QString text = QStringLiteral("VX") + word() + word() + QString::number(position);
        if (m_random.perMille(40))
            text += QStringLiteral("Quasar");
        return text;
    }

    QString path(int position)
    {
        QString text = QStringLiteral("/Users/alex/Documents/") + word() + QLatin1Char(' ')
            + QString::number(m_random.below(500)) + QLatin1Char('/') + word().toLower() + QLatin1Char('-')
            + QString::number(position) + QStringLiteral(".txt");
        if (m_random.perMille(40))
            text.insert(22, QStringLiteral("quasar/"));
        return text;
    }

    PropertyList scalar()
    {
        switch (m_random.below(8)) {
        case 0:
            return PropertyList(QStringLiteral("%1 %2 %3 %4 0 0 1440 877 ")
                                    .arg(m_random.below(900))
                                    .arg(m_random.below(700))
                                    .arg(400 + m_random.below(900))
                                    .arg(300 + m_random.below(500)));
        case 1:
            return PropertyList(word() + QLatin1Char(' ') + word());
        case 2:
            return PropertyList::integerFromFile(m_random.below(100000));
        case 3:
            return PropertyList::real(m_random.below(100000) / 64.0);
        case 4:
            return PropertyList::boolean(m_random.below(2) != 0);
        case 5:
            return PropertyList::date(600000000.0 + m_random.below(100000000));
        case 6: {
            QByteArray bytes(8 + m_random.below(24), '\0');
            for (char &byte : bytes)
                byte = static_cast<char>(m_random.below(256));
            return PropertyList(bytes);
        }
        default:
            return PropertyList(QStringLiteral("https://www.example.com/") + word().toLower());
        }
    }

    PropertyList bookmark(int position)
    {
        PropertyDictionary record;
        record.insert(QStringLiteral("Title"), PropertyList(word() + QLatin1Char(' ') + word()));
        record.insert(QStringLiteral("URLString"),
                      PropertyList(QStringLiteral("https://www.example.com/") + word().toLower() + QLatin1Char('/')
                                   + QString::number(position)));
        record.insert(QStringLiteral("Added"), PropertyList::date(600000000.0 + m_random.below(100000000)));
        record.insert(QStringLiteral("VisitCount"), PropertyList::integerFromFile(m_random.below(5000)));
        record.insert(QStringLiteral("Rating"), PropertyList::real(m_random.below(50) / 10.0));
        record.insert(QStringLiteral("Starred"), PropertyList::boolean(m_random.below(4) == 0));
        record.insert(key(position), scalar());
        PropertyArray tags;
        for (int i = 0; i < m_random.below(4); ++i)
            tags.append(PropertyList(word().toLower()));
        record.insert(QStringLiteral("Tags"), tags);
        return record;
    }

    Random m_random;
};

constexpr int kDomains = 2150;

PropertyDictionary generatedPreferences()
{
    Generator generator;
    PropertyDictionary root;
    for (int i = 0; i < kDomains; ++i)
        root.insert(QStringLiteral("com.example.app%1").arg(i), generator.domain(i));
    return root;
}

qint64 residentBytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields.at(1).toLongLong() * sysconf(_SC_PAGESIZE) : 0;
}

qint64 heapBytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<qint64>(info.uordblks + info.hblkhd);
}

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
        const QByteArray written = PropertyListSerialization::write(generatedPreferences(), PropertyListFormat::Xml);
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
