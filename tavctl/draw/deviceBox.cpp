#include "tavctl/draw/deviceBox.h"

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

// Texts are cut so that no box is much wider than the others; labels are broken at blanks.
constexpr std::size_t kModelWidth = 36;
constexpr std::size_t kContentWidth = 30;
constexpr std::size_t kLabelWidth = 14;

std::string addressOf(const pcibus::Bus& bus, std::uint32_t handle) {
    const PciFunction* const function = bus.find(handle);
    return function == nullptr ? std::string() : pcibus::addressText(*function);
}

std::string labelMarkup(const std::string& label) {
    std::vector<std::string> lines = brokenLines(printable(label), kLabelWidth);
    for (std::string& line : lines)
        line = markupText(line);
    return separated(lines, "<BR/>");
}

class DeviceBox {
public:
    DeviceBox(const BusTreeView& view, const PciNames& names, const Placement& placement,
              std::size_t index)
        : view_(view), names_(names), placement_(placement), index_(index),
          device_(view.devices()[index]) {}

    std::string markup(std::string_view more) {
        out_ = fmt::format("<TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" "
                           "CELLPADDING=\"4\" BGCOLOR=\"white\" COLOR=\"{}\">",
                           kLineColour);
        appendHead();
        for (std::size_t port = 0; port < device_.ports.size(); ++port)
            appendPort(port);
        return out_.append(more).append("</TABLE>");
    }

private:
    void appendHead() {
        // The width stands in the cell of what is plugged in, or here when there is none, so that
        // the cells of the labels stay narrow.
        const std::string cell = fmt::format("COLSPAN=\"3\" ALIGN=\"LEFT\" BGCOLOR=\"{}\"{}{}",
                                             headColour(device_.listed.category),
                                             device_.ports.empty() ? " WIDTH=\"310\"" : "",
                                             tooltipAttributes(fullTextOf(view_, index_)));
        const std::string address =
            device_.reported ? addressOf(view_.bus(), *device_.reported) : "-";
        out_ += fmt::format("<TR><TD PORT=\"h\" {}><B>{}</B>&#160;&#160;&#160;{}</TD></TR>"
                            "<TR><TD {}>{}&#160;</TD></TR>",
                            cell,
                            markupText(fitText(printable(markedName(device_.listed)), kModelWidth)),
                            fontText(kFaintFont, address), cell,
                            markupText(fitText(printable(device_.listed.model), kModelWidth)));
    }

    // A row for each label; what is behind them stands once.
    void appendPort(std::size_t number) {
        const PlacedPort& port = device_.ports[number];
        const std::size_t rows = std::max<std::size_t>(port.labels.size(), 1);
        for (std::size_t row = 0; row < rows; ++row) {
            out_ += fmt::format("<TR><TD ALIGN=\"CENTER\"{} BGCOLOR=\"{}\">{}</TD>",
                                row == 0 ? kRowLine : "", kLabelBackground,
                                port.labels.empty() ? fontText(kEmptyFont, "-")
                                                    : labelMarkup(port.labels[row]));
            if (row == 0)
                appendBehind(number, rows);
            out_ += "</TR>";
        }
    }

    void appendBehind(std::size_t number, std::size_t rows) {
        const PortContent content = contentOf(view_, names_, placement_, index_, number);
        const PlacedPort& port = device_.ports[number];
        const PciFunction* const bridge = port.bridge ? view_.bus().find(*port.bridge) : nullptr;
        const LinkText link = bridge == nullptr ? LinkText() : linkTextOf(view_, *bridge);
        out_ += fmt::format("<TD WIDTH=\"165\" ALIGN=\"LEFT\" BGCOLOR=\"white\"{} "
                            "ROWSPAN=\"{}\"{}>{}</TD>"
                            "<TD WIDTH=\"112\" ALIGN=\"RIGHT\" BGCOLOR=\"white\"{} "
                            "ROWSPAN=\"{}\" PORT=\"p{}\"{}>{}</TD>",
                            kRowLine, rows, tooltipAttributes(content.whole),
                            contentMarkup(content, kContentWidth), kRowLine, rows, number,
                            tooltipAttributes(link.whole), linkMarkup(link));
    }

    const BusTreeView& view_;
    const PciNames& names_;
    const Placement& placement_;
    std::size_t index_;
    const PlacedDevice& device_;
    std::string out_;
};

} // namespace

std::string deviceMarkup(const BusTreeView& view, const PciNames& names, const Placement& placement,
                         std::size_t device, std::string_view more) {
    return DeviceBox(view, names, placement, device).markup(more);
}

std::string wayMarkup(const pcibus::Bus& bus, const std::vector<std::uint32_t>& way) {
    std::string text = "<TABLE BORDER=\"0\" CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"1\">";
    for (const std::uint32_t handle : way)
        text += fmt::format("<TR><TD>{}</TD></TR>", fontText(kFaintFont, addressOf(bus, handle)));
    return text += "</TABLE>";
}

std::string captionMarkup(std::string_view title, std::size_t devices) {
    return fmt::format("<B>{}</B>  {}", markupText(title),
                       fontText(kFaintFont, devices == 0 ? "no described device is present"
                                                         : counted(devices, "device")));
}

} // namespace tavctl
