// One attribute through the exported functions: what a host pays for each question.
#include "bench/machine.h"
#include "bench/plugin.h"
#include "bench/require.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <string>

namespace {

constexpr std::size_t kModels = 200;

// The plug-in with the devices of the largest bus.
class Loaded {
public:
    Loaded() : machine_(testsupport::bigBus()) {
        machine_.describe(kModels);
        plugin.initializeOrThrow();
        devices = plugin.deviceCount();
        bench::require(devices == machine_.devices(), "not every described device was found");
    }
    ~Loaded() { plugin.finalize(); }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;

private:
    bench::Machine machine_;

public:
    const bench::Plugin plugin;
    std::uint32_t devices = 0;
};

void AttributeInteger(benchmark::State& state) {
    const Loaded loaded;
    std::uint32_t device = 0;
    for (auto _ : state) {
        std::int32_t value = 0;
        const std::int32_t status =
            loaded.plugin.getDeviceAttributeI32(device, kTavAttrPortCount, &value);
        benchmark::DoNotOptimize(value);
        if (status != kTavManSuccess)
            bench::require(false, "integer attribute: status " + std::to_string(status));
        if (++device == loaded.devices)
            device = 0;
    }
}

void AttributeText(benchmark::State& state) {
    const Loaded loaded;
    std::uint32_t device = 0;
    std::array<char, TAVPLUGIN_TEXT_SIZE> text{};
    for (auto _ : state) {
        const std::int32_t status =
            loaded.plugin.getDeviceAttributeUTF8(device, kTavAttrTerminalName, text.data());
        benchmark::DoNotOptimize(text);
        if (status != kTavManSuccess)
            bench::require(false, "text attribute: status " + std::to_string(status));
        if (++device == loaded.devices)
            device = 0;
    }
}

// What a question costs whose answer is an error.
void AttributeNotSupported(benchmark::State& state) {
    const Loaded loaded;
    std::int32_t value = 0;
    for (auto _ : state) {
        const std::int32_t status =
            loaded.plugin.getDeviceAttributeI32(0, kTavAttrLinkWidthPerLabel, &value);
        if (status != kTavManErrAttributeNotSupported)
            bench::require(false, "unsupported attribute: status " + std::to_string(status));
    }
}

BENCHMARK(AttributeInteger);
BENCHMARK(AttributeText);
BENCHMARK(AttributeNotSupported);

} // namespace
