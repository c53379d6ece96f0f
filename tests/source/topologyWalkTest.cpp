// What one found anchor is reported as: address, ports with their labels, walk value.
#include "source/topologyWalk.h"

#include "include/tavPlugin.h"
#include "tests/source/support/nameDatabase.h"
#include "tests/source/support/raised.h"
#include "tests/source/support/recordingBridgeWrapper.h"
#include "tests/source/support/tavBox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZoPciBrdWrapper_15_0::kAttributeLinkSpeed;
using nZoPciBrdWrapper_15_0::kAttributeLinkWidth;
using nZoPciBrdWrapper_15_0::kAttributeSecondaryBus;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testsupport::BusBuilder;
using testsupport::kDownIds;
using testsupport::kRootPortIds;
using testsupport::kUpIds;
using testsupport::ModelBuilder;
using testsupport::raisedBy;
using testsupport::TavBox;

class TopologyWalk : public testing::Test {
protected:
    TopologyWalk() { db.names.Load(); }

    // Walks the model from this anchor, whose address is told as bus 0x77, device 3, function 2.
    tDeviceRecord walk(const tModelDescription& model, BusBuilder::Node anchor) {
        testsupport::RecordingBridgeWrapper wrapper(machine);
        for (const auto& [bridge, attribute, value] : attributes)
            wrapper.setAttribute(bridge, attribute, value);
        wrapper.OpenSession(0);
        wrapper.forgetCalls();
        if (failingCall != 0)
            wrapper.failCall(failingCall);
        const auto models =
            testsupport::ModelTable::loaded({ModelBuilder("Another model").build(), model});
        const auto finish = [&] {
            calls = wrapper.calls();
            wrapper.CloseSession();
        };
        try {
            auto record =
                walkTopology({0x77, 3, 2}, testsupport::slotPath(machine.slotPath(anchor)),
                             db.names, wrapper, models, 1);
            finish();
            return record;
        } catch (...) {
            finish();
            throw;
        }
    }

    testsupport::Raised failedWalk(const tModelDescription& model, BusBuilder::Node anchor) {
        db.names.Save();
        const auto before = db.filesystem.names();
        auto raised = raisedBy([&] { walk(model, anchor); });
        EXPECT_NE(raised.code, 0);
        // A device that is not reported gets no name.
        db.names.Save();
        EXPECT_EQ(db.filesystem.names(), before);
        return raised;
    }

    void expectLabelFault(const testsupport::Raised& raised, const std::string& message) {
        EXPECT_EQ(raised.code, kTavManErrSoftwareFault);
        EXPECT_TRUE(raised.hasSite("source\\cPciTavPluginCache", "kTavManErrSoftwareFault"));
        EXPECT_EQ(raised.member("Message"), message);
    }

    static std::vector<std::string> labelsOf(const tDeviceRecord& record) {
        std::vector<std::string> labels;
        for (const tPortEntry& port : record.ports)
            labels.push_back(port.connectorLabel);
        return labels;
    }

    struct Attribute {
        std::uint32_t bridge;
        std::uint32_t attribute;
        std::uint32_t value;
    };

    BusBuilder machine;
    testsupport::NameDatabase db;
    std::vector<Attribute> attributes;
    std::vector<std::string> calls;
    std::size_t failingCall = 0;
};

constexpr const char* kRanOut = "Iterator advanced to End.";
constexpr const char* kRemain = "The number of labels is more than the number of ports.";

// A model without upstream port.
ModelBuilder portsAlone(std::size_t ports, std::list<std::string> labels) {
    ModelBuilder model("Box");
    model.anchor(kUpIds).internalBridge({"", kUpIds});
    for (std::size_t port = 1; port <= ports; ++port)
        model.downstreamPort({testsupport::portMap(port), kDownIds});
    return model.labels(std::move(labels));
}

TavBox boxWithWidths(BusBuilder& machine, std::vector<unsigned> widths, unsigned upWidth = 8) {
    TavBox::Shape shape;
    shape.widths = std::move(widths);
    shape.upWidth = upWidth;
    return {machine, 0x1C, shape};
}

