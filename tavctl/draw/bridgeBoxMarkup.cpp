#include "tavctl/draw/bridgeBoxMarkup.h"

#include "tavctl/draw/dotText.h"
#include "tavctl/draw/functionTexts.h"
#include "tavctl/draw/linkText.h"
#include "tavctl/draw/style.h"
#include "tavctl/words/printable.h"
#include "tavctl/words/textTable.h"

#include <fmt/core.h>

namespace tavctl {

namespace {

using pcibus::PciFunction;

constexpr std::size_t kNameWidth = 32;

constexpr const char* kBox = "<TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" "
                             "CELLPADDING=\"4\" BGCOLOR=\"white\" COLOR=\"#94a3b8\">";

// "bus 01", "bus 01-08"
std::string busesBelow(const BusTreeView& view, const PciFunction& bridge) {
    const std::uint8_t last = view.lastBusOf(bridge);
    return last == bridge.secondaryBus
               ? fmt::format("bus {:02x}", last)
               : fmt::format("bus {:02x}-{:02x}", bridge.secondaryBus, last);
}

class FunctionRows {
public:
    FunctionRows(const BusTreeView& view, const PciNames& names) : view_(view), names_(names) {}

    [[nodiscard]] std::string markup(const FunctionRow& row, std::size_t number) const {
        return fmt::format("<TR>{}</TR>", cells(row, number));
    }

    // Three of them; the first one takes no more room than it needs.
    [[nodiscard]] std::string cells(const FunctionRow& row, std::size_t number) const {
        const LinkText link = linkTextOf(view_, *row.function);
        return fmt::format(
            "<TD ALIGN=\"LEFT\" BGCOLOR=\"{}\"{}>{}</TD>"
            "<TD WIDTH=\"165\" ALIGN=\"LEFT\" BGCOLOR=\"white\"{}{}>{}</TD>"
            "<TD WIDTH=\"112\" ALIGN=\"RIGHT\" BGCOLOR=\"white\"{} PORT=\"r{}\"{}>{}</TD>",
            kLabelBackground, kRowLine, fontText(kFaintFont, addressIn(view_, *row.function)),
            kRowLine, tooltipAttributes(wholeText(row)), what(row), kRowLine, number,
            tooltipAttributes(link.whole), linkMarkup(link));
    }

private:
    [[nodiscard]] std::string wholeText(const FunctionRow& row) const {
        std::string text = fullTextOf(view_, names_, *row.function);
        if (row.device)
            text += fmt::format("\n{}", fullTextOf(view_, *row.device));
        return text;
    }

    [[nodiscard]] std::string what(const FunctionRow& row) const {
        if (row.device)
            return fontText(
                kDeviceFont,
                fitText(printable(markedName(view_.devices()[*row.device].listed)), kNameWidth));
        if (row.bridgeBox)
            return fontText(kFaintFont,
                            fmt::format("bridge to {}", busesBelow(view_, *row.function)));
        return markupText(fitText(printable(shortNameOf(names_, *row.function)), kNameWidth));
    }

    const BusTreeView& view_;
    const PciNames& names_;
};

std::string headMarkup(const BusTreeView& view, const PciNames& names, const BridgeBox& box,
                       std::size_t columns = 1) {
    const std::string cell =
        fmt::format("COLSPAN=\"{}\" ALIGN=\"LEFT\" BGCOLOR=\"#e2e8f0\"", 3 * columns);
    if (box.bridge == nullptr) {
        const std::uint32_t domain = view.domain().number();
        const std::string text =
            domain == 0 ? fmt::format("<B>root bus {:02x}</B>", box.bus)
                        : fmt::format("<B>root bus {:04x}:{:02x}</B>&#160;&#160;&#160;{}", domain,
                                      box.bus, fontText(kFaintFont, "not searched for devices"));
        return fmt::format("<TR><TD PORT=\"h\" {}>{}</TD></TR>", cell, text);
    }
    const std::string tip = tooltipAttributes(fullTextOf(view, names, *box.bridge));
    return fmt::format(
        "<TR><TD PORT=\"h\" {}{}><B>{}</B>&#160;&#160;&#160;{}</TD></TR><TR><TD {}{}>{}</TD></TR>",
        cell, tip, addressIn(view, *box.bridge),
        fontText(kFaintFont, busesBelow(view, *box.bridge)), cell, tip,
        markupText(fitText(printable(shortNameOf(names, *box.bridge)), kNameWidth + 8)));
}

} // namespace

std::string bridgeMarkup(const BusTreeView& view, const PciNames& names, const MachineBoxes& boxes,
                         std::size_t box) {
    const BridgeBox& bridge = boxes.bridges[box];
    std::string text = fmt::format("{}{}", kBox, headMarkup(view, names, bridge));
    const FunctionRows rows(view, names);
    for (std::size_t row = 0; row < bridge.rows.size(); ++row)
        text += rows.markup(bridge.rows[row], row);
    return text += "</TABLE>";
}

std::string listMarkup(const BusTreeView& view, const PciNames& names, const MachineBoxes& boxes,
                       std::size_t box, std::size_t columns) {
    const BridgeBox& bridge = boxes.bridges[box];
    const std::size_t count = bridge.rows.size();
    const std::size_t rows = (count + columns - 1) / columns;
    columns = (count + rows - 1) / rows;
    std::string text = fmt::format("{}{}", kBox, headMarkup(view, names, bridge, columns));
    const FunctionRows all(view, names);
    for (std::size_t row = 0; row < rows; ++row) {
        text += "<TR>";
        for (std::size_t column = 0; column < columns; ++column) {
            const std::size_t number = column * rows + row;
            text += number < count ? all.cells(bridge.rows[number], number)
                                   : fmt::format("<TD COLSPAN=\"3\"{}></TD>", kRowLine);
        }
        text += "</TR>";
    }
    return text += "</TABLE>";
}

std::string insideMarkup(const BusTreeView& view, const PciNames& names, const MachineBoxes& boxes,
                         std::size_t device) {
    const auto& inside = boxes.devices[device].inside;
    const FunctionRows rows(view, names);
    std::string text;
    for (std::size_t row = 0; row < inside.size(); ++row)
        text += rows.markup(inside[row], row);
    return text;
}

} // namespace tavctl
