#include "tavctl/draw/machineDrawing.h"

#include "tavctl/draw/bridgeBoxMarkup.h"
#include "tavctl/draw/deviceBox.h"
#include "tavctl/draw/deviceTrees.h"
#include "tavctl/draw/functionTexts.h"
#include "tavctl/draw/graph.h"
#include "tavctl/draw/machineBoxes.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace tavctl {

namespace {

// One domain of the machine.
struct Part {
    Part(const BusTreeView& domain, std::size_t position)
        : view(domain), placement(placeBoxes(domain)), boxes(machineBoxes(domain, placement)),
          number(position) {}
    const BusTreeView& view;
    Placement placement;
    MachineBoxes boxes;
    std::size_t number;
};

// A box of the drawing: of a device or of a bridge.
struct BoxName {
    const Part* part = nullptr;
    char kind = 'b'; // of a bridge; 'd': of a device
    std::size_t number = 0;

    // The nodes of the graph are "dN" for device N and "bN" for bridge box N, behind "mM" in a
    // domain that is not the first.
    [[nodiscard]] std::string text() const {
        const std::string name = nodeName(kind, number);
        return part->number == 0 ? name : nodeName('m', part->number) + name;
    }
    [[nodiscard]] const BridgeBox& bridge() const { return part->boxes.bridges[number]; }
    [[nodiscard]] const DeviceParts& device() const { return part->boxes.devices[number]; }

    // A long list, which is wider than high above the others.
    [[nodiscard]] bool isListed() const {
        return kind == 'b' && bridge().bridge == nullptr && bridge().isList;
    }
};

// A line that leads from a cell to another box.
struct Lead {
    char cell = 'r';
    std::size_t cellNumber = 0;
    BoxName to;
};

void addRows(const Part& part, const std::vector<FunctionRow>& rows, std::vector<Lead>& leads) {
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (rows[row].bridgeBox && !part.boxes.bridges[*rows[row].bridgeBox].isApart)
            leads.push_back({'r', row, {&part, 'b', *rows[row].bridgeBox}});
        if (rows[row].leadsToDevice && !part.boxes.devices[*rows[row].device].isApart)
            leads.push_back({'r', row, {&part, 'd', *rows[row].device}});
    }
}

std::vector<Lead> leadsOf(const BoxName& box) {
    std::vector<Lead> leads;
    if (box.kind == 'b') {
        addRows(*box.part, box.bridge().rows, leads);
        return leads;
    }
    const DeviceParts& parts = box.device();
    for (std::size_t port = 0; port < parts.bridgeBoxes.size(); ++port) {
        for (const std::size_t device : parts.devicesInPorts[port])
            leads.push_back({'p', port, {box.part, 'd', device}});
        if (parts.bridgeBoxes[port])
            leads.push_back({'p', port, {box.part, 'b', *parts.bridgeBoxes[port]}});
    }
    addRows(*box.part, parts.inside, leads);
    return leads;
}

TileSize ownSize(const BoxName& box) {
    if (box.kind == 'b')
        return {kBoxWidth, static_cast<double>(box.bridge().rows.size() + 2) * kRowHeight};
    TileSize size = deviceBoxSize(box.part->view.devices()[box.number]);
    size.height += static_cast<double>(box.device().inside.size()) * kRowHeight;
    return size;
}

// A box whose lines are followed one after the other, and what was found behind those before. The
// ones that are begun are as many as the bus is deep, which is too much for the stack of a thread.
struct Begun {
    explicit Begun(const BoxName& begun) : box(begun), leads(leadsOf(begun)) {}
    BoxName box;
    std::vector<Lead> leads;
    std::size_t next = 0;
    TileSize behind;
};

// With everything that lines lead to from it.
TileSize wholeSize(const BoxName& uppermost) {
    std::vector<Begun> begun{Begun(uppermost)};
    while (true) {
        Begun& at = begun.back();
        if (at.next < at.leads.size()) {
            const BoxName to = at.leads[at.next++].to;
            begun.emplace_back(to);
            continue;
        }
        const TileSize own = ownSize(at.box);
        const TileSize whole{own.width + at.behind.width,
                             std::max(own.height, at.behind.height) + kTileGap};
        begun.pop_back();
        if (begun.empty())
            return whole;
        TileSize& behind = begun.back().behind;
        behind.height += whole.height;
        behind.width = std::max(behind.width, whole.width + kBoxDistance);
    }
}