TEST_F(TopologyWalk, RecordTellsModelCategoryAndName) {
    const TavBox box(machine, 0x1C);
    const auto record = walk(testsupport::boxModel("Box")
                                 .category(eDeviceCategory::SwitchboxTav)
                                 .terminalNameBase("BOX")
                                 .build(),
                             box.up);
    EXPECT_EQ(record.modelName, "Box");
    EXPECT_EQ(record.deviceCategory, 12U);
    EXPECT_EQ(record.terminalName, "BOX1");
    EXPECT_EQ(record.linkWidthPerLabel, 0U);
}

TEST_F(TopologyWalk, AsksNoMoreThanItNeedsWithoutLinkWidths) {
    const TavBox box(machine, 0x1C);
    walk(testsupport::boxModel("Box").build(), box.up);
    EXPECT_THAT(calls, ElementsAre("FindBridgeBySlotPath MR00:00,E0", "GetBridgeAddress 01:00.0 b",
                                   "FindBridgeBySlotPath MR00:08,00,E0",
                                   "GetAttributeU32 02:01.0 20000300",
                                   "FindBridgeBySlotPath MR00:10,00,E0",
                                   "GetAttributeU32 02:02.0 20000300"));
}

TEST_F(TopologyWalk, AsksNoMoreThanItNeedsWithLinkWidths) {
    const auto box = boxWithWidths(machine, {8, 4});
    walk(testsupport::boxModel("Box")
             .labels({"H1", "H2", "A", "B", "C"})
             .linkWidthPerLabel(4)
             .build(),
         box.up);
    EXPECT_THAT(calls,
                ElementsAre("FindBridgeBySlotPath MR00:00,E0", "GetBridgeAddress 01:00.0 b",
                            "OpenBridge 01:00.0", "GetAttributeU32 01:00.0 20000b00",
                            "CloseBridge 01:00.0", "FindBridgeBySlotPath MR00:08,00,E0",
                            "GetAttributeU32 02:01.0 20000300", "OpenBridge 02:01.0",
                            "GetAttributeU32 02:01.0 20000b00", "GetAttributeU32 02:01.0 20000c00",
                            "CloseBridge 02:01.0", "FindBridgeBySlotPath MR00:10,00,E0",
                            "GetAttributeU32 02:02.0 20000300", "OpenBridge 02:02.0",
                            "GetAttributeU32 02:02.0 20000b00", "GetAttributeU32 02:02.0 20000c00",
                            "CloseBridge 02:02.0"));
}

TEST_F(TopologyWalk, FailureOfAnyCallIsRaisedAndLeavesNoBridgeOpen) {
    const auto box = boxWithWidths(machine, {8, 4});
    const auto model = testsupport::boxModel("Box")
                           .labels({"H1", "H2", "A", "B", "C"})
                           .linkWidthPerLabel(4)
                           .build();
    constexpr std::size_t count = 17;
    std::size_t closings = 0;
    for (failingCall = 1; failingCall <= count; ++failingCall) {
        const auto raised = raisedBy([&] { walk(model, box.up); });
        ASSERT_GE(calls.size(), failingCall);
        if (calls[failingCall - 1].starts_with("CloseBridge")) {
            // Closing never fails the walk.
            EXPECT_EQ(raised.code, 0);
            EXPECT_THAT(calls, SizeIs(count));
            ++closings;
        } else {
            EXPECT_EQ(raised.code, testsupport::kBridgeFault) << calls[failingCall - 1];
        }
    }
    EXPECT_EQ(closings, 3U);
    EXPECT_EQ(raisedBy([&] { walk(model, box.up); }).code, 0) << "there is one more call";
    EXPECT_THAT(calls, SizeIs(count));
}

// The reported address.

TEST_F(TopologyWalk, AnchorsAddressIsReported) {
    const TavBox box(machine, 0x1C);
    const auto record = walk(testsupport::boxModel("Box").build(), box.up);
    EXPECT_EQ(record.bus, 0x77);
    EXPECT_EQ(record.device, 3);
    EXPECT_EQ(record.function, 2);
}

