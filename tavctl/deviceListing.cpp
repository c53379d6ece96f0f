#include "tavctl/deviceListing.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace tavctl {

namespace {

using Json = nlohmann::ordered_json;

// Attributes that every device carries.
std::int32_t required(const HostPlugin& plugin, std::uint32_t index, std::uint32_t attribute) {
    return plugin.integer(index, attribute).value_or(0);
}

ListedPort readPort(const HostPlugin& plugin, std::uint32_t index, std::uint32_t element) {
    ListedPort port;
    port.label = plugin.text(index, TAVPLUGIN_INDEXED(kTavAttrConnectorLabel, element));
    port.first = plugin.integer(index, TAVPLUGIN_INDEXED(kTavAttrPortSecondaryBus, element));
    port.second = plugin.integer(index, TAVPLUGIN_INDEXED(kTavAttrPortLinkWidth, element));
    port.third = plugin.integer(index, TAVPLUGIN_INDEXED(kTavAttrPortLinkSpeed, element));
    return port;
}

// The element index of an attribute has eight bits.
constexpr std::int32_t kReadablePorts = 256;

ListedDevice readDevice(const HostPlugin& plugin, std::uint32_t index) {
    ListedDevice device;
    device.model = plugin.text(index, kTavAttrModelName);
    device.category = required(plugin, index, kTavAttrDeviceCategory);
    device.bus = required(plugin, index, kTavAttrBusNumber);
    device.device = required(plugin, index, kTavAttrDeviceNumber);
    device.function = required(plugin, index, kTavAttrFunctionNumber);
    device.walkValue = plugin.integer(index, kTavAttrUpstreamPortBus);
    device.linkWidthPerLabel = plugin.integer(index, kTavAttrLinkWidthPerLabel);
    device.terminalName = plugin.text(index, kTavAttrTerminalName);
    const std::int32_t ports = std::min(required(plugin, index, kTavAttrPortCount), kReadablePorts);
    for (std::int32_t element = 0; element < ports; ++element)
        device.ports.push_back(readPort(plugin, index, static_cast<std::uint32_t>(element)));
    return device;
}

Json orNull(const std::optional<std::int32_t>& value) {
    return value ? Json(*value) : Json(nullptr);
}

template <typename... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, arguments...);
    return text.data();
}

std::string categoryName(std::int32_t category) {
    switch (category) {
    case kTavCategoryPci:
        return "PCI";
    case kTavCategoryExpresscard:
        return "Expresscard";
    case kTavCategorySwitchboxTav:
        return "SwitchboxTav";
    default:
        return formatted("category %d", category);
    }
}

// A link speed by its code in the link capabilities; 1 is 2.5 GT/s.
std::string speedName(std::int32_t code) {
    constexpr std::array kSpeeds{"2.5", "5", "8", "16", "32", "64"};
    if (code < 1 || static_cast<std::size_t>(code) > kSpeeds.size())
        return formatted("speed code %d", code);
    return std::string(kSpeeds[static_cast<std::size_t>(code) - 1]) + " GT/s";
}

std::string portText(const ListedPort& port) {
    std::string text = formatted("bus %02x", static_cast<unsigned>(port.first.value_or(0)));
    if (port.second)
        text += formatted("  x%d", *port.second);
    if (port.third)
        text += "  " + speedName(*port.third);
    return text;
}

using Row = std::vector<std::string>;

// UTF-8 characters, not bytes, are what stands in a column.
std::size_t width(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    }));
}

void appendRow(std::string& out, const Row& row, const std::vector<std::size_t>& widths) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        out += row[i];
        if (i + 1 < row.size())
            out += std::string(widths[i] - width(row[i]) + 2, ' ');
    }
    out += '\n';
}

} // namespace

std::vector<ListedDevice> readDevices(const HostPlugin& plugin) {
    std::vector<ListedDevice> devices;
    const std::uint32_t count = plugin.deviceCount();
    for (std::uint32_t index = 0; index < count; ++index)
        devices.push_back(readDevice(plugin, index));
    return devices;
}

std::string listingAsJson(const std::vector<ListedDevice>& devices) {
    Json list = Json::array();
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const ListedDevice& device = devices[i];
        Json ports = Json::array();
        for (const ListedPort& port : device.ports)
            ports.push_back(Json{{"label", port.label},
                                 {"first", orNull(port.first)},
                                 {"second", orNull(port.second)},
                                 {"third", orNull(port.third)}});
        list.push_back(Json{{"index", i},
                            {"model", device.model},
                            {"category", device.category},
                            {"bus", device.bus},
                            {"device", device.device},
                            {"function", device.function},
                            {"walkValue", orNull(device.walkValue)},
                            {"linkWidthPerLabel", orNull(device.linkWidthPerLabel)},
                            {"terminalName", device.terminalName},
                            {"ports", std::move(ports)}});
    }
    const Json whole{{"devices", std::move(list)}};
    return whole.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string listingAsTable(const std::vector<ListedDevice>& devices) {
    std::vector<Row> rows{{"NAME", "MODEL", "ADDRESS", "CATEGORY", "UPSTREAM"}};
    for (const ListedDevice& device : devices)
        rows.push_back({device.terminalName, device.model,
                        formatted("%02x:%02x.%x", static_cast<unsigned>(device.bus),
                                  static_cast<unsigned>(device.device),
                                  static_cast<unsigned>(device.function)),
                        categoryName(device.category),
                        device.walkValue
                            ? formatted("bus %02x", static_cast<unsigned>(*device.walkValue))
                            : "-"});
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], width(row[i]));
    }

    std::string out;
    appendRow(out, rows.front(), widths);
    for (std::size_t i = 0; i < devices.size(); ++i) {
        appendRow(out, rows[i + 1], widths);
        std::size_t labelWidth = 0;
        for (const ListedPort& port : devices[i].ports)
            labelWidth = std::max(labelWidth, width(port.label));
        for (const ListedPort& port : devices[i].ports)
            appendRow(out, {"  port", port.label, portText(port)}, {6, labelWidth});
    }
    return out;
}

} // namespace tavctl
