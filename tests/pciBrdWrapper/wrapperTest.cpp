// What the wrapper passes on, returns and raises, operation by operation.
#include "pciBrdWrapper/cPciBrdWrapper_ex.h"
#include "quil/zoerr.h"
#include "tests/pciBrdWrapper/operations.h"
#include "tests/pciBrdWrapper/raised.h"
#include "tests/pciBrdWrapper/scriptedLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using operations::nameOf;
using operations::Outputs;
using scripted::Call;

const std::set<BridgeFunction> kLookups{
    BridgeFunction::FindBridgeByAddress, BridgeFunction::FindBridgeBySlotPath,
    BridgeFunction::FindParentBridgeForBus, BridgeFunction::GetBridgeParent};

class Wrapper : public WithScriptedLibrary {
protected:
    void SetUp() override {
        WithScriptedLibrary::SetUp();
        ASSERT_EQ(loading.code, 0) << loading.textOrEmpty();
        ASSERT_EQ(operations::kWrapper.size(), kBridgeFunctionCount);
        library->prepare(BridgeFunction::OpenSession, {0, {operations::kSession}, {}, {}});
        ASSERT_EQ(wrapper.OpenSession(0), 0);
        library->calls.clear();
    }

    nZOQUIL000::tErrorStatus loading;
    cPciBrdWrapper_ex wrapper{loading};
};

TEST_F(Wrapper, PassesItsSessionFirstAndThenEveryArgumentUnchanged) {
    std::size_t checked = 0;
    for (const auto& operation : operations::kWrapper) {
        if (operation.function == BridgeFunction::OpenSession ||
            operation.function == BridgeFunction::CloseSession)
            continue; // they are about the session itself
        SCOPED_TRACE(nameOf(operation.function));
        library->calls.clear();
        Outputs outputs;
        EXPECT_EQ(operation.run(wrapper, outputs), 0);
        ASSERT_EQ(library->calls.size(), 1U);
        Call call = library->calls[0];
        EXPECT_EQ(call.function, operation.function);
        EXPECT_EQ(call.arguments.at(0), operations::kSession);
        if (call.room) {
            EXPECT_EQ(*call.room, 0U);
            call.arguments.pop_back();
        }
        call.arguments.erase(call.arguments.begin());
        EXPECT_EQ(call.arguments, operation.arguments(outputs));
        EXPECT_EQ(call.text,
                  operation.function == BridgeFunction::FindBridgeBySlotPath ? "MR0A:E0,01" : "");
        ++checked;
    }
    EXPECT_EQ(checked, 16U);
}

TEST_F(Wrapper, RaisesWhatFailsWithStatusAndRecord) {
    std::size_t raised = 0;
    std::size_t returned = 0;
    for (const auto& operation : operations::kWrapper) {
        SCOPED_TRACE(nameOf(operation.function));
        const std::int32_t status = -77000 - static_cast<std::int32_t>(operation.function);
        library->prepare(operation.function, {status, {}, {}, {}});
        Outputs outputs;
        const Raised outcome = outcomeOf([&] { return operation.run(wrapper, outputs); });
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.raised, operation.line != 0);
        if (outcome.raised) {
            EXPECT_EQ(outcome.record, wrapperRecord(operation.line));
            ++raised;
        } else {
            ++returned;
        }
    }
    EXPECT_EQ(raised, 16U);
    EXPECT_EQ(returned, 2U);
}

// The names in double backslashes, as the record has them.
TEST_F(Wrapper, RecordNamesFileLineComponentAndConstant) {
    library->prepare(BridgeFunction::OpenBridge, {-313001, {}, {}, {}});
    try {
        wrapper.OpenBridge(3);
        FAIL() << "nothing was raised";
    } catch (const zoerr::Exception& exception) {
        EXPECT_EQ(exception.status().code, -313001);
        EXPECT_STREQ(exception.what(),
                     R"({"error_constant":"l_MacroStatus",)"
                     R"("file":"dep_mirror\\deps\\pciBrdWrapperMock\\includes\\cpcibrdwrapper_ex",)"
                     R"("line":429,"component":"zotavpci"})");
    }
}

TEST_F(Wrapper, ReturnsWarningsAndLeavesListsAndPathsThatTheyComeWith) {
    std::size_t returned = 0;
    for (const auto& operation : operations::kWrapper) {
        SCOPED_TRACE(nameOf(operation.function));
        const std::int32_t status = 500 + static_cast<std::int32_t>(operation.function);
        library->prepare(operation.function, {status, {}, 3, {}});
        Outputs outputs;
        outputs.bridges.push_back(9);
        outputs.buses.push_back(8);
        const Raised outcome = outcomeOf([&] { return operation.run(wrapper, outputs); });
        EXPECT_FALSE(outcome.raised);
        EXPECT_EQ(outcome.status, status);
        EXPECT_THAT(outputs.bridges, testing::ElementsAre(9));
        EXPECT_THAT(outputs.buses, testing::ElementsAre(8));
        EXPECT_THAT(outputs.path.hops, testing::ElementsAre(0xE0, 0x01));
        ++returned;
    }
    EXPECT_EQ(returned, 18U);
}

