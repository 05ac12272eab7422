// The find window over the generated 600-domain account (GeneratedAccount):
// gathering every domain and searching it for a term with a few hundred hits
// must take at most 0.1 s; building and sorting the tree of 10,000 hits, and
// handing every row to a view, at most 50 ms.
#include "find/FindOutlineModel.h"
#include "find/FindSearch.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"

#include <QFile>
#include <QTemporaryDir>

#include "GeneratedAccount.h"

#include <benchmark/benchmark.h>

namespace {

struct Account {
    QTemporaryDir dir;

    Account()
    {
        qputenv("HOME", QFile::encodeName(dir.path()));
        qputenv("ORVANE_LOCAL_PREFERENCES", QFile::encodeName(GeneratedAccount::machineFolder(dir.path())));
        qputenv("ORVANE_HOST_UUID", GeneratedAccount::kHostId.toLatin1());
        GeneratedAccount::write(dir.path());
    }
};

void account()
{
    static Account generated;
}

// The application's store remembers what it read until a synchronise, so a
// find after the first reads no file; the first one reads them all.
void gatherAndSearch(benchmark::State &state, bool freshStore)
{
    account();
    const QString term = QStringLiteral("Export S");
    PreferencesService warm;
    quint64 hits = 0;
    for (auto _ : state) {
        PreferencesService fresh;
        PreferencesService &service = freshStore ? fresh : warm;
        NotificationCenter center;
        UserDefaults defaults(service, center);
        FindSearch search(term);
        const PropertyDictionary found = search.searchForTerm(
            FindSearch::preferencesForUser(service, defaults, PreferencesUser::Current, PreferencesHost::Any),
            true);
        benchmark::DoNotOptimize(found.size());
        hits = search.searchResults();
    }
    state.counters["hits"] = static_cast<double>(hits);
}

void BM_FindGatherAndSearchWarmStore(benchmark::State &state)
{
    gatherAndSearch(state, false);
}
BENCHMARK(BM_FindGatherAndSearchWarmStore)->Unit(benchmark::kMillisecond);

void BM_FindGatherAndSearchFreshStore(benchmark::State &state)
{
    gatherAndSearch(state, true);
}
BENCHMARK(BM_FindGatherAndSearchFreshStore)->Unit(benchmark::kMillisecond);

// 10,000 hits spread as a real search leaves them: 100 domains, each with
// nested dictionaries and arrays, in no particular order.
PropertyDictionary tenThousandHits()
{
    PropertyDictionary result;
    for (int d = 0; d < 100; ++d) {
        PropertyDictionary domain;
        for (int k = 0; k < 20; ++k) {
            PropertyDictionary nested;
            for (int n = 0; n < 3; ++n)
                nested.insert(QStringLiteral("Window%1").arg((n * 7 + k) % 13), PropertyList::integer(n + k));
            PropertyArray list;
            list.append(QStringLiteral("Recent %1").arg(k));
            domain.insert(QStringLiteral("Key%1").arg((k * 37) % 20), nested);
            domain.insert(QStringLiteral("List%1").arg(k), list);
            domain.insert(QStringLiteral("Value%1").arg(k), PropertyList::integer(k));
        }
        result.insert(QStringLiteral("com.bench.domain%1").arg((d * 61) % 100), domain);
    }
    return result;
}

// What a view asks of every row of the fully expanded tree: its place, both
// cells' texts and its presentation.
qsizetype showRows(const FindOutlineModel &model, const QModelIndex &parent)
{
    qsizetype length = 0;
    const int rows = model.rowCount(parent);
    for (int row = 0; row < rows; ++row) {
        const QModelIndex key = model.index(row, FindOutlineModel::KeyColumn, parent);
        length += model.data(key).toString().size() +
                  model.data(key.siblingAtColumn(FindOutlineModel::ValueColumn)).toString().size() +
                  model.data(key, FindOutlineModel::PresentationRole).toInt();
        if (model.parent(key) != parent)
            return -1;
        if (model.hasChildren(key))
            length += showRows(model, key);
    }
    return length;
}

void BM_FindBuildAndShowTenThousandHits(benchmark::State &state)
{
    const PropertyDictionary found = tenThousandHits();
    FindOutlineModel model;
    qsizetype rows = 0;
    for (auto _ : state) {
        findNodePtr tree = findNode::treeFromDefDict(found);
        tree->recursiveSortChildren();
        model.resetRoot(std::move(tree));
        benchmark::DoNotOptimize(showRows(model, QModelIndex()));
        rows = model.root()->descendantCount();
    }
    state.counters["rows"] = static_cast<double>(rows);
}
BENCHMARK(BM_FindBuildAndShowTenThousandHits)->Unit(benchmark::kMillisecond);

} // namespace
