// Reading the largest bus from each of its sources, beside one pass over the dump's bytes.
#include "bench/lineEnds.h"
#include "bench/require.h"
#include "pcibus/dump.h"
#include "pcibus/sysfs.h"
#include "tests/support/busBuilder.h"
#include "tests/support/temporaryFolder.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace {

constexpr std::size_t kFunctions = 1750;

void count(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void requireWhole(const pcibus::Bus& bus) {
    bench::require(bus.functions().size() == kFunctions, "not every function was read");
}

// The bytes of each function that lspci -x, -xxx and -xxxx print.
void DumpParse(benchmark::State& state) {
    const std::string text = testsupport::bigBus().dump(
        {.bytes = static_cast<std::size_t>(state.range(0)), .domain = {}});
    for (auto _ : state)
        requireWhole(pcibus::parseDump(text, "dump"));
    count(state, text.size());
}

// The same from a file in the system's cache.
void DumpRead(benchmark::State& state) {
    const testsupport::TemporaryFolder folder;
    const std::string text = testsupport::bigBus().dump();
    const auto file = folder.file("bus.dump", text);
    for (auto _ : state)
        requireWhole(pcibus::readDump(file));
    count(state, text.size());
}

void DumpMemchr(benchmark::State& state) {
    const std::string text = testsupport::bigBus().dump();
    for (auto _ : state)
        benchmark::DoNotOptimize(bench::countLineEnds(text));
    count(state, text.size());
}

void SysfsRead(benchmark::State& state) {
    const testsupport::TemporaryFolder folder;
    testsupport::bigBus().writeSysfs(folder.path());
    for (auto _ : state)
        requireWhole(pcibus::readSysfs(folder.path()));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kFunctions));
}

BENCHMARK(DumpParse)->Arg(64)->Arg(256)->Arg(4096)->Unit(benchmark::kMicrosecond);
BENCHMARK(DumpRead)->Unit(benchmark::kMicrosecond);
BENCHMARK(DumpMemchr)->Unit(benchmark::kMicrosecond);
BENCHMARK(SysfsRead)->Unit(benchmark::kMicrosecond);

} // namespace
