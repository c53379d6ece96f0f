#include "bench/compare/pluginRows.h"

#include "bench/compare/childProcess.h"
#include "bench/compare/stopwatch.h"
#include "bench/machine.h"
#include "bench/plugin.h"
#include "bench/require.h"
#include "tests/support/temporaryFolder.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>

namespace bench {

namespace {

constexpr std::size_t kModels = 200;
constexpr int kQuestions = 100'000;
constexpr int kTries = 10;
constexpr double kIntegerTarget = 30e-9;
constexpr double kTextTarget = 60e-9;

template <class Question>
double bestSeconds(Question question) {
    Best best;
    for (int attempt = 0; attempt < kTries; ++attempt)
        best.take(secondsOf([&] {
            for (int n = 0; n < kQuestions; ++n)
                require(question() == kTavManSuccess, "a question was refused");
        }));
    return best.value() / kQuestions;
}

Row timed(const std::string& what, double seconds, double target) {
    return {what, timeText(seconds), "at most " + timeText(target), target / seconds, 1, ""};
}

Row plain(const std::string& what, const std::string& figure) {
    return {what, figure, "", 0, 0, ""};
}

// Of the library as it is installed.
double strippedBytes(const std::string& library, const std::filesystem::path& folder) {
    const std::string copy = (folder / "stripped").string();
    runChild({"/usr/bin/strip", "-o", copy, library});
    return static_cast<double>(std::filesystem::file_size(copy));
}

std::size_t countOf(const std::string& text, const std::string& what) {
    std::size_t found = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++found;
    return found;
}

} // namespace

std::vector<Row> pluginRows(const std::vector<std::string>& dlls) {
    const testsupport::TemporaryFolder folder;
    Machine machine(testsupport::bigBus());
    machine.describe(kModels);
    std::vector<Row> rows;
    {
        const Plugin plugin;
        plugin.initializeOrThrow();
        std::int32_t value = 0;
        rows.push_back(timed("an integer attribute through the export", bestSeconds([&] {
                                 return plugin.getDeviceAttributeI32(0, kTavAttrPortCount, &value);
                             }),
                             kIntegerTarget));
        std::array<char, TAVPLUGIN_TEXT_SIZE> text{};
        rows.push_back(timed("a text attribute", bestSeconds([&] {
                                 return plugin.getDeviceAttributeUTF8(0, kTavAttrModelName,
                                                                      text.data());
                             }),
                             kTextTarget));
        plugin.finalize();
    }
    rows.push_back(
        plain("zotavpci.so, stripped", memoryText(strippedBytes(TAV_BENCH_PLUGIN, folder.path()))));
    const std::string relocations =
        runChild({"/usr/bin/readelf", "-rW", TAV_BENCH_PLUGIN}, true).output;
    rows.push_back(plain("  relocations at its start",
                         std::to_string(countOf(relocations, "R_X86_64_")) + ", of them " +
                             std::to_string(countOf(relocations, "R_X86_64_RELATIVE")) +
                             " relative"));
    const std::string libraries =
        runChild({"/usr/bin/readelf", "-dW", TAV_BENCH_PLUGIN}, true).output;
    rows.push_back(plain("  libraries it needs", std::to_string(countOf(libraries, "(NEEDED)"))));
    for (const std::string& dll : dlls)
        rows.push_back(plain(dll, memoryText(strippedBytes(dll, folder.path()))));
    const std::string host = runChild({TAV_BENCH_INITIALIZE_ONCE}, true).output;
    double resident = 0;
    double loaded = 0;
    double before = 0;
    double heap = 0;
    require(std::sscanf(host.c_str(), "%*f %*f %*u %lf %lf %lf %lf", &resident, &loaded, &before,
                        &heap) == 4,
            "no figures: " + host);
    rows.push_back(plain("a host after initialize, resident memory", memoryText(resident)));
    rows.push_back(plain("  before it loaded the plug-in", memoryText(before)));
    rows.push_back(plain("  by loading it", memoryText(loaded - before)));
    rows.push_back(plain("  by initialize", memoryText(resident - loaded)));
    rows.push_back(plain("  of that in use on the heap", memoryText(heap)));
    return rows;
}

} // namespace bench
