// Numbers at the front of a text.
#include "pxidrivertools/scan.h"

#include <gtest/gtest.h>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

template <typename T>
struct Scanned {
    std::optional<T> value;
    std::string_view rest;
    bool operator==(const Scanned&) const = default;
};

Scanned<std::int32_t> asSigned(std::string_view text) {
    const auto value = scanSigned(text);
    return {value, text};
}
Scanned<std::uint32_t> asUnsigned(std::string_view text) {
    const auto value = scanUnsigned(text);
    return {value, text};
}
Scanned<std::uint32_t> asHex(std::string_view text, std::size_t width = kAnyWidth) {
    const auto value = scanHexadecimal(text, width);
    return {value, text};
}

TEST(ScanSigned, SkipsWhiteSpaceTakesOneSignAndStopsBehindTheDigits) {
    EXPECT_EQ(asSigned("12x"), (Scanned<std::int32_t>{12, "x"}));
    EXPECT_EQ(asSigned(" \t\n\v\f\r-7,"), (Scanned<std::int32_t>{-7, ","}));
    EXPECT_EQ(asSigned("+3"), (Scanned<std::int32_t>{3, ""}));
}

TEST(ScanSigned, FailureLeavesTheCursor) {
    for (const std::string_view text : {"", "  ", "x", "--1", "+ 1", "-"})
        EXPECT_EQ(asSigned(text), (Scanned<std::int32_t>{std::nullopt, text})) << text;
}

TEST(ScanSigned, SaturatesAtThirtyTwoBits) {
    EXPECT_EQ(asSigned("2147483648").value, 2147483647);
    EXPECT_EQ(asSigned("-2147483649").value, -2147483647 - 1);
    EXPECT_EQ(asSigned("99999999999999999999999999").value, 2147483647);
}

TEST(ScanUnsigned, SaturatesAndWrapsNegatives) {
    EXPECT_EQ(asUnsigned("4294967295").value, 4294967295U);
    EXPECT_EQ(asUnsigned("4294967296").value, 4294967295U);
    EXPECT_EQ(asUnsigned("-1").value, 4294967295U);
}

TEST(ScanHexadecimal, ReadsBothCasesWithOrWithoutPrefix) {
    EXPECT_EQ(asHex("aBz"), (Scanned<std::uint32_t>{0xAB, "z"}));
    EXPECT_EQ(asHex("0x10"), (Scanned<std::uint32_t>{0x10, ""}));
    EXPECT_EQ(asHex("0XfF"), (Scanned<std::uint32_t>{0xFF, ""}));
    EXPECT_EQ(asHex("-0x1").value, 0xFFFFFFFFU);
    EXPECT_EQ(asHex("123456789").value, 0xFFFFFFFFU);
}

TEST(ScanHexadecimal, PrefixWithoutDigitsIsNoNumber) {
    EXPECT_EQ(asHex("0x").value, std::nullopt);
    EXPECT_EQ(asHex("0xg").value, std::nullopt);
    EXPECT_EQ(asHex("0x1", 2).value, std::nullopt);
}

TEST(ScanHexadecimal, WidthCountsFromTheFirstCharacterOfTheNumber) {
    EXPECT_EQ(asHex("E0F", 2), (Scanned<std::uint32_t>{0xE0, "F"}));
    EXPECT_EQ(asHex("  E0F", 2), (Scanned<std::uint32_t>{0xE0, "F"}));
    EXPECT_EQ(asHex("1,", 2), (Scanned<std::uint32_t>{1, ","}));
    EXPECT_EQ(asHex("-12", 2), (Scanned<std::uint32_t>{0xFFFFFFFFU, "2"}));
}

} // namespace
