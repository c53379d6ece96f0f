// Tiles of a drawing in an array whose shape is about that of a screen: one for each tree of
// devices that hang in each other, and behind them one for each box of a root bus.
#pragma once

#include "tavctl/draw/placement.h"

namespace tavctl {

struct Tiling {
    std::size_t rows = 1; // tiles fill the array row by row; the last row may stay short
    std::size_t columns = 1;
    // The devices of each tree, in their order.
    std::vector<std::vector<std::size_t>> trees;
};

// From about how large the boxes come out; what lays the drawing out knows it only afterwards.
Tiling arrangeTiles(const BusTreeView& view, const Placement& placement);

} // namespace tavctl
