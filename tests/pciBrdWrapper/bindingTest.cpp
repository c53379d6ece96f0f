// Loading and unloading the bridge library, and what the binding forwards.
#include "pciBrdWrapper/cPciBrdDynLib.h"
#include "quil/setError.h"
#include "tests/pciBrdWrapper/operations.h"
#include "tests/pciBrdWrapper/scriptedLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using nZOQUIL000::tErrorStatus;
using operations::nameOf;
using operations::Outputs;
using scripted::Call;
using testing::ElementsAre;
using testing::Pair;

TEST(BridgeSymbols, EighteenNamesInTheOrderOfBindingWithTheirAnswersWhenUnbound) {
    std::vector<std::pair<std::string, std::int32_t>> symbols;
    for (const BridgeSymbol& symbol : kBridgeSymbols)
        symbols.emplace_back(symbol.name, symbol.whenUnbound);
    EXPECT_THAT(
        symbols,
        ElementsAre(
            Pair("ZoPciBrd_OpenSession", -313008), //
            Pair("ZoPciBrd_CloseSession", 0), Pair("ZoPciBrd_FindBridgesByPciIds", -313008),
            Pair("ZoPciBrd_FindBridgeByAddress", -313008),
            Pair("ZoPciBrd_FindBridgeBySlotPath", -313008),
            Pair("ZoPciBrd_FindParentBridgeForBus", -313008),
            Pair("ZoPciBrd_GetBridgeParent", -313008), Pair("ZoPciBrd_GetBridgeChildren", -313008),
            Pair("ZoPciBrd_GetBusChildren", -313008), Pair("ZoPciBrd_GetRootBuses", -313008),
            Pair("ZoPciBrd_GetBridgeAddress", -313008), Pair("ZoPciBrd_GetBridgeSlotPath", -313008),
            Pair("ZoPciBrd_GetBridgeIds", -313008), Pair("ZoPciBrd_SetAttributeU32", -313008),
            Pair("ZoPciBrd_GetAttributeU32", -313008), Pair("ZoPciBrd_OpenBridge", -313008),
            Pair("ZoPciBrd_CloseBridge", 0), Pair("ZoPciBrd_EepromUpdate", -313008)));
}

// Nothing else has loaded the library here, so this is the search for the bare name.
TEST(BindingLoads, TheLibraryThatTheSearchFindsFirst) {
    tErrorStatus status;
    cPciBrdDynLib binding(status);
    ASSERT_EQ(status.code, 0) << status.textOrEmpty();
    EXPECT_EQ(status.text, nullptr);
    EXPECT_EQ(binding.OpenBridge(1, 2), 0);

    const ScriptedLibrary library;
    ASSERT_EQ(library->calls.size(), 1U) << "the call went to another library";
    EXPECT_EQ(library->calls[0].function, BridgeFunction::OpenBridge);
}

TEST(BindingLoads, AndUnloadsWhenItIsDestroyed) {
    bool unloaded = false;
    {
        ScriptedLibrary library;
        library->unloaded = &unloaded;
        tErrorStatus status;
        const cPciBrdDynLib binding(status);
        ASSERT_EQ(status.code, 0) << status.textOrEmpty();
        library.release();
        EXPECT_FALSE(unloaded) << "the binding does not keep the library loaded";
    }
    EXPECT_TRUE(unloaded);
}

using Binding = WithScriptedLibrary;

TEST_F(Binding, IsNotMadeWhenTheStatusIsNegativeAlready) {
    tErrorStatus status;
    ASSERT_TRUE(nZOQUIL000::setError(status, -7, {"f", 1, "c", "k"}));
    cPciBrdDynLib binding(status);
    EXPECT_EQ(status.code, -7);
    EXPECT_STREQ(status.text, R"({"error_constant":"k","file":"f","line":1,"component":"c"})");
    EXPECT_EQ(binding.OpenBridge(1, 2), kPciBrdErrUnavailable);
    EXPECT_EQ(binding.CloseBridge(1, 2), 0);
    EXPECT_TRUE(library->calls.empty());

    bool unloaded = false;
    library->unloaded = &unloaded;
    library.release();
    EXPECT_TRUE(unloaded) << "the binding has loaded the library";
    library = ScriptedLibrary();
}

