// The document window's work on the generated 94 MB preferences file (1.8
// million nodes), as a tree view showing the outline model gets it. Budgets:
// a search keystroke, the outline reset to the filtered tree and the previous
// one dropped, 40 ms (a broad first letter may take longer: the window waits
// for a pause in typing once a search was slow); an edit and its undo 0.1 s;
// the model's answers for a screenful of rows 1 ms, wherever they lie.
#include "document/DocumentReader.h"
#include "document/OutlineModel.h"
#include "document/plistDocument.h"
#include "domains/ApplicationSettings.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "GeneratedPreferences.h"
#include "ProcessMemory.h"
#include "ViewLikeOutline.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

namespace {

qint64 nodesIn(const PListNode &node)
{
    qint64 nodes = 1;
    for (const PListNodePtr &child : node.children())
        nodes += nodesIn(*child);
    return nodes;
}

// The largest resident size since the last reset: the kernel's high-water mark.
qint64 peakResidentBytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong() * 1024;
    }
    return 0;
}

void resetPeakResident()
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

// A document with a view on its outline, as a window holds them.
struct Window {
    explicit Window(const plistDocument::Services &services)
        : document(services), view(*document.outlineModel(), *document.selectionModel())
    {
        document.setScreen(&view);
    }

    plistDocument document;
    ViewLikeOutline view;
};

// A process of its own: an application object, a throw-away account (HOME
// and the machine folder in a temporary folder) with the application's
// settings registered, the generated file in it, and one document open on it
// with a view on its outline.
struct Fixture {
    Fixture()
    {
        qputenv("HOME", QFile::encodeName(home.path()));
        qputenv("ORVANE_LOCAL_PREFERENCES", QFile::encodeName(home.path() + QStringLiteral("/machine")));
        ApplicationSettings::registerDefaults(defaults, AppearanceDefaults::fallback(),
                                              QDateTime::currentDateTimeUtc());
        path = home.filePath(QStringLiteral("Generated.plist"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(GeneratedPreferences::xml()) <= 0)
            return;
        file.close();
        fileBytes = file.size();
        open();
    }

    plistDocument::Services services() { return {{service, defaults}, center}; }

    // Reads the file into a document as the window opens it, measuring the
    // memory that takes: at its peak, and what the document keeps.
    void open()
    {
        malloc_trim(0);
        const qint64 before = ProcessMemory::residentBytes();
        resetPeakResident();
        auto read = DocumentReader::read(path, services().store);
        peakGrowth = peakResidentBytes() - before;
        if (!read)
            return;
        nodes = nodesIn(*read.value.root);
        window = std::make_unique<Window>(services());
        window->document.adoptContent(path, std::move(read.value));
        window->view.settle();
        malloc_trim(0);
        keptGrowth = ProcessMemory::residentBytes() - before;
        std::fprintf(stderr,
                     "generated file: %.1f MB, %lld nodes; reading it: peak RSS growth %.0f MB, kept %.0f MB"
                     " (%.1f B per node)\n",
                     fileBytes / 1e6, static_cast<long long>(nodes), peakGrowth / 1e6, keptGrowth / 1e6,
                     static_cast<double>(keptGrowth) / static_cast<double>(nodes));
    }

    QTemporaryDir home;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};
    QString path;
    qint64 fileBytes = 0;
    qint64 nodes = 0;
    qint64 peakGrowth = 0;
    qint64 keptGrowth = 0;
    std::unique_ptr<Window> window;
};

Fixture *fixture(benchmark::State &state)
{
    static int argc = 1;
    static char name[] = "bench_DocumentBenchmark";
    static char *argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    static Fixture instance;
    if (!instance.window) {
        state.SkipWithError("the generated file could not be written or read back");
        return nullptr;
    }
    return &instance;
}

void readDocument(benchmark::State &state)
{
    Fixture *data = fixture(state);
    if (!data)
        return;
    for (auto _ : state) {
        auto read = DocumentReader::read(data->path, data->services().store);
        benchmark::DoNotOptimize(read.value.root.get());
        state.PauseTiming(); // closing the document is not opening it
        read = {};
        state.ResumeTiming();
    }
    state.counters["nodes"] = static_cast<double>(data->nodes);
    state.counters["peak RSS growth MB"] = static_cast<double>(data->peakGrowth) / 1e6;
    state.counters["kept RSS MB"] = static_cast<double>(data->keptGrowth) / 1e6;
    state.counters["kept B/node"] = static_cast<double>(data->keptGrowth) / static_cast<double>(data->nodes);
}

// One keystroke in the search field: the filtered copy made, the outline
// reset to it, the previous copy dropped, and the view laid out and painted.
void search(benchmark::State &state, const char *term)
{
    Fixture *data = fixture(state);
    if (!data)
        return;
    const QString query = QLatin1String(term);
    for (auto _ : state) {
        data->window->document.searchDocument(query);
        data->window->view.settle();
    }
    state.counters["result nodes"] = static_cast<double>(nodesIn(*data->window->document.treeData()));
    data->window->document.searchDocument(QString());
    data->window->view.settle();
}

void searchRareTerm(benchmark::State &state)
{
    search(state, GeneratedPreferences::kRareTerm);
}
void searchAbsentTerm(benchmark::State &state)
{
    search(state, GeneratedPreferences::kAbsentTerm);
}
void searchCommonLettersTerm(benchmark::State &state)
{
    search(state, GeneratedPreferences::kCommonLettersTerm);
}
void searchBroadFirstLetter(benchmark::State &state)
{
    search(state, "a");
}

