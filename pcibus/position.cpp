#include "pcibus/position.h"

namespace pcibus {

// Ends: bridges that form a cycle are refused when a Bus is made.
Position positionOf(const Bus& bus, const PciFunction& function) {
    Position position;
    const PciFunction* at = &function;
    for (;;) {
        position.hopStore[position.hopCount++] = at->hop();
        const PciFunction* const parent = bus.parentOfBus(at->bus);
        if (parent == nullptr)
            break;
        at = parent;
    }
    position.rootBus = at->bus;
    return position;
}

const PciFunction* functionAt(const Bus& bus, std::uint8_t rootBus,
                              std::span<const std::uint8_t> hops) {
    if (hops.empty() || bus.parentOfBus(rootBus) != nullptr)
        return nullptr;
    std::uint8_t onBus = rootBus;
    for (std::size_t remaining = hops.size();; --remaining) {
        const std::uint32_t handle = std::uint32_t{onBus} << 8 | hops[remaining - 1];
        const PciFunction* const found = bus.find(handle);
        if (found == nullptr || remaining == 1)
            return found;
        const PciFunction* const below =
            found->isBridge() ? bus.parentOfBus(found->secondaryBus) : nullptr;
        if (below != found)
            return nullptr;
        onBus = found->secondaryBus;
    }
}

} // namespace pcibus
