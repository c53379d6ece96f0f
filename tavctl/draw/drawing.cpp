#include "tavctl/draw/drawing.h"

#include "tavctl/draw/dotText.h"
#include "tavctl/words/textTable.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <optional>
#include <set>

namespace tavctl {

namespace {

using pcibus::PciFunction;

// Texts are cut so that no box is much wider than the others.
constexpr std::size_t kModelWidth = 30;
constexpr std::size_t kContentWidth = 30;
constexpr std::size_t kLabelWidth = 14;

// About how large things come out, in points.
constexpr double kBoxWidth = 200;
constexpr double kWayWidth = 80;
constexpr double kBoxDistance = 45;
constexpr double kRowHeight = 21;
constexpr double kGap = 16;

constexpr const char* kTextColour = "#1f2937";
constexpr const char* kLineColour = "#94a3b8";
constexpr const char* kLabelBackground = "#f1f5f9";
constexpr const char* kPortLine = " BORDER=\"1\" SIDES=\"T\" COLOR=\"#e2e8f0\"";
constexpr const char* kEmptyFont = "COLOR=\"#9ca3af\"";
constexpr const char* kMissingFont = "COLOR=\"#b45309\"";
constexpr const char* kFaintFont = "COLOR=\"#6b7280\" POINT-SIZE=\"9\"";
constexpr const char* kDeviceFont = "COLOR=\"#1d4ed8\"";

const char* headerColour(std::int32_t category) {
    switch (category) {
    case kTavCategoryPci:
        return "#dcfce7";
    case kTavCategoryExpresscard:
        return "#fef3c7";
    default:
        return "#dbeafe";
    }
}

std::string number(std::size_t value) {
    return std::to_string(value);
}

std::string quoted(const std::string& markup) {
    return std::string("\"").append(markup).append("\"");
}

// Where a device hangs: in a connector of another device, or at the end of a way from the root.
struct Place {
    std::optional<std::size_t> parent; // device
    std::size_t port = 0;              // of the parent
    std::vector<std::uint32_t> way;    // plain bridges between, the highest first
};

class Drawing {
public:
    Drawing(const BusTreeView& view, const PciNames& names, const DrawingOptions& options)
        : view_(view), names_(names), options_(options) {}

    std::string draw() {
        for (std::size_t i = 0; i < view_.devices().size(); ++i) {
            const bool shown = isShown(view_.devices()[i]);
            drawn_.push_back(shown);
            places_.push_back(shown ? placeOf(i) : Place());
        }
        if (options_.allFunctions) {
            for (const std::uint8_t root : view_.bus().rootBuses())
                describeRootBus(root);
        }
        arrange();
        begin();
        // Graphviz fills its array column by column from the bottom up, in the order of the nodes.
        for (std::size_t column = 0; column < columns_; ++column) {
            for (std::size_t row = rows_; row-- > 0;)
                drawTile(row * columns_ + column);
        }
        return out_.append("}\n");
    }

private:
    [[nodiscard]] bool isShown(const PlacedDevice& device) const {
        const auto functions = functionsOf(device);
        return std::any_of(functions.begin(), functions.end(),
                           [&](std::uint32_t handle) { return view_.isShown(handle); });
    }

    // The way up from a function to the root, itself first.
    [[nodiscard]] std::vector<const PciFunction*> wayUp(std::uint32_t handle) const {
        std::vector<const PciFunction*> way;
        const PciFunction* function = view_.bus().find(handle);
        while (function != nullptr) {
            way.push_back(function);
            function = view_.bus().parentOfBus(function->bus);
        }
        return way;
    }

    // A device stands where the highest of its functions does.
    [[nodiscard]] Place placeOf(std::size_t device) const {
        std::vector<const PciFunction*> way;
        for (const std::uint32_t handle : functionsOf(view_.devices()[device])) {
            const auto candidate = wayUp(handle);
            if (way.empty() || candidate.size() < way.size())
                way = candidate;
        }
        Place place;
        for (std::size_t i = 1; i < way.size(); ++i) {
            for (const TreeMark& mark : view_.marksOf(way[i]->handle())) {
                if (mark.role != TreeMark::Role::port || mark.device == device ||
                    !drawn(mark.device))
                    continue;
                place.parent = mark.device;
                place.port = mark.port;
                return place;
            }
            place.way.insert(place.way.begin(), way[i]->handle());
        }
        return place;
    }

    [[nodiscard]] bool drawn(std::size_t device) const { return isShown(view_.devices()[device]); }

