// The drawing of the whole machine: every bridge and every function.
#include "tavctl/draw/machineDrawing.h"

#include "tests/tavctl/match/treeFixture.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using tavctltest::TreeFixture;
using testing::HasSubstr;
using testing::Not;

PciNames machineNames() {
    return PciNames::parse("1172  Logic\n\te001  Card\n8086  Maker\n\t29c0  Host Bridge\n"
                           "\t3421  Second Port\n");
}

std::string machineDot(const TreeFixture& fixture, const std::vector<PlacedDevice>& placed) {
    const BusTreeView view(fixture.domain(), placed);
    return machineAsDot({&view, 1}, machineNames(), "bus");
}

TEST(MachineDrawing, JoinsTheBoxesOfBridgesToThoseOfDevices) {
    const TreeFixture fixture;
    const std::string dot = machineDot(fixture, fixture.placed());
    EXPECT_THAT(dot, HasSubstr("<B>root bus 00</B>"));
    EXPECT_THAT(dot, HasSubstr(">Host Bridge<"));
    EXPECT_THAT(dot, HasSubstr(">bridge to bus 01-05<"));
    EXPECT_THAT(dot, HasSubstr("  b0:r1:e -> b1:h:w\n"));
    EXPECT_THAT(dot, HasSubstr("<B>00:04.0</B>&#160;&#160;&#160;"));
    EXPECT_THAT(dot, HasSubstr("  b1:r0:e -> d0:h:w\n"));
    EXPECT_THAT(dot, HasSubstr("<B>root bus 40</B>"));
    EXPECT_THAT(dot, HasSubstr(">Second Port<"));
    EXPECT_THAT(dot, HasSubstr(">Card</TD>")); // alone in its connector
    EXPECT_THAT(dot, Not(HasSubstr("b3")));
}

TEST(MachineDrawing, HasEveryFunctionOfAMachineThatNobodyDescribed) {
    TreeFixture fixture;
    const std::string dot = machineDot(fixture, {});
    EXPECT_THAT(dot, HasSubstr("no described device is present"));
    for (const pcibus::PciFunction& function : fixture.bus.functions())
        EXPECT_THAT(dot, HasSubstr(pcibus::addressText(function) + "<"));
    EXPECT_THAT(dot, Not(HasSubstr("d0")));
}

// More than one function, or a bridge that leads on.
TEST(MachineDrawing, WhatIsMoreThanALineInAConnectorHasABox) {
    TreeFixture fixture;
    fixture.machine.endpoint(fixture.portA, 0, 1, {0x1172, 0xE002, 0, 0});
    const auto bridge = fixture.machine.bridge(fixture.portB, 0, 0, {0x10B5, 0x8111, 0, 0});
    fixture.machine.endpoint(bridge, 3, 0, {0x1172, 0xE003, 0, 0});
    fixture.bus = pcibus::parseDump(fixture.machine.dump(), "machine");
    const std::string dot = machineDot(fixture, fixture.placed());
    EXPECT_THAT(dot, HasSubstr("  d0:p0:e -> b2:h:w\n"));
    EXPECT_THAT(dot, HasSubstr("03:00.1<"));
    EXPECT_THAT(dot, HasSubstr("  d0:p1:e -> b3:h:w\n"));
    EXPECT_THAT(dot, HasSubstr("  b3:r0:e -> b4:h:w\n"));
    EXPECT_THAT(dot, HasSubstr("05:03.0<"));
}

TEST(MachineDrawing, DeviceInAConnectorIsJoinedToItOrToTheBridgeBetween) {
    TreeFixture fixture;
    ListedDevice card;
    card.model = "Card";
    card.category = 10;
    card.bus = 3;
    card.terminalName = "CARD1";
    fixture.listed.push_back(card);
    const auto placed = placeDevices(fixture.listed, {}, fixture.bus);
    const std::string direct = machineDot(fixture, placed);
    EXPECT_THAT(direct, HasSubstr("  d0:p0:e -> d1:h:w\n"));
    fixture.machine.endpoint(fixture.portA, 1, 0, {0x1172, 0xE002, 0, 0});
    fixture.bus = pcibus::parseDump(fixture.machine.dump(), "machine");
    const auto again = placeDevices(fixture.listed, {}, fixture.bus);
    const std::string between = machineDot(fixture, again);
    EXPECT_THAT(between, HasSubstr("  d0:p0:e -> b2:h:w\n"));
    EXPECT_THAT(between, HasSubstr("  b2:r0:e -> d1:h:w\n"));
}

