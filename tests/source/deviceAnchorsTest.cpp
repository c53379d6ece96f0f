// Anchors that are no bridges: found by the device finder, placed below the bridge of their bus.
#include "tests/source/support/cacheBuild.h"
#include "tests/source/support/tavBox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::BusBuilder;
using testsupport::CacheBuild;
using testsupport::Ids;
using testsupport::kCardIds;
using testsupport::kDownIds;
using testsupport::kRootPortIds;
using testsupport::kUpIds;
using testsupport::ModelBuilder;
using testsupport::TavBox;

constexpr Ids kOtherCardIds{0x1172, 0xE002, 0x1234, 0x0010};

class DeviceAnchors : public testing::Test {
protected:
    // A card below a root port of its own.
    BusBuilder::Node card(unsigned rootDevice, Ids ids = kCardIds, unsigned device = 0,
                          unsigned function = 0) {
        const auto port = machine.rootPort(0, rootDevice, 0, kRootPortIds);
        return machine.endpoint(port, device, function, ids);
    }

    static ModelBuilder cardModel() {
        ModelBuilder model("Card");
        return model.anchor(kCardIds, ModelBuilder::kDevice);
    }

    // What the name file says of each slot.
    static std::vector<std::string> slots(const CacheBuild& build) {
        std::vector<std::string> result;
        for (const std::string& line : build.db.filesystem.names()) {
            if (line.front() == '[')
                result.push_back(line);
            else if (line.starts_with("TerminalName"))
                result.back() += line.substr(line.rfind(' '));
        }
        return result;
    }

    BusBuilder machine;
};

TEST_F(DeviceAnchors, DeviceIsPlacedBelowTheBridgeOfItsBus) {
    card(0x1C, kCardIds, 3, 2);
    CacheBuild build(machine, {cardModel().build()});
    build.build();
    EXPECT_THAT(build.devices(), ElementsAre("Card TAV1 at 01:03.2"));
    EXPECT_THAT(slots(build), ElementsAre("[MR00:1A,E0] TAV1"));
    EXPECT_THAT(build.wrapper.calls(), ElementsAre("OpenSession 0", "FindParentBridgeForBus 01",
                                                   "GetBridgeSlotPath 00:1c.0", "CloseSession"));
    ASSERT_THAT(build.finder.searches(), SizeIs(1));
    EXPECT_EQ(build.finder.searches()[0], testsupport::pciIds(kCardIds));
}

TEST_F(DeviceAnchors, EveryHeaderTypeButABridgesAsksTheDeviceFinder) {
    card(0x1C);
    for (const std::uint32_t headerType : {0U, 2U, 0x81U, 0xFFFFFFFFU}) {
        ModelBuilder model("Card");
        CacheBuild build(machine, {model.anchor(kCardIds, headerType).build()});
        build.build();
        EXPECT_EQ(build.cache.Count(), 1U) << headerType;
        EXPECT_THAT(build.finder.searches(), SizeIs(1)) << headerType;
    }
}

TEST_F(DeviceAnchors, WalkStartsAtTheDevice) {
    // A bridge beside the device's bus is described from the device.
    const auto port = machine.rootPort(0, 0x1C, 0, kRootPortIds);
    machine.endpoint(port, 0, 0, kCardIds);
    const auto bridge = machine.bridge(port, 1, 0, kDownIds);
    CacheBuild build(machine,
                     {cardModel().downstreamPort({"-,d1f0", kDownIds}).labels({"A"}).build()});
    build.build();
    EXPECT_THAT(build.devices(), ElementsAre("Card TAV1 at 01:00.0 ports A"));
    EXPECT_EQ(build.cache.RecordAt(0).ports[0].first, machine.secondaryBus(bridge));
}

TEST_F(DeviceAnchors, SeveralDevicesEachHaveTheirSlot) {
    card(0x1C);
    card(0x1D);
    CacheBuild build(machine, {cardModel().build()});
    build.build();
    EXPECT_THAT(build.devices(), ElementsAre("Card TAV1 at 01:00.0", "Card TAV2 at 02:00.0"));
    EXPECT_THAT(slots(build), ElementsAre("[MR00:00,E0] TAV1", "[MR00:00,E8] TAV2"));
}

