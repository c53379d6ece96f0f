// A device as its front plate: the connectors side by side, in the order of the labels.
#pragma once

#include "tavctl/bus/pciNames.h"
#include "tavctl/draw/placement.h"

#include <string>

namespace tavctl {

// How plates of one drawing are laid out, in points.
struct PlateShape {
    std::size_t connectors = 3; // side by side, at most
    double width = 0;           // of the row of connectors
};
PlateShape plateShapeFor(const BusTreeView& view, const Placement& placement);

std::string frontMarkup(const BusTreeView& view, const PciNames& names, const Placement& placement,
                        std::size_t device, const PlateShape& shape);

// About how high it comes out.
double plateHeight(const PlacedDevice& device, const PlateShape& shape);

} // namespace tavctl
