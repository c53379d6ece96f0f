// No bridge library on the search path: this program has no run path, and none beside it.
#include "pciBrdWrapper/cPciBrdDynLib.h"
#include "quil/setError.h"
#include "tests/pciBrdWrapper/loaderFailure.h"
#include "tests/pciBrdWrapper/operations.h"
#include "tests/pciBrdWrapper/unbound.h"
#include "tests/support/allocationFaults.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using nZOQUIL000::tErrorStatus;

// The record, with what is known of the system's reason.
std::string recordWith(const std::string& reason) {
    return R"({"error_constant":"zoquilerr_invalidParameter","file":"zodynlib\\dynload",)"
           R"("line":49,"component":"zotavpci",)"
           R"("zodynlib_debug":{"debug":"failed to zodynlib_load library",)"
           R"("path":")" +
           loaderfailure::bridgeLibrary() + R"("},)" + reason + "}";
}

TEST(NoLibrary, IsReportedWithItsNameAndTheLoadersWords) {
    tErrorStatus status;
    const cPciBrdDynLib binding(status);
    EXPECT_EQ(status.code, -52005);
    EXPECT_EQ(status.textOrEmpty(), recordWith(loaderfailure::noLibrary()));
}

TEST(NoLibrary, LeavesEveryFunctionUnbound) {
    tErrorStatus status;
    cPciBrdDynLib binding(status);
    ASSERT_EQ(status.code, -52005);
    expectUnbound(binding, 0);
}

TEST(NoLibrary, RaisesFromEveryOperationOfTheWrapperButTheClosingOnes) {
    tErrorStatus status;
    cPciBrdWrapper_ex wrapper(status);
    ASSERT_EQ(status.code, -52005);
    expectUnbound(wrapper, 0);
    EXPECT_EQ(wrapper.IsSessionOpen(), 0U);
}

TEST(NoLibrary, IsNotEvenLookedForWhenTheStatusIsNegativeAlready) {
    tErrorStatus status;
    ASSERT_TRUE(nZOQUIL000::setError(status, -7, {"f", 1, "c", "k"}));
    cPciBrdDynLib binding(status);
    EXPECT_EQ(status.code, -7);
    EXPECT_STREQ(status.text, R"({"error_constant":"k","file":"f","line":1,"component":"c"})");
    expectUnbound(binding, 0);
}

TEST(NoLibrary, ReplacesAWarning) {
    tErrorStatus status;
    status.code = 313300;
    const cPciBrdDynLib binding(status);
    EXPECT_EQ(status.code, -52005);
}

// Memory for the loader's words is all that may be missing.
TEST(NoLibrary, WithoutMemoryForItsNameIsOutOfMemoryAndForTheWordsIsReportedWithoutThem) {
    std::size_t withoutName = 0;
    std::size_t withoutWords = 0;
    for (std::size_t nth = 1;; ++nth) {
        tErrorStatus status;
        bool happened = false;
        {
            const testsupport::AllocationFault fault(nth);
            cPciBrdDynLib binding(status);
            EXPECT_EQ(binding.OpenBridge(1, 2), -313008);
            happened = fault.happened();
        }
        if (!happened) {
            EXPECT_EQ(status.code, -52005);
            EXPECT_EQ(status.textOrEmpty(), recordWith(loaderfailure::noLibrary()));
            break;
        }
        if (status.code == -52005) {
            ++withoutWords;
            EXPECT_EQ(status.textOrEmpty(), recordWith(loaderfailure::noLibraryWithoutWords()));
            continue;
        }
        ++withoutName;
        EXPECT_EQ(status.code, -52000);
        EXPECT_STREQ(status.textOrEmpty(),
                     R"({"error_constant":"zoquilerr_memoryFull","file":"zodynlib\\dynload",)"
                     R"("line":49,"component":"zotavpci"})");
    }
    EXPECT_GE(withoutName, 1U);
    EXPECT_GE(withoutWords, 1U);
}

TEST(NoLibrary, SlotPathWithoutMemoryForItsTextIsOutOfMemory) {
    tErrorStatus status;
    cPciBrdDynLib binding(status);
    operations::Outputs outputs;
    outputs.path.hops.assign(40, 0xE0);
    std::size_t faults = 0;
    for (std::size_t nth = 1;; ++nth) {
        const testsupport::AllocationFault fault(nth);
        const std::int32_t answer = binding.FindBridgeBySlotPath(1, outputs.path, &outputs.handle);
        if (!fault.happened()) {
            EXPECT_EQ(answer, -313008);
            break;
        }
        ++faults;
        EXPECT_EQ(answer, -52000);
    }
    EXPECT_GE(faults, 1U);
}

} // namespace
