// The header is C, and a program may link with the library instead of loading it.
#include "tests/zopcibrd/bridgeLibrary.h"

#include <gtest/gtest.h>

extern "C" std::int32_t countBridgesInC(std::uint8_t bus, std::uint32_t* count);

namespace {

TEST(CHost, UsesTheLibrary) {
    const testsupport::machines::Switch machine;
    const testsupport::TemporaryFolder folder;
    const testsupport::EnvironmentValue variable(
        "TAV_PCI_DUMP", folder.file("bus.txt", machine.bus.dump()).string());
    std::uint32_t count = 0;
    EXPECT_EQ(countBridgesInC(2, &count), kPciBrdErrBufferTooSmall);
    EXPECT_EQ(count, 2U);
}

TEST(CHost, StatusesAndAttributesHaveTheirNumbers) {
    EXPECT_EQ(kPciBrdErrInvalidArgument, -313001);
    EXPECT_EQ(kPciBrdErrBufferTooSmall, -313002);
    EXPECT_EQ(kPciBrdErrNotFound, -313003);
    EXPECT_EQ(kPciBrdErrNoBus, -313004);
    EXPECT_EQ(kPciBrdErrUnavailable, -313008);
    EXPECT_EQ(kPciBrdErrOutOfMemory, -52000);
    EXPECT_EQ(kPciBrdAttrSecondaryBus, 0x20000300);
    EXPECT_EQ(kPciBrdAttrLinkWidth, 0x20000B00);
    EXPECT_EQ(kPciBrdAttrLinkSpeed, 0x20000C00);
}

} // namespace
