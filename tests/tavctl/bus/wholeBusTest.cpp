// The machine as people see it: domains, CardBus bridges and links.
#include "tavctl/bus/wholeBus.h"

#include "tavctl/bus/linkState.h"
#include "tests/support/busBuilder.h"
#include "tests/support/fileFolder.h"
#include "tests/tavctl/bus/linkMachine.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using tavctltest::LinkMachine;
using testsupport::BusBuilder;

WholeBus wholeOfText(const std::string& dump) {
    const testsupport::FileFolder folder;
    return readWholeBus(folder.write("machine", dump));
}

TEST(LinkState, IsMeasuredByTheWeakerEnd) {
    LinkMachine machine;
    machine.bus.setRunningLink(machine.root, 8, 3);
    machine.bus.setRunningLink(machine.down, 2, 1);
    const WholeBus whole = wholeOfText(machine.bus.dump());
    EXPECT_EQ(machine.below(whole, machine.root), "x8 8 GT/s");
    EXPECT_EQ(machine.below(whole, machine.down), "x2 of x4 2.5 of 5 GT/s");
    const auto& down = *whole.main().bus().find(machine.bus.handle(machine.down));
    EXPECT_TRUE(linkBelow(whole.main(), down).isDegraded());
    const auto& card = *whole.main().bus().find(machine.bus.handle(machine.card));
    EXPECT_EQ(linkText(linkAbove(whole.main(), card)), "x2 of x4 2.5 of 5 GT/s");
}

// The link of an upstream port is the one above it; behind an empty port there is none.
TEST(LinkState, IsTheOneBelowAPortAlone) {
    LinkMachine machine;
    const WholeBus whole = wholeOfText(machine.bus.dump());
    EXPECT_EQ(machine.below(whole, machine.up), "");
    EXPECT_EQ(machine.below(whole, machine.card), "");
    EXPECT_EQ(machine.below(whole, machine.toPci), "");
    const auto& root = *whole.main().bus().find(machine.bus.handle(machine.root));
    EXPECT_FALSE(linkAbove(whole.main(), root).isKnown());
}

TEST(LinkState, OfAHeaderAloneIsNotKnown) {
    LinkMachine machine;
    const WholeBus whole = wholeOfText(machine.bus.dump({.bytes = testsupport::kHeaderBytes}));
    EXPECT_EQ(machine.below(whole, machine.root), "");
}

TEST(LinkSpeed, HasANameFromTheFirstCodeToTheLast) {
    EXPECT_EQ(linkSpeedName(0), "speed code 0");
    EXPECT_EQ(linkSpeedName(1), "2.5 GT/s");
    EXPECT_EQ(linkSpeedName(6), "64 GT/s");
    EXPECT_EQ(linkSpeedName(7), "speed code 7");
}

TEST(WholeBus, HasEveryDomainAndZeroFirst) {
    BusBuilder machine;
    machine.rootEndpoint(0, 3, 0, {0x8086, 0x1234, 0, 0});
    const WholeBus whole = wholeOfText(machine.dump({.domain = 0x10000}));
    ASSERT_EQ(whole.domains.size(), 2U);
    EXPECT_EQ(whole.main().number(), 0U);
    EXPECT_TRUE(whole.main().bus().functions().empty());
    EXPECT_EQ(whole.domains[1].number(), 0x10000U);
    EXPECT_EQ(whole.domains[1].bus().functions().size(), 1U);
    EXPECT_EQ(whole.leftOut->otherDomains, 1U);
    EXPECT_TRUE(whole.searched->functions().empty());
}

// What is below a CardBus bridge is below it here, and on a root bus for the plug-in.
TEST(WholeBus, CardBusBridgesAreBridges) {
    BusBuilder machine;
    const auto bridge = machine.rootPort(0, 3, 0, {0x104C, 0xAC56, 0, 0}, 0);
    const auto card = machine.endpoint(bridge, 0, 0, {0x10EC, 0x8139, 0, 0}, 0);
    machine.poke(bridge, 0x0E, {2});
    const WholeBus whole = wholeOfText(machine.dump());
    const std::uint8_t bus = machine.bus(card);
    ASSERT_NE(whole.main().bus().parentOfBus(bus), nullptr);
    EXPECT_EQ(whole.main().bus().parentOfBus(bus)->handle(), machine.handle(bridge));
    EXPECT_EQ(whole.searched->parentOfBus(bus), nullptr);
    EXPECT_THAT(whole.main().bus().rootBuses(), testing::ElementsAre(0));
    EXPECT_THAT(whole.searched->rootBuses(), testing::ElementsAre(0, bus));
}

// Only the plug-in's own domain is refused for it.
TEST(WholeBus, CycleOfAnotherDomainLeavesEveryFunctionOnARootBus) {
    BusBuilder machine;
    const auto above = machine.rootPort(1, 0, 0, {0x8086, 1, 0, 0});
    const auto below = machine.bridge(above, 0, 0, {0x8086, 2, 0, 0});
    machine.setSecondaryBus(below, 1);
    const WholeBus whole = wholeOfText(machine.dump({.domain = 1}));
    ASSERT_EQ(whole.domains.size(), 2U);
    EXPECT_THAT(whole.domains[1].bus().rootBuses(), testing::ElementsAre(1, 2));
}

} // namespace