TEST_F(Binding, IsMadeUnderAWarningWhichStays) {
    tErrorStatus status;
    status.code = 313300;
    cPciBrdDynLib binding(status);
    EXPECT_EQ(status.code, 313300);
    EXPECT_EQ(binding.OpenBridge(1, 2), 0);
    EXPECT_EQ(library->calls.size(), 1U);
}

TEST_F(Binding, ForwardsEveryArgumentUnchangedInOrderToTheFunctionOfItsName) {
    tErrorStatus status;
    cPciBrdDynLib binding(status);
    ASSERT_EQ(status.code, 0) << status.textOrEmpty();

    ASSERT_EQ(operations::kBinding.size(), kBridgeFunctionCount);
    for (std::size_t i = 0; i < operations::kBinding.size(); ++i) {
        const auto& operation = operations::kBinding[i];
        SCOPED_TRACE(nameOf(operation.function));
        EXPECT_EQ(static_cast<std::size_t>(operation.function), i);
        *library = scripted::Script();
        Outputs outputs;
        EXPECT_EQ(operation.run(binding, outputs), 0);

        ASSERT_EQ(library->calls.size(), 1U);
        Call call = library->calls[0];
        EXPECT_EQ(call.function, operation.function);
        // The size that the binding asks for is a variable of its own.
        if (operation.function == BridgeFunction::GetBridgeSlotPath) {
            EXPECT_NE(call.arguments.back(), 0U);
            EXPECT_EQ(call.room, 0U);
            call.arguments.pop_back();
        }
        EXPECT_EQ(call.arguments, operation.arguments(outputs));
        EXPECT_EQ(call.text,
                  operation.function == BridgeFunction::FindBridgeBySlotPath ? "MR0A:E0,01" : "");
    }
}

TEST_F(Binding, ReturnsTheStatusOfEveryFunction) {
    tErrorStatus status;
    cPciBrdDynLib binding(status);
    std::size_t answered = 0;
    for (const auto& operation : operations::kBinding) {
        constexpr std::int32_t kAnswers[] = {std::numeric_limits<std::int32_t>::min(),
                                             kPciBrdErrNotFound,
                                             kPciBrdErrUnavailable,
                                             -1,
                                             0,
                                             1,
                                             std::numeric_limits<std::int32_t>::max()};
        for (const std::int32_t expected : kAnswers) {
            library->prepare(operation.function, {expected, {}, {}, {}});
            Outputs outputs;
            EXPECT_EQ(operation.run(binding, outputs), expected) << nameOf(operation.function);
            ++answered;
        }
    }
    EXPECT_EQ(answered, 7U * 18U);
    EXPECT_EQ(library->calls.size(), answered);
}

TEST_F(Binding, LetsTheLibraryWriteTheOutputs) {
    tErrorStatus status;
    cPciBrdDynLib binding(status);
    Outputs outputs;
    library->prepare(BridgeFunction::GetBridgeIds, {0, {0x8086, 0xA110, 0x1043, 0x836B}, {}, {}});
    EXPECT_EQ(binding.GetBridgeIds(1, 2, &outputs.words[0], &outputs.words[1], &outputs.words[2],
                                   &outputs.words[3]),
              0);
    EXPECT_THAT(outputs.words, ElementsAre(0x8086, 0xA110, 0x1043, 0x836B));

    library->prepare(BridgeFunction::GetBridgeChildren, {0, {11, 12, 13}, 3, {}});
    EXPECT_EQ(binding.GetBridgeChildren(1, 2, outputs.array, &outputs.count), 0);
    EXPECT_THAT(outputs.array, ElementsAre(11, 12));
    EXPECT_EQ(outputs.count, 3U);
}

TEST_F(Binding, PassesNullOutputsOfAnAddressOn) {
    tErrorStatus status;
    cPciBrdDynLib binding(status);
    library->prepare(BridgeFunction::GetBridgeAddress, {0, {1, 2, 3}, {}, {}});
    std::uint8_t device = 0;
    EXPECT_EQ(binding.GetBridgeAddress(1, 2, nullptr, &device, nullptr), 0);
    EXPECT_EQ(device, 2);
    EXPECT_THAT(library->calls[0].arguments,
                ElementsAre(1, 2, 0, reinterpret_cast<std::uintptr_t>(&device), 0));
}

} // namespace
