// What is told of each device belongs to that device: on a machine where several models are listed
// several times, and others begin and are not listed.
#include "pcibus/dump.h"
#include "tavctl/bus/busAddress.h"
#include "tavctl/match/busBridges.h"
#include "tavctl/match/deviceRecorder.h"
#include "tests/support/busBuilder.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using tavctl::MatchedDevice;
using testing::ElementsAre;
using testsupport::BusBuilder;

std::string toldAddress(const tBusAddress& address) {
    return pcibus::addressTextOf(address.bus, address.device, address.function);
}

std::string toldAddress(const std::optional<tBusAddress>& address) {
    return address ? toldAddress(*address) : "none";
}

// Boxes of an upstream port with an internal bridge behind it, at whose address they are reported,
// and a connector at either of two places; one has no internal bridge, and so is none. Cards stand
// in a connector and on their own.
struct MixedMachine {
    static constexpr testsupport::Ids kRootIds{0x8086, 0x1901};
    static constexpr testsupport::Ids kBoxIds{0x104C, 0x8232};
    static constexpr testsupport::Ids kPortIds{0x104C, 0x8233};
    static constexpr testsupport::Ids kCardIds{0x1172, 0xE001};

    BusBuilder builder;
    BusBuilder::Node first = box(1);
    BusBuilder::Node firstInternal = builder.bridge(first, 1, 0, kBoxIds);
    BusBuilder::Node firstPort = builder.bridge(first, 0, 0, kPortIds);
    BusBuilder::Node cardInBox = builder.endpoint(firstPort, 0, 0, kCardIds);
    BusBuilder::Node incomplete = box(2);
    BusBuilder::Node card = builder.endpoint(builder.rootPort(0, 3, 0, kRootIds), 0, 0, kCardIds);
    BusBuilder::Node second = box(4);
    BusBuilder::Node secondInternal = builder.bridge(second, 1, 0, kBoxIds);
    BusBuilder::Node secondPort = builder.bridge(second, 2, 0, kPortIds);
    std::shared_ptr<const pcibus::Bus> bus =
        std::make_shared<const pcibus::Bus>(pcibus::parseDump(builder.dump(), "machine"));

    BusBuilder::Node box(unsigned device) {
        return builder.bridge(builder.rootPort(0, device, 0, kRootIds), 0, 0, kBoxIds);
    }
};

tPciIds asPciIds(const testsupport::Ids& ids) {
    return {ids.vendor, ids.device, ids.subsystemVendor, ids.subsystem};
}

tBridgeDescription bridgeDescribedAt(const char* map, const testsupport::Ids& ids) {
    tBridgeDescription bridge;
    bridge.traversalMap = map;
    bridge.ids = asPciIds(ids);
    return bridge;
}

tModelDescription mixedBox(const std::string& name, const std::list<std::string>& labels) {
    tModelDescription model;
    model.model = name;
    model.anchors = {{kHeaderTypeBridge, asPciIds(MixedMachine::kBoxIds)}};
    model.connectorLabels = labels;
    model.upstreamPort = bridgeDescribedAt("", MixedMachine::kBoxIds);
    model.internalBridges = {bridgeDescribedAt("d1f0", MixedMachine::kBoxIds)};
    model.internalBridges.front().reportAddressFromThisBridge = true;
    model.downstreamPorts = {bridgeDescribedAt("d0f0", MixedMachine::kPortIds),
                             bridgeDescribedAt("d2f0", MixedMachine::kPortIds)};
    model.terminalNameBase = name;
    return model;
}

tModelDescription mixedCard(const std::string& name, const testsupport::Ids& ids) {
    tModelDescription model;
    model.model = name;
    model.anchors = {{0, asPciIds(ids)}};
    model.terminalNameBase = name;
    return model;
}

// The first model's walks begin and fail, and the third has no anchor.
std::vector<MatchedDevice> matchMixed(const MixedMachine& machine) {
    return tavctl::ModelMatcher(tavctl::recordedBus(machine.bus))
        .match({mixedBox("Wide", {"HOST", "A", "B", "C"}),
                mixedCard("Card", MixedMachine::kCardIds), mixedCard("Absent", {0x1172, 0xE002}),
                mixedBox("Box", {"HOST", "A"})});
}

TEST(MatchedDevices, HaveTheirOwnModelAnchorAndName) {
    const MixedMachine machine;
    std::vector<std::string> devices;
    for (const MatchedDevice& each : matchMixed(machine))
        devices.push_back(std::to_string(each.model) + " " + each.record.modelName + " " +
                          each.record.terminalName + " " + toldAddress(each.address) + " " +
                          each.slotPath);
    const auto anchor = [&](BusBuilder::Node node) {
        return machine.builder.address(node) + " " + machine.builder.slotPath(node);
    };
    EXPECT_THAT(devices, ElementsAre("1 Card Card1 " + anchor(machine.cardInBox),
                                     "1 Card Card2 " + anchor(machine.card),
                                     "3 Box Box1 " + anchor(machine.first),
                                     "3 Box Box2 " + anchor(machine.second)));
}

TEST(MatchedDevices, HaveTheirOwnBridges) {
    const MixedMachine machine;
    std::vector<std::string> bridges;
    for (const MatchedDevice& each : matchMixed(machine)) {
        const tDeviceRecord& record = each.record;
        bridges.push_back(toldAddress(tBusAddress{record.bus, record.device, record.function}) +
                          " " + toldAddress(each.upstreamPort));
        for (const tavctl::MatchedPort& port : each.ports)
            bridges.push_back("port " + toldAddress(port.bridge) + " " +
                              (port.entries.empty() ? "-" : port.entries[0].connectorLabel));
    }
    const auto address = [&](BusBuilder::Node node) { return machine.builder.address(node); };
    EXPECT_THAT(bridges,
                ElementsAre(address(machine.cardInBox) + " none", address(machine.card) + " none",
                            address(machine.firstInternal) + " " + address(machine.first),
                            "port " + address(machine.firstPort) + " A", "port none -",
                            address(machine.secondInternal) + " " + address(machine.second),
                            "port none -", "port " + address(machine.secondPort) + " A"));
}

// A bridge library may find a bridge and not tell where it is.
TEST(MatchedDevices, PortWhoseAddressIsNotToldHasAPlaceAlone) {
    const MixedMachine machine;
    const tavctl::MatchBus recorded = tavctl::recordedBus(machine.bus);
    tavctl::DeviceRecorder recorder(*recorded.wrapper);
    recorder.onModel(0);
    recorder.onWalk({1, 0, 0}, {});
    recorder.onDownstreamPort(bridgeDescribedAt("d0f0", MixedMachine::kPortIds), 0xFFF8);
    recorder.onDevice({1, 0, 0}, {}, {});
    const auto devices = recorder.takeDevices();
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_TRUE(devices[0].ports.at(0).place);
    EXPECT_FALSE(devices[0].ports.at(0).bridge);
}

} // namespace
