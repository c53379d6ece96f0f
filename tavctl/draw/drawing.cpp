#include "tavctl/draw/drawing.h"

#include "tavctl/draw/boxMarkup.h"
#include "tavctl/draw/placement.h"
#include "tavctl/draw/tiling.h"

#include <algorithm>

namespace tavctl {

namespace {

constexpr const char* kTextColour = "#1f2937";

// The nodes of the graph are "dN" for device N, "wN" for the way to it, and "tN" for any other
// tile.
std::string node(char kind, std::size_t number) {
    return std::string(1, kind).append(std::to_string(number));
}

class Drawing {
public:
    Drawing(const BusTreeView& view, const PciNames& names, const DrawingOptions& options)
        : view_(view), names_(names), placement_(placeBoxes(view, options.allFunctions)),
          tiling_(arrangeTiles(view, placement_)) {
        begin(options.title);
        // Graphviz fills its array column by column from the bottom up, in the order of the nodes.
        for (std::size_t column = 0; column < tiling_.columns; ++column) {
            for (std::size_t row = tiling_.rows; row-- > 0;)
                drawTile(row * tiling_.columns + column);
        }
        out_.append("}\n");
    }

    [[nodiscard]] const std::string& dot() const { return out_; }

private:
    void begin(const std::string& title) {
        const auto count =
            std::count_if(placement_.devices.begin(), placement_.devices.end(),
                          [](const std::optional<BoxPlace>& place) { return place.has_value(); });
        out_ = "digraph tavctl {\n";
        out_.append("  graph [rankdir=LR, bgcolor=white, pad=0.3, nodesep=0.12, ranksep=0.6, "
                    "splines=polyline,\n")
            .append("    pack=18, packmode=\"array_it")
            .append(std::to_string(tiling_.rows))
            .append("\",\n")
            .append("    outputorder=edgesfirst, fontname=\"Helvetica,Arial,sans-serif\",\n")
            .append("    fontsize=13, fontcolor=\"")
            .append(kTextColour)
            .append("\",\n")
            .append("    labelloc=t, labeljust=l, label=<")
            .append(captionMarkup(title, static_cast<std::size_t>(count)))
            .append(">]\n");
        out_.append("  node [shape=plain, fontname=\"Helvetica,Arial,sans-serif\", fontsize=10,\n")
            .append("    fontcolor=\"")
            .append(kTextColour)
            .append("\"]\n");
        out_.append("  edge [color=\"")
            .append(kLineColour)
            .append("\", arrowhead=none, penwidth=1.2]\n");
    }

    // A tree of devices, a root bus, or nothing, so that the array is full.
    void drawTile(std::size_t tile) {
        const std::size_t trees = tiling_.trees.size();
        if (tile < trees) {
            for (const std::size_t device : tiling_.trees[tile])
                drawDevice(device, *placement_.devices[device]);
        } else if (tile < trees + placement_.rootBuses.size()) {
            drawNode(node('t', tile), rootBusMarkup(names_, placement_.rootBuses[tile - trees]));
        } else {
            out_.append("  ").append(node('t', tile)).append(" [style=invis, label=\"\"]\n");
        }
    }

    void drawDevice(std::size_t device, const BoxPlace& place) {
        const std::string box = node('d', device);
        out_.append("  ")
            .append(box)
            .append(" [tooltip=\"")
            .append(deviceTooltip(view_.devices()[device]))
            .append("\", label=<")
            .append(deviceMarkup(view_, names_, placement_, device))
            .append(">]\n");
        if (place.parent) {
            join(node('d', *place.parent).append(":p").append(std::to_string(place.port)), box);
        } else if (!place.way.empty()) {
            const std::string way = node('w', device);
            drawNode(way, wayMarkup(view_.bus(), place.way));
            join(way, box);
        }
    }

    void drawNode(const std::string& name, const std::string& markup) {
        out_.append("  ").append(name).append(" [label=<").append(markup).append(">]\n");
    }

    // From the right of one to the left of the head of a device's box.
    void join(const std::string& from, const std::string& box) {
        out_.append("  ").append(from).append(":e -> ").append(box).append(":h:w\n");
    }

    const BusTreeView& view_;
    const PciNames& names_;
    const Placement placement_;
    const Tiling tiling_;
    std::string out_;
};

} // namespace

std::string drawingAsDot(const BusTreeView& view, const PciNames& names,
                         const DrawingOptions& options) {
    return Drawing(view, names, options).dot();
}

} // namespace tavctl
