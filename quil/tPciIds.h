// The four identifiers of a PCI function, in the order in which they are compared and passed on.
#pragma once

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0 {

struct tPciIds {
    std::uint16_t vendor = 0;
    std::uint16_t device = 0;
    std::uint16_t subsystemVendor = 0;
    std::uint16_t subsystem = 0;

    bool operator==(const tPciIds&) const = default;
};

} // namespace nZoTavManagerPciPlugin_15_0