    void begin() {
        const auto count = static_cast<std::size_t>(std::count(drawn_.begin(), drawn_.end(), true));
        out_ = "digraph tavctl {\n";
        out_.append("  graph [rankdir=LR, bgcolor=white, pad=0.3, nodesep=0.12, ranksep=0.6, "
                    "splines=polyline,\n")
            .append("    pack=18, packmode=\"array_it")
            .append(number(rows_))
            .append("\",\n")
            .append("    outputorder=edgesfirst, fontname=\"Helvetica,Arial,sans-serif\",\n")
            .append("    fontsize=13, fontcolor=\"")
            .append(kTextColour)
            .append("\",\n")
            .append("    labelloc=t, labeljust=l, label=<")
            .append(caption(count))
            .append(">]\n");
        out_.append("  node [shape=plain, fontname=\"Helvetica,Arial,sans-serif\", fontsize=10,\n")
            .append("    fontcolor=\"")
            .append(kTextColour)
            .append("\"]\n");
        out_.append("  edge [color=\"")
            .append(kLineColour)
            .append("\", arrowhead=none, penwidth=1.2]\n");
    }

    [[nodiscard]] std::string caption(std::size_t count) const {
        std::string text = std::string("<B>").append(markupText(options_.title)).append("</B>  ");
        std::string rest = number(count).append(count == 1 ? " device" : " devices");
        if (count == 0)
            rest = "no described device is present";
        return text.append(fontText(kFaintFont, rest));
    }

    // The estimated size of something drawn, in points.
    struct Size {
        double width = 0;
        double height = 0;
    };

    // Trees of devices, and what stands beside them, stand in an array whose shape is about that of
    // a screen.
    void arrange() {
        std::vector<Size> tiles = treeSizes();
        trees_ = tiles.size();
        for (const RootBus& root : rootBuses_)
            tiles.push_back(root.size);
        double best = screensOf(tiles, 1);
        for (std::size_t count = 2; count <= tiles.size(); ++count) {
            const double scale = screensOf(tiles, count);
            if (scale < best) {
                columns_ = count;
                best = scale;
            }
        }
        rows_ = std::max<std::size_t>((tiles.size() + columns_ - 1) / columns_, 1);
        devicesOfTree_.resize(trees_);
        std::vector<std::size_t> treeOf(drawn_.size());
        std::size_t tree = 0;
        for (std::size_t i = 0; i < drawn_.size(); ++i) {
            if (drawn_[i] && !places_[i].parent)
                treeOf[i] = tree++;
        }
        for (std::size_t i = 0; i < drawn_.size(); ++i) {
            if (drawn_[i])
                devicesOfTree_[treeOf[outermost(i)]].push_back(i);
        }
    }

    // The device that everything hangs in that this device hangs in.
    [[nodiscard]] std::size_t outermost(std::size_t device) const {
        std::set<std::size_t> seen;
        while (places_[device].parent && seen.insert(device).second)
            device = *places_[device].parent;
        return device;
    }

