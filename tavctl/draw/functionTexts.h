// What the boxes of a drawing say of single functions and of what is plugged into a connector.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/draw/placement.h"

#include <cstdint>
#include <string>

namespace tavctl {

// The device's own name, or for want of one what its numbers tell.
std::string shortNameOf(const PciNames& names, const pcibus::PciFunction& function);

// Where it is: "03:00.0".
std::string addressIn(const BusTreeView& view, const pcibus::PciFunction& function);

// "03:00.0 Vendor Device"
std::string fullTextOf(const BusTreeView& view, const PciNames& names,
                       const pcibus::PciFunction& function);

// "TAV1: Model" and where it stands.
std::string fullTextOf(const BusTreeView& view, std::size_t device);

struct PortContent {
    enum class Kind : std::uint8_t {
        missing, // the port is described and not there
        unknown, // its place cannot be told
        empty,
        devices,   // that are drawn
        functions, // of anything else
    };
    Kind kind = Kind::empty;
    std::string text;  // one line
    std::string more;  // behind it, and never cut: " +2"
    std::string whole; // in lines, nothing left out
};
PortContent contentOf(const BusTreeView& view, const PciNames& names, const Placement& placement,
                      std::size_t device, std::size_t port);

// The text cut to the width, as markup in the colour of its kind.
std::string contentMarkup(const PortContent& content, std::size_t width);

// The same in at most two lines of that width.
std::string contentLinesMarkup(const PortContent& content, std::size_t width);

} // namespace tavctl
