#include "tavctl/draw/boxMarkup.h"

#include "tavctl/bus/linkState.h"
#include "tavctl/draw/dotText.h"
#include "tavctl/words/textTable.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tavctl {

namespace {

using pcibus::PciFunction;

// Texts are cut so that no box is much wider than the others.
constexpr std::size_t kModelWidth = 30;
constexpr std::size_t kContentWidth = 30;
constexpr std::size_t kLabelWidth = 14;

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

std::string addressOf(const pcibus::Bus& bus, std::uint32_t handle) {
    const PciFunction* const function = bus.find(handle);
    return function == nullptr ? std::string() : pcibus::addressText(*function);
}

std::string nameOf(const PciNames& names, const PciFunction& function) {
    std::string text = names.device(function.vendorId, function.deviceId);
    return text.empty() ? names.function(function.vendorId, function.deviceId) : text;
}

// The first function's name, and how many more there are.
std::string functionsText(const PciNames& names, std::span<const PciFunction> functions) {
    std::string text = nameOf(names, functions.front());
    if (functions.size() == 1)
        return text;
    const std::string more = std::string(" +").append(std::to_string(functions.size() - 1));
    return fitText(text, kContentWidth - more.size()).append(more);
}

std::string linkMarkup(const PlacedPort& port) {
    if (!port.linkWidth)
        return " ";
    std::string text("x");
    text.append(std::to_string(*port.linkWidth));
    if (port.linkSpeed)
        text.append(" ").append(linkSpeedName(*port.linkSpeed));
    return fontText(kFaintFont, text);
}

class DeviceBox {
public:
    DeviceBox(const BusTreeView& view, const PciNames& names, const Placement& placement,
              std::size_t index)
        : view_(view), names_(names), placement_(placement), index_(index),
          device_(view.devices()[index]) {}

    std::string markup() {
        out_.append("<TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"4\" ")
            .append("BGCOLOR=\"white\" COLOR=\"")
            .append(kLineColour)
            .append("\">");
        appendHead();
        for (std::size_t port = 0; port < device_.ports.size(); ++port)
            appendPort(port);
        return out_.append("</TABLE>");
    }

private:
    void appendHead() {
        // The width stands in the cell of what is plugged in, or here when there is none, so that
        // the cells of the labels stay narrow.
        const std::string cell = std::string("COLSPAN=\"3\" ALIGN=\"LEFT\" BGCOLOR=\"")
                                     .append(headerColour(device_.listed.category))
                                     .append(device_.ports.empty() ? "\" WIDTH=\"200\">" : "\">");
        out_.append("<TR><TD PORT=\"h\" ").append(cell).append("<B>");
        out_.append(markupText(fitText(markedName(device_.listed), kModelWidth)));
        out_.append("</B>&#160;&#160;&#160;");
        out_.append(fontText(kFaintFont,
                             device_.reported ? addressOf(view_.bus(), *device_.reported) : "-"));
        out_.append("</TD></TR><TR><TD ").append(cell);
        out_.append(markupText(fitText(device_.listed.model, kModelWidth)));
        out_.append("&#160;</TD></TR>");
    }

    // A row for each label; what is behind them stands once.
    void appendPort(std::size_t number) {
        const PlacedPort& port = device_.ports[number];
        const std::size_t rows = std::max<std::size_t>(port.labels.size(), 1);
        const std::string span =
            std::string(" ROWSPAN=\"").append(std::to_string(rows)).append("\"");
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
                out_.append(contentMarkup(number))
                    .append("</TD><TD ALIGN=\"RIGHT\"")
                    .append(kPortLine);
                out_.append(span).append(" PORT=\"p").append(std::to_string(number)).append("\">");
                out_.append(linkMarkup(port)).append("</TD>");
            }
            out_.append("</TR>");
        }
    }

    [[nodiscard]] std::string contentMarkup(std::size_t number) const {
        const PlacedPort& port = device_.ports[number];
        if (port.missing)
            return fontText(kMissingFont, "missing");
        std::string devices;
        for (const std::size_t i : devicesIn(placement_, index_, number))
            devices.append(devices.empty() ? "" : ", ")
                .append(markedName(view_.devices()[i].listed));
        if (!devices.empty())
            return fontText(kDeviceFont, fitText(devices, kContentWidth));
        const PciFunction* const bridge = port.bridge ? view_.bus().find(*port.bridge) : nullptr;
        if (bridge == nullptr)
            return fontText(kEmptyFont, "unknown");
        const auto below = view_.below(*bridge);
        if (below.empty())
            return fontText(kEmptyFont, "empty");
        return markupText(fitText(functionsText(names_, below), kContentWidth));
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
                         std::size_t device) {
    return DeviceBox(view, names, placement, device).markup();
}

std::string deviceTooltip(const PlacedDevice& device) {
    std::string text = markedName(device.listed);
    return markupText(text.append(": ").append(device.listed.model));
}

std::string wayMarkup(const pcibus::Bus& bus, const std::vector<std::uint32_t>& way) {
    std::string text = "<TABLE BORDER=\"0\" CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"1\">";
    for (const std::uint32_t handle : way)
        text.append("<TR><TD>")
            .append(fontText(kFaintFont, addressOf(bus, handle)))
            .append("</TD></TR>");
    return text.append("</TABLE>");
}

std::string rootBusMarkup(const PciNames& names, const RootBusBox& box) {
    std::array<char, 24> name{};
    std::snprintf(name.data(), name.size(), "root bus %02x", unsigned{box.bus});
    std::string text = "<TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" "
                       "CELLPADDING=\"3\" COLOR=\"";
    text.append(kLineColour).append("\"><TR><TD COLSPAN=\"2\" ALIGN=\"LEFT\" BGCOLOR=\"");
    text.append(kLabelBackground).append("\">");
    text.append(fontText(kFaintFont, name.data())).append("</TD></TR>");
    for (const PciFunction* const function : box.functions) {
        text.append("<TR><TD ALIGN=\"LEFT\">");
        text.append(fontText(kFaintFont, pcibus::addressText(*function)));
        text.append("</TD><TD ALIGN=\"LEFT\">");
        text.append(markupText(fitText(nameOf(names, *function), kContentWidth)));
        text.append("&#160;&#160;</TD></TR>");
    }
    return text.append("</TABLE>");
}

std::string captionMarkup(std::string_view title, std::size_t devices) {
    std::string rest = std::to_string(devices).append(devices == 1 ? " device" : " devices");
    if (devices == 0)
        rest = "no described device is present";
    return std::string("<B>")
        .append(markupText(title))
        .append("</B>  ")
        .append(fontText(kFaintFont, rest));
}

} // namespace tavctl
