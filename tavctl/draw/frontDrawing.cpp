#include "tavctl/draw/frontDrawing.h"

#include "tavctl/draw/deviceBox.h"
#include "tavctl/draw/deviceTrees.h"
#include "tavctl/draw/frontPlate.h"
#include "tavctl/draw/graph.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace tavctl {

namespace {

// The plates from top to bottom, one column after the other, in the order of the boxes with what
// hangs in them behind them.
std::vector<std::size_t> plateOrder(const BusTreeView& view, const Placement& placement) {
    std::vector<std::size_t> order;
    for (const DeviceTree& tree : deviceTrees(view, placement))
        order.insert(order.end(), tree.devices.begin(), tree.devices.end());
    return order;
}

// How many columns give the whole about the shape of a sheet of paper.
std::size_t columnsFor(double height, double width) {
    constexpr double kSheetShape = 1.414; // width to height
    return static_cast<std::size_t>(
        std::max(std::round(std::sqrt(height * kSheetShape / width)), 1.0));
}

// Of equal height, as far as plates allow.
std::vector<std::vector<std::size_t>>
plateColumns(const BusTreeView& view, const Placement& placement, const PlateShape& shape) {
    constexpr double kGap = 14;
    const std::vector<std::size_t> order = plateOrder(view, placement);
    std::vector<double> heights;
    heights.reserve(order.size());
    for (const std::size_t device : order)
        heights.push_back(plateHeight(view.devices()[device], shape) + kGap);
    const double all = std::accumulate(heights.begin(), heights.end(), 0.0);
    std::vector<std::vector<std::size_t>> columns(columnsFor(all, shape.width + kGap));
    double above = 0;
    for (std::size_t i = 0; i < order.size(); ++i) {
        const double middle = above + heights[i] / 2;
        const auto column =
            static_cast<std::size_t>(middle * static_cast<double>(columns.size()) / all);
        columns[std::min(column, columns.size() - 1)].push_back(order[i]);
        above += heights[i];
    }
    return columns;
}

} // namespace

// A table for each column keeps the plates in line, and lines that are not seen the columns.
std::string frontsAsDot(const BusTreeView& view, const PciNames& names, std::string_view title) {
    const Placement placement = placeBoxes(view);
    const PlateShape shape = plateShapeFor(view, placement);
    Graph graph(captionMarkup(title, drawnDevices(placement)), {}, 0.05);
    std::string last;
    for (const auto& column : plateColumns(view, placement, shape)) {
        if (column.empty())
            continue;
        std::string plates;
        for (const std::size_t device : column)
            plates += fmt::format("<TR><TD{} ALIGN=\"LEFT\">{}</TD></TR>",
                                  plates.empty() ? " PORT=\"h\"" : "",
                                  frontMarkup(view, names, placement, device, shape));
        const std::string name = nodeName('f', column.front());
        graph.box(name, fmt::format("<TABLE BORDER=\"0\" CELLBORDER=\"0\" CELLSPACING=\"7\" "
                                    "CELLPADDING=\"0\">{}</TABLE>",
                                    plates));
        if (!last.empty())
            graph.align(last, name);
        last = name;
    }
    return std::move(graph).finished();
}

} // namespace tavctl
