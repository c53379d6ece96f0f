// Where the boxes of devices stand in a drawing: which devices are drawn, and in whose connectors
// they hang.
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

struct Placement {
    // Of each of the view's devices; none for one of which the view shows nothing. A device stands
    // below the connector that it hangs in, so none hangs in itself, however many lie between.
    std::vector<std::optional<BoxPlace>> devices;
};

Placement placeBoxes(const BusTreeView& view);

std::size_t drawnDevices(const Placement& placement);

// The devices that a drawn device hangs in, the one with its connector first.
std::vector<std::size_t> holdersOf(const Placement& placement, std::size_t device);

// The devices that hang in a connector, in their order.
std::vector<std::size_t> devicesIn(const Placement& placement, std::size_t device,
                                   std::size_t port);

} // namespace tavctl
