// How the first initialize of a process grows with each of its inputs. What grows in proportion has
// a processor time per item, "each_s", that falls towards a constant; what grows faster has one
// that rises. Every iteration is a new process and gives every device a new name.
#include "bench/machine.h"
#include "bench/require.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <string>

namespace {

using testsupport::BusBuilder;

std::size_t size(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

void run(benchmark::State& state, const bench::Machine& machine, std::size_t devices) {
    double processorSeconds = 0;
    for (auto _ : state) {
        machine.forgetNewNames();
        const bench::Machine::Result result = machine.initializeOnce();
        bench::require(result.devices == devices, "found " + std::to_string(result.devices) +
                                                      " devices, not " + std::to_string(devices));
        state.SetIterationTime(result.seconds);
        processorSeconds += result.processorSeconds;
    }
    using benchmark::Counter;
    state.counters["processor_s"] = Counter(processorSeconds, Counter::kAvgIterations);
    if (state.range(0) > 0)
        state.counters["each_s"] = Counter(processorSeconds / static_cast<double>(state.range(0)),
                                           Counter::kAvgIterations);
}

// Description files, a quarter of which match as far as there are devices on the bus.
void InitializeByModels(benchmark::State& state) {
    bench::Machine machine(testsupport::bigBus());
    machine.describe(size(state));
    run(state, machine, machine.devices());
}

// Bridges that are not configured, so that there may be more of them than there are bus numbers;
// the first one is the one device.
void InitializeByBridges(benchmark::State& state) {
    constexpr std::size_t kFunctionsOfBus = 256;
    std::string dump;
    for (std::size_t bridge = 0; bridge < size(state); ++bridge) {
        char text[512];
        const std::size_t place = bridge % kFunctionsOfBus;
        std::snprintf(text, sizeof text,
                      "%02zx:%02zx.%zx 0604: 10b5:%04x\n"
                      "00: b5 10 %02x 87 00 00 00 00 00 00 04 06 00 00 01 00\n"
                      "10: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
                      "20: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
                      "30: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n\n",
                      bridge / kFunctionsOfBus, place / 8, place % 8,
                      bridge == 0 ? 0x8749U : 0x8748U, bridge == 0 ? 0x49U : 0x48U);
        dump += text;
    }
    bench::Machine machine(dump);
    machine.describe("[UpstreamTAV]\nModel = Box\nDeviceCategory = PCI\nInternalBridges = \"\"\n"
                     "ConnectorLabels = HOST\nDownstreamPorts = \"\"\nHasUpstreamPort = 1\n"
                     "[Anchor]\nPciHeaderType = 1\nVid = 10B5\nPid = 8749\nSsVid = 0\n"
                     "SsPid = 0\n[UpstreamPort]\nIDsSameAs = Anchor\n"
                     "TraversalMapFromAnchor = \"\"\n");
    run(state, machine, 1);
}

// Equal bridges that are one device each, all of one model.
void InitializeByBridgeDevices(benchmark::State& state) {
    constexpr unsigned kDevicesOfBus = 32;
    BusBuilder bus;
    auto parent = bus.rootPort(0, 1, 0, {0x8086, 0xA110}, 8, 3);
    for (unsigned device = 0; device < size(state); ++device) {
        if (device != 0 && device % kDevicesOfBus == 0)
            parent = bus.rootPort(0, 1 + device / kDevicesOfBus, 0, {0x8086, 0xA110}, 8, 3);
        bus.bridge(parent, device % kDevicesOfBus, 0, {0x10B5, 0x8749, 0x1234, 0x0300}, 4, 2);
    }
    bench::Machine machine(bus);
    machine.describe("[UpstreamTAV]\nModel = Box\nDeviceCategory = PCI\nInternalBridges = \"\"\n"
                     "ConnectorLabels = HOST\nDownstreamPorts = \"\"\nHasUpstreamPort = 1\n"
                     "[Anchor]\nPciHeaderType = 1\nVid = 10B5\nPid = 8749\nSsVid = 1234\n"
                     "SsPid = 0300\n[UpstreamPort]\nIDsSameAs = Anchor\n"
                     "TraversalMapFromAnchor = \"\"\n");
    run(state, machine, size(state));
}

// Equal functions that are one device each, all of one model.
void InitializeByDevices(benchmark::State& state) {
    constexpr unsigned kFunctionsOfBus = 256;
    BusBuilder bus;
    BusBuilder::Node parent;
    for (unsigned device = 0; device < size(state); ++device) {
        if (device % kFunctionsOfBus == 0)
            parent = bus.rootPort(0, 1 + device / kFunctionsOfBus, 0,
                                  {0x10B5, 0x8749, 0x1234, 0x0200}, 8, 3);
        bus.endpoint(parent, device / 8 % 32, device % 8, {0x1172, 0xE000, 0x1234, 0x0001});
    }
    bench::Machine machine(bus);
    machine.describe(bench::cardDescription(0, 0, 1));
    run(state, machine, size(state));
}

// Names of other devices in the name file, on the largest bus with 50 devices.
void InitializeByNames(benchmark::State& state) {
    bench::Machine machine(testsupport::bigBus());
    machine.describe(200);
    machine.remember(size(state));
    run(state, machine, machine.devices());
}

void sizes(benchmark::internal::Benchmark* benchmark, std::initializer_list<std::int64_t> list) {
    for (const std::int64_t size : list)
        benchmark->Arg(size);
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(InitializeByModels)->Apply([](auto* benchmark) {
    sizes(benchmark, {1, 10, 50, 100, 200, 500, 1'000, 2'000, 5'000, 10'000, 20'000});
});
BENCHMARK(InitializeByBridges)->Apply([](auto* benchmark) {
    sizes(benchmark, {10, 100, 1'000, 3'000, 10'000, 30'000, 60'000});
});
BENCHMARK(InitializeByBridgeDevices)->Apply([](auto* benchmark) {
    sizes(benchmark, {40, 80, 120, 160, 200, 240});
});
BENCHMARK(InitializeByDevices)->Apply([](auto* benchmark) {
    sizes(benchmark, {1, 10, 100, 250, 500, 1'000, 2'000, 4'000});
});
BENCHMARK(InitializeByNames)->Apply([](auto* benchmark) {
    sizes(benchmark, {0, 100, 1'000, 3'000, 10'000, 30'000, 100'000, 300'000, 1'000'000});
});

} // namespace
