// The preference store at the size of a long-used account: 600 binary domains
// whose sizes fall off like a long tail (2 MB / rank^1.2, at least 1 KB), a
// ByHost folder and a small machine folder. The browser lists and builds its
// tree at every start and reload, so that must stay under 30 ms; a find across
// all domains reads every one through a fresh store, budget 0.1 s; the
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

#include "SplitMix.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr int kDomains = 600;
constexpr int kPerHostDomains = 24;
constexpr int kMachineDomains = 12;
constexpr double kLargest = 2.0 * 1024 * 1024;
constexpr double kSmallest = 1024;
const QString kHostId = QStringLiteral("0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9");

class Random : public SplitMix {
public:
    Random() : SplitMix(20260321ULL) {}
};

QString word(Random &random)
{
    static const char *const words[] = {"Window", "Recent", "Toolbar", "Sidebar", "Server", "Account",
                                        "Layout", "Theme", "Export", "Folder", "Preview", "Sync"};
    return QString::fromLatin1(words[random.below(12)]);
}

// One value of the kinds real preferences hold, and roughly what it adds to
// the binary file.
std::pair<PropertyList, qsizetype> value(Random &random, int depth)
{
    switch (random.below(depth < 2 ? 7 : 5)) {
    case 0: {
        const QString text = word(random) + QLatin1Char(' ') + word(random) + QString::number(random.below(100000));
        return {PropertyList(text), text.size() + 3};
    }
    case 1:
        return {PropertyList::integer(random.below(1 << 20) - 1000), 6};
    case 2:
        return {PropertyList::date(700000000.0 + random.below(100000000)), 10};
    case 3: {
        QByteArray bytes(16 + random.below(1024), Qt::Uninitialized);
        for (char &byte : bytes)
            byte = static_cast<char>(random.below(256));
        return {PropertyList(bytes), bytes.size() + 4};
    }
    case 4:
        return {PropertyList::boolean(random.below(2) == 1), 2};
    default: {
        PropertyDictionary nested;
        qsizetype size = 4;
        for (int i = 0; i < 4; ++i) {
            auto [item, bytes] = value(random, depth + 1);
            const QString key = word(random) + QString::number(i);
            nested.insert(key, item);
            size += bytes + key.size() + 4;
        }
        return {PropertyList(nested), size};
    }
    }
}

QByteArray domainBytes(Random &random, double targetSize)
{
    PropertyDictionary domain;
    qsizetype size = 48;
    for (int i = 0; size < targetSize; ++i) {
        auto [item, bytes] = value(random, 0);
        const QString key = word(random) + QString::number(i);
        domain.insert(key, item);
        size += bytes + key.size() + 6;
    }
    return PropertyListSerialization::write(PropertyList(domain), PropertyListFormat::Binary);
}

// The generated account, made once for all benchmarks; HOME and the machine
// folder point into it from then on.
struct Account {
    QTemporaryDir dir;
    QStringList domainPaths;
    qint64 totalBytes = 0;

    Account()
    {
        const QString user = dir.path() + QStringLiteral("/Library/Preferences");
        const QString machine = dir.path() + QStringLiteral("/machine");
        QDir().mkpath(user + QStringLiteral("/ByHost"));
        QDir().mkpath(machine);
        qputenv("HOME", QFile::encodeName(dir.path()));
        qputenv("ORVANE_LOCAL_PREFERENCES", QFile::encodeName(machine));
        qputenv("ORVANE_HOST_UUID", kHostId.toLatin1());
        Random random;
        for (int rank = 1; rank <= kDomains; ++rank) {
            const double size = std::max(kSmallest, kLargest / std::pow(rank, 1.2));
            write(user + QStringLiteral("/com.bench.domain%1.plist").arg(rank), domainBytes(random, size));
        }
        for (int i = 0; i < kPerHostDomains; ++i)
            write(user + QStringLiteral("/ByHost/com.bench.host%1.%2.plist").arg(i).arg(kHostId),
                  domainBytes(random, 2048));
        for (int i = 0; i < kMachineDomains; ++i)
            write(machine + QStringLiteral("/com.bench.machine%1.plist").arg(i), domainBytes(random, 4096));
        std::fprintf(stderr, "generated %lld bytes in %lld domains\n", static_cast<long long>(totalBytes),
                     static_cast<long long>(domainPaths.size()));
    }

    void write(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()) {
            domainPaths.append(path);
            totalBytes += bytes.size();
        }
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
            keys += CFReadWriteMethods::preferenceDictionaryFromPath(path, store).value_or(PropertyDictionary()).size();
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
