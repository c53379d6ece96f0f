// What the library shows to those who load it.
#include "tests/support/exportedSymbols.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Exports, AreTheEighteenFunctionsAndTheListAndNothingElse) {
    EXPECT_THAT(testsupport::exportedSymbols(ZOPCIBRD_FILE),
                testing::UnorderedElementsAre(
                    "T ZoPciBrd_OpenSession", "T ZoPciBrd_CloseSession",
                    "T ZoPciBrd_FindBridgesByPciIds", "T ZoPciBrd_FindBridgeByAddress",
                    "T ZoPciBrd_FindBridgeBySlotPath", "T ZoPciBrd_FindParentBridgeForBus",
                    "T ZoPciBrd_GetBridgeParent", "T ZoPciBrd_GetBridgeChildren",
                    "T ZoPciBrd_GetBusChildren", "T ZoPciBrd_GetRootBuses",
                    "T ZoPciBrd_GetBridgeAddress", "T ZoPciBrd_GetBridgeSlotPath",
                    "T ZoPciBrd_GetBridgeIds", "T ZoPciBrd_SetAttributeU32",
                    "T ZoPciBrd_GetAttributeU32", "T ZoPciBrd_OpenBridge", "T ZoPciBrd_CloseBridge",
                    "T ZoPciBrd_EepromUpdate", "T ZoPciBrd_GetFunctions"));
}

TEST(Exports, LibraryIsNamedWithoutAPrefix) {
    const std::string file = ZOPCIBRD_FILE;
    EXPECT_EQ(file.substr(file.rfind('/') + 1), "zopcibrd.so");
}

} // namespace