TEST_F(DeviceAnchors, DeviceWithoutABridgeAboveSkipsTheModel) {
    machine.rootEndpoint(0, 3, 0, kCardIds);
    card(0x1C);
    const TavBox box(machine, 0x1D);
    CacheBuild build(machine, {cardModel().build(), testsupport::boxModel("Box").build()});
    build.build();
    EXPECT_TRUE(build.cache.IsBuilt());
    EXPECT_THAT(build.devices(), ElementsAre("Box TAV1 at 02:00.0 ports P1,P2"));
    // The bridge that is not there was asked for its slot path.
    EXPECT_EQ(build.wrapper.calls()[1], "FindParentBridgeForBus 00");
    EXPECT_EQ(build.wrapper.calls()[2], "GetBridgeSlotPath none");
}

TEST_F(DeviceAnchors, AlternateAnchorStartsThePathsFromTheFirstAddressAgain) {
    card(0x1C);
    card(0x1D);
    card(0x1E, kOtherCardIds);
    CacheBuild build(machine, {cardModel().anchor(kOtherCardIds, ModelBuilder::kDevice).build()});
    build.build();
    // Each address once, but five slot paths: those of the first two, and then of all three.
    std::vector<std::string> asked;
    for (const std::string& call : build.wrapper.calls()) {
        if (call.starts_with("FindParent"))
            asked.push_back(call.substr(call.rfind(' ') + 1));
    }
    EXPECT_THAT(asked, ElementsAre("01", "02", "01", "02", "03"));
    // So the third address goes with the first one's slot path a second time, and by its name.
    EXPECT_THAT(build.devices(), ElementsAre("Card TAV1 at 01:00.0", "Card TAV2 at 02:00.0",
                                             "Card TAV1 at 03:00.0"));
    EXPECT_THAT(slots(build), ElementsAre("[MR00:00,E0] TAV1", "[MR00:00,E8] TAV2"));
}

TEST_F(DeviceAnchors, AlternateAnchorWithoutDevicesChangesNoPairing) {
    card(0x1C);
    card(0x1D);
    CacheBuild build(machine, {cardModel().anchor(kOtherCardIds, ModelBuilder::kDevice).build()});
    build.build();
    EXPECT_THAT(slots(build), ElementsAre("[MR00:00,E0] TAV1", "[MR00:00,E8] TAV2"));
    EXPECT_EQ(build.cache.Count(), 2U);
}

TEST_F(DeviceAnchors, BridgeAnchorBehindADeviceAnchorIsPairedWithItsOwnPath) {
    card(0x1C);
    const TavBox box(machine, 0x1D);
    CacheBuild build(machine, {cardModel().anchor(kUpIds).internalBridge({"", kUpIds}).build()});
    build.build();
    EXPECT_THAT(build.devices(), ElementsAre("Card TAV1 at 01:00.0", "Card TAV2 at 02:00.0"));
    EXPECT_THAT(slots(build), ElementsAre("[MR00:00,E0] TAV1", "[MR00:00,E8] TAV2"));
}

TEST_F(DeviceAnchors, DeviceAnchorBehindABridgeAnchorIsPairedWithTheBridgesPath) {
    card(0x1D);
    const TavBox box(machine, 0x1C);
    ModelBuilder model("Card");
    model.anchor(kUpIds).anchor(kCardIds, ModelBuilder::kDevice).internalBridge({"", kUpIds});
    CacheBuild build(machine, {model.build()});
    build.build();
    // Slot paths: the bridge's, then again the bridge's (as a device of its bus), then the card's.
    EXPECT_THAT(build.devices(), ElementsAre("Card TAV1 at 01:00.0", "Card TAV1 at 05:00.0"));
    EXPECT_THAT(slots(build), ElementsAre("[MR00:00,E0] TAV1"));
    EXPECT_THAT(build.wrapper.calls(),
                testing::IsSupersetOf({"FindParentBridgeForBus 01", "FindParentBridgeForBus 05"}));
}

TEST_F(DeviceAnchors, FunctionsWithOtherIdentifiersAreNoAnchors) {
    card(0x1C, kOtherCardIds);
    CacheBuild build(machine, {cardModel().build()});
    build.build();
    EXPECT_THAT(build.devices(), IsEmpty());
}

} // namespace
