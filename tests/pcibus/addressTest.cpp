// Addresses as dumps and folders of the system begin with them.
#include "pcibus/address.h"

#include "pcibus/pciFunction.h"

#include <gtest/gtest.h>

namespace {

using pcibus::readAddress;

TEST(Address, HasTwoDigitsOfBusAndDeviceAndOneOfFunction) {
    const auto address = readAddress("0001:fE:1d.7 Bridge");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->domain, 1U);
    EXPECT_EQ(address->bus, 0xFE);
    EXPECT_EQ(address->device, 0x1D);
    EXPECT_EQ(address->function, 7);
    EXPECT_EQ(address->length, 12U);
    EXPECT_EQ(readAddress("fE:1d.7")->length, 7U);
}

TEST(Address, OtherTextsBeginWithNone) {
    for (const char* text : {"", "00", "00:", "00:1c", "00:1c.", "00:1c:0", "000:1c.0", "0000:1c.0",
                             "00:g0.0", "00:0g.0", "00:00.g", "0000:0g:00.0", "000000000:00:00.0"})
        EXPECT_FALSE(readAddress(text)) << text;
}

TEST(Address, IsWrittenAsReadersOfLspciKnowIt) {
    pcibus::PciFunction function;
    function.bus = 0x0A;
    function.device = 0x1C;
    function.function = 3;
    EXPECT_EQ(pcibus::addressText(function), "0a:1c.3");
}

} // namespace