class MachineDrawing {
public:
    MachineDrawing(std::span<const BusTreeView> domains, const PciNames& names) : names_(names) {
        for (const BusTreeView& domain : domains) {
            parts_.push_back(std::make_unique<Part>(domain, parts_.size()));
            addTiles(*parts_.back());
        }
    }

    [[nodiscard]] std::string dot(std::string_view title) const {
        const Tiling tiling = arrangeTiles(sizes_);
        Graph graph(caption(title, tiledWidth(sizes_, tiling)), tiling);
        for (const std::size_t tile : arrayOrder(tiling)) {
            if (tile < tiles_.size())
                draw(tiles_[tile], graph);
            else
                graph.filler(tile);
        }
        return std::move(graph).finished();
    }

private:
    void addTiles(const Part& part) {
        for (std::size_t i = 0; i < part.boxes.bridges.size(); ++i)
            addTile({&part, 'b', i}, part.boxes.bridges[i].isApart);
        for (std::size_t i = 0; i < part.boxes.devices.size(); ++i)
            addTile({&part, 'd', i}, part.boxes.devices[i].isApart);
    }

    void addTile(const BoxName& box, bool isApart) {
        if (!isApart)
            return;
        if (box.isListed()) {
            lists_.push_back(box);
            return;
        }
        tiles_.push_back(box);
        sizes_.push_back(wholeSize(box));
    }

    // The width is that of what stands below.
    [[nodiscard]] std::string caption(std::string_view title, double width) const {
        std::size_t devices = 0;
        for (const auto& part : parts_)
            devices += drawnDevices(part->placement);
        std::string text = captionMarkup(title, devices);
        std::string lists;
        for (const BoxName& box : lists_) {
            // A few rows are easier to read in one column.
            constexpr std::size_t kFewest = 4;
            const std::size_t most = std::max<std::size_t>(box.bridge().rows.size() / kFewest, 1);
            const auto room = static_cast<std::size_t>(std::max(width / kBoxWidth, 1.0));
            lists +=
                fmt::format("<TR><TD ALIGN=\"LEFT\"><FONT POINT-SIZE=\"10\">{}</FONT></TD></TR>",
                            listMarkup(box.part->view, names_, box.part->boxes, box.number,
                                       std::min(most, room)));
        }
        if (lists.empty())
            return text;
        return fmt::format("<TABLE BORDER=\"0\" CELLBORDER=\"0\" CELLSPACING=\"4\"><TR>"
                           "<TD ALIGN=\"LEFT\">{}</TD></TR>{}</TABLE>",
                           text, lists);
    }

    // With everything that lines lead to from it.
    void draw(const BoxName& uppermost, Graph& graph) const {
        drawAlone(uppermost, graph);
        std::vector<Begun> begun{Begun(uppermost)};
        while (true) {
            Begun& at = begun.back();
            if (at.next < at.leads.size()) {
                const BoxName to = at.leads[at.next++].to;
                drawAlone(to, graph);
                begun.emplace_back(to);
                continue;
            }
            begun.pop_back();
            if (begun.empty())
                return;
            const Begun& from = begun.back();
            const Lead& lead = from.leads[from.next - 1];
            graph.join(cellName(from.box.text(), lead.cell, lead.cellNumber), lead.to.text());
        }
    }

    void drawAlone(const BoxName& box, Graph& graph) const {
        const Part& part = *box.part;
        if (box.kind == 'b')
            graph.box(box.text(), bridgeMarkup(part.view, names_, part.boxes, box.number));
        else
            graph.box(box.text(),
                      deviceMarkup(part.view, names_, part.placement, box.number,
                                   insideMarkup(part.view, names_, part.boxes, box.number)),
                      fullTextOf(part.view, box.number));
    }

    const PciNames& names_;
    std::vector<std::unique_ptr<const Part>> parts_;
    std::vector<BoxName> tiles_;
    std::vector<TileSize> sizes_; // of the tiles
    std::vector<BoxName> lists_;
};

} // namespace

std::string machineAsDot(std::span<const BusTreeView> domains, const PciNames& names,
                         std::string_view title) {
    return MachineDrawing(domains, names).dot(title);
}

} // namespace tavctl
