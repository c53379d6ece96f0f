// Where the boxes of a drawing stand: which devices are drawn, in whose connectors they hang, and
// what the root buses have besides them.
#pragma once

#include "tavctl/view/busTreeView.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tavctl {

// Where a device hangs: in a connector of another device, or at the end of a way from the root.
struct BoxPlace {
    std::optional<std::size_t> parent; // position in the view's devices, of one that is drawn
    std::size_t port = 0;              // with a parent: position in its ports
    std::vector<std::uint32_t> way; // without one: handles of the bridges above, the highest first
};

struct RootBusBox {
    std::uint8_t bus = 0;
    std::vector<const pcibus::PciFunction*> functions; // the bus owns them; at least one
};

struct Placement {
    // Of each of the view's devices; none for one of which the view shows nothing. A device stands
    // below the connector that it hangs in, so none hangs in itself, however many lie between.
    std::vector<std::optional<BoxPlace>> devices;
    std::vector<RootBusBox> rootBuses;
};

// With `allFunctions`, root buses have boxes of what is shown on them and is no way to a device.
Placement placeBoxes(const BusTreeView& view, bool allFunctions);

// The devices that a drawn device hangs in, the one with its connector first.
std::vector<std::size_t> holdersOf(const Placement& placement, std::size_t device);

// The devices that hang in a connector, in their order.
std::vector<std::size_t> devicesIn(const Placement& placement, std::size_t device,
                                   std::size_t port);

} // namespace tavctl
