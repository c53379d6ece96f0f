#include "tavctl/draw/tiling.h"

#include <algorithm>
#include <numeric>

namespace tavctl {

namespace {

// About how large things come out, in points.
constexpr double kBoxWidth = 200;
constexpr double kWayWidth = 80;
constexpr double kBoxDistance = 45;
constexpr double kRowHeight = 21;
constexpr double kGap = 16;

// In points.
struct Size {
    double width = 0;
    double height = 0;
};

std::size_t rowsOf(const PlacedDevice& device) {
    std::size_t rows = 0;
    for (const PlacedPort& port : device.ports)
        rows += std::max<std::size_t>(port.labels.size(), 1);
    return rows;
}

// The drawn devices, the deepest first.
std::vector<std::size_t> innermostFirst(const Placement& placement) {
    std::vector<std::size_t> nesting(placement.devices.size());
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < placement.devices.size(); ++i) {
        if (!placement.devices[i])
            continue;
        nesting[i] = holdersOf(placement, i).size();
        order.push_back(i);
    }
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return nesting[a] > nesting[b]; });
    return order;
}

// Of the devices that hang in no other, in their order, with everything in them.
std::vector<Size> treeSizes(const BusTreeView& view, const Placement& placement) {
    std::vector<Size> inPorts(placement.devices.size());
    std::vector<Size> whole(placement.devices.size());
    for (const std::size_t i : innermostFirst(placement)) {
        const auto rows = static_cast<double>(rowsOf(view.devices()[i]) + 2);
        // What is plugged in begins somewhat below the top of its box.
        const double own = rows * kRowHeight;
        whole[i].height = std::max(own, inPorts[i].height + own * 0.4) + kGap;
        whole[i].width = kBoxWidth + inPorts[i].width;
        if (const auto& holder = placement.devices[i]->parent) {
            Size& parent = inPorts[*holder];
            parent.height += whole[i].height;
            parent.width = std::max(parent.width, whole[i].width + kBoxDistance);
        }
    }
    std::vector<Size> trees;
    for (std::size_t i = 0; i < placement.devices.size(); ++i) {
        if (placement.devices[i] && !placement.devices[i]->parent)
            trees.push_back({whole[i].width + kWayWidth, whole[i].height});
    }
    return trees;
}

// In the order of treeSizes.
std::vector<std::vector<std::size_t>> treesOf(const Placement& placement) {
    std::vector<std::size_t> treeOf(placement.devices.size());
    std::size_t count = 0;
    for (std::size_t i = 0; i < placement.devices.size(); ++i) {
        if (placement.devices[i] && !placement.devices[i]->parent)
            treeOf[i] = count++;
    }
    std::vector<std::vector<std::size_t>> trees(count);
    for (std::size_t i = 0; i < placement.devices.size(); ++i) {
        if (!placement.devices[i])
            continue;
        const auto holders = holdersOf(placement, i);
        trees[treeOf[holders.empty() ? i : holders.back()]].push_back(i);
    }
    return trees;
}

// How large an array of so many columns is, by the side that is the larger part of a screen's.
double screensOf(const std::vector<Size>& tiles, std::size_t columns) {
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

std::size_t bestColumns(const std::vector<Size>& tiles) {
    std::size_t columns = 1;
    double best = screensOf(tiles, 1);
    for (std::size_t count = 2; count <= tiles.size(); ++count) {
        const double scale = screensOf(tiles, count);
        if (scale < best) {
            columns = count;
            best = scale;
        }
    }
    return columns;
}

} // namespace

Tiling arrangeTiles(const BusTreeView& view, const Placement& placement) {
    std::vector<Size> tiles = treeSizes(view, placement);
    for (const RootBusBox& root : placement.rootBuses)
        tiles.push_back({kBoxWidth, static_cast<double>(root.functions.size() + 1) * kRowHeight});
    Tiling tiling;
    tiling.columns = bestColumns(tiles);
    tiling.rows = std::max<std::size_t>((tiles.size() + tiling.columns - 1) / tiling.columns, 1);
    tiling.trees = treesOf(placement);
    return tiling;
}

} // namespace tavctl
