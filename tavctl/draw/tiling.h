// Tiles of a drawing in an array whose shape is about that of a screen.
#pragma once

#include <cstddef>
#include <vector>

namespace tavctl {

// In points; what lays the drawing out knows it exactly, and only afterwards.
struct TileSize {
    double width = 0;
    double height = 0;
};

// About how large a box comes out.
inline constexpr double kBoxWidth = 320;
inline constexpr double kBoxDistance = 45;
inline constexpr double kRowHeight = 21;
inline constexpr double kTileGap = 16;

struct Tiling {
    std::size_t rows = 1; // tiles fill the array row by row; the last row may stay short
    std::size_t columns = 1;
};

Tiling arrangeTiles(const std::vector<TileSize>& tiles);

// Of all columns.
double tiledWidth(const std::vector<TileSize>& tiles, const Tiling& tiling);

// The tiles in the order in which Graphviz fills its array: column by column, from the bottom up.
// Numbers beyond the last tile stand for cells that stay empty.
std::vector<std::size_t> arrayOrder(const Tiling& tiling);

} // namespace tavctl
