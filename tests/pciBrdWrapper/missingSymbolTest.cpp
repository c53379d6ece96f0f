// A bridge library that lacks the seventh function: this program's run path leads to one.
#include "pciBrdWrapper/cPciBrdDynLib.h"
#include "tests/pciBrdWrapper/loaderFailure.h"
#include "tests/pciBrdWrapper/operations.h"
#include "tests/pciBrdWrapper/scriptedLibrary.h"
#include "tests/pciBrdWrapper/unbound.h"

#include <gtest/gtest.h>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using nZOQUIL000::tErrorStatus;
using operations::nameOf;

constexpr std::size_t kSeventh = 6;

// The library that the program loads has all but that one function.
TEST(MissingSymbol, IsTheOnlyOneThatTheLibraryLacks) {
    platform::DynamicLibrary library;
    ASSERT_TRUE(library.load(TAV_BRIDGE_LIBRARY)) << library.failureText();
    for (std::size_t i = 0; i < kBridgeFunctionCount; ++i)
        EXPECT_EQ(library.symbol(kBridgeSymbols[i].name) == nullptr, i == kSeventh) << i;
}

TEST(MissingSymbol, IsNamedInTheRecordWithTheLoadersWords) {
    tErrorStatus status;
    const cPciBrdDynLib binding(status);
    EXPECT_EQ(status.code, -52005);
    EXPECT_STREQ(status.textOrEmpty(),
                 (R"({"error_constant":"zoquilerr_invalidParameter","file":"zodynlib\\dynload",)"
                  R"("line":49,"component":"zotavpci",)"
                  R"("zodynlib_debug":{"debug":"failed to get symbol",)"
                  R"("zodynlib_symbol":"ZoPciBrd_GetBridgeParent"},)" +
                  loaderfailure::missingSymbol(TAV_BRIDGE_LIBRARY, "ZoPciBrd_GetBridgeParent") +
                  "}")
                     .c_str());
}

TEST(MissingSymbol, ReplacesAWarning) {
    tErrorStatus status;
    status.code = 313300;
    const cPciBrdDynLib binding(status);
    EXPECT_EQ(status.code, -52005);
}

TEST(MissingSymbol, LeavesTheSixBeforeItBoundAndTheElevenAfterItUnbound) {
    ScriptedLibrary library;
    *library = scripted::Script();
    tErrorStatus status;
    cPciBrdDynLib binding(status);
    for (std::size_t i = 0; i < kSeventh; ++i) {
        const auto& operation = operations::kBinding[i];
        const std::int32_t expected = -1000 - static_cast<std::int32_t>(i);
        library->prepare(operation.function, {expected, {}, {}, {}});
        operations::Outputs outputs;
        EXPECT_EQ(operation.run(binding, outputs), expected) << nameOf(operation.function);
    }
    EXPECT_EQ(library->calls.size(), kSeventh);

    // The library has these functions, but they were never looked up.
    expectUnbound(binding, kSeventh);
    EXPECT_EQ(library->calls.size(), kSeventh);
}

TEST(MissingSymbol, KeepsTheLibraryLoadedUntilTheBindingIsDestroyed) {
    bool unloaded = false;
    {
        ScriptedLibrary library;
        library->unloaded = &unloaded;
        tErrorStatus status;
        const cPciBrdDynLib binding(status);
        library.release();
        EXPECT_FALSE(unloaded);
    }
    EXPECT_TRUE(unloaded);
}

TEST(MissingSymbol, RaisesFromTheWrapperWhatIsNotBound) {
    ScriptedLibrary library;
    *library = scripted::Script();
    tErrorStatus status;
    cPciBrdWrapper_ex wrapper(status);
    EXPECT_EQ(status.code, -52005);
    EXPECT_EQ(wrapper.OpenSession(0), 0);
    EXPECT_EQ(wrapper.IsSessionOpen(), 1U);
    expectUnbound(wrapper, kSeventh);
    EXPECT_EQ(wrapper.CloseSession(), 0);
    EXPECT_EQ(library->calls.size(), 2U);
}

} // namespace
