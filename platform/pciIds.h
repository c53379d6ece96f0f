// The four numbers that say what a PCI function is, in the order in which they are published,
// compared and passed on. Stands alone, as folderReader.h does.
#pragma once

#include <cstdint>

namespace platform {

struct PciIds {
    std::uint16_t vendor = 0;
    std::uint16_t device = 0;
    std::uint16_t subsystemVendor = 0;
    std::uint16_t subsystem = 0;

    // All four as one number, the vendor in its highest bits.
    [[nodiscard]] constexpr std::uint64_t packed() const {
        return std::uint64_t{vendor} << 48 | std::uint64_t{device} << 32 |
               std::uint64_t{subsystemVendor} << 16 | subsystem;
    }

    bool operator==(const PciIds&) const = default;
};

} // namespace platform
