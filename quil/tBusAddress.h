// Where a PCI function answers now: its bus, device and function number. A fresh address is all
// 0xFF.
#pragma once

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0 {

struct tBusAddress {
    std::uint8_t bus = 0xFF;
    std::uint8_t device = 0xFF;
    std::uint8_t function = 0xFF;

    bool operator==(const tBusAddress&) const = default;
};

} // namespace nZoTavManagerPciPlugin_15_0
