// What the plug-in shows to those who load it, and what it needs from them.
#include "tests/support/command.h"
#include "tests/support/exportedSymbols.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Exports, AreTheFiveFunctionsAndNothingElse) {
    EXPECT_THAT(testsupport::exportedSymbols(ZOTAVPCI_FILE),
                testing::UnorderedElementsAre(
                    "T tavPlugin_initialize", "T tavPlugin_finalize", "T tavPlugin_getDeviceCount",
                    "T tavPlugin_getDeviceAttributeI32", "T tavPlugin_getDeviceAttributeUTF8"));
}

TEST(Exports, LibraryIsNamedWithoutAPrefix) {
    const std::string file = ZOTAVPCI_FILE;
    EXPECT_EQ(file.substr(file.rfind('/') + 1), "zotavpci.so");
}

// The bridge library is looked for beside the plug-in and never in the current folder.
TEST(RunPath, IsThePluginsOwnFolder) {
    const auto listed = testsupport::runCommand("readelf -d '" ZOTAVPCI_FILE
                                                "' | sed -n 's/.*R.*PATH.*\\[\\(.*\\)\\]/\\1/p'");
    EXPECT_EQ(listed.output, "$ORIGIN\n");
}

} // namespace
