// Texts that are a number and nothing else.
#include "pxidrivertools/integerText.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

TEST(IntegerText, IsASignDigitsAndWhiteSpaceAround) {
    EXPECT_EQ(readSigned("12"), 12);
    EXPECT_EQ(readSigned(" \t\n\v\f\r-12 \t\n"), -12);
    EXPECT_EQ(readSigned("+12"), 12);
    EXPECT_EQ(readSigned("-0"), 0);
    EXPECT_EQ(readSigned("000000000000000000000000000012"), 12);
    EXPECT_EQ(readUnsigned(" +12 "), 12U);
    EXPECT_EQ(readUnsigned("-0"), 0U);
}

TEST(IntegerText, AnythingElseIsNone) {
    for (const char* const text : {"", " ", "-", "+", "- 1", "+-1", "--1", "1-", "1+", "1 2", "1x",
                                   "x1", "0x10", "1.0", "1,", "1 x", "\xA0z"}) {
        EXPECT_EQ(readSigned(text), std::nullopt) << text;
        EXPECT_EQ(readUnsigned(text), std::nullopt) << text;
    }
    EXPECT_EQ(readSigned(std::string_view("1\0", 2)), std::nullopt);
}

TEST(IntegerText, StaysWithinThirtyTwoBits) {
    EXPECT_EQ(readSigned("2147483647"), 2147483647);
    EXPECT_EQ(readSigned("2147483648"), std::nullopt);
    EXPECT_EQ(readSigned("-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(readSigned("-2147483649"), std::nullopt);
    EXPECT_EQ(readSigned("4294967296"), std::nullopt);
    EXPECT_EQ(readSigned("18446744073709551617"), std::nullopt);
    EXPECT_EQ(readUnsigned("4294967295"), 4294967295U);
    EXPECT_EQ(readUnsigned("4294967296"), std::nullopt);
    EXPECT_EQ(readUnsigned("99999999999999999999999999"), std::nullopt);
    EXPECT_EQ(readUnsigned("-1"), std::nullopt);
}

} // namespace
