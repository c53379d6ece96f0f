#include "platform/wideProduct.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using platform::WideProduct;
using platform::wideProduct;
using platform::wideProductOfHalves;

constexpr std::uint64_t kAll = ~std::uint64_t{0};

TEST(WideProduct, HasEveryBit) {
    EXPECT_EQ(wideProduct(0, kAll), (WideProduct{0, 0}));
    EXPECT_EQ(wideProduct(1, kAll), (WideProduct{kAll, 0}));
    EXPECT_EQ(wideProduct(kAll, kAll), (WideProduct{1, kAll - 1}));
    EXPECT_EQ(wideProduct(std::uint64_t{1} << 32, std::uint64_t{1} << 32), (WideProduct{0, 1}));
    EXPECT_EQ(wideProduct(0x123456789ABCDEF0U, 10), (WideProduct{0xB60B60B60B60B560U, 0}));
}

TEST(WideProduct, IsTheSameOutOfHalves) {
    constexpr std::uint64_t kNumbers[] = {
        0, 1, 10, 0xFFFFFFFFU, 0x100000000U, 0x123456789ABCDEF0U, kAll - 0xFFFFFFFFU, kAll};
    for (const std::uint64_t left : kNumbers) {
        for (const std::uint64_t right : kNumbers)
            EXPECT_EQ(wideProductOfHalves(left, right), wideProduct(left, right))
                << left << " * " << right;
    }
}

} // namespace
