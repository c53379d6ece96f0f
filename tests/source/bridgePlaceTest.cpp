// Where a traversal map leads.
#include "source/bridgePlace.h"

#include "tests/source/support/raised.h"
#include "tests/source/support/recordingBridgeWrapper.h"
#include "tests/source/support/slotPaths.h"
#include "tests/source/support/tavBox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using nZoPciBrdWrapper_15_0::kNoHandle;
using testsupport::raisedBy;

class BridgePlace : public testing::Test {
protected:
    void SetUp() override { wrapper.OpenSession(0); }
    void TearDown() override { wrapper.CloseSession(); }

    std::uint32_t find(const std::string& map) { return findDescribedBridge(anchor, map, wrapper); }

    testsupport::BusBuilder machine;
    testsupport::TavBox box{machine, 0x1C};
    testsupport::RecordingBridgeWrapper wrapper{machine};
    nZoPxiDriverTools_1_0::cSlotPath anchor = testsupport::slotPath(machine.slotPath(box.up));
};

TEST_F(BridgePlace, EmptyMapIsTheAnchorItself) {
    EXPECT_EQ(find(""), machine.handle(box.up));
}

TEST_F(BridgePlace, StepsLeadDownAndUpFromTheAnchor) {
    EXPECT_EQ(find("d2f0"), machine.handle(box.downs[1]));
    EXPECT_EQ(find("-"), machine.handle(box.port));
    EXPECT_EQ(find("-,d0f0,d1f0"), machine.handle(box.downs[0]));
}

TEST_F(BridgePlace, EmptyPlaceIsNoError) {
    EXPECT_EQ(find("d9f0"), kNoHandle);
}

TEST_F(BridgePlace, AnchorsPathStaysAsItWas) {
    find("d2f0");
    EXPECT_EQ(testsupport::textOf(anchor), machine.slotPath(box.up));
}

TEST_F(BridgePlace, BadMapRaisesWithoutALookUp) {
    wrapper.forgetCalls();
    EXPECT_EQ(raisedBy([&] { find("d1f0,x"); }).code, nZoPxiDriverTools_1_0::kSlotPathErrBadText);
    EXPECT_THAT(wrapper.calls(), testing::IsEmpty());
}

TEST_F(BridgePlace, PathInErrorRaisesItsStatus) {
    anchor.state.code = -52000;
    EXPECT_EQ(raisedBy([&] { find("d1f0"); }).code, -52000);
    EXPECT_EQ(raisedBy([&] { find(""); }).code, -52000);
}

} // namespace
