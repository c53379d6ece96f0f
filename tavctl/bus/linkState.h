// The links of the bus as they run, measured by what both of their ends can.
#pragma once

#include "tavctl/bus/wholeBus.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tavctl {

// Widths in lanes, speeds by their numbers (1 is 2.5 GT/s); 0: not known.
struct LinkState {
    std::uint8_t width = 0; // as it runs
    std::uint8_t speed = 0;
    std::uint8_t ableWidth = 0; // what the weaker of both ends can
    std::uint8_t ableSpeed = 0;

    [[nodiscard]] bool isKnown() const { return width != 0 || speed != 0; }
    [[nodiscard]] bool isNarrow() const { return width != 0 && width < ableWidth; }
    [[nodiscard]] bool isSlow() const { return speed != 0 && speed < ableSpeed; }
    [[nodiscard]] bool isDegraded() const { return isNarrow() || isSlow(); }
};

// The link that a root port or a downstream port leads down: nothing known where nothing answers
// behind it, where the function is no such port (also a bridge to a conventional bus), and where
// the bus does not tell.
LinkState linkBelow(const DomainBus& domain, const pcibus::PciFunction& port);

// The link by which a function hangs at the bridge above its bus.
LinkState linkAbove(const DomainBus& domain, const pcibus::PciFunction& function);

// A link speed by its number, in transfers per second; nothing for a number that has no speed.
std::optional<double> linkTransfers(std::int32_t code);

// The same in words: "2.5 GT/s".
std::string linkSpeedName(std::int32_t code);

// "x8 8 GT/s", "x8 of x16 8 GT/s", "x8 2.5 of 8 GT/s"; empty when nothing is known.
std::string linkText(const LinkState& link);

} // namespace tavctl
