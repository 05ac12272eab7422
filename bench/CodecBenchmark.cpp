// Speed of the codecs on the largest real files of the corpus: opening a file
// must feel instant even for a 4 MB iTunes library or a 1 MB Xcode project.
#include "platform/PropertyListSerialization.h"
#include "platform/SequentialArchive.h"

#include <QDir>
#include <QFile>

#include <benchmark/benchmark.h>

#include <optional>

namespace {

QString corpusRoot()
{
    const QString fromEnvironment = qEnvironmentVariable("ORVANE_CORPUS");
    return fromEnvironment.isEmpty() ? QStringLiteral(ORVANE_SOURCE_DIR "/../shared/corpus") : fromEnvironment;
}

QByteArray corpusFile(const char *relative)
{
    QFile file(corpusRoot() + QLatin1Char('/') + QLatin1String(relative));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

const char *const kFiles[] = {
    "plists/xml/iTunes Music Library.xml",                  // 4.2 MB XML
    "plists/binary/com.kapeli.dashdoc.plist",               // 775 KB binary
    "plists/openstep/DuckDuckGo-iOS.project.pbxproj",       // 990 KB old-style text
    "plists/binary/com.googlecode.iterm2.plist",            // 389 KB binary, many reals
};

void readFile(benchmark::State &state)
{
    const QByteArray bytes = corpusFile(kFiles[state.range(0)]);
    if (bytes.isEmpty()) {
        state.SkipWithError("corpus file not found");
        return;
    }
    state.SetLabel(kFiles[state.range(0)]);
    for (auto _ : state) {
        auto result = PropertyListSerialization::read(bytes);
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * bytes.size());
}

// The value of the benchmark's corpus file, or nothing (and the run marked skipped).
std::optional<PropertyList> corpusValue(benchmark::State &state)
{
    const auto read = PropertyListSerialization::read(corpusFile(kFiles[state.range(0)]));
    if (!read) {
        state.SkipWithError("corpus file not readable");
        return std::nullopt;
    }
    state.SetLabel(kFiles[state.range(0)]);
    return read.value.value;
}

void writeFile(benchmark::State &state, PropertyListFormat format)
{
    const auto value = corpusValue(state);
    if (!value)
        return;
    for (auto _ : state) {
        QByteArray bytes = PropertyListSerialization::write(*value, format);
        benchmark::DoNotOptimize(bytes);
    }
}

void writeXml(benchmark::State &state) { writeFile(state, PropertyListFormat::Xml); }
void writeBinary(benchmark::State &state) { writeFile(state, PropertyListFormat::Binary); }

void describe(benchmark::State &state)
{
    const auto value = corpusValue(state);
    if (!value)
        return;
    for (auto _ : state) {
        QString text = value->description();
        benchmark::DoNotOptimize(text);
    }
}

void archiveRoundTrip(benchmark::State &state)
{
    const auto read = PropertyListSerialization::read(corpusFile(kFiles[0]));
    if (!read) {
        state.SkipWithError("corpus file not readable");
        return;
    }
    ArchivedNode node;
    node.objectValue = read.value.value;
    node.menuValue = PropertyList::integer(7, 'i');
    for (auto _ : state) {
        SequentialArchiveWriter writer;
        writer.encodeNodes({node});
        auto back = SequentialArchiveReader::readNodes(writer.data());
        benchmark::DoNotOptimize(back);
    }
}

} // namespace

BENCHMARK(readFile)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(writeXml)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(writeBinary)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(describe)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(archiveRoundTrip)->Unit(benchmark::kMillisecond);

