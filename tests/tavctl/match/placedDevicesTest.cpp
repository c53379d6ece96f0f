// Where listed devices and their ports stand on the bus.
#include "tavctl/match/placedDevices.h"

#include "tests/tavctl/match/treeFixture.h"

#include <gmock/gmock.h>

namespace {

using namespace tavctl;
using nZoTavManagerPciPlugin_15_0::tBridgeDescription;
using tavctltest::TreeFixture;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(PlacedDevices, PortsStandInTheOrderOfTheDescriptionWithTheirLabels) {
    const TreeFixture fixture;
    const auto placed = fixture.placed();
    ASSERT_EQ(placed.size(), 1U);
    EXPECT_EQ(placed[0].reported, fixture.machine.handle(fixture.up));
    EXPECT_EQ(placed[0].anchor, fixture.machine.handle(fixture.up));
    EXPECT_EQ(placed[0].upstreamPort, fixture.machine.handle(fixture.up));
    ASSERT_EQ(placed[0].ports.size(), 4U);
    EXPECT_THAT(placed[0].ports[0].labels, ElementsAre("A"));
    EXPECT_EQ(placed[0].ports[0].bridge, fixture.machine.handle(fixture.portA));
    EXPECT_EQ(placed[0].ports[0].linkWidth, 4);
    EXPECT_THAT(placed[0].ports[1].labels, ElementsAre("B1", "B2"));
    EXPECT_EQ(placed[0].ports[1].bridge, fixture.machine.handle(fixture.portB));
}

TEST(PlacedDevices, MissingPortHasThePlaceWhereItShouldBe) {
    const TreeFixture fixture;
    const PlacedPort port = fixture.placed().at(0).ports.at(2);
    EXPECT_TRUE(port.missing);
    EXPECT_EQ(port.bridge, std::nullopt);
    EXPECT_EQ(port.missingBelow, fixture.machine.handle(fixture.up));
    EXPECT_EQ(port.missingHop, 0x18);
}

TEST(PlacedDevices, PortIsMissingRightBelowABridgeOfARootBusToo) {
    TreeFixture fixture;
    auto model = TreeFixture::model();
    model.anchors = {{kHeaderTypeBridge, {0x8086, 0x3420, 0x8086, 0}}};
    model.upstreamPort.ids = model.anchors.front().ids;
    model.linkWidthPerLabel = 0;
    model.connectorLabels = {"HOST", "A"};
    model.downstreamPorts.resize(2);
    model.downstreamPorts[0].traversalMap = "d5f0";
    model.downstreamPorts[1].traversalMap = "d0f0";
    fixture.listed = {{"Box", 12, 0, 4, 0, {}, {}, "TAV1", {{"A", 2, {}, {}}}}};
    const auto placed = placeDevices(fixture.listed, fixture.survey(model), fixture.bus);
    ASSERT_EQ(placed.at(0).ports.size(), 2U);
    EXPECT_TRUE(placed[0].ports[0].missing);
    EXPECT_EQ(placed[0].ports[0].missingBelow, fixture.machine.handle(fixture.root));
    EXPECT_EQ(placed[0].ports[0].missingHop, 0x28);
}

TEST(PlacedDevices, PortBeyondTheLabelsHasNone) {
    const TreeFixture fixture;
    const PlacedPort port = fixture.placed().at(0).ports.at(3);
    EXPECT_EQ(port.bridge, fixture.machine.handle(fixture.portD));
    EXPECT_THAT(port.labels, IsEmpty());
    EXPECT_FALSE(port.missing);
}

// With alternate anchors every port is described once more for each of them.
TEST(PlacedDevices, PortDescribedTwiceIsPlacedOnce) {
    const TreeFixture fixture;
    auto model = TreeFixture::model();
    auto& ports = model.downstreamPorts;
    const auto copy = ports;
    ports.insert(ports.end(), copy.begin(), copy.end());
    EXPECT_EQ(placeDevices(fixture.listed, fixture.survey(model), fixture.bus).at(0).ports.size(),
              4U);
}

// Two lanes are no label of four, and a port that is not there takes none either.
TEST(PlacedDevices, PortsThatTakeNoLabelDoNotMoveTheOthers) {
    TreeFixture fixture;
    auto model = TreeFixture::model();
    model.downstreamPorts[0].traversalMap = "d3f0";
    model.downstreamPorts[2].traversalMap = "d1f0";
    model.connectorLabels = {"HOST1", "HOST2", "B1", "B2", "A"};
    const auto narrow = fixture.machine.bridge(fixture.up, 0, 0, {0x10B5, 0x8609, 0, 0}, 2, 3);
    fixture.bus = pcibus::parseDump(fixture.machine.dump(), "machine");
    tBridgeDescription port;
    port.traversalMap = "d0f0";
    model.downstreamPorts.insert(model.downstreamPorts.begin(), port);
    fixture.listed[0].ports = {{"B1", 5, 8, 3}, {"B2", 5, 8, 3}, {"A", 4, 4, 3}};
    const auto ports = placeDevices(fixture.listed, fixture.survey(model), fixture.bus).at(0).ports;
    ASSERT_EQ(ports.size(), 5U);
    EXPECT_EQ(ports[0].bridge, fixture.machine.handle(narrow));
    EXPECT_THAT(ports[0].labels, IsEmpty());
    EXPECT_TRUE(ports[1].missing);
    EXPECT_EQ(ports[1].missingHop, 0x18);
    EXPECT_THAT(ports[2].labels, ElementsAre("B1", "B2"));
    EXPECT_EQ(ports[2].bridge, fixture.machine.handle(fixture.portB));
    EXPECT_THAT(ports[3].labels, ElementsAre("A"));
    EXPECT_EQ(ports[3].bridge, fixture.machine.handle(fixture.portA));
    EXPECT_THAT(ports[4].labels, IsEmpty());
}

TEST(PlacedDevices, WithoutASurveyTheBusesBelowThePortsTellThem) {
    const TreeFixture fixture;
    const auto placed = placeDevices(fixture.listed, {}, fixture.bus);
    EXPECT_EQ(placed[0].anchor, std::nullopt);
    ASSERT_EQ(placed[0].ports.size(), 2U);
    EXPECT_THAT(placed[0].ports[0].labels, ElementsAre("A"));
    EXPECT_THAT(placed[0].ports[1].labels, ElementsAre("B1", "B2"));
    EXPECT_EQ(placed[0].ports[1].bridge, fixture.machine.handle(fixture.portB));
}

TEST(PlacedDevices, SurveyOfAnotherDeviceIsNotUsed) {
    const TreeFixture fixture;
    Survey survey = fixture.survey();
    survey[0].record.modelName = "Other";
    EXPECT_EQ(placeDevices(fixture.listed, survey, fixture.bus).at(0).ports.size(), 2U);
}

TEST(PlacedDevices, PortsThatDoNotComeOutEvenArePlacedByTheirBuses) {
    TreeFixture fixture;
    fixture.listed[0].ports[0].secondaryBus = 4;
    const auto placed = fixture.placed();
    ASSERT_EQ(placed[0].ports.size(), 1U);
    EXPECT_THAT(placed[0].ports[0].labels, ElementsAre("A", "B1", "B2"));
    EXPECT_EQ(placed[0].ports[0].bridge, fixture.machine.handle(fixture.portB));
}

TEST(PlacedDevices, PortWithoutABusHasNoPlace) {
    TreeFixture fixture;
    for (ListedPort& port : fixture.listed[0].ports)
        port.secondaryBus = 0;
    const auto placed = placeDevices(fixture.listed, {}, fixture.bus);
    ASSERT_EQ(placed[0].ports.size(), 3U);
    EXPECT_EQ(placed[0].ports[2].bridge, std::nullopt);
}

TEST(PlacedDevices, AddressWhereNothingIsHasNoFunction) {
    TreeFixture fixture;
    fixture.listed[0].device = 9;
    EXPECT_EQ(fixture.placed().at(0).reported, std::nullopt);
}

// The walk never asks for a port behind the last label, so nobody has told of its map before.
TEST(PlacedDevices, MapThatCannotBeAppliedLeavesThePortsToTheirBuses) {
    const TreeFixture fixture;
    auto model = TreeFixture::model();
    model.downstreamPorts[3].traversalMap = "nonsense";
    const auto placed = placeDevices(fixture.listed, fixture.survey(model), fixture.bus);
    ASSERT_EQ(placed[0].ports.size(), 2U);
    EXPECT_THAT(placed[0].ports[1].labels, ElementsAre("B1", "B2"));
    EXPECT_EQ(placed[0].ports[1].bridge, fixture.machine.handle(fixture.portB));
}

TEST(PlacedDevices, MissingPortWithoutABridgeAboveHasNoPlace) {
    const TreeFixture fixture;
    for (const char* map : {"d9f0,d0f0", "-,-,d9f0"}) {
        auto model = TreeFixture::model();
        model.downstreamPorts[2].traversalMap = map;
        const auto placed = placeDevices(fixture.listed, fixture.survey(model), fixture.bus);
        ASSERT_EQ(placed[0].ports.size(), 3U) << map;
        for (const PlacedPort& port : placed[0].ports)
            EXPECT_FALSE(port.missing) << map;
    }
}

} // namespace
