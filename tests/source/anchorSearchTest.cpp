// Which bridges are anchors of a model, and what is asked of the bridge library to find out.
#include "source/anchorSearch.h"

#include "tests/source/support/raised.h"
#include "tests/source/support/recordingBridgeWrapper.h"
#include "tests/source/support/slotPaths.h"
#include "tests/source/support/tavBox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::BusBuilder;
using testsupport::Ids;
using testsupport::kDownIds;
using testsupport::kUpIds;
using testsupport::ModelBuilder;
using testsupport::ModelTable;
using testsupport::raisedBy;
using testsupport::RecordingBridgeWrapper;
using testsupport::TavBox;

constexpr Ids kInnerIds{0x10B5, 0x8624, 0x1234, 0x0003};

class AnchorSearch : public testing::Test {
protected:
    // The anchors found, as "address slot path". What was found before stays in front.
    std::vector<std::string> search(const tModelDescription& model, std::size_t anchor = 0) {
        RecordingBridgeWrapper wrapper(machine);
        wrapper.OpenSession(0);
        wrapper.forgetCalls();
        if (failingCall != 0)
            wrapper.failCall(failingCall);
        const ModelTable models =
            ModelTable::loaded({ModelBuilder("Another model").build(), model});
        FoundAnchors found;
        found.addresses.push_back({9, 9, 1});
        found.slotPaths.push_back(testsupport::slotPath("MR09:49"));
        const auto finish = [&] {
            calls = wrapper.calls();
            wrapper.CloseSession();
            EXPECT_EQ(found.addresses.size(), found.slotPaths.size());
        };
        try {
            searchAnchors(model.anchors.at(anchor), models, 1, wrapper, found);
        } catch (...) {
            finish();
            throw;
        }
        finish();
        EXPECT_EQ(found.addresses.at(0), (tBusAddress{9, 9, 1}));
        EXPECT_EQ(testsupport::textOf(found.slotPaths.at(0)), "MR09:49");
        std::vector<std::string> anchors;
        for (std::size_t i = 1; i < found.addresses.size(); ++i) {
            const tBusAddress& at = found.addresses[i];
            const auto handle =
                static_cast<std::uint32_t>(at.bus << 8 | at.device << 3 | at.function);
            anchors.push_back(testsupport::handleText(handle));
            anchors.back() += ' ';
            anchors.back() += testsupport::textOf(found.slotPaths[i]);
        }
        return anchors;
    }

    std::string anchorAt(BusBuilder::Node node) const {
        std::string text = machine.address(node);
        text += ' ';
        return text += machine.slotPath(node);
    }

    BusBuilder machine;
    std::vector<std::string> calls;
    std::size_t failingCall = 0;
};

// The anchor stands for itself through an internal bridge with an empty map.
ModelBuilder anchorAlone(Ids ids = kUpIds) {
    ModelBuilder model("Box");
    return model.anchor(ids).internalBridge({"", ids});
}

TEST_F(AnchorSearch, BridgeWithTheAnchorsIdentifiersIsFound) {
    const TavBox box(machine, 0x1C);
    EXPECT_THAT(search(anchorAlone().build()), ElementsAre("01:00.0 MR00:00,E0"));
}

TEST_F(AnchorSearch, AsksNoMoreThanItNeeds) {
    const TavBox first(machine, 0x1C);
    const TavBox second(machine, 0x1D);
    search(testsupport::boxModel("Box").build());
    EXPECT_THAT(calls, ElementsAre("FindBridgesByPciIds 10b5:8609:1234:0001", // candidates
                                   "FindBridgesByPciIds 10b5:8609:1234:0001", // required
                                   "GetBridgeSlotPath 01:00.0", "GetBridgeAddress 01:00.0 bdf",
                                   "GetBridgeSlotPath 05:00.0", "GetBridgeAddress 05:00.0 bdf"));
}

TEST_F(AnchorSearch, FollowsEachDescribedPlaceInOrder) {
    // Two bridges with the anchor's identifiers below it, described after and before it.
    const auto port = machine.rootPort(0, 0x1C, 0, testsupport::kRootPortIds);
    const auto anchor = machine.bridge(port, 0, 0, kUpIds);
    machine.bridge(anchor, 1, 0, kUpIds);
    machine.bridge(anchor, 2, 0, kUpIds);
    ModelBuilder model("Box");
    model.anchor(kUpIds)
        .downstreamPort({"d2f0", kUpIds})
        .downstreamPort({"d7f0", kDownIds}) // other identifiers: not looked at
        .internalBridge({"", kUpIds})
        .internalBridge({"d5f0", kUpIds, true}) // optional: not looked at
        .upstreamPort({"d1f0", kUpIds});
    EXPECT_THAT(search(model.build()), ElementsAre(anchorAt(anchor)));
    EXPECT_THAT(calls,
                ElementsAre("FindBridgesByPciIds 10b5:8609:1234:0001",
                            "FindBridgesByPciIds 10b5:8609:1234:0001",
                            "FindBridgesByPciIds 10b5:8609:1234:0001",
                            "FindBridgesByPciIds 10b5:8609:1234:0001", "GetBridgeSlotPath 01:00.0",
                            "FindBridgeBySlotPath MR00:10,00,E0",
                            "FindBridgeBySlotPath MR00:08,00,E0", "GetBridgeAddress 01:00.0 bdf"));
}

