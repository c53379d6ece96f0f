// INI files through the class that the plug-in uses: opening, saving, and finding values.
#include "bench/changedFile.h"
#include "bench/iniTexts.h"
#include "bench/lineEnds.h"
#include "bench/machine.h"
#include "bench/require.h"
#include "pxidrivertools/cIniFile.h"
#include "pxidrivertools/ini/iniLoad.h"
#include "pxidrivertools/ini/iniLookup.h"
#include "tests/support/collidingNames.h"
#include "tests/support/temporaryFolder.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

namespace ini = nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;
using bench::IniShape;

void count(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void requireDone(const ini::tFixedStatus& status, const char* what) {
    bench::require(!status.failed(), what);
}

void open(ini::cIniFile& file, const std::filesystem::path& path) {
    ini::tFixedStatus status;
    file.open(path.c_str(), 0, status);
    requireDone(status, "the file cannot be opened");
}

void load(benchmark::State& state, const std::string& text) {
    const testsupport::TemporaryFolder folder;
    const auto path = folder.file("file.ini", text);
    for (auto _ : state) {
        ini::cIniFile file;
        open(file, path);
    }
    count(state, text.size());
}

void save(benchmark::State& state, const std::string& text) {
    const testsupport::TemporaryFolder folder;
    const auto path = folder.file("file.ini", text);
    ini::cIniFile file;
    open(file, path);
    for (auto _ : state) {
        state.PauseTiming();
        bench::changeFile(path);
        state.ResumeTiming();
        ini::tFixedStatus status;
        file.save(status);
        requireDone(status, "the file cannot be saved");
    }
    bench::requireSaved(path);
    count(state, std::filesystem::file_size(path));
}

void IniLoadDescription(benchmark::State& state) {
    load(state, bench::switchDescription(0, 0x0100));
}
void IniSaveDescription(benchmark::State& state) {
    save(state, bench::switchDescription(0, 0x0100));
}

void IniLoad(benchmark::State& state, const IniShape& shape) {
    load(state, bench::iniText(shape));
}
// As many sections of one key, with names like any others and with names that somebody has chosen
// to collide.
void IniLoadNames(benchmark::State& state, const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        text.append("[").append(name).append("]\nk=1\n");
    load(state, text);
}
constexpr std::size_t kNames = 80'000;
void IniLoadPlainNames(benchmark::State& state) {
    std::vector<std::string> names;
    for (std::size_t n = 0; n < kNames; ++n)
        names.push_back(std::to_string(1'000'000'000'000'000 + n)); // sixteen bytes
    IniLoadNames(state, names);
}
void IniLoadChosenNames(benchmark::State& state) {
    IniLoadNames(state, testsupport::collidingNames(kNames));
}

void IniSave(benchmark::State& state, const IniShape& shape) {
    save(state, bench::iniText(shape));
}

void IniMemchr(benchmark::State& state, const IniShape& shape) {
    const std::string text = bench::iniText(shape);
    for (auto _ : state)
        benchmark::DoNotOptimize(bench::countLineEnds(text));
    count(state, text.size());
}

// Names in random order, always the same.
struct Question {
    std::string section;
    std::string key;
};
std::vector<Question> questions(const IniShape& shape) {
    constexpr std::size_t kQuestions = 65'536;
    std::mt19937 random(1); // NOLINT(bugprone-random-generator-seed): the same ones in every run
    std::vector<Question> result;
    for (std::size_t i = 0; i < kQuestions; ++i)
        result.push_back(
            {bench::sectionName(random() % shape.sections), bench::keyName(random() % shape.keys)});
    return result;
}

ini::IniFileOwner loadEngine(const IniShape& shape, bool caseSensitive) {
    ini::IniFileOwner file(ini::createIniFile());
    file->caseSensitive = caseSensitive;
    const testsupport::TemporaryFolder folder;
    const auto path = folder.file("file.ini", bench::iniText(shape));
    const platform::Stream stream = platform::openStream(path.c_str(), "rb");
    bench::require(ini::loadIni(*file, stream.get()) == ini::kIniDone, "the file was not loaded");
    return file;
}

// A section by name, one that is not the current one as a rule.
void IniFindSection(benchmark::State& state, const IniShape& shape, bool caseSensitive) {
    const ini::IniFileOwner file = loadEngine(shape, caseSensitive);
    const std::vector<Question> names = questions(shape);
    std::size_t next = 0;
    for (auto _ : state) {
        if (ini::findSection(*file, names[next].section) == nullptr)
            bench::require(false, "a section was not found");
        next = (next + 1) % names.size();
    }
}

// A key by name, with its section where there are several.
void IniFindKey(benchmark::State& state, const IniShape& shape, bool caseSensitive) {
    const ini::IniFileOwner file = loadEngine(shape, caseSensitive);
    const std::vector<Question> names = questions(shape);
    std::size_t next = 0;
    for (auto _ : state) {
        ini::IniSection* const section = ini::findSection(*file, names[next].section);
        if (section == nullptr || ini::findKey(*file, *section, names[next].key) == nullptr)
            bench::require(false, "a key was not found");
        next = (next + 1) % names.size();
    }
}

using bench::kManySections;
using bench::kOneLargeSection;
using bench::kVeryManySections;

BENCHMARK(IniLoadDescription)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(IniLoad, 20000_sections, kManySections)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IniLoad, 200000_sections, kVeryManySections)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IniLoad, one_section, kOneLargeSection)->Unit(benchmark::kMillisecond);
BENCHMARK(IniLoadPlainNames)->Unit(benchmark::kMillisecond);
BENCHMARK(IniLoadChosenNames)->Unit(benchmark::kMillisecond);
BENCHMARK(IniSaveDescription)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(IniSave, 20000_sections, kManySections)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IniSave, 200000_sections, kVeryManySections)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IniSave, one_section, kOneLargeSection)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IniMemchr, 20000_sections, kManySections)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IniMemchr, 200000_sections, kVeryManySections)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IniMemchr, one_section, kOneLargeSection)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IniFindSection, exact_case, kVeryManySections, true);
BENCHMARK_CAPTURE(IniFindSection, any_case, kVeryManySections, false);
BENCHMARK_CAPTURE(IniFindKey, in_20000_sections_exact_case, kManySections, true);
BENCHMARK_CAPTURE(IniFindKey, in_20000_sections_any_case, kManySections, false);
BENCHMARK_CAPTURE(IniFindKey, in_one_section_exact_case, kOneLargeSection, true);
BENCHMARK_CAPTURE(IniFindKey, in_one_section_any_case, kOneLargeSection, false);

} // namespace
