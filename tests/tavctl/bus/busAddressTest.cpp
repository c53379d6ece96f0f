// Addresses as people write them.
#include "tavctl/bus/busAddress.h"

#include <gtest/gtest.h>

namespace {

using tavctl::readBusAddress;

TEST(BusAddress, IsReadWithAndWithoutDomain) {
    EXPECT_EQ(readBusAddress("01:00.0"), 0x0100U);
    EXPECT_EQ(readBusAddress("0000:01:1f.7"), 0x01FFU);
    EXPECT_EQ(readBusAddress("fF:1F.7"), 0xFFFFU);
    EXPECT_EQ(readBusAddress("0:2.1"), 0x0011U);
}

TEST(BusAddress, EverythingElseIsNone) {
    for (const char* text : {"", "01", "01:00", "01:00.", "01:00.8", "01:20.0", "100:00.0",
                             "0001:01:00.0", "01:00.0 ", " 01:00.0", "01.00.0", "g1:00.0", ":"})
        EXPECT_EQ(readBusAddress(text), std::nullopt) << text;
}

} // namespace
