// The preference store at the size of a long-used account (GeneratedAccount).
// The browser lists and builds its tree at every start and reload, so that
// must stay under 30 ms; a find across all domains reads every one through a fresh store, budget 0.1 s; the
// synchronise before every open must cost next to nothing when nothing changed;
// and the names a repaint of the whole browser shows take no disk access.
#include "domains/CFReadWriteMethods.h"
#include "domains/openDomain.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/PropertyListSerialization.h"
#include "platform/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "GeneratedAccount.h"

#include <benchmark/benchmark.h>

#include <cstdio>

namespace {

// The generated account, made once for all benchmarks; HOME and the machine
// folder point into it from then on.
struct Account {
    QTemporaryDir dir;
    QStringList domainPaths;
    qint64 totalBytes = 0;

    Account()
    {
        qputenv("HOME", QFile::encodeName(dir.path()));
        qputenv("ORVANE_LOCAL_PREFERENCES", QFile::encodeName(GeneratedAccount::machineFolder(dir.path())));
        qputenv("ORVANE_HOST_UUID", GeneratedAccount::kHostId.toLatin1());
        const GeneratedAccount::Written written = GeneratedAccount::write(dir.path());
        domainPaths = written.domainPaths;
        totalBytes = written.totalBytes;
        std::fprintf(stderr, "generated %lld bytes in %lld domains\n",
                     static_cast<long long>(totalBytes), static_cast<long long>(domainPaths.size()));
    }
};

Account &account()
{
    static Account generated;
    return generated;
}

void BM_ListAndBuildTree(benchmark::State &state)
{
    account();
    for (auto _ : state) {
        benchmark::DoNotOptimize(openDomain::fullDomainTree());
    }
}
BENCHMARK(BM_ListAndBuildTree)->Unit(benchmark::kMillisecond);

qsizetype shownNamesLength(const openNode &node)
{
    qsizetype length = 0;
    for (const openNodePtr &child : node.children())
        length += child->displayName().size() + shownNamesLength(*child);
    return length;
}

// Every row's shown name, as painting the fully expanded browser asks for them.
void BM_ShowEveryRowName(benchmark::State &state)
{
    account();
    const openNodePtr root = openDomain::fullDomainTree();
    for (auto _ : state)
        benchmark::DoNotOptimize(shownNamesLength(*root));
}
BENCHMARK(BM_ShowEveryRowName)->Unit(benchmark::kMicrosecond);

void BM_ReadEveryDomainThroughAFreshStore(benchmark::State &state)
{
    const Account &generated = account();
    for (auto _ : state) {
        PreferencesService service;
        NotificationCenter center;
        UserDefaults defaults(service, center);
        const CFReadWriteMethods::Store store{service, defaults};
        qsizetype keys = 0;
        for (const QString &path : generated.domainPaths)
            keys += CFReadWriteMethods::preferenceDictionaryFromPath(path, store)
                        .value_or(PropertyDictionary())
                        .size();
        benchmark::DoNotOptimize(keys);
    }
    state.counters["bytes"] = static_cast<double>(generated.totalBytes);
    state.SetBytesProcessed(state.iterations() * generated.totalBytes);
}
BENCHMARK(BM_ReadEveryDomainThroughAFreshStore)->Unit(benchmark::kMillisecond);

void BM_SynchronizeUnchangedDomain(benchmark::State &state)
{
    const QString path = account().domainPaths.first(); // the largest, 2 MB
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults(service, center);
    const CFReadWriteMethods::Store store{service, defaults};
    benchmark::DoNotOptimize(CFReadWriteMethods::preferenceDictionaryFromPath(path, store));
    for (auto _ : state)
        benchmark::DoNotOptimize(CFReadWriteMethods::synchronizePreferencesAtPath(path, store));
}
BENCHMARK(BM_SynchronizeUnchangedDomain)->Unit(benchmark::kMicrosecond);

// The browser's core over the account, without a window.
struct Browser {
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};
    openDomain application{openDomain::Services{defaults, center}};
};

// The search field runs a search at every keystroke: "domain12" typed one
// character after another, each a search of the full tree. Goal: 5 ms each.
void BM_BrowserSearchPerKeystroke(benchmark::State &state)
{
    account();
    Browser browser;
    const QString typed = QStringLiteral("domain12");
    qsizetype length = 0;
    for (auto _ : state) {
        length = length % typed.size() + 1;
        browser.application.searchDomains(typed.left(length));
        benchmark::DoNotOptimize(browser.application.treeData());
    }
}
BENCHMARK(BM_BrowserSearchPerKeystroke)->Unit(benchmark::kMillisecond);

// Reload with a handful of domains selected, which are found again in the
// new tree by path. Goal: 30 ms.
void BM_BrowserReload(benchmark::State &state)
{
    account();
    Browser browser;
    openDomain &application = browser.application;
    const QList<openNodePtr> top = application.treeData()->children();
    QList<openNodePtr> chosen;
    for (qsizetype i = 2; i < top.size(); i += top.size() / 10)
        chosen.append(top.at(i));
    application.selectNodes(chosen, false);
    for (auto _ : state)
        application.refresh();
    state.counters["selected"] = static_cast<double>(application.selectedNodes().size());
}
BENCHMARK(BM_BrowserReload)->Unit(benchmark::kMillisecond);

} // namespace
