// The plug-in's initialize as a whole, on the largest bus with 200 description files of which 50
// match.
#include "bench/machine.h"
#include "bench/plugin.h"
#include "bench/require.h"
#include "tests/support/command.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <string>

namespace {

constexpr std::size_t kModels = 200;

void describeBig(bench::Machine& machine) {
    machine.describe(kModels);
    bench::require(machine.devices() == 50, "50 models are to match");
}

void requireDevices(const bench::Machine& machine, std::size_t devices) {
    bench::require(devices == machine.devices(), "found " + std::to_string(devices) +
                                                     " devices, not " +
                                                     std::to_string(machine.devices()));
}

void initializeFirst(benchmark::State& state, bool remembered) {
    bench::Machine machine(testsupport::bigBus());
    describeBig(machine);
    if (remembered)
        requireDevices(machine, machine.initializeOnce().devices);
    else
        machine.remember(0);
    double processorSeconds = 0;
    for (auto _ : state) {
        if (!remembered)
            machine.forgetNewNames();
        const bench::Machine::Result run = machine.initializeOnce();
        requireDevices(machine, run.devices);
        state.SetIterationTime(run.seconds);
        processorSeconds += run.processorSeconds;
    }
    state.counters["processor_s"] =
        benchmark::Counter(processorSeconds, benchmark::Counter::kAvgIterations);
}

// The first call of a process, which reads the descriptions: every iteration is a new process. All
// devices get new names, or have theirs from the run before.
void InitializeFirstNewNames(benchmark::State& state) {
    initializeFirst(state, false);
}
void InitializeFirstKnownNames(benchmark::State& state) {
    initializeFirst(state, true);
}

// Every further call of a process, after a finalize: the descriptions are there already.
void InitializeAgain(benchmark::State& state) {
    bench::Machine machine(testsupport::bigBus());
    describeBig(machine);
    const bench::Plugin plugin;
    plugin.initializeOrThrow();
    for (auto _ : state) {
        plugin.finalize();
        plugin.initializeOrThrow();
    }
    requireDevices(machine, plugin.deviceCount());
    plugin.finalize();
}

// The whole process, as a user sees it: start, initialize, all attributes of all devices, the
// table.
void TavctlList(benchmark::State& state) {
    using Clock = std::chrono::steady_clock;
    bench::Machine machine(testsupport::bigBus());
    describeBig(machine);
    const std::string command = std::string("exec '") + TAV_BENCH_TAVCTL + "' list --json";
    for (auto _ : state) {
        const auto start = Clock::now();
        const testsupport::CommandResult run = testsupport::runCommand(command);
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        bench::require(run.exitStatus == 0, run.output);
        std::size_t devices = 0;
        for (std::size_t at = run.output.find("\"index\""); at != std::string::npos;
             at = run.output.find("\"index\"", at + 1))
            ++devices;
        requireDevices(machine, devices);
    }
}

BENCHMARK(InitializeFirstNewNames)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(InitializeFirstKnownNames)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(InitializeAgain)->Unit(benchmark::kMillisecond);
BENCHMARK(TavctlList)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