TEST_F(TopologyWalk, DescribedBridgesAddressIsReportedInstead) {
    const TavBox box(machine, 0x1C);
    const auto record = walk(
        portsAlone(2, {"A", "B"}).internalBridge({"-", kRootPortIds, true, true}).build(), box.up);
    EXPECT_EQ(record.bus, 0);
    EXPECT_EQ(record.device, 0x1C);
    EXPECT_EQ(record.function, 0);
    EXPECT_EQ(calls[0], "FindBridgeBySlotPath MR00:E0");
    EXPECT_EQ(calls[1], "GetBridgeAddress 00:1c.0 bdf");
}

TEST_F(TopologyWalk, LastDescriptionThatReportsItsAddressWins) {
    const TavBox box(machine, 0x1C);
    // Downstream ports come first, then internal bridges, then the upstream port.
    ModelBuilder model("Box");
    model.anchor(kUpIds)
        .upstreamPort({"", kUpIds, false, true})
        .internalBridge({"d1f0", kDownIds, false, true})
        .downstreamPort({"d2f0", kDownIds, false, true})
        .labels({"Host", "A"});
    const auto record = walk(model.build(), box.up);
    EXPECT_EQ(record.bus, 1);
    EXPECT_EQ(record.device, 0);
    EXPECT_EQ(calls[1], "GetBridgeAddress 02:02.0 bdf");
    EXPECT_EQ(calls[3], "GetBridgeAddress 02:01.0 bdf");
    EXPECT_EQ(calls[5], "GetBridgeAddress 01:00.0 bdf");
}

TEST_F(TopologyWalk, AbsentBridgeThatReportsTheAddressEndsTheWalk) {
    const TavBox box(machine, 0x1C);
    const auto raised = failedWalk(
        portsAlone(2, {"A", "B"}).internalBridge({"d9f0", kDownIds, true, true}).build(), box.up);
    EXPECT_EQ(raised.code, testsupport::kBridgeErrBadArgument);
}

// The upstream port.

TEST_F(TopologyWalk, UpstreamPortsBusIsTheWalkValue) {
    const TavBox box(machine, 0x1C);
    EXPECT_EQ(walk(testsupport::boxModel("Box").build(), box.up).walkValue, 1U);
    ModelBuilder model("Box");
    model.anchor(kUpIds).upstreamPort({"d1f0", kDownIds}).labels({"Host"});
    EXPECT_EQ(walk(model.build(), box.up).walkValue, 2U);
}

TEST_F(TopologyWalk, UpstreamPortOnBusZeroGivesNoWalkValue) {
    const TavBox box(machine, 0x1C);
    ModelBuilder model("Box");
    model.anchor(kUpIds).upstreamPort({"-", kRootPortIds}).labels({"Host"});
    EXPECT_EQ(walk(model.build(), box.up).walkValue, 0xFFFFFFFFU);
}

TEST_F(TopologyWalk, ModelWithoutUpstreamPortGivesAllLabelsToItsDownstreamPorts) {
    const TavBox box(machine, 0x1C);
    const auto record = walk(portsAlone(2, {"A", "B"}).build(), box.up);
    EXPECT_THAT(labelsOf(record), ElementsAre("A", "B"));
    EXPECT_EQ(record.walkValue, 0xFFFFFFFFU);
    EXPECT_EQ(calls[0], "FindBridgeBySlotPath MR00:08,00,E0") << "no upstream port is looked for";
}

TEST_F(TopologyWalk, UpstreamPortTakesTheFirstLabelWithoutAPortEntry) {
    const TavBox box(machine, 0x1C);
    const auto record = walk(testsupport::boxModel("Box").build(), box.up);
    EXPECT_THAT(labelsOf(record), ElementsAre("P1", "P2"));
}

TEST_F(TopologyWalk, UpstreamPortTakesAsManyLabelsAsItsLinkIsWide) {
    const auto box = boxWithWidths(machine, {4}, 16);
    const auto model = testsupport::boxModel("Box", 1)
                           .labels({"H1", "H2", "H3", "H4", "A"})
                           .linkWidthPerLabel(4)
                           .build();
    EXPECT_THAT(labelsOf(walk(model, box.up)), ElementsAre("A"));
}

TEST_F(TopologyWalk, NarrowUpstreamPortTakesNoLabel) {
    const auto box = boxWithWidths(machine, {4}, 2);
    const auto model = testsupport::boxModel("Box", 1).labels({"A"}).linkWidthPerLabel(4).build();
    EXPECT_THAT(labelsOf(walk(model, box.up)), ElementsAre("A"));
}

