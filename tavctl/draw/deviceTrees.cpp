#include "tavctl/draw/deviceTrees.h"

#include <algorithm>

namespace tavctl {

namespace {

constexpr double kWayWidth = 80;

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

// Of each drawn device with everything in it.
std::vector<TileSize> wholeSizes(const BusTreeView& view, const Placement& placement) {
    std::vector<TileSize> inPorts(placement.devices.size());
    std::vector<TileSize> whole(placement.devices.size());
    for (const std::size_t i : innermostFirst(placement)) {
        // What is plugged in begins somewhat below the top of its box.
        const TileSize own = deviceBoxSize(view.devices()[i]);
        whole[i].height = std::max(own.height, inPorts[i].height + own.height * 0.4) + kTileGap;
        whole[i].width = own.width + inPorts[i].width;
        if (const auto& holder = placement.devices[i]->parent) {
            TileSize& parent = inPorts[*holder];
            parent.height += whole[i].height;
            parent.width = std::max(parent.width, whole[i].width + kBoxDistance);
        }
    }
    return whole;
}

} // namespace

TileSize deviceBoxSize(const PlacedDevice& device) {
    std::size_t rows = 2;
    for (const PlacedPort& port : device.ports)
        rows += std::max<std::size_t>(port.labels.size(), 1);
    return {kBoxWidth, static_cast<double>(rows) * kRowHeight};
}

std::vector<DeviceTree> deviceTrees(const BusTreeView& view, const Placement& placement) {
    const std::vector<TileSize> sizes = wholeSizes(view, placement);
    std::vector<std::size_t> treeOf(placement.devices.size());
    std::vector<DeviceTree> trees;
    for (std::size_t i = 0; i < placement.devices.size(); ++i) {
        if (!placement.devices[i] || placement.devices[i]->parent)
            continue;
        treeOf[i] = trees.size();
        trees.push_back({{}, {sizes[i].width + kWayWidth, sizes[i].height}});
    }
    for (std::size_t i = 0; i < placement.devices.size(); ++i) {
        if (!placement.devices[i])
            continue;
        const auto holders = holdersOf(placement, i);
        trees[treeOf[holders.empty() ? i : holders.back()]].devices.push_back(i);
    }
    return trees;
}

} // namespace tavctl
