// How links run on a live bus, as an ordinary user sees it.
#include "tests/support/temporaryFolder.h"
#include "tests/tavctl/bus/linkMachine.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using namespace tavctl;
using tavctltest::LinkMachine;
using testsupport::BusBuilder;

// What a port is the capability says. An ordinary user's view of a live bus does not have it.
TEST(LiveLink, IsKnownFromSysfsToAnOrdinaryUser) {
    LinkMachine machine;
    machine.bus.setRunningLink(machine.root, 4, 3);
    machine.bus.setRunningLink(machine.down, 4, 2);
    const testsupport::TemporaryFolder folder;
    machine.bus.writeSysfs(folder.path(), testsupport::kHeaderBytes);
    const WholeBus whole = readWholeBus(folder.path().string());
    EXPECT_EQ(machine.below(whole, machine.root), "x4 of x8 8 GT/s");
    EXPECT_EQ(machine.below(whole, machine.up), "");
    EXPECT_EQ(machine.below(whole, machine.down), "x4 5 GT/s");
}

// As ports that leave their capabilities empty and run all the same.
TEST(LiveLink, IsKnownToAnOrdinaryUserOfPortsThatTellNoMost) {
    LinkMachine machine;
    machine.bus.setRunningLink(machine.down, 1, 1);
    const testsupport::TemporaryFolder folder;
    machine.bus.writeSysfs(folder.path(), testsupport::kHeaderBytes);
    for (const BusBuilder::Node port : {machine.down, machine.empty}) {
        const auto files =
            folder.path() / "bus/pci/devices" / ("0000:" + machine.bus.address(port));
        std::ofstream(files / "max_link_width") << "0\n";
        std::ofstream(files / "max_link_speed") << "Unknown\n";
    }
    const WholeBus whole = readWholeBus(folder.path().string());
    EXPECT_EQ(machine.below(whole, machine.up), "");
    EXPECT_EQ(machine.below(whole, machine.down), "x1 2.5 GT/s");
}

// Two questions of one command are not to be answered differently.
TEST(LiveLink, IsAsItWasWhenItWasFirstAskedFor) {
    LinkMachine machine;
    machine.bus.setRunningLink(machine.root, 4, 3);
    const testsupport::TemporaryFolder folder;
    machine.bus.writeSysfs(folder.path(), testsupport::kHeaderBytes);
    const WholeBus whole = readWholeBus(folder.path().string());
    EXPECT_EQ(machine.below(whole, machine.root), "x4 of x8 8 GT/s");
    const auto file = folder.path() / "bus/pci/devices" /
                      ("0000:" + machine.bus.address(machine.root)) / "current_link_width";
    ASSERT_TRUE(std::filesystem::exists(file));
    std::ofstream(file) << "2\n";
    EXPECT_EQ(machine.below(whole, machine.root), "x4 of x8 8 GT/s");
    EXPECT_EQ(machine.below(readWholeBus(folder.path().string()), machine.root), "x2 of x8 8 GT/s");
}

} // namespace
