// The two operations of the binding that translate between slot paths and the library's text.
#include "pciBrdWrapper/cPciBrdDynLib.h"
#include "quil/setError.h"
#include "tests/pciBrdWrapper/operations.h"
#include "tests/pciBrdWrapper/scriptedLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using nZOQUIL000::tErrorStatus;
using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath;
using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::kSlotPathErrBadText;
using scripted::Answer;
using scripted::Call;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kSlotPath = BridgeFunction::GetBridgeSlotPath;

class SlotPathProtocol : public WithScriptedLibrary {
protected:
    SlotPathProtocol() {
        path.rootBus = 0x0A;
        path.hops = {0xE0, 0x01};
    }

    // The library announces `size` and then answers `second`.
    std::int32_t askFor(std::uint32_t size, const Answer& second) {
        library->prepare(kSlotPath, {kPciBrdErrBufferTooSmall, {}, size, {}});
        library->prepare(kSlotPath, second);
        return binding.GetBridgeSlotPath(operations::kSession, operations::kBridge, path);
    }
    static Answer text(const std::string& bytes) { return {0, {}, {}, bytes}; }
    static Answer terminated(std::string bytes) {
        bytes.push_back('\0');
        return text(bytes);
    }
    [[nodiscard]] std::string pathText() const {
        std::string result;
        tErrorStatus status;
        path.FormatMachineText(result, status);
        return result;
    }

    tErrorStatus loading;
    cPciBrdDynLib binding{loading};
    cSlotPath path;
};

TEST_F(SlotPathProtocol, AsksForTheSizeThenForTheTextInABufferOfThatSize) {
    ASSERT_EQ(loading.code, 0) << loading.textOrEmpty();
    EXPECT_EQ(askFor(14, terminated("MR1A:08,10,E1")), 0);
    EXPECT_EQ(path.rootBus, 0x1A);
    EXPECT_THAT(path.hops, ElementsAre(0x08, 0x10, 0xE1));

    ASSERT_EQ(library->calls.size(), 2U);
    const Call& size = library->calls[0];
    const Call& fetch = library->calls[1];
    EXPECT_EQ(size.arguments[2], 0U);
    EXPECT_EQ(size.room, 0U);
    EXPECT_EQ(fetch.arguments[0], operations::kSession);
    EXPECT_EQ(fetch.arguments[1], operations::kBridge);
    EXPECT_NE(fetch.arguments[2], 0U);
    EXPECT_EQ(fetch.room, 14U);
}

TEST_F(SlotPathProtocol, FirstAnswerOtherThanTooSmallIsReturnedAndLeavesThePath) {
    const std::int32_t answers[] = {0, 1, 313300, kPciBrdErrNotFound, -313001, -52000};
    for (const std::int32_t answer : answers) {
        *library = scripted::Script();
        library->prepare(kSlotPath, {answer, {}, 14, {}});
        EXPECT_EQ(binding.GetBridgeSlotPath(1, 2, path), answer);
        EXPECT_EQ(library->calls.size(), 1U) << answer;
        EXPECT_EQ(pathText(), "MR0A:E0,01") << answer;
    }
}

TEST_F(SlotPathProtocol, FailureOfTheSecondCallIsReturnedAndLeavesThePath) {
    Answer refusal = terminated("MR00:08");
    refusal.status = -313001;
    EXPECT_EQ(askFor(8, refusal), -313001);
    EXPECT_EQ(pathText(), "MR0A:E0,01");
}

TEST_F(SlotPathProtocol, SizeThatGrowsBetweenTheCallsIsAFailure) {
    EXPECT_EQ(askFor(8, {kPciBrdErrBufferTooSmall, {}, 80, {}}), kPciBrdErrBufferTooSmall);
    EXPECT_EQ(pathText(), "MR0A:E0,01");
    EXPECT_EQ(library->calls.size(), 2U) << "asked a third time";
}

TEST_F(SlotPathProtocol, GrownSizeWithASuccessIsNotReadBeyondTheBuffer) {
    EXPECT_EQ(askFor(8, {0, {}, 0xFFFFFFFF, "MR00:08,"}), 0);
    EXPECT_EQ(pathText(), "MR00:08");
}