TEST_F(AnchorSearch, AnchorsAreFoundInAscendingOrder) {
    // The library answers them the other way round.
    for (const unsigned device : {0x1CU, 0x02U, 0x1DU})
        machine.rootPort(0, device, 0, kUpIds);
    EXPECT_THAT(search(anchorAlone().build()),
                ElementsAre("00:02.0 MR00:10", "00:1c.0 MR00:E0", "00:1d.0 MR00:E8"));
}

TEST_F(AnchorSearch, NothingFoundIsNoError) {
    machine.rootPort(0, 0x1C, 0, testsupport::kRootPortIds);
    EXPECT_THAT(search(anchorAlone().build()), IsEmpty());
    EXPECT_THAT(calls, ElementsAre("FindBridgesByPciIds 10b5:8609:1234:0001",
                                   "FindBridgesByPciIds 10b5:8609:1234:0001"));
}

TEST_F(AnchorSearch, AllFourIdentifiersCount) {
    for (const Ids& almost : {Ids{0x10B6, 0x8609, 0x1234, 1}, Ids{0x10B5, 0x8608, 0x1234, 1},
                              Ids{0x10B5, 0x8609, 0x1235, 1}, Ids{0x10B5, 0x8609, 0x1234, 3}}) {
        machine = BusBuilder();
        machine.rootPort(0, 0x1C, 0, almost);
        EXPECT_THAT(search(anchorAlone().build()), IsEmpty());
        // A description with them is none of this anchor's.
        machine.rootPort(0, 0x1D, 0, kUpIds);
        EXPECT_THAT(search(anchorAlone().internalBridge({"d9f0", almost}).build()),
                    ElementsAre("00:1d.0 MR00:E8"));
    }
}

TEST_F(AnchorSearch, MissingDescribedBridgeGivesTheCandidateUp) {
    const auto port = machine.rootPort(0, 0x1C, 0, testsupport::kRootPortIds);
    const auto anchor = machine.bridge(port, 0, 0, kUpIds);
    machine.bridge(anchor, 1, 0, kUpIds);
    machine.bridge(anchor, 3, 0, kUpIds);
    ModelBuilder model("Box");
    model.anchor(kUpIds).internalBridge({"", kUpIds});
    for (const char* map : {"d1f0", "d2f0", "d3f0"})
        model.internalBridge({map, kUpIds});
    EXPECT_THAT(search(model.build()), IsEmpty());
    // Nothing more is asked for the candidate at 01:00.0 behind the bridge that is missing.
    ASSERT_GE(calls.size(), 9U);
    EXPECT_EQ(calls[5], "GetBridgeSlotPath 01:00.0");
    EXPECT_EQ(calls[6], "FindBridgeBySlotPath MR00:08,00,E0");
    EXPECT_EQ(calls[7], "FindBridgeBySlotPath MR00:10,00,E0");
    EXPECT_EQ(calls[8], "GetBridgeSlotPath 02:01.0"); // the next candidate
}

TEST_F(AnchorSearch, MissingBridgeGivesUpAlsoWhenTheCountWouldFit) {
    // The bridge at d1f0 is reached twice, so the two that are matched are as many as needed; but
    // one place is empty.
    const auto port = machine.rootPort(0, 0x1C, 0, testsupport::kRootPortIds);
    const auto anchor = machine.bridge(port, 0, 0, kUpIds);
    machine.bridge(anchor, 1, 0, kUpIds);
    ModelBuilder model("Box");
    model.anchor(kUpIds).internalBridge({"d1f0", kUpIds}).internalBridge({"d2f0", kUpIds});
    EXPECT_THAT(search(model.build()), IsEmpty());
}

TEST_F(AnchorSearch, OnlyNonOptionalBridgesMissingYieldNoAnchor) {
    const TavBox box(machine, 0x1C);
    // Neither stands for the anchor, and both are missing.
    ModelBuilder model("Box");
    model.anchor(kUpIds).internalBridge({"d8f0", kUpIds}).internalBridge({"d9f0", kUpIds});
    EXPECT_THAT(search(model.build()), IsEmpty());
}

