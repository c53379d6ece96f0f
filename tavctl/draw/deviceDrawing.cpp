#include "tavctl/draw/deviceDrawing.h"

#include "tavctl/draw/deviceBox.h"
#include "tavctl/draw/deviceTrees.h"
#include "tavctl/draw/functionTexts.h"
#include "tavctl/draw/graph.h"

#include <utility>

namespace tavctl {

namespace {

// The nodes of the graph are "dN" for device N and "wN" for the way to it.
class DeviceDrawing {
public:
    DeviceDrawing(const BusTreeView& view, const PciNames& names, std::string_view title)
        : view_(view), names_(names), placement_(placeBoxes(view)),
          trees_(deviceTrees(view, placement_)), tiling_(arrangeTiles(sizesOf(trees_))),
          graph_(captionMarkup(title, drawnDevices(placement_)), tiling_) {}

    std::string dot() && {
        for (const std::size_t tile : arrayOrder(tiling_)) {
            if (tile >= trees_.size()) {
                graph_.filler(tile);
                continue;
            }
            for (const std::size_t device : trees_[tile].devices)
                drawDevice(device, *placement_.devices[device]);
        }
        return std::move(graph_).finished();
    }

private:
    static std::vector<TileSize> sizesOf(const std::vector<DeviceTree>& trees) {
        std::vector<TileSize> sizes;
        sizes.reserve(trees.size());
        for (const DeviceTree& tree : trees)
            sizes.push_back(tree.size);
        return sizes;
    }

    void drawDevice(std::size_t device, const BoxPlace& place) {
        const std::string box = nodeName('d', device);
        graph_.box(box, deviceMarkup(view_, names_, placement_, device), fullTextOf(view_, device));
        if (place.parent) {
            graph_.join(cellName(nodeName('d', *place.parent), 'p', place.port), box);
        } else if (!place.way.empty()) {
            const std::string way = nodeName('w', device);
            graph_.box(way, wayMarkup(view_.bus(), place.way));
            graph_.join(way, box);
        }
    }

    const BusTreeView& view_;
    const PciNames& names_;
    const Placement placement_;
    const std::vector<DeviceTree> trees_;
    const Tiling tiling_;
    Graph graph_;
};

} // namespace

std::string devicesAsDot(const BusTreeView& view, const PciNames& names, std::string_view title) {
    return DeviceDrawing(view, names, title).dot();
}

} // namespace tavctl