    // How large an array of so many columns is, by the side that is the larger part of a screen's.
    static double screensOf(const std::vector<Size>& tiles, std::size_t columns) {
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

    // Of the devices that hang in no other, in their order, with everything in them.
    [[nodiscard]] std::vector<Size> treeSizes() const {
        // The deepest first, so that a device's size is known before that of its parent.
        std::vector<std::size_t> order(drawn_.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::stable_sort(order.begin(), order.end(),
                         [this](std::size_t a, std::size_t b) { return nesting(a) > nesting(b); });
        std::vector<Size> inPorts(drawn_.size());
        std::vector<Size> whole(drawn_.size());
        for (const std::size_t i : order) {
            const auto rows = static_cast<double>(rowsOf(view_.devices()[i]) + 2);
            // What is plugged in begins somewhat below the top of its box.
            const double own = rows * kRowHeight;
            whole[i].height = std::max(own, inPorts[i].height + own * 0.4) + kGap;
            whole[i].width = kBoxWidth + inPorts[i].width;
            if (places_[i].parent) {
                Size& parent = inPorts[*places_[i].parent];
                parent.height += whole[i].height;
                parent.width = std::max(parent.width, whole[i].width + kBoxDistance);
            }
        }
        std::vector<Size> trees;
        for (std::size_t i = 0; i < drawn_.size(); ++i) {
            if (drawn_[i] && !places_[i].parent)
                trees.push_back({whole[i].width + kWayWidth, whole[i].height});
        }
        return trees;
    }

    [[nodiscard]] std::size_t nesting(std::size_t device) const {
        std::size_t depth = 0;
        std::set<std::size_t> seen; // descriptions may overlap: two devices in each other's ports
        while (places_[device].parent && seen.insert(device).second) {
            device = *places_[device].parent;
            ++depth;
        }
        return depth;
    }

    static std::size_t rowsOf(const PlacedDevice& device) {
        std::size_t rows = 0;
        for (const PlacedPort& port : device.ports)
            rows += std::max<std::size_t>(port.labels.size(), 1);
        return rows;
    }

    // A tree of devices, a root bus, or nothing, so that the array is full.
    void drawTile(std::size_t tile) {
        if (tile < trees_) {
            for (const std::size_t device : devicesOfTree_[tile])
                drawDevice(device);
            return;
        }
        out_.append("  t").append(number(tile));
        if (tile < trees_ + rootBuses_.size())
            out_.append(" [label=<").append(rootBuses_[tile - trees_].label).append(">]\n");
        else
            out_.append(" [style=invis, label=\"\"]\n");
    }

    void drawDevice(std::size_t index) {
        const PlacedDevice& device = view_.devices()[index];
        const Place& place = places_[index];
        const std::string node = std::string("d").append(number(index));
        out_.append("  ")
            .append(node)
            .append(" [tooltip=")
            .append(quoted(tooltipOf(device)))
            .append(", label=<");
        appendBox(index);
        out_.append(">]\n");
        if (place.parent) {
            out_.append("  d").append(number(*place.parent)).append(":p");
            out_.append(number(place.port)).append(":e -> ").append(node).append(":h:w\n");
        } else if (!place.way.empty()) {
            out_.append("  w")
                .append(number(index))
                .append(" [label=<")
                .append(wayText(place.way))
                .append(">]\n");
            out_.append("  w").append(number(index)).append(":e -> ").append(node).append(":h:w\n");
        }
    }

    static std::string tooltipOf(const PlacedDevice& device) {
        std::string text = device.listed.terminalName;
        return markupText(text.append(": ").append(device.listed.model));
    }

    [[nodiscard]] std::string addressOf(std::uint32_t handle) const {
        const PciFunction* const function = view_.bus().find(handle);
        return function == nullptr ? std::string() : pcibus::addressText(*function);
    }

    // One address under the other, from the root bus down.
    [[nodiscard]] std::string wayText(const std::vector<std::uint32_t>& way) const {
        std::string text =
            "<TABLE BORDER=\"0\" CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"1\">";
        for (const std::uint32_t handle : way)
            text.append("<TR><TD>")
                .append(fontText(kFaintFont, addressOf(handle)))
                .append("</TD></TR>");
        return text.append("</TABLE>");
    }

    void appendBox(std::size_t index) {
        const PlacedDevice& device = view_.devices()[index];
        const std::string header = headerColour(device.listed.category);
        out_.append("<TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"4\" ")
            .append("BGCOLOR=\"white\" COLOR=\"")
            .append(kLineColour)
            .append("\">");
        // The width stands in the cell of what is plugged in, or here when there is none, so that
        // the cells of the labels stay narrow.
        const std::string cell = std::string("COLSPAN=\"3\" ALIGN=\"LEFT\" BGCOLOR=\"")
                                     .append(header)
                                     .append(device.ports.empty() ? "\" WIDTH=\"200\">" : "\">");
        out_.append("<TR><TD PORT=\"h\" ").append(cell).append("<B>");
        out_.append(markupText(fitText(device.listed.terminalName, kModelWidth)));
        out_.append("</B>&#160;&#160;&#160;");
        out_.append(fontText(kFaintFont, device.reported ? addressOf(*device.reported) : "-"));
        out_.append("</TD></TR><TR><TD ").append(cell);
        out_.append(markupText(fitText(device.listed.model, kModelWidth)));
        out_.append("&#160;</TD></TR>");
        for (std::size_t port = 0; port < device.ports.size(); ++port)
            appendPort(index, port);
        out_.append("</TABLE>");
    }

    // A row for each label; what is behind them stands once.
    void appendPort(std::size_t index, std::size_t portNumber) {
        const PlacedPort& port = view_.devices()[index].ports[portNumber];
        const std::size_t rows = std::max<std::size_t>(port.labels.size(), 1);
        const std::string span = std::string(" ROWSPAN=\"").append(number(rows)).append("\"");
        for (std::size_t row = 0; row < rows; ++row) {
            out_.append("<TR><TD ALIGN=\"CENTER\"")
                .append(row == 0 ? kPortLine : "")
                .append(" BGCOLOR=\"")
                .append(kLabelBackground)
                .append("\">");
            out_.append(port.labels.empty() ? fontText(kEmptyFont, "-")
                                            : markupText(fitText(port.labels[row], kLabelWidth)));
            out_.append("</TD>");
            if (row == 0) {
                out_.append("<TD WIDTH=\"135\" ALIGN=\"LEFT\"").append(kPortLine);
                out_.append(span).append(">");
                out_.append(contentOf(index, portNumber))
                    .append("</TD><TD ALIGN=\"RIGHT\"")
                    .append(kPortLine);
                out_.append(span).append(" PORT=\"p").append(number(portNumber)).append("\">");
                out_.append(linkOf(port)).append("</TD>");
            }
            out_.append("</TR>");
        }
    }

    static std::string linkOf(const PlacedPort& port) {
        if (!port.linkWidth)
            return " ";
        std::string text("x");
        text.append(std::to_string(*port.linkWidth));
        if (port.linkSpeed)
            text.append(" ").append(linkSpeedName(*port.linkSpeed));
        return fontText(kFaintFont, text);
    }

    [[nodiscard]] std::string contentOf(std::size_t index, std::size_t portNumber) const {
        const PlacedPort& port = view_.devices()[index].ports[portNumber];
        if (port.missing)
            return fontText(kMissingFont, "missing");
        std::string devices;
        for (std::size_t i = 0; i < places_.size(); ++i) {
            if (drawn_[i] && places_[i].parent == index && places_[i].port == portNumber)
                devices.append(devices.empty() ? "" : ", ")
                    .append(view_.devices()[i].listed.terminalName);
        }
        if (!devices.empty())
            return fontText(kDeviceFont, fitText(devices, kContentWidth));
        const PciFunction* const bridge = port.bridge ? view_.bus().find(*port.bridge) : nullptr;
        if (bridge == nullptr)
            return fontText(kEmptyFont, "unknown");
        const auto below = view_.below(*bridge);
        if (below.empty())
            return fontText(kEmptyFont, "empty");
        return markupText(fitText(functionsText(below), kContentWidth));
    }

    // The first function's name, and how many more there are.
    [[nodiscard]] std::string functionsText(std::span<const PciFunction> functions) const {
        const PciFunction& first = functions.front();
        std::string text = names_.device(first.vendorId, first.deviceId);
        if (text.empty())
            text = names_.function(first.vendorId, first.deviceId);
        if (functions.size() == 1)
            return text;
        const std::string more = std::string(" +").append(number(functions.size() - 1));
        return fitText(text, kContentWidth - more.size()).append(more);
    }

    // A box of what a root bus has besides the bridges that lead to devices.
    struct RootBus {
        std::string label;
        Size size;
    };

    void describeRootBus(std::uint8_t root) {
        std::set<std::uint32_t> leading;
        for (const Place& place : places_) {
            if (!place.way.empty())
                leading.insert(place.way.front());
        }
        std::string rows;
        std::size_t count = 1;
        for (const PciFunction& function : view_.bus().functionsOn(root)) {
            if (!view_.isShown(function.handle()) || leading.contains(function.handle()))
                continue;
            rows.append("<TR><TD ALIGN=\"LEFT\">");
            rows.append(fontText(kFaintFont, pcibus::addressText(function)));
            rows.append("</TD><TD ALIGN=\"LEFT\">");
            rows.append(markupText(fitText(functionsText({&function, 1}), kContentWidth)));
            rows.append("&#160;&#160;</TD></TR>");
            ++count;
        }
        if (rows.empty())
            return;
        std::array<char, 24> name{};
        std::snprintf(name.data(), name.size(), "root bus %02x", unsigned{root});
        std::string label = "<TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" "
                            "CELLPADDING=\"3\" COLOR=\"";
        label.append(kLineColour).append("\"><TR><TD COLSPAN=\"2\" ALIGN=\"LEFT\" BGCOLOR=\"");
        label.append(kLabelBackground).append("\">");
        label.append(fontText(kFaintFont, name.data())).append("</TD></TR>").append(rows);
        label.append("</TABLE>");
        rootBuses_.push_back(
            {std::move(label), {kBoxWidth, static_cast<double>(count) * kRowHeight}});
    }

    const BusTreeView& view_;
    const PciNames& names_;
    const DrawingOptions& options_;
    std::size_t rows_ = 1;
    std::size_t columns_ = 1;
    std::size_t trees_ = 0;
    std::vector<std::vector<std::size_t>> devicesOfTree_;
    std::vector<RootBus> rootBuses_;
    std::vector<bool> drawn_;
    std::vector<Place> places_; // of every device; of one that is not drawn it says nothing
    std::string out_;
};

} // namespace

std::string drawingAsDot(const BusTreeView& view, const PciNames& names,
                         const DrawingOptions& options) {
    return Drawing(view, names, options).draw();
}

} // namespace tavctl
