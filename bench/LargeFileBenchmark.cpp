// Reading and writing a 100 MB property list, in each format, in process: the
// generated music library (see GeneratedMusicLibrary.h), read from memory and
// written to memory, so the codecs alone are timed. Goals, as ratios to the
// libplist anchor run in the same minute (bench/large-files.sh runs both):
// reading XML and binary in a third of libplist's time; writing XML in 0.3 s
// and binary in 0.4 s. Counters: bytes per second of the file's size, and the
// heap the value read holds as a multiple of the file (value_per_file).
#include "platform/PropertyListSerialization.h"

#include "GeneratedMusicLibrary.h"
#include "ProcessMemory.h"

#include <benchmark/benchmark.h>

namespace {

struct Fixture {
    Fixture()
    {
        value = GeneratedMusicLibrary::value();
        xml = PropertyListSerialization::write(value, PropertyListFormat::Xml);
        binary = PropertyListSerialization::write(value, PropertyListFormat::Binary);
    }

    PropertyList value;
    QByteArray xml;
    QByteArray binary;
};

const Fixture &fixture()
{
    static const Fixture made;
    return made;
}

void readFormat(benchmark::State &state, const QByteArray &bytes)
{
    qint64 valueBytes = 0;
    for (auto _ : state) {
        const qint64 before = ProcessMemory::heapBytesInUse();
        auto result = PropertyListSerialization::read(bytes);
        valueBytes = ProcessMemory::heapBytesInUse() - before;
        if (!result) {
            state.SkipWithError(qPrintable(result.errorText()));
            return;
        }
        benchmark::DoNotOptimize(result);
        state.PauseTiming(); // freeing the value is not reading it
        result = {};
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * bytes.size());
    state.counters["value_per_file"] = double(valueBytes) / double(bytes.size());
}

void readXml(benchmark::State &state) { readFormat(state, fixture().xml); }
void readBinary(benchmark::State &state) { readFormat(state, fixture().binary); }

void writeFormat(benchmark::State &state, PropertyListFormat format, const QByteArray &reference)
{
    for (auto _ : state) {
        QByteArray bytes = PropertyListSerialization::write(fixture().value, format);
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * reference.size());
}

void writeXml(benchmark::State &state) { writeFormat(state, PropertyListFormat::Xml, fixture().xml); }
void writeBinary(benchmark::State &state) { writeFormat(state, PropertyListFormat::Binary, fixture().binary); }

// What freeing a value read from the XML file costs: a document closed, a
// command finished.
void release(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto result = PropertyListSerialization::read(fixture().xml);
        state.ResumeTiming();
        result = {};
    }
}

} // namespace

BENCHMARK(readXml)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(readBinary)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(writeXml)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(writeBinary)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(release)->Unit(benchmark::kMillisecond)->Iterations(3);
