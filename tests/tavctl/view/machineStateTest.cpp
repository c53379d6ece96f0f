// What a look sees behind the connectors of devices.
#include "tavctl/view/machineState.h"

#include "tests/tavctl/match/treeFixture.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using tavctltest::TreeFixture;
using testing::ElementsAre;
using testing::IsEmpty;

MachineState stateOf(const TreeFixture& fixture, const std::vector<PlacedDevice>& placed) {
    const testsupport::FileFolder folder;
    const WholeBus whole = readWholeBus(folder.write("machine", fixture.machine.dump()));
    return makeState(placed, {{"TAV9", "Box", "MR00:00,40"}}, whole,
                     PciNames::parse("1172  Maker\n\te001  Card\n"));
}

TEST(MonitorState, HasTheDeviceAndWhatIsInItsConnectors) {
    const TreeFixture fixture;
    const MachineState state = stateOf(fixture, fixture.placed());
    ASSERT_EQ(state.devices.size(), 1U);
    const SeenDevice& box = state.devices[0];
    EXPECT_EQ(box.name, "TAV1");
    EXPECT_EQ(box.address, "0000:01:00.0");
    EXPECT_FALSE(box.in);
    EXPECT_EQ(box.upstream.width, 8);
    ASSERT_GE(box.connectors.size(), 2U);
    EXPECT_THAT(box.connectors[0].labels, ElementsAre("A"));
    ASSERT_EQ(box.connectors[0].functions.size(), 1U);
    const SeenFunction& card = box.connectors[0].functions[0];
    EXPECT_EQ(card.address, "0000:03:00.0");
    EXPECT_EQ(card.place, "00,");
    EXPECT_EQ(card.slotPath, fixture.machine.slotPath(fixture.card));
    EXPECT_EQ(card.vendorName, "Maker");
    EXPECT_EQ(card.deviceName, "Card");
    EXPECT_EQ(box.connectors[0].link.width, 4);
    EXPECT_THAT(box.connectors[1].functions, IsEmpty());
    EXPECT_FALSE(box.connectors[1].link.isKnown());
    EXPECT_EQ(state.functions.size(), fixture.machine.nodes().size());
    EXPECT_EQ(state.absent.size(), 1U);
}

// A second device, which stands where the card does, with a connector at which a function hangs.
TEST(MonitorState, TheNearestConnectorHasAFunctionAndTheInsideOfADeviceIsInNone) {
    TreeFixture fixture;
    auto& machine = fixture.machine;
    const auto card = machine.bridge(fixture.portB, 0, 0, {0x10B5, 0x8000, 0, 0}, 8, 3);
    const auto port = machine.bridge(card, 1, 0, {0x10B5, 0x8000, 0, 0}, 4, 3);
    const auto beyond = machine.endpoint(port, 0, 0, {0x1172, 0xE002, 0, 0});
    const auto within = machine.endpoint(card, 2, 0, {0x1172, 0xE003, 0, 0});
    fixture.bus = pcibus::parseDump(machine.dump(), "machine");
    fixture.listed[0].ports = {{"A", machine.secondaryBus(fixture.portA), 4, 3},
                               {"B1", machine.secondaryBus(fixture.portB), 8, 3}};
    PlacedDevice inner;
    inner.listed = {"Card", 10, machine.bus(card), 0, 0, {}, {}, "Card1", {}};
    inner.reported = machine.handle(card);
    inner.ports.push_back({{"LEFT"}, machine.handle(port), {}, 0, {}, {}, false});
    std::vector<PlacedDevice> placed = placeDevices(fixture.listed, {}, fixture.bus);
    placed.push_back(inner);
    const MachineState state = stateOf(fixture, placed);
    ASSERT_EQ(state.devices.size(), 2U);
    EXPECT_THAT(state.devices[0].connectors.at(1).functions, IsEmpty());
    const SeenDevice& seen = state.devices[1];
    ASSERT_TRUE(seen.in);
    EXPECT_EQ(seen.in->device, "TAV1");
    EXPECT_THAT(seen.in->labels, ElementsAre("B1"));
    EXPECT_FALSE(seen.upstream.isKnown()) << "it is the connector's link";
    EXPECT_EQ(state.devices[0].connectors[1].link.width, 8);
    ASSERT_EQ(seen.connectors.at(0).functions.size(), 1U);
    EXPECT_EQ(seen.connectors[0].functions[0].slotPath, machine.slotPath(beyond));
    EXPECT_TRUE(state.functions.contains({machine.slotPath(within), 0x1172E003}));
}

} // namespace