// Functions on a device's own buses that its description does not know.
TEST(MachineDrawing, DeviceTellsWhatElseIsInsideIt) {
    TreeFixture fixture;
    fixture.machine.endpoint(fixture.up, 7, 0, {0x1172, 0xE007, 0, 0});
    const auto bridge = fixture.machine.bridge(fixture.up, 8, 0, {0x10B5, 0x8111, 0, 0});
    fixture.machine.endpoint(bridge, 0, 0, {0x1172, 0xE008, 0, 0});
    fixture.bus = pcibus::parseDump(fixture.machine.dump(), "machine");
    const std::string dot = machineDot(fixture, fixture.placed());
    EXPECT_THAT(dot, HasSubstr("02:07.0<"));
    EXPECT_THAT(dot, HasSubstr("  d0:r1:e -> b2:h:w\n"));
}

TEST(MachineDrawing, DevicesWithinEachOtherAreStillDrawn) {
    const TreeFixture fixture;
    std::vector<PlacedDevice> placed(2, fixture.placed().front());
    placed[0].ports.resize(1);
    placed[0].ports[0].bridge = fixture.machine.handle(fixture.root);
    placed[1].ports[0].bridge = fixture.machine.handle(fixture.root);
    const std::string dot = machineDot(fixture, placed);
    EXPECT_THAT(dot, HasSubstr("\n  d0 ["));
    EXPECT_THAT(dot, HasSubstr("\n  d1 ["));
}

TEST(MachineDrawing, RootBusThatLeadsToManyIsAListAboveThem) {
    TreeFixture fixture;
    for (unsigned device = 10; device < 18; ++device)
        fixture.machine.endpoint(fixture.machine.rootPort(0, device, 0, {0x8086, 0x3421, 0, 0}), 0,
                                 0, {0x1172, 0xE001, 0, 0});
    fixture.bus = pcibus::parseDump(fixture.machine.dump(), "machine");
    const std::string dot = machineDot(fixture, fixture.placed());
    const std::size_t list = dot.find("<B>root bus 00</B>");
    ASSERT_NE(list, std::string::npos);
    EXPECT_LT(list, dot.find("\n  node ["));
    EXPECT_THAT(dot, Not(HasSubstr("b0")));
    EXPECT_THAT(dot, HasSubstr("<B>00:11.0</B>"));
    EXPECT_THAT(dot, HasSubstr("  b1:r0:e -> d0:h:w\n"));
}

// The plug-in searches neither.
TEST(MachineDrawing, HasOtherDomainsAndWhatIsBelowCardBusBridges) {
    const TreeFixture fixture;
    testsupport::BusBuilder other;
    const auto bridge = other.rootPort(0, 2, 0, {0x104C, 0xAC56, 0, 0});
    other.endpoint(bridge, 0, 0, {0x1172, 0xE001, 0, 0});
    other.poke(bridge, 0x0E, {2});
    const testsupport::FileFolder folder;
    const WholeBus whole = readWholeBus(
        folder.write("machine", fixture.machine.dump({.domain = 0}) + other.dump({.domain = 1})));
    ASSERT_EQ(whole.domains.size(), 2U);
    const std::vector<PlacedDevice> placed = fixture.placed();
    const std::vector<PlacedDevice> none;
    std::vector<BusTreeView> views;
    views.reserve(2);
    views.emplace_back(whole.domains[0], placed);
    views.emplace_back(whole.domains[1], none);
    const std::string dot = machineAsDot(views, machineNames(), "bus");
    EXPECT_THAT(dot, HasSubstr("<B>root bus 00</B>"));
    EXPECT_THAT(dot, HasSubstr("<B>root bus 0001:00</B>&#160;&#160;&#160;"));
    EXPECT_THAT(dot, HasSubstr(">not searched for devices<"));
    EXPECT_THAT(dot, HasSubstr("<B>0001:00:02.0</B>"));
    EXPECT_THAT(dot, HasSubstr("  m1b0:r0:e -> m1b1:h:w\n"));
    EXPECT_THAT(dot, HasSubstr("0001:01:00.0<"));
    EXPECT_THAT(dot, HasSubstr("  b1:r0:e -> d0:h:w\n"));
    EXPECT_THAT(dot, HasSubstr(">1 device<"));
}

TEST(MachineDrawing, ShowsOnlyThePart) {
    const TreeFixture fixture;
    const auto placed = fixture.placed();
    BusTreeView view(fixture.domain(), placed);
    view.showOnly({fixture.machine.handle(fixture.second)});
    const std::string dot = machineAsDot({&view, 1}, machineNames(), "bus");
    EXPECT_THAT(dot, HasSubstr("root bus 40"));
    EXPECT_THAT(dot, Not(HasSubstr("root bus 00")));
    EXPECT_THAT(dot, Not(HasSubstr("TAV1")));
}

} // namespace
