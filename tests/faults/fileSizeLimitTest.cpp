// A host that may write small files only, and does nothing about the signal that ends a process for
// more: it lives, and its names do.
#include "tests/faults/faultMachine.h"
#include "tests/faults/pluginCycle.h"
#include "tests/faults/tracedRun.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

namespace {

using testfaults::CycleReport;
using testfaults::FaultMachine;
using testfaults::Plugin;

constexpr std::int32_t kSaveFailed = -313319;

TEST(FileSizeLimit, EndsNoHostAndCostsNoName) {
    const FaultMachine machine;
    machine.reset(FaultMachine::Names::none);
    testfaults::warmUp();
    machine.reset(FaultMachine::Names::some);
    const Plugin plugin;
    const testfaults::SharedValue<CycleReport> report;
    const auto liveWithin = [&](rlim_t limit) {
        return testfaults::runInChild([&] {
            std::signal(SIGXFSZ, SIG_DFL);
            const struct rlimit size = {limit, limit};
            setrlimit(RLIMIT_FSIZE, &size);
            testfaults::runCycle(plugin, *report);
            return 0;
        });
    };
    const std::string before = FaultMachine::textOf(FaultMachine::Names::some);
    for (const rlim_t limit : {rlim_t{0}, rlim_t{1}, rlim_t{before.size()}}) {
        EXPECT_EQ(liveWithin(limit), 0) << "ended by a signal";
        EXPECT_EQ(report->status, kSaveFailed);
        EXPECT_EQ(machine.names(), before);
    }
    EXPECT_EQ(liveWithin(100000), 0);
    EXPECT_EQ(report->status, 0);
    EXPECT_EQ(report->devices, FaultMachine::kDevices);
}

} // namespace