TEST_F(AnchorSearch, OptionalBridgesMayBeMissing) {
    const TavBox box(machine, 0x1C);
    EXPECT_THAT(search(anchorAlone().internalBridge({"d9f0", kUpIds, true}).build()),
                ElementsAre("01:00.0 MR00:00,E0"));
}

TEST_F(AnchorSearch, OptionalBridgesAreNotCountedWhenPresent) {
    const auto port = machine.rootPort(0, 0x1C, 0, testsupport::kRootPortIds);
    const auto anchor = machine.bridge(port, 0, 0, kUpIds);
    const auto below = machine.bridge(anchor, 1, 0, kUpIds);
    // Not part of the first anchor, so it is one itself.
    EXPECT_THAT(search(anchorAlone().internalBridge({"d1f0", kUpIds, true}).build()),
                ElementsAre(anchorAt(anchor), anchorAt(below)));
}

TEST_F(AnchorSearch, ModelThatDoesNotDescribeItsAnchorIsNotFound) {
    const TavBox box(machine, 0x1C);
    ModelBuilder model("Box");
    EXPECT_THAT(search(model.anchor(kUpIds).downstreamPort({"d1f0", kDownIds}).build()), IsEmpty());
}

TEST_F(AnchorSearch, TwoEmptyMapsAreOneTooMany) {
    const TavBox box(machine, 0x1C);
    EXPECT_THAT(search(anchorAlone().upstreamPort({"", kUpIds}).build()), IsEmpty());
}

TEST_F(AnchorSearch, BridgeServesOneAnchorOnly) {
    // Three in a row: the first takes the second, which is no anchor then; the third lacks one
    // below.
    const auto first = machine.rootPort(0, 0x1C, 0, kUpIds);
    const auto second = machine.bridge(first, 0, 0, kUpIds);
    machine.bridge(second, 0, 0, kUpIds);
    const auto model = anchorAlone().internalBridge({"d0f0", kUpIds}).build();
    EXPECT_THAT(search(model), ElementsAre(anchorAt(first)));
    EXPECT_THAT(calls,
                ElementsAre("FindBridgesByPciIds 10b5:8609:1234:0001",
                            "FindBridgesByPciIds 10b5:8609:1234:0001",
                            "FindBridgesByPciIds 10b5:8609:1234:0001", "GetBridgeSlotPath 00:1c.0",
                            "FindBridgeBySlotPath MR00:00,E0", "GetBridgeAddress 00:1c.0 bdf",
                            "GetBridgeSlotPath 02:00.0", "FindBridgeBySlotPath MR00:00,00,00,E0"));
}

TEST_F(AnchorSearch, LowerHandleTakesTheBridgeThatTwoAnchorsMatch) {
    // Function 1 of the same device: from there the bridge below function 0 is "-,d1cf0,d0f0".
    const auto lower = machine.rootPort(0, 0x1C, 0, kUpIds);
    machine.bridge(lower, 0, 0, kUpIds);
    machine.rootPort(0, 0x1C, 1, kUpIds);
    ModelBuilder model("Box");
    model.anchor(kUpIds).internalBridge({"", kUpIds}).internalBridge({"-,d28f0,d0f0", kUpIds});
    EXPECT_THAT(search(model.build()), ElementsAre(anchorAt(lower)));
}

TEST_F(AnchorSearch, BridgeWithOtherIdentifiersInADescribedPlaceDoesNotCount) {
    const auto anchor = machine.rootPort(0, 0x1C, 0, kUpIds);
    machine.bridge(anchor, 0, 0, kInnerIds);
    EXPECT_THAT(search(anchorAlone().internalBridge({"d0f0", kUpIds}).build()), IsEmpty());
}

TEST_F(AnchorSearch, FunctionThatIsNoBridgeCountsAsMissing) {
    const auto anchor = machine.rootPort(0, 0x1C, 0, kUpIds);
    machine.endpoint(anchor, 0, 0, kUpIds);
    EXPECT_THAT(search(anchorAlone().internalBridge({"d0f0", kUpIds}).build()), IsEmpty());
}

TEST_F(AnchorSearch, PlaceAboveTheAnchorCanBeDescribed) {
    const auto port = machine.rootPort(0, 0x1C, 0, kUpIds);
    const auto anchor = machine.bridge(port, 0, 0, kUpIds);
    // The port is no anchor: nothing stands where the map leads from there.
    ModelBuilder model("Box");
    model.anchor(kUpIds).internalBridge({"", kUpIds}).internalBridge({"-", kUpIds});
    const auto found = search(model.build());
    EXPECT_THAT(found, ElementsAre(anchorAt(anchor)));
}

