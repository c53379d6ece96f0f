// System codes on their way to a status.
#include "quil/systemStatus.h"

#include "platform/systemCode.h"

#include <gtest/gtest.h>

namespace {

using namespace nZOQUIL000;

TEST(SystemStatus, SuccessStaysSuccess) {
    EXPECT_EQ(statusFromSystemCode(0), 0);
}

TEST(SystemStatus, CodeTravelsInTheLowSixteenBits) {
    EXPECT_EQ(static_cast<std::uint32_t>(statusFromSystemCode(2)), 0x80070002U);
    EXPECT_EQ(static_cast<std::uint32_t>(statusFromSystemCode(0xFFFF)), 0x8007FFFFU);
    EXPECT_EQ(static_cast<std::uint32_t>(statusFromSystemCode(0x12345678)), 0x80075678U);
}

TEST(SystemStatus, OutOfMemoryHasACodeOfItsOwn) {
    EXPECT_EQ(statusFromSystemCode(platform::outOfMemoryCode()), -52000);
}

TEST(SystemStatus, SetsTheRecordOfItsSite) {
    tErrorStatus status;
    EXPECT_TRUE(setSystemError(status, 2, {"f", 41, "zotavpci", "status"}));
    EXPECT_STREQ(status.text, R"({"error_constant":"status","file":"f","line":41,)"
                              R"("component":"zotavpci"})");
}

} // namespace
