// How the INI engine's loads and changes grow with the file. The last line of each series gives the
// growth that fits best.
#include "bench/iniTexts.h"
#include "bench/require.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "pxidrivertools/ini/iniLookup.h"
#include "pxidrivertools/ini/iniUpdate.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace {

namespace ini = nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

std::int32_t readText(void* context, char* buffer, std::uint32_t size) {
    std::string_view& rest = *static_cast<std::string_view*>(context);
    const std::size_t given = std::min<std::size_t>(size, rest.size());
    std::memcpy(buffer, rest.data(), given);
    rest.remove_prefix(given);
    return static_cast<std::int32_t>(given);
}

ini::IniFileOwner load(std::string_view text, bool caseSensitive) {
    ini::IniFileOwner file(ini::createIniFile());
    file->caseSensitive = caseSensitive;
    bench::require(ini::loadIni(*file, {readText, &text}) == ini::kIniDone, "not loaded");
    return file;
}

void loadTimes(benchmark::State& state, const std::string& text, bool caseSensitive = true) {
    for (auto _ : state)
        load(text, caseSensitive);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.SetComplexityN(state.range(0));
}

std::size_t size(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

void IniLoadBySections(benchmark::State& state) {
    loadTimes(state, bench::iniText({size(state), 2, 11}));
}
void IniLoadBySectionsAnyCase(benchmark::State& state) {
    loadTimes(state, bench::iniText({size(state), 2, 11}), false);
}
void IniLoadByKeys(benchmark::State& state) {
    loadTimes(state, bench::iniText({1, size(state), 11}));
}

// One name over and over: each section continues the first one, each key replaces the one before.
void IniLoadByDuplicates(benchmark::State& state) {
    std::string text;
    for (std::size_t i = 0; i < size(state); ++i)
        text += "[Section]\nKey = value\n";
    loadTimes(state, text);
}

// One value in many pieces.
void IniLoadByPieces(benchmark::State& state) {
    std::string text = "[Section]\n";
    for (std::size_t i = 1; i <= size(state); ++i)
        text += "Key Line" + std::to_string(i) + " = piece\n";
    loadTimes(state, text);
}

// New sections, as many as there are names to remember.
void IniStoreBySections(benchmark::State& state) {
    for (auto _ : state) {
        const ini::IniFileOwner file(ini::createIniFile());
        for (std::size_t i = 0; i < size(state); ++i)
            ini::setValue(*file, bench::sectionName(i), "Key", "value", ini::kNoQuote);
        bench::require(ini::sectionCount(*file) == size(state), "not everything was stored");
    }
    state.SetComplexityN(state.range(0));
}

template <class Benchmark>
void sweep(Benchmark* benchmark) {
    for (const int sections : {1'000, 3'000, 10'000, 30'000, 100'000, 200'000, 500'000, 1'000'000})
        benchmark->Arg(sections);
    benchmark->Unit(benchmark::kMillisecond)->Complexity();
}

BENCHMARK(IniLoadBySections)->Apply(sweep);
BENCHMARK(IniLoadBySectionsAnyCase)->Apply(sweep);
BENCHMARK(IniLoadByKeys)->Apply(sweep);
BENCHMARK(IniLoadByDuplicates)->Apply(sweep);
BENCHMARK(IniLoadByPieces)->Apply(sweep);
BENCHMARK(IniStoreBySections)->Apply(sweep);

} // namespace
