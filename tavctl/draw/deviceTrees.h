// Trees of devices that hang in each other: each is a tile of a drawing.
#pragma once

#include "tavctl/draw/placement.h"
#include "tavctl/draw/tiling.h"

#include <vector>

namespace tavctl {

struct DeviceTree {
    std::vector<std::size_t> devices; // in their order
    TileSize size;
};

// In the order of the devices that hang in no other.
std::vector<DeviceTree> deviceTrees(const BusTreeView& view, const Placement& placement);

// Of the box alone.
TileSize deviceBoxSize(const PlacedDevice& device);

} // namespace tavctl
