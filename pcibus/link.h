// The PCI Express link at a function: of a root port or a downstream port the one below it, of any
// other function the one above it.
#pragma once

#include <cstdint>

namespace pcibus {

// What the PCI Express capability calls the function.
enum class PortType : std::uint8_t { unknown, rootPort, upstreamPort, downstreamPort, other };

// Widths in lanes; speeds by their numbers: 1 is 2.5 GT/s, 2 is 5 GT/s and so on. 0: not known, or
// there is no link.
struct Link {
    std::uint8_t maximumWidth = 0; // of this end
    std::uint8_t maximumSpeed = 0;
    std::uint8_t width = 0; // as it runs; without anything at the other end it may say anything
    std::uint8_t speed = 0;
    PortType port = PortType::unknown; // sysfs does not tell

    friend bool operator==(const Link&, const Link&) = default;
};

} // namespace pcibus
