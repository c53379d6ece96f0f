#include "tavctl/draw/frontPlate.h"

#include "tavctl/draw/dotText.h"
#include "tavctl/draw/functionTexts.h"
#include "tavctl/draw/linkText.h"
#include "tavctl/draw/style.h"
#include "tavctl/draw/textLines.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/textTable.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>

namespace tavctl {

namespace {

using pcibus::PciFunction;

constexpr std::size_t kMostConnectors = 8;
constexpr double kConnectorWidth = 92;
constexpr double kNarrowestPlate = 372;
constexpr double kCharacterWidth = 6.6;

// Connectors of a port, which stand together.
struct PortCells {
    std::size_t port = 0;
    std::size_t connectors = 1;
};
using PlateRow = std::vector<PortCells>;

std::size_t connectorsOf(const PlacedPort& port) {
    return std::max<std::size_t>(port.labels.size(), 1);
}

// Ports stay whole; one that has more connectors than a row has room has a row of its own.
std::vector<PlateRow> rowsOf(const PlacedDevice& device, std::size_t most) {
    std::size_t all = 0;
    for (const PlacedPort& port : device.ports)
        all += connectorsOf(port);
    // Rows that are about equally long.
    const std::size_t count = std::max<std::size_t>((all + most - 1) / most, 1);
    const std::size_t wanted = (all + count - 1) / count;
    std::vector<PlateRow> rows;
    std::size_t used = 0;
    for (std::size_t i = 0; i < device.ports.size(); ++i) {
        const std::size_t connectors = connectorsOf(device.ports[i]);
        if (rows.empty() || used + connectors > std::max(wanted, connectors)) {
            rows.emplace_back();
            used = 0;
        }
        rows.back().push_back({i, connectors});
        used += connectors;
    }
    return rows;
}

std::size_t connectorsIn(const PlateRow& row) {
    std::size_t count = 0;
    for (const PortCells& cells : row)
        count += cells.connectors;
    return count;
}

std::string separatedMarkup(std::vector<std::string> lines) {
    for (std::string& line : lines)
        line = markupText(line);
    return separated(lines, "<BR/>");
}

class FrontPlate {
public:
    FrontPlate(const BusTreeView& view, const PciNames& names, const Placement& placement,
               std::size_t index, const PlateShape& shape)
        : view_(view), names_(names), placement_(placement), index_(index), shape_(shape),
          device_(view.devices()[index]) {}

    std::string markup() {
        out_ = fmt::format("<TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" "
                           "CELLPADDING=\"0\" BGCOLOR=\"#f8fafc\" COLOR=\"{}\">",
                           kLineColour);
        appendHead();
        for (const PlateRow& row : rowsOf(device_, shape_.connectors))
            appendRow(row);
        return out_ += "</TABLE>";
    }

private:
    void appendHead() {
        const PciFunction* const function =
            device_.reported ? view_.bus().find(*device_.reported) : nullptr;
        const std::string address = function == nullptr ? "-" : pcibus::addressText(*function);
        out_ += fmt::format(
            "<TR><TD{}><TABLE BORDER=\"0\" CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"4\" "
            "BGCOLOR=\"{}\"><TR><TD ALIGN=\"LEFT\"><FONT POINT-SIZE=\"12\"><B>{}</B></FONT>"
            "&#160;&#160;&#160;{}</TD><TD ALIGN=\"RIGHT\">{}</TD></TR>{}</TABLE></TD></TR>",
            tooltipAttributes(fullTextOf(view_, index_)), headColour(device_.listed.category),
            markupText(fitText(printable(markedName(device_.listed)), 16)),
            markupText(fitText(printable(device_.listed.model), modelWidth())),
            fontText(kFaintFont, address), placeMarkup());
    }

    [[nodiscard]] std::size_t modelWidth() const {
        return static_cast<std::size_t>(shape_.width / kCharacterWidth) - 22;
    }

    // In which connector of which box it hangs.
    [[nodiscard]] std::string placeMarkup() const {
        const BoxPlace& place = *placement_.devices[index_];
        if (!place.parent)
            return {};
        const PlacedDevice& holder = view_.devices()[*place.parent];
        const auto& labels = holder.ports[place.port].labels;
        const std::string where = labels.empty()
                                      ? std::string("a connector without a label")
                                      : fmt::format("connector {}", separated(labels, ", "));
        return fmt::format(
            "<TR><TD COLSPAN=\"2\" ALIGN=\"LEFT\">{}</TD></TR>",
            fontText(kDeviceFont, fmt::format("in {} of {}", where, markedName(holder.listed))));
    }

