// What stands in for a random number where the system has none. Private to this folder.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace platform {

// Of the readings of two clocks, of where the stack and the program's data stand, and of how often
// it was asked.
inline std::uint64_t guessedSeed(std::uint64_t clock, std::uint64_t otherClock) noexcept {
    constexpr std::uint64_t kOddFactor = 0x9E3779B97F4A7C15U;
    static std::uint64_t asked = 0;
    std::uint64_t seed = ++asked;
    for (const std::uint64_t part :
         {clock, otherClock, std::uint64_t{reinterpret_cast<std::uintptr_t>(&seed)},
          std::uint64_t{reinterpret_cast<std::uintptr_t>(&asked)}}) {
        seed = (seed ^ part) * kOddFactor;
        seed ^= seed >> 29;
    }
    return seed;
}

} // namespace platform
