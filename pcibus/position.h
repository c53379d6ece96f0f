// Where a function sits, told by the bridges on the way to it rather than by its bus number, which
// can change from boot to boot.
#pragma once

#include "pcibus/bus.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace pcibus {

// Hops from the function up to the root: the function's own first, that of the bridge on the root
// bus last. There are never more than buses.
struct Position {
    std::uint8_t rootBus = 0;
    std::size_t hopCount = 0;
    std::array<std::uint8_t, Bus::kBusCount> hopStore{};

    [[nodiscard]] std::span<const std::uint8_t> hops() const {
        return std::span(hopStore).first(hopCount);
    }
};

Position positionOf(const Bus& bus, const PciFunction& function);

// The function at a position, found by one look-up a hop; null when there is none, without hops,
// and when `rootBus` is no root bus, so that each function has exactly one position. A step down
// needs the bridge that is the parent of its secondary bus.
const PciFunction* functionAt(const Bus& bus, std::uint8_t rootBus,
                              std::span<const std::uint8_t> hops);

} // namespace pcibus
