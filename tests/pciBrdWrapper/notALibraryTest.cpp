// A file that has the bridge library's name and is no library: this program's run path leads to it.
#include "pciBrdWrapper/cPciBrdDynLib.h"
#include "tests/pciBrdWrapper/loaderFailure.h"
#include "tests/pciBrdWrapper/unbound.h"

#include <gtest/gtest.h>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPciBrdWrapper_15_0;
using nZOQUIL000::tErrorStatus;

TEST(NotALibrary, IsReportedWithTheNameAskedForAndTheLoadersWords) {
    tErrorStatus status;
    const cPciBrdDynLib binding(status);
    EXPECT_EQ(status.code, -52005);
    EXPECT_STREQ(status.textOrEmpty(),
                 (R"({"error_constant":"zoquilerr_invalidParameter","file":"zodynlib\\dynload",)"
                  R"("line":49,"component":"zotavpci",)"
                  R"("zodynlib_debug":{"debug":"failed to zodynlib_load library",)"
                  R"("path":")" +
                  loaderfailure::bridgeLibrary() + R"("},)" +
                  loaderfailure::notALibrary(TAV_BRIDGE_LIBRARY) + "}")
                     .c_str());
}

TEST(NotALibrary, LeavesEveryFunctionUnbound) {
    tErrorStatus status;
    cPciBrdDynLib binding(status);
    ASSERT_EQ(status.code, -52005);
    expectUnbound(binding, 0);
}

} // namespace
