#include "tavctl/host/deviceListing.h"

#include "pcibus/pciFunction.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/words/json.h"
#include "tavctl/words/print.h"
#include "tavctl/words/textTable.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace tavctl {

namespace {

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

// A bus as addresses show it.
std::string busText(std::int32_t bus) {
    return fmt::format("bus {:02x}", static_cast<std::uint32_t>(bus));
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
        return fmt::format("category {}", category);
    }
}

std::string portText(const ListedPort& port) {
    std::string text = busText(port.first.value_or(0));
    if (port.second)
        text += fmt::format("  x{}", *port.second);
    if (port.third)
        text += fmt::format("  {}", linkSpeedName(*port.third));
    return text;
}

// Labels for a cell: "A,B,C".
std::string labelsOf(const ListedDevice& device) {
    std::string labels;
    for (const ListedPort& port : device.ports)
        labels.append(labels.empty() ? "" : ",").append(port.label);
    return labels.empty() ? "-" : labels;
}

std::string portLines(const ListedDevice& device) {
    std::vector<TableRow> rows;
    for (const ListedPort& port : device.ports)
        rows.push_back({"  port", port.label, portText(port)});
    std::string out;
    for (const std::string& line : tableLines(rows, {}))
        out += fmt::format("{}\n", line);
    return out;
}

} // namespace

std::vector<ListedDevice> readDevices(const HostPlugin& plugin) {
    std::vector<ListedDevice> devices;
    const std::uint32_t count = plugin.deviceCount();
    for (std::uint32_t index = 0; index < count; ++index)
        devices.push_back(readDevice(plugin, index));
    return devices;
}

std::string listingAsJson(const std::vector<ListedDevice>& devices,
                          const std::optional<pcibus::LeftOut>& leftOut) {
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
                            {"stored", device.isStored},
                            {"ports", std::move(ports)}});
    }
    const Json whole{{"devices", std::move(list)}, {"leftOut", leftOutJson(leftOut)}};
    return whole.line();
}

std::string markedName(const ListedDevice& device) {
    return device.isStored ? device.terminalName : device.terminalName + "*";
}

void explainMarks(const std::vector<ListedDevice>& devices) {
    if (std::any_of(devices.begin(), devices.end(),
                    [](const ListedDevice& device) { return !device.isStored; }))
        complain("names with * would be given, and are not stored");
}

std::string linkSpeedName(std::int32_t code) {
    constexpr std::array kSpeeds{"2.5", "5", "8", "16", "32", "64"};
    if (code < 1 || static_cast<std::size_t>(code) > kSpeeds.size())
        return fmt::format("speed code {}", code);
    return fmt::format("{} GT/s", kSpeeds[static_cast<std::size_t>(code) - 1]);
}

std::string listingAsTable(const std::vector<ListedDevice>& devices, bool verbose) {
    std::vector<TableRow> rows{{"NAME", "MODEL", "ADDRESS", "CATEGORY", "PORTS"}};
    for (const ListedDevice& device : devices)
        rows.push_back({markedName(device), device.model,
                        pcibus::addressTextOf(static_cast<unsigned>(device.bus),
                                              static_cast<unsigned>(device.device),
                                              static_cast<unsigned>(device.function)),
                        categoryName(device.category), labelsOf(device)});
    // Labels first: how many there are can be told by -v; the name last.
    const auto lines = verbose ? tableLines(rows, {}) : tableLines(rows, {4, 1, 0});
    std::string out = fmt::format("{}\n", lines.front());
    for (std::size_t i = 0; i < devices.size(); ++i) {
        out += fmt::format("{}\n", lines[i + 1]);
        if (!verbose)
            continue;
        if (devices[i].walkValue)
            out += fmt::format("  upstream  {}\n", busText(*devices[i].walkValue));
        out += portLines(devices[i]);
    }
    return out;
}

} // namespace tavctl
