// Which bus this process sees.
#include "platform/busLocation.h"

#include "tests/support/environmentValue.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using testsupport::EnvironmentValue;

TEST(BusLocation, IsWhatTheEnvironmentNames) {
    const EnvironmentValue variable("TAV_PCI_DUMP", "some/where else");
    EXPECT_EQ(platform::busLocation(), "some/where else");
}

TEST(BusLocation, IsTheLiveBusOtherwise) {
    const EnvironmentValue variable("TAV_PCI_DUMP", std::nullopt);
    EXPECT_EQ(platform::busLocation(), "/sys");
}

TEST(BusLocation, AnEmptyVariableIsNone) {
    const EnvironmentValue variable("TAV_PCI_DUMP", "");
    EXPECT_EQ(platform::busLocation(), "/sys");
}

} // namespace
