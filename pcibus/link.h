// The PCI Express link at a function: of a root port or a downstream port the one below it, of any
// other function the one above it.
#pragma once

#include <cstdint>

namespace pcibus {

// What the PCI Express capability calls a bridge.
enum class PortType : std::uint8_t {
    unknown, // it does not say, as for every function that is no bridge
    rootPort,
    upstreamPort,
    downstreamPort,
    other, // no port: a bridge that leads to a conventional bus, or from one
};

// Widths in lanes; speeds by their numbers: 1 is 2.5 GT/s, 2 is 5 GT/s and so on. 0: not known, or
// there is no link.
struct Link {
    std::uint8_t maximumWidth = 0; // of this end
    std::uint8_t maximumSpeed = 0;
    std::uint8_t width = 0; // as it runs; without anything at the other end it may say anything
    std::uint8_t speed = 0;
    PortType port = PortType::unknown; // sysfs does not tell

    // Whether anything is said of a link.
    [[nodiscard]] constexpr bool isKnown() const {
        return maximumWidth != 0 || maximumSpeed != 0 || width != 0 || speed != 0;
    }

    friend bool operator==(const Link&, const Link&) = default;
};

} // namespace pcibus