TEST_F(TopologyWalk, LabelsThatRunOutInTheUpstreamPortAreAFault) {
    const auto box = boxWithWidths(machine, {4}, 16);
    const auto model =
        testsupport::boxModel("Box", 1).labels({"H1", "H2", "H3"}).linkWidthPerLabel(4).build();
    expectLabelFault(failedWalk(model, box.up), kRanOut);
    EXPECT_EQ(calls.back(), "CloseBridge 01:00.0");
    expectLabelFault(failedWalk(testsupport::boxModel("Box", 1).labels({}).build(), box.up),
                     kRanOut);
}

TEST_F(TopologyWalk, LabelsUsedUpByTheUpstreamPortLeaveThePortsWithoutALook) {
    const auto box = boxWithWidths(machine, {4, 4});
    const auto record = walk(testsupport::boxModel("Box").labels({"Host"}).build(), box.up);
    EXPECT_THAT(record.ports, IsEmpty());
    EXPECT_THAT(calls, SizeIs(2));
}

TEST_F(TopologyWalk, AbsentUpstreamPortEndsTheWalk) {
    const TavBox box(machine, 0x1C);
    ModelBuilder model("Box");
    model.anchor(kUpIds).upstreamPort({"d9f0", kUpIds}).labels({"Host"});
    EXPECT_EQ(failedWalk(model.build(), box.up).code, testsupport::kBridgeErrBadArgument);
}

// The downstream ports.

TEST_F(TopologyWalk, PortEntryHoldsTheBusBelowAndNoLinkWithoutWidthPerLabel) {
    const TavBox box(machine, 0x1C);
    const auto record = walk(portsAlone(2, {"A", "B"}).build(), box.up);
    ASSERT_THAT(record.ports, SizeIs(2));
    EXPECT_EQ(record.ports[0].first, machine.secondaryBus(box.downs[0]));
    EXPECT_EQ(record.ports[1].first, machine.secondaryBus(box.downs[1]));
    EXPECT_NE(record.ports[0].first, record.ports[1].first);
    for (const tPortEntry& port : record.ports) {
        EXPECT_EQ(port.second, 0U);
        EXPECT_EQ(port.third, 0U);
    }
}

TEST_F(TopologyWalk, PortTakesAsManyLabelsAsItsLinkIsWide) {
    const auto box = boxWithWidths(machine, {8, 8});
    const auto record =
        walk(portsAlone(2, {"A", "B", "C", "D"}).linkWidthPerLabel(4).build(), box.up);
    EXPECT_THAT(labelsOf(record), ElementsAre("A", "B", "C", "D"));
    EXPECT_EQ(record.linkWidthPerLabel, 4U);
    for (std::size_t i = 0; i < record.ports.size(); ++i) {
        EXPECT_EQ(record.ports[i].first, machine.secondaryBus(box.downs[i / 2]));
        EXPECT_EQ(record.ports[i].second, 8U);
        EXPECT_EQ(record.ports[i].third, 2U);
    }
}

TEST_F(TopologyWalk, WidthThatIsNoMultipleIsRoundedDown) {
    const auto box = boxWithWidths(machine, {6, 4});
    const auto record = walk(portsAlone(2, {"A", "B"}).linkWidthPerLabel(4).build(), box.up);
    EXPECT_THAT(labelsOf(record), ElementsAre("A", "B"));
    EXPECT_EQ(record.ports[0].second, 6U);
}

TEST_F(TopologyWalk, PresentPortTooNarrowForALabelTakesNone) {
    const auto box = boxWithWidths(machine, {2, 4});
    const auto record = walk(portsAlone(2, {"A"}).linkWidthPerLabel(4).build(), box.up);
    ASSERT_THAT(record.ports, SizeIs(1));
    EXPECT_EQ(record.ports[0].first, machine.secondaryBus(box.downs[1]));
}

TEST_F(TopologyWalk, RemainingLabelsAreAFault) {
    const auto box = boxWithWidths(machine, {4});
    expectLabelFault(
        failedWalk(portsAlone(1, {"A", "B", "C"}).linkWidthPerLabel(4).build(), box.up), kRemain);
}

