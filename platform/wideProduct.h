// The whole product of two 64-bit numbers, which processors give and C++ has no type for.
#pragma once

#include <cstdint>

namespace platform {

struct WideProduct {
    std::uint64_t low;
    std::uint64_t high;
    friend bool operator==(const WideProduct&, const WideProduct&) = default;
};

// As it is worked out where the compiler does not give it.
constexpr WideProduct wideProductOfHalves(std::uint64_t left, std::uint64_t right) noexcept {
    const auto low = [](std::uint64_t number) { return number & 0xFFFFFFFFU; };
    const std::uint64_t lowest = low(left) * low(right);
    const std::uint64_t one = (left >> 32) * low(right) + (lowest >> 32);
    const std::uint64_t other = low(left) * (right >> 32) + low(one);
    return {other << 32 | low(lowest), (left >> 32) * (right >> 32) + (one >> 32) + (other >> 32)};
}

constexpr WideProduct wideProduct(std::uint64_t left, std::uint64_t right) noexcept {
#ifdef __SIZEOF_INT128__
    __extension__ using Wide = unsigned __int128;
    const Wide product = Wide{left} * right;
    return {static_cast<std::uint64_t>(product), static_cast<std::uint64_t>(product >> 64)};
#else
    return wideProductOfHalves(left, right);
#endif
}

} // namespace platform