TEST_F(SlotPathProtocol, WarningOfTheSecondCallGivesTheTextAndTheParsersStatus) {
    Answer warning = terminated("MR00:08");
    warning.status = 5;
    EXPECT_EQ(askFor(8, warning), 0);
    EXPECT_EQ(pathText(), "MR00:08");
}

TEST_F(SlotPathProtocol, TextThatCannotBeReadGivesTheParsersStatus) {
    EXPECT_EQ(askFor(9, terminated("MR00:08,XY")), kSlotPathErrBadText);
    EXPECT_EQ(askFor(3, terminated("no")), kSlotPathErrBadText);
}

TEST_F(SlotPathProtocol, PathInAnErrorGivesItsStatusAfterTheCalls) {
    path.state.code = -99;
    EXPECT_EQ(askFor(8, terminated("MR00:08")), -99);
    EXPECT_EQ(path.hops.size(), 2U);
}

TEST_F(SlotPathProtocol, TextEndsAtItsFirstZero) {
    EXPECT_EQ(askFor(20, terminated(std::string("MR00:08\0,10,E1", 14))), 0);
    EXPECT_EQ(pathText(), "MR00:08");
}

TEST_F(SlotPathProtocol, TextWithoutAnEndIsReadToTheEndOfTheBuffer) {
    EXPECT_EQ(askFor(10, text("MR00:08,10,E1")), 0);
    EXPECT_EQ(pathText(), "MR00:08,10");
}

TEST_F(SlotPathProtocol, BufferIsZeroWhereTheLibraryDidNotWrite) {
    // Memory that was used before must not show up behind a text without an end.
    for (int i = 0; i < 100; ++i) {
        auto used = std::make_unique<std::string>(4000, '1');
        used.reset();
        ASSERT_EQ(askFor(4001, text("MR00:0")), 0);
        ASSERT_EQ(pathText(), "MR00:00");
        ASSERT_EQ(askFor(4001, text("")), 0);
        ASSERT_EQ(pathText(), "MR00:");
    }
}

TEST_F(SlotPathProtocol, SizeZeroIsAnEmptyText) {
    EXPECT_EQ(askFor(0, text("MR00:08")), 0);
    EXPECT_EQ(library->calls.at(1).room, 0U);
    EXPECT_EQ(path.rootBus, 0);
    EXPECT_THAT(path.hops, IsEmpty());
}

TEST_F(SlotPathProtocol, AbsurdSizeIsServedOrIsOutOfMemory) {
    try {
        EXPECT_EQ(askFor(0xFFFFFFFF, terminated("MR00:08")), 0);
        EXPECT_EQ(pathText(), "MR00:08");
        EXPECT_EQ(library->calls.at(1).room, 0xFFFFFFFF);
    } catch (const std::bad_alloc&) {
        EXPECT_EQ(pathText(), "MR0A:E0,01");
        EXPECT_EQ(library->calls.size(), 1U);
    }
}

TEST_F(SlotPathProtocol, PathInAnErrorIsNotLookedFor) {
    path.state.code = kSlotPathErrBadText;
    std::uint32_t bridge = 7;
    EXPECT_EQ(binding.FindBridgeBySlotPath(1, path, &bridge), kSlotPathErrBadText);
    EXPECT_EQ(bridge, 7U);
    EXPECT_THAT(library->calls, IsEmpty());
}

TEST_F(SlotPathProtocol, PathWithoutHopsIsLookedForAsItPrints) {
    path.hops.clear();
    std::uint32_t bridge = 7;
    library->prepare(BridgeFunction::FindBridgeBySlotPath, {0, {0x1234}, {}, {}});
    EXPECT_EQ(binding.FindBridgeBySlotPath(1, path, &bridge), 0);
    EXPECT_EQ(library->calls.at(0).text, "MR0A:");
    EXPECT_EQ(bridge, 0x1234U);
}

TEST_F(SlotPathProtocol, PathUnderAWarningIsLookedFor) {
    path.state.code = 3;
    std::uint32_t bridge = 7;
    EXPECT_EQ(binding.FindBridgeBySlotPath(1, path, &bridge), 0);
    EXPECT_EQ(library->calls.size(), 1U);
}

} // namespace