TEST_F(TopologyWalk, AbsentPortTakesNoLabel) {
    const auto box = boxWithWidths(machine, {4, 4});
    // Ports 1 and 2 stand there, port 0 does not.
    ModelBuilder model("Box");
    model.anchor(kUpIds);
    for (const char* map : {"d9f0", "d1f0", "d2f0"})
        model.downstreamPort({map, kDownIds});
    EXPECT_THAT(labelsOf(walk(model.labels({"A", "B"}).build(), box.up)), ElementsAre("A", "B"));
    EXPECT_EQ(walk(model.build(), box.up).ports[0].first, machine.secondaryBus(box.downs[0]));
    // So the labels of a model whose ports are not all there do not come out even.
    expectLabelFault(failedWalk(model.labels({"A", "B", "C"}).build(), box.up), kRemain);
}

TEST_F(TopologyWalk, PortThatNeedsMoreLabelsThanRemainIsAFault) {
    const auto box = boxWithWidths(machine, {8});
    expectLabelFault(failedWalk(portsAlone(1, {"A"}).linkWidthPerLabel(4).build(), box.up),
                     kRanOut);
    EXPECT_EQ(calls.back(), "CloseBridge 02:01.0") << "the bridge is closed also then";
}

TEST_F(TopologyWalk, PortsBeyondTheLastLabelAreNotLookedAt) {
    const auto box = boxWithWidths(machine, {4, 4, 4});
    EXPECT_THAT(labelsOf(walk(portsAlone(3, {"A"}).build(), box.up)), ElementsAre("A"));
    EXPECT_THAT(calls, ElementsAre("FindBridgeBySlotPath MR00:08,00,E0",
                                   "GetAttributeU32 02:01.0 20000300"));
}

