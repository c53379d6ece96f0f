#include "tavctl/draw/tiling.h"

#include <algorithm>
#include <numeric>

namespace tavctl {

namespace {

// How large an array of so many columns is, by the side that is the larger part of a screen's.
double screensOf(const std::vector<TileSize>& tiles, std::size_t columns) {
    constexpr double kScreenShape = 1.7; // width to height
    std::vector<double> widths(columns);
    double height = 0;
    double rowHeight = 0;
    for (std::size_t i = 0; i < tiles.size(); ++i) {
        if (i % columns == 0) {
            height += rowHeight;
            rowHeight = 0;
        }
        widths[i % columns] = std::max(widths[i % columns], tiles[i].width);
        rowHeight = std::max(rowHeight, tiles[i].height);
    }
    const double width = std::accumulate(widths.begin(), widths.end(), 0.0);
    return std::max(width / kScreenShape, height + rowHeight);
}

} // namespace

Tiling arrangeTiles(const std::vector<TileSize>& tiles) {
    Tiling tiling;
    double best = screensOf(tiles, 1);
    for (std::size_t count = 2; count <= tiles.size(); ++count) {
        const double scale = screensOf(tiles, count);
        if (scale < best) {
            tiling.columns = count;
            best = scale;
        }
    }
    tiling.rows = std::max<std::size_t>((tiles.size() + tiling.columns - 1) / tiling.columns, 1);
    return tiling;
}

double tiledWidth(const std::vector<TileSize>& tiles, const Tiling& tiling) {
    std::vector<double> widths(tiling.columns);
    for (std::size_t i = 0; i < tiles.size(); ++i)
        widths[i % tiling.columns] = std::max(widths[i % tiling.columns], tiles[i].width);
    return std::accumulate(widths.begin(), widths.end(), 0.0);
}

std::vector<std::size_t> arrayOrder(const Tiling& tiling) {
    std::vector<std::size_t> order;
    for (std::size_t column = 0; column < tiling.columns; ++column) {
        for (std::size_t row = tiling.rows; row-- > 0;)
            order.push_back(row * tiling.columns + column);
    }
    return order;
}

} // namespace tavctl
