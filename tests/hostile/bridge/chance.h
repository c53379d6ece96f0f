// The random choices of the hostile bridge library. The same seed makes the same choices on every
// machine.
#pragma once

#include "tests/hostile/bridge/control.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <vector>

namespace hostilebridge {

class Chance {
public:
    explicit Chance(std::uint64_t& state) : state_(state) {}

    std::uint64_t number() {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t z = state_;
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9U;
        z = (z ^ z >> 27) * 0x94D049BB133111EBU;
        return z ^ z >> 31;
    }
    std::uint32_t below(std::size_t bound) { return static_cast<std::uint32_t>(number() % bound); }
    bool oneIn(std::size_t many) { return below(many) == 0; }
    bool percent(unsigned share) { return below(100) < share; }

    template <typename T>
    T oneOf(std::initializer_list<T> choices) {
        return *(choices.begin() + below(choices.size()));
    }

    std::int32_t status() {
        using Limits = std::numeric_limits<std::int32_t>;
        if (oneIn(8))
            return static_cast<std::int32_t>(number());
        return oneOf({0, 0, 0, 1, 33, Limits::max(), -1, Limits::min(), -313001, -313002, -313003,
                      -313004, -313008, -52000, -388801, -388804});
    }

    // How much a list or text is said to need.
    std::uint32_t count() {
        if (oneIn(16))
            return static_cast<std::uint32_t>(number());
        if (oneIn(10)) // what many bridges cost is time
            return oneOf({0xFFFFU, 0x10000U});
        return oneOf({0U, 1U, 2U, 3U, 9U, 17U, 255U, 256U, 1000U, 0x10001U, 0x7FFFFFFFU,
                      0x80000000U, 0xFFFFFFFEU, 0xFFFFFFFFU});
    }

    std::uint32_t number32() {
        return oneIn(2) ? static_cast<std::uint32_t>(number())
                        : oneOf({0U, 1U, 2U, 4U, 8U, 16U, 255U, 256U, 0x7FFFFFFFU, 0x80000000U,
                                 0xFFFFFFFFU});
    }

private:
    std::uint64_t& state_;
};

} // namespace hostilebridge