TEST_F(AnchorSearch, EachAlternateAnchorHasItsOwnCopyOfTheDescriptions) {
    const TavBox box(machine, 0x1C);
    const auto other = machine.rootPort(0, 0x1D, 0, kInnerIds);
    ModelBuilder builder("Box");
    const auto model = builder.anchor(kUpIds)
                           .anchor(kInnerIds)
                           .internalBridge({"", kUpIds})
                           .downstreamPort({"d1f0", kDownIds, true})
                           .build();
    ASSERT_EQ(model.internalBridges.size(), 2U);
    EXPECT_THAT(search(model, 0), ElementsAre(anchorAt(box.up)));
    EXPECT_THAT(search(model, 1), ElementsAre(anchorAt(other)));
    EXPECT_EQ(calls.front(), "FindBridgesByPciIds 10b5:8624:1234:0003");
}

TEST_F(AnchorSearch, TwoAnchorsWithEqualIdentifiersQualifyNoBridge) {
    const TavBox box(machine, 0x1C);
    ModelBuilder builder("Box");
    const auto model = builder.anchor(kUpIds).anchor(kUpIds).internalBridge({"", kUpIds}).build();
    EXPECT_THAT(search(model, 0), IsEmpty());
    EXPECT_THAT(search(model, 1), IsEmpty());
}

TEST_F(AnchorSearch, MapThatCannotBeAppliedRaisesItsStatus) {
    const TavBox box(machine, 0x1C);
    const auto raised = raisedBy([&] {
        search(anchorAlone().internalBridge({"d1", kUpIds}).build());
    });
    EXPECT_EQ(raised.code, nZoPxiDriverTools_1_0::kSlotPathErrBadText);
    EXPECT_EQ(raised.record.value("line", 0), 944);
    // More steps up than there are hops.
    EXPECT_EQ(raisedBy([&] {
                  search(anchorAlone().internalBridge({"-,-,-", kUpIds}).build());
              }).code,
              nZoPxiDriverTools_1_0::kSlotPathErrBadText);
    EXPECT_EQ(raisedBy([&] {
                  search(anchorAlone().internalBridge({"-,-,f1", kUpIds}).build());
              }).code,
              nZoPxiDriverTools_1_0::kSlotPathErrEmptyPath);
}

TEST_F(AnchorSearch, UnderscoreIsNoMap) {
    const TavBox box(machine, 0x1C);
    EXPECT_EQ(raisedBy([&] {
                  search(anchorAlone().internalBridge({"_", kUpIds}).build());
              }).code,
              nZoPxiDriverTools_1_0::kSlotPathErrBadText);
}

TEST_F(AnchorSearch, FailureOfAnyCallIsRaised) {
    const auto anchor = machine.rootPort(0, 0x1C, 0, kUpIds);
    machine.bridge(anchor, 0, 0, kUpIds);
    const auto model = anchorAlone().internalBridge({"d0f0", kUpIds}).build();
    EXPECT_THAT(search(model), ElementsAre(anchorAt(anchor)));
    const std::size_t count = calls.size();
    EXPECT_EQ(count, 6U);
    for (failingCall = 1; failingCall <= count; ++failingCall) {
        EXPECT_EQ(raisedBy([&] { search(model); }).code, testsupport::kBridgeFault) << failingCall;
        EXPECT_EQ(calls.size(), failingCall) << "nothing is asked after a failure";
    }
}

TEST_F(AnchorSearch, ManyAlternateAnchorsEachFindTheirBridge) {
    ModelBuilder builder("Box");
    constexpr std::uint16_t kAnchors = 255;
    for (std::uint16_t i = 0; i < kAnchors; ++i)
        builder.anchor({0x10B5, i, 0x1234, 1});
    for (const char* map : {"d1f0", "d2f0", "d3f0", "d4f0"})
        builder.downstreamPort({map, kDownIds, true});
    const auto model = builder.internalBridge({"", kUpIds}).build();
    machine.rootPort(0, 1, 0, {0x10B5, 0, 0x1234, 1});
    machine.rootPort(0, 2, 0, {0x10B5, kAnchors - 1, 0x1234, 1});
    std::size_t found = 0;
    for (std::size_t anchor = 0; anchor < kAnchors; ++anchor) {
        found += search(model, anchor).size();
        EXPECT_LE(calls.size(), 4U);
    }
    EXPECT_EQ(found, 2U);
}

} // namespace
