#include "tavctl/host/deviceListing.h"

#include "pcibus/pciFunction.h"
#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <algorithm>

namespace tavctl {

namespace {

// Attributes that every device carries.
std::int32_t required(const HostPlugin& plugin, std::uint32_t index, std::uint32_t attribute) {
    return plugin.integer(index, attribute).value_or(0);
}

ListedPort readPort(const HostPlugin& plugin, std::uint32_t index, std::uint32_t element) {
    ListedPort port;
    port.label = plugin.text(index, TAVPLUGIN_INDEXED(kTavAttrConnectorLabel, element));
    port.secondaryBus = plugin.integer(index, TAVPLUGIN_INDEXED(kTavAttrPortSecondaryBus, element));
    port.linkWidth = plugin.integer(index, TAVPLUGIN_INDEXED(kTavAttrPortLinkWidth, element));
    port.linkSpeed = plugin.integer(index, TAVPLUGIN_INDEXED(kTavAttrPortLinkSpeed, element));
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
    device.upstreamBus = plugin.integer(index, kTavAttrUpstreamPortBus);
    device.linkWidthPerLabel = plugin.integer(index, kTavAttrLinkWidthPerLabel);
    device.terminalName = plugin.text(index, kTavAttrTerminalName);
    const std::int32_t ports = std::min(required(plugin, index, kTavAttrPortCount), kReadablePorts);
    for (std::int32_t element = 0; element < ports; ++element)
        device.ports.push_back(readPort(plugin, index, static_cast<std::uint32_t>(element)));
    return device;
}

} // namespace

std::string addressOf(const ListedDevice& device) {
    return pcibus::addressTextOf(static_cast<unsigned>(device.bus),
                                 static_cast<unsigned>(device.device),
                                 static_cast<unsigned>(device.function));
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

std::vector<ListedDevice> readDevices(const HostPlugin& plugin) {
    std::vector<ListedDevice> devices;
    const std::uint32_t count = plugin.deviceCount();
    for (std::uint32_t index = 0; index < count; ++index)
        devices.push_back(readDevice(plugin, index));
    return devices;
}

std::string markedName(const std::string& name, bool isStored) {
    return isStored ? name : name + "*";
}

std::string markedName(const ListedDevice& device) {
    return markedName(device.terminalName, device.isStored);
}

std::string connectorName(const std::string& device, const std::vector<std::string>& labels) {
    return fmt::format("{} connector{} {}", device, labels.size() == 1 ? "" : "s",
                       separated(labels, " "));
}

void explainMark() {
    complain("names with * would be given, and are not stored");
}

void explainMarks(const std::vector<ListedDevice>& devices) {
    if (std::any_of(devices.begin(), devices.end(),
                    [](const ListedDevice& device) { return !device.isStored; }))
        explainMark();
}

} // namespace tavctl