// A setting of a domain in the middle of the file, shown in the outline.
PListNodePtr shownSetting(Fixture &data)
{
    const PListNodePtr domain =
        data.window->document.treeData()->childWithName(QStringLiteral("com.example.app1000"));
    if (!domain)
        return nullptr;
    data.window->view.expandItem(domain.get());
    data.window->view.settle();
    for (const PListNodePtr &child : domain->children()) {
        if (child->isLeaf())
            return child;
    }
    return nullptr;
}

// A key renamed in place, then Undo, each an event-loop turn of its own.
void renameKeyAndUndo(benchmark::State &state)
{
    Fixture *data = fixture(state);
    const PListNodePtr node = data ? shownSetting(*data) : nullptr;
    if (!node)
        return;
    const QString renamed = node->name() + QStringLiteral("Renamed");
    for (auto _ : state) {
        data->window->document.setObjectValue(node.get(), DocumentScreen::KeyColumn, renamed);
        data->window->view.settle();
        data->window->document.undoManager().undo();
        data->window->view.settle();
    }
}

// An entry deleted, then Undo, which puts it back and sorts the whole tree.
void deleteAndUndo(benchmark::State &state)
{
    Fixture *data = fixture(state);
    const PListNodePtr node = data ? shownSetting(*data) : nullptr;
    if (!node)
        return;
    for (auto _ : state) {
        data->window->document.selectNodes({node}, false);
        data->window->document.deleteSelections();
        data->window->view.settle();
        data->window->document.undoManager().undo();
        data->window->view.settle();
    }
}

// A screenful of rows of parent as the view paints them, parent shown open.
void paintRows(benchmark::State &state, Window &window, const PListNode *parent, int first)
{
    const QModelIndex parentIndex = window.document.outlineModel()->indexOf(parent);
    if (parent != window.document.treeData().get())
        window.view.expandItem(parent);
    window.view.settle();
    qsizetype texts = 0;
    for (auto _ : state) {
        const QList<QModelIndex> rows = window.view.rowsOf(parentIndex, first);
        texts += window.view.paint(rows);
    }
    benchmark::DoNotOptimize(texts);
}

// The last screenful of the top level, a dictionary of 2150 domains.
void paintTopLevelRows(benchmark::State &state)
{
    if (Fixture *data = fixture(state)) {
        const PListNode *root = data->window->document.treeData().get();
        paintRows(state, *data->window, root, root->numberOfChildren() - ViewLikeOutline::kRowsOnScreen);
    }
}

// The last screenful of the largest array of the file, three levels down,
// whose items are labelled by position.
void paintRowsDeepInLargestArray(benchmark::State &state)
{
    Fixture *data = fixture(state);
    if (!data)
        return;
    const PListNode *largest = nullptr;
    for (const PListNodePtr &domain : data->window->document.treeData()->children()) {
        for (const PListNodePtr &entry : domain->children()) {
            if (entry->isArray() && (!largest || entry->numberOfChildren() > largest->numberOfChildren()))
                largest = entry.get();
        }
    }
    if (!largest)
        return;
    data->window->view.expandItem(largest->nodeParent());
    paintRows(state, *data->window, largest, largest->numberOfChildren() - ViewLikeOutline::kRowsOnScreen);
    state.counters["array items"] = largest->numberOfChildren();
}

// A document of one long list, as a music library's tracks are kept: the
// generated file has no array longer than 130 items, and an item's label is
// its position, which a long list must not have to search for.
void paintRowsAtEndOfLongArray(benchmark::State &state)
{
    Fixture *data = fixture(state);
    if (!data)
        return;
    constexpr int kItems = 200000;
    PropertyArray tracks;
    tracks.reserve(kItems);
    for (int i = 0; i < kItems; ++i) {
        tracks.append(
            PropertyDictionary{{QStringLiteral("Name"), PropertyList(QStringLiteral("Track %1").arg(i))},
                               {QStringLiteral("Track ID"), PropertyList::integer(i)}});
    }
    Window list(data->services());
    list.document.adoptContent(
        data->home.filePath(QStringLiteral("Tracks.plist")),
        DocumentReader::contentOf(PropertyDictionary{{QStringLiteral("Tracks"), tracks}}, false, true));
    const PListNode *array = list.document.treeData()->firstChild().get();
    paintRows(state, list, array, kItems - ViewLikeOutline::kRowsOnScreen);
}

} // namespace

BENCHMARK(readDocument)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(searchRareTerm)->Unit(benchmark::kMillisecond);
BENCHMARK(searchAbsentTerm)->Unit(benchmark::kMillisecond);
BENCHMARK(searchCommonLettersTerm)->Unit(benchmark::kMillisecond);
BENCHMARK(searchBroadFirstLetter)->Unit(benchmark::kMillisecond);
BENCHMARK(renameKeyAndUndo)->Unit(benchmark::kMillisecond);
BENCHMARK(deleteAndUndo)->Unit(benchmark::kMillisecond);
BENCHMARK(paintTopLevelRows)->Unit(benchmark::kMicrosecond);
BENCHMARK(paintRowsDeepInLargestArray)->Unit(benchmark::kMicrosecond);
BENCHMARK(paintRowsAtEndOfLongArray)->Unit(benchmark::kMicrosecond);