TEST_F(Wrapper, NotFoundIsAnAnswerOfTheFourLookUpsAndAFailureElsewhere) {
    std::size_t answers = 0;
    for (const auto& operation : operations::kWrapper) {
        SCOPED_TRACE(nameOf(operation.function));
        library->prepare(operation.function, {kPciBrdErrNotFound, {0x1234}, {}, {}});
        Outputs outputs;
        const Raised outcome = outcomeOf([&] { return operation.run(wrapper, outputs); });
        EXPECT_EQ(outcome.status, -313003);
        if (kLookups.contains(operation.function)) {
            EXPECT_FALSE(outcome.raised);
            EXPECT_EQ(outputs.handle, 0xFFFFFFFF);
            ++answers;
        } else {
            EXPECT_EQ(outcome.raised, operation.line != 0);
            EXPECT_EQ(outputs.handle, Outputs::kUntouched);
        }
    }
    EXPECT_EQ(answers, 4U);
}

TEST_F(Wrapper, LookUpThatFindsHandsOutTheHandle) {
    std::size_t found = 0;
    for (const auto& operation : operations::kWrapper) {
        if (!kLookups.contains(operation.function))
            continue;
        for (const std::int32_t status : {0, 12}) {
            library->prepare(operation.function, {status, {0x00A1B2C3}, {}, {}});
            Outputs outputs;
            EXPECT_EQ(operation.run(wrapper, outputs), status) << nameOf(operation.function);
            EXPECT_EQ(outputs.handle, 0x00A1B2C3U) << nameOf(operation.function);
            ++found;
        }
    }
    EXPECT_EQ(found, 8U);
}

TEST_F(Wrapper, RaisesTheStatusOfAPathThatCannotBeLookedFor) {
    Outputs outputs;
    outputs.path.state.code = -313325;
    const Raised outcome =
        outcomeOf([&] { return wrapper.FindBridgeBySlotPath(outputs.path, outputs.handle); });
    EXPECT_TRUE(outcome.raised);
    EXPECT_EQ(outcome.status, -313325);
    EXPECT_EQ(outcome.record, wrapperRecord(173));
    EXPECT_TRUE(library->calls.empty());
    EXPECT_EQ(outputs.handle, Outputs::kUntouched);
}

TEST_F(Wrapper, FetchesAndReadsTheTextOfASlotPath) {
    library->prepare(BridgeFunction::GetBridgeSlotPath, {kPciBrdErrBufferTooSmall, {}, 8, {}});
    library->prepare(BridgeFunction::GetBridgeSlotPath, {0, {}, {}, std::string("MR01:E8\0", 8)});
    Outputs outputs;
    EXPECT_EQ(wrapper.GetBridgeSlotPath(5, outputs.path), 0);
    EXPECT_EQ(outputs.path.rootBus, 1);
    EXPECT_THAT(outputs.path.hops, testing::ElementsAre(0xE8));
}

TEST_F(Wrapper, RaisesATextThatIsNoSlotPathOrCannotBeFetched) {
    const scripted::Answer bad[] = {{0, {}, {}, "XXXXXXXX"}, {-313325, {}, {}, {}}};
    for (const scripted::Answer& second : bad) {
        library->prepare(BridgeFunction::GetBridgeSlotPath, {kPciBrdErrBufferTooSmall, {}, 8, {}});
        library->prepare(BridgeFunction::GetBridgeSlotPath, second);
        Outputs outputs;
        const Raised outcome =
            outcomeOf([&] { return wrapper.GetBridgeSlotPath(5, outputs.path); });
        EXPECT_TRUE(outcome.raised);
        EXPECT_EQ(outcome.status, -313325);
        EXPECT_EQ(outcome.record, wrapperRecord(365));
    }
}

TEST_F(Wrapper, PassesNullOutputsOfAnAddressOn) {
    library->prepare(BridgeFunction::GetBridgeAddress, {0, {1, 2, 3}, {}, {}});
    std::uint8_t bus = 0xFF;
    EXPECT_EQ(wrapper.GetBridgeAddress(5, &bus, nullptr, nullptr), 0);
    EXPECT_EQ(bus, 1);
    EXPECT_THAT(library->calls.at(0).arguments,
                testing::ElementsAre(operations::kSession, 5,
                                     reinterpret_cast<std::uintptr_t>(&bus), 0, 0));
}

TEST_F(Wrapper, HandsOutAddressIdentifiersAndAttribute) {
    Outputs o;
    library->prepare(BridgeFunction::GetBridgeAddress, {0, {0xFE, 0x1F, 7}, {}, {}});
    library->prepare(BridgeFunction::GetBridgeIds, {0, {0x8086, 0xA110, 0x1043, 0x836B}, {}, {}});
    library->prepare(BridgeFunction::GetAttributeU32, {0, {0xFEDCBA98}, {}, {}});
    EXPECT_EQ(wrapper.GetBridgeAddress(5, &o.bytes[0], &o.bytes[1], &o.bytes[2]), 0);
    EXPECT_EQ(wrapper.GetBridgeIds(5, &o.words[0], &o.words[1], &o.words[2], &o.words[3]), 0);
    EXPECT_EQ(wrapper.GetAttributeU32(5, kAttributeLinkSpeed, o.value), 0);
    EXPECT_THAT(o.bytes, testing::ElementsAre(0xFE, 0x1F, 7));
    EXPECT_THAT(o.words, testing::ElementsAre(0x8086, 0xA110, 0x1043, 0x836B));
    EXPECT_EQ(o.value, 0xFEDCBA98);
}

} // namespace
