// One function of the PCI bus as far as this system looks at it: where it sits, what it is, and for
// a bridge what lies below.
#pragma once

#include "platform/pciIds.h"

#include <cstdint>
#include <string>

namespace pcibus {

using platform::PciIds;

inline constexpr unsigned kMaxDevice = 31;  // on a bus
inline constexpr unsigned kMaxFunction = 7; // of a device

// The two numbers in one hop of a slot path.
constexpr std::uint8_t deviceOfHop(std::uint8_t hop) {
    return static_cast<std::uint8_t>(hop >> 3U);
}
constexpr std::uint8_t functionOfHop(std::uint8_t hop) {
    return static_cast<std::uint8_t>(hop & kMaxFunction);
}

// The readers leave out functions with vendor 0xFFFF, since nothing answers there; no other number
// is special: whatever the bus publishes is carried as it is.
struct PciFunction {
    std::uint8_t bus = 0;
    std::uint8_t device = 0;     // 0 to kMaxDevice
    std::uint8_t function = 0;   // 0 to kMaxFunction
    std::uint8_t headerType = 0; // without the multi-function bit

    std::uint16_t vendorId = 0;
    std::uint16_t deviceId = 0;
    std::uint16_t subsystemVendorId = 0; // 0 where the function has none
    std::uint16_t subsystemId = 0;

    // Of bridges and CardBus bridges; 0 for every other function.
    std::uint8_t secondaryBus = 0;   // 0: not configured, no bus below
    std::uint8_t subordinateBus = 0; // the last one that the bridge forwards; 0: not known

    // Of bridges only; 0 for every other function.
    std::uint8_t linkWidth = 0; // maximum, in lanes; 0 without a PCI Express link
    std::uint8_t linkSpeed = 0; // maximum: 1 is 2.5 GT/s, 2 is 5 GT/s and so on; 0 without one

    std::uint32_t line = 0; // where a dump names the function, counted from 1; 0 without a dump

    // Ascending handles are ascending addresses.
    [[nodiscard]] constexpr std::uint32_t handle() const {
        return static_cast<std::uint32_t>(bus << 8 | device << 3 | function);
    }

    // How this function is written as one hop of a slot path.
    [[nodiscard]] constexpr std::uint8_t hop() const {
        return static_cast<std::uint8_t>(device << 3 | function);
    }

    [[nodiscard]] constexpr PciIds ids() const {
        return {vendorId, deviceId, subsystemVendorId, subsystemId};
    }

    [[nodiscard]] constexpr bool isBridge() const { return headerType == 1; }

    // A bridge to a bus of PC cards. The plug-in and its bridge library know no such bridges.
    [[nodiscard]] constexpr bool isCardBusBridge() const { return headerType == 2; }
};

// An address as people write it: "00:1c.0".
std::string addressText(const PciFunction& function);
std::string addressTextOf(unsigned bus, unsigned device, unsigned function);

} // namespace pcibus
