// How the first initialize of a process grows with each of its inputs. What grows in proportion has
// a processor time per item, "each_s", that falls towards a constant; what grows faster has one
// that rises. Every iteration is a new process and gives every device a new name.
#include "bench/machine.h"
#include "bench/require.h"

#include <benchmark/benchmark.h>

#include <cstdint>
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

// Description files, a quarter of which match.
void InitializeByModels(benchmark::State& state) {
    bench::Machine machine(testsupport::bigBus());
    machine.describe(size(state));
    run(state, machine, machine.devices());
}

// Switches of 25 bridges each, by number of bridges, up to what bus numbers allow.
void InitializeByBridges(benchmark::State& state) {
    constexpr unsigned kPorts = 23;
    BusBuilder bus;
    for (unsigned box = 0; box < size(state) / (kPorts + 2); ++box) {
        const auto root = bus.rootPort(0, box + 1, 0, {0x8086, 0xA110}, 8, 3);
        const auto up = bus.bridge(root, 0, 0, {0x10B5, 0x8749, 0x1234, 0x0100}, 8, 3);
        for (unsigned port = 0; port < kPorts; ++port)
            bus.bridge(up, port, 0, {0x10B5, 0x8749, 0x1234, 0x0200}, 4, 2);
    }
    bench::Machine machine(bus);
    machine.describe(bench::switchDescription(0, 0x0100));
    run(state, machine, size(state) / (kPorts + 2));
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

BENCHMARK(InitializeByModels)
    ->RangeMultiplier(2)
    ->Range(50, 1600)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(InitializeByBridges)
    ->DenseRange(50, 250, 50)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(InitializeByBridgeDevices)
    ->DenseRange(40, 240, 40)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(InitializeByDevices)
    ->RangeMultiplier(2)
    ->Range(256, 4096)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(InitializeByNames)
    ->Arg(0)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(50'000)
    ->Arg(100'000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
