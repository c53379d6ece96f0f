// What the library shows to those who load it.
#include "tests/support/command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

namespace {

TEST(Exports, AreTheEighteenFunctionsAndNothingElse) {
    const auto listed = testsupport::runCommand("nm -D --defined-only '" ZOPCIBRD_FILE "'");
    ASSERT_EQ(listed.exitStatus, 0) << listed.output;
    std::multiset<std::string> exported;
    std::istringstream lines(listed.output);
    std::string address;
    std::string kind;
    std::string name;
    while (lines >> address >> kind >> name)
        exported.insert(kind.append(" ").append(name));
    EXPECT_THAT(
        exported,
        testing::UnorderedElementsAre(
            "T ZoPciBrd_OpenSession", "T ZoPciBrd_CloseSession", "T ZoPciBrd_FindBridgesByPciIds",
            "T ZoPciBrd_FindBridgeByAddress", "T ZoPciBrd_FindBridgeBySlotPath",
            "T ZoPciBrd_FindParentBridgeForBus", "T ZoPciBrd_GetBridgeParent",
            "T ZoPciBrd_GetBridgeChildren", "T ZoPciBrd_GetBusChildren", "T ZoPciBrd_GetRootBuses",
            "T ZoPciBrd_GetBridgeAddress", "T ZoPciBrd_GetBridgeSlotPath",
            "T ZoPciBrd_GetBridgeIds", "T ZoPciBrd_SetAttributeU32", "T ZoPciBrd_GetAttributeU32",
            "T ZoPciBrd_OpenBridge", "T ZoPciBrd_CloseBridge", "T ZoPciBrd_EepromUpdate"));
}

TEST(Exports, LibraryIsNamedWithoutAPrefix) {
    const std::string file = ZOPCIBRD_FILE;
    EXPECT_EQ(file.substr(file.rfind('/') + 1), "zopcibrd.so");
}

} // namespace
