// What stands in for a random number where the system has none. Private to this folder.
#pragma once

#include <chrono>
#include <cstdint>

namespace platform {

// Of two clocks, of where the stack and the program's data stand, and of how often it was asked.
inline std::uint64_t guessedSeed() noexcept {
    constexpr std::uint64_t kOddFactor = 0x9E3779B97F4A7C15U;
    static std::uint64_t asked = 0;
    const auto ticks = [](auto now) {
        return static_cast<std::uint64_t>(now.time_since_epoch().count());
    };
    std::uint64_t seed = ++asked;
    for (const std::uint64_t part :
         {ticks(std::chrono::system_clock::now()), ticks(std::chrono::steady_clock::now()),
          std::uint64_t{reinterpret_cast<std::uintptr_t>(&seed)},
          std::uint64_t{reinterpret_cast<std::uintptr_t>(&asked)}}) {
        seed = (seed ^ part) * kOddFactor;
        seed ^= seed >> 29;
    }
    return seed;
}

} // namespace platform
