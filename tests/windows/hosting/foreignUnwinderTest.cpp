// 32-bit hosts that have the compiler's shared unwinder loaded: raising inside the plug-in still
// gives a status, and nothing of the plug-in stays behind in that unwinder.
#include "tests/support/program.h"
#include "tests/windows/hosting/nothingLeft.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

void expectServed(const char* host, const std::string& order) {
    const testsupport::ProgramResult result = testsupport::runProgram(
        host, {order, std::filesystem::path(ZOTAVPCI_FILE).parent_path().string()});
    EXPECT_EQ(result.exitStatus, 0) << result.output << result.error;
}

TEST(ForeignUnwinder, MayBeLoadedBeforeThePlugin) {
    expectServed(TAV_FOREIGN_UNWINDER_HOST, "before");
}

TEST(ForeignUnwinder, MayBeLoadedAfterThePlugin) {
    expectServed(TAV_FOREIGN_UNWINDER_HOST, "after");
}

TEST(ForeignUnwinder, MayBeTheHostsOwn) {
    expectServed(TAV_SHARED_UNWINDER_HOST, "imported");
}

TEST(ForeignUnwinder, KeepsNothingOfThePlugin) {
    testwindows::expectNothingLeft("foreign", 50);
}

} // namespace