TEST_F(TopologyWalk, ModelWithoutPortsAndLabelsHasNoPorts) {
    const TavBox box(machine, 0x1C);
    EXPECT_THAT(walk(portsAlone(0, {}).build(), box.up).ports, IsEmpty());
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(TopologyWalk, EmptyAndEqualLabelsAreLabels) {
    const auto box = boxWithWidths(machine, {4, 4});
    EXPECT_THAT(labelsOf(walk(portsAlone(2, {"", ""}).build(), box.up)), ElementsAre("", ""));
}

TEST_F(TopologyWalk, PortsAreReadOncePerAlternateAnchorWhileLabelsRemain) {
    const auto box = boxWithWidths(machine, {4});
    ModelBuilder model("Box");
    model.anchor(kUpIds).anchor(kRootPortIds).downstreamPort({"d1f0", kDownIds});
    EXPECT_THAT(labelsOf(walk(model.labels({"A"}).build(), box.up)), ElementsAre("A"));
    EXPECT_THAT(labelsOf(walk(model.labels({"A", "B"}).build(), box.up)), ElementsAre("A", "B"));
    expectLabelFault(failedWalk(model.labels({"A", "B", "C"}).build(), box.up), kRemain);
}

TEST_F(TopologyWalk, MapsThatCannotBeAppliedRaiseTheirStatus) {
    const TavBox box(machine, 0x1C);
    ModelBuilder port("Box");
    port.anchor(kUpIds).downstreamPort({"d1", kDownIds}).labels({"A"});
    EXPECT_EQ(failedWalk(port.build(), box.up).code, -313325);
    ModelBuilder upstream("Box");
    upstream.anchor(kUpIds).upstreamPort({"-,-,-", kDownIds}).labels({"A"});
    EXPECT_EQ(failedWalk(upstream.build(), box.up).code, -313325);
    ModelBuilder reported("Box");
    reported.anchor(kUpIds).internalBridge({"-,-,f0", kDownIds, true, true});
    EXPECT_EQ(failedWalk(reported.build(), box.up).code, -313324);
}

// What no bridge should answer.

TEST_F(TopologyWalk, EndlessLinkWidthEndsWithTheLabels) {
    const auto box = boxWithWidths(machine, {4});
    attributes = {{machine.handle(box.downs[0]), kAttributeLinkWidth, 0xFFFFFFFF}};
    expectLabelFault(failedWalk(portsAlone(1, {"A", "B"}).linkWidthPerLabel(1).build(), box.up),
                     kRanOut);
    attributes = {{machine.handle(box.up), kAttributeLinkWidth, 0xFFFFFFFF}};
    expectLabelFault(
        failedWalk(testsupport::boxModel("Box", 1).linkWidthPerLabel(1).build(), box.up), kRanOut);
}

TEST_F(TopologyWalk, WideValuesAreKeptWhole) {
    const auto box = boxWithWidths(machine, {4});
    const std::uint32_t port = machine.handle(box.downs[0]);
    attributes = {{port, kAttributeSecondaryBus, 0x80000001},
                  {port, kAttributeLinkWidth, 0xFFFFFFFF},
                  {port, kAttributeLinkSpeed, 0xFFFFFFFE}};
    // Divides as unsigned numbers: 0xFFFFFFFF by 0x7FFFFFFF.
    const auto record =
        walk(portsAlone(1, {"A", "B"}).linkWidthPerLabel(0x7FFFFFFF).build(), box.up);
    ASSERT_THAT(record.ports, SizeIs(2));
    EXPECT_EQ(record.ports[1].first, 0x80000001U);
    EXPECT_EQ(record.ports[1].second, 0xFFFFFFFFU);
    EXPECT_EQ(record.ports[1].third, 0xFFFFFFFEU);
    EXPECT_EQ(record.linkWidthPerLabel, 0x7FFFFFFFU);
}

TEST_F(TopologyWalk, NegativeLinkWidthPerLabelLeavesPortsWithoutLabels) {
    const auto box = boxWithWidths(machine, {8});
    const auto model = testsupport::boxModel("Box", 1).labels({}).linkWidthPerLabel(-4).build();
    const auto record = walk(model, box.up);
    EXPECT_THAT(record.ports, IsEmpty());
    EXPECT_EQ(record.linkWidthPerLabel, 0xFFFFFFFCU);
    expectLabelFault(failedWalk(portsAlone(1, {"A"}).linkWidthPerLabel(-4).build(), box.up),
                     kRemain);
}

// Terminal names.

TEST_F(TopologyWalk, NameIsStoredForTheAnchorsSlot) {
    const TavBox box(machine, 0x1C);
    // Whatever address is reported.
    walk(portsAlone(2, {"A", "B"}).internalBridge({"-", kRootPortIds, true, true}).build(), box.up);
    db.names.Save();
    EXPECT_THAT(db.filesystem.names(),
                ElementsAre("[MR00:00,E0]", "Model = Box", "TerminalName = TAV1"));
}

TEST_F(TopologyWalk, NameOfTheSlotIsReused) {
    const TavBox box(machine, 0x1C);
    db.store("MR00:00,E0", "Box", "TAV17");
    EXPECT_EQ(walk(testsupport::boxModel("Box").build(), box.up).terminalName, "TAV17");
}

TEST_F(TopologyWalk, NameOfAnotherModelIsReplacedByTheNextFreeOne) {
    const TavBox box(machine, 0x1C);
    db.store("MR00:00,E0", "Card", "TAV1");
    db.store("MR00:00,E8", "Card", "TAV2");
    EXPECT_EQ(walk(testsupport::boxModel("Box").build(), box.up).terminalName, "TAV3");
    EXPECT_EQ(db.storedName("MR00:00,E0"), "TAV3");
    EXPECT_EQ(db.matches("MR00:00,E0", "Box", "TAV"), 1);
}

TEST_F(TopologyWalk, NameOfAnotherBaseIsReplacedByTheNextFreeOne) {
    const TavBox box(machine, 0x1C);
    db.store("MR00:00,E0", "Box", "OLD1");
    EXPECT_EQ(walk(testsupport::boxModel("Box").build(), box.up).terminalName, "TAV1");
}

TEST_F(TopologyWalk, ModelNamedUnderscoreCannotBeNamed) {
    const TavBox box(machine, 0x1C);
    EXPECT_EQ(failedWalk(testsupport::boxModel("_").build(), box.up).code, -388802);
    EXPECT_EQ(failedWalk(testsupport::boxModel("Box").terminalNameBase("_").build(), box.up).code,
              -388802);
}

} // namespace