    // A table of its own: rows need not have equally wide cells.
    void appendRow(const PlateRow& row) {
        const double each = shape_.width / static_cast<double>(connectorsIn(row));
        out_ += "<TR><TD><TABLE BORDER=\"0\" CELLBORDER=\"1\" CELLSPACING=\"4\" "
                "CELLPADDING=\"3\"><TR>";
        for (const PortCells& cells : row)
            appendLabels(cells, each);
        out_ += "</TR><TR>";
        for (const PortCells& cells : row)
            appendContent(cells, each);
        out_ += "</TR></TABLE></TD></TR>";
    }

    void appendLabels(const PortCells& cells, double each) {
        const PlacedPort& port = device_.ports[cells.port];
        for (std::size_t i = 0; i < cells.connectors; ++i) {
            const std::string label =
                port.labels.empty()
                    ? fontText(kEmptyFont, "-")
                    : fmt::format("<B>{}</B>", separatedMarkup(brokenLines(
                                                   printable(port.labels[i]), charactersOf(each))));
            out_ += fmt::format("<TD WIDTH=\"{:.0f}\" COLOR=\"{}\" BGCOLOR=\"#e2e8f0\">{}</TD>",
                                each - 4, kLineColour, label);
        }
    }

    void appendContent(const PortCells& cells, double each) {
        const PortContent content = contentOf(view_, names_, placement_, index_, cells.port);
        const PlacedPort& port = device_.ports[cells.port];
        const PciFunction* const bridge = port.bridge ? view_.bus().find(*port.bridge) : nullptr;
        const LinkText link = bridge == nullptr ? LinkText() : linkTextOf(view_, *bridge);
        const bool isTaken = content.kind == PortContent::Kind::devices ||
                             content.kind == PortContent::Kind::functions;
        const double width = each * static_cast<double>(cells.connectors);
        std::string tip = content.whole;
        if (!link.whole.empty())
            tip += (tip.empty() ? "" : "\n") + link.whole;
        const std::string linkRow = link.text.empty()
                                        ? std::string()
                                        : fmt::format("<TR><TD>{}</TD></TR>", linkMarkup(link));
        out_ += fmt::format("<TD COLSPAN=\"{}\" HEIGHT=\"46\" COLOR=\"{}\" BGCOLOR=\"{}\"{}{}>"
                            "<TABLE BORDER=\"0\" CELLBORDER=\"0\" CELLSPACING=\"0\" "
                            "CELLPADDING=\"1\"><TR><TD>{}</TD></TR>{}</TABLE></TD>",
                            cells.connectors, kLineColour, isTaken ? "white" : "#f8fafc",
                            isTaken ? "" : " STYLE=\"dashed\"", tooltipAttributes(tip),
                            contentLinesMarkup(content, charactersOf(width)), linkRow);
    }

    static std::size_t charactersOf(double width) {
        return static_cast<std::size_t>(std::max((width - 14) / kCharacterWidth, 6.0));
    }

    const BusTreeView& view_;
    const PciNames& names_;
    const Placement& placement_;
    std::size_t index_;
    const PlateShape& shape_;
    const PlacedDevice& device_;
    std::string out_;
};

} // namespace

PlateShape plateShapeFor(const BusTreeView& view, const Placement& placement) {
    PlateShape shape;
    for (std::size_t i = 0; i < placement.devices.size(); ++i) {
        if (!placement.devices[i])
            continue;
        for (const PlateRow& row : rowsOf(view.devices()[i], kMostConnectors))
            shape.connectors = std::max(shape.connectors, connectorsIn(row));
    }
    shape.width =
        std::max(kNarrowestPlate, kConnectorWidth * static_cast<double>(shape.connectors));
    return shape;
}

std::string frontMarkup(const BusTreeView& view, const PciNames& names, const Placement& placement,
                        std::size_t device, const PlateShape& shape) {
    return FrontPlate(view, names, placement, device, shape).markup();
}

double plateHeight(const PlacedDevice& device, const PlateShape& shape) {
    constexpr double kHead = 26;
    constexpr double kRow = 76;
    return kHead + kRow * static_cast<double>(rowsOf(device, shape.connectors).size());
}

} // namespace tavctl
