#include "tavctl/list/listing.h"

#include "tavctl/bus/busQueries.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace tavctl {

namespace {

using pcibus::PciFunction;

// The bridge above the bus of that number.
const PciFunction* bridgeAbove(const DomainBus& domain, const std::optional<std::int32_t>& bus) {
    if (!bus || *bus <= 0 || static_cast<std::size_t>(*bus) >= pcibus::Bus::kBusCount)
        return nullptr;
    return domain.bus().parentOfBus(static_cast<std::uint8_t>(*bus));
}

ListedLink portOf(const DomainBus& domain, const ListedPort& port) {
    const PciFunction* const bridge = bridgeAbove(domain, port.secondaryBus);
    if (bridge == nullptr)
        return {};
    return {linkBelow(domain, *bridge), !domain.bus().functionsOn(bridge->secondaryBus).empty()};
}

// The path of the bridge above, "MR00:20" for "MR00:00,20"; empty for a function on a root bus.
std::string pathAbove(const std::string& path) {
    const std::size_t root = path.find(':') + 1;
    const std::size_t comma = path.find(',', root);
    return root == 0 || comma == std::string::npos ? std::string()
                                                   : path.substr(0, root) + path.substr(comma + 1);
}

std::string connectorOf(const std::vector<ListedDevice>& devices, const PciFunction& bridge) {
    for (const ListedDevice& device : devices) {
        for (const ListedPort& port : device.ports) {
            if (port.secondaryBus && *port.secondaryBus == std::int32_t{bridge.secondaryBus} &&
                bridge.secondaryBus != 0)
                return fmt::format("{} connector {}", markedName(device), port.label);
        }
    }
    return pcibus::addressText(bridge);
}

std::string placeOf(const pcibus::Bus& bus, const std::vector<ListedDevice>& devices,
                    const std::string& slotPath) {
    for (std::string path = pathAbove(slotPath); !path.empty(); path = pathAbove(path)) {
        if (const PciFunction* const bridge = functionAtSlotPath(bus, path))
            return connectorOf(devices, *bridge);
    }
    return {};
}

} // namespace

bool ListingEntry::isDegraded() const {
    return upstream.isDegraded() ||
           std::any_of(ports.begin(), ports.end(),
                       [](const ListedLink& port) { return port.link.isDegraded(); });
}

bool ListingEntry::hasFreePort() const {
    return std::any_of(ports.begin(), ports.end(),
                       [](const ListedLink& port) { return port.occupied == false; });
}

Listing makeListing(const std::vector<ListedDevice>& devices, std::vector<AbsentDevice> absent,
                    const WholeBus* bus) {
    Listing listing;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        ListingEntry entry;
        entry.device = devices[i];
        entry.index = i;
        entry.ports.resize(devices[i].ports.size());
        if (bus != nullptr) {
            const DomainBus& domain = bus->main();
            if (const PciFunction* const above = bridgeAbove(
                    domain, devices[i].upstreamBus ? devices[i].upstreamBus : devices[i].bus))
                entry.upstream = linkBelow(domain, *above);
            std::transform(devices[i].ports.begin(), devices[i].ports.end(), entry.ports.begin(),
                           [&](const ListedPort& port) { return portOf(domain, port); });
        }
        listing.devices.push_back(std::move(entry));
    }
    listing.absent.reserve(absent.size());
    for (AbsentDevice& device : absent) {
        std::string place =
            bus == nullptr ? std::string() : placeOf(*bus->searched, devices, device.slotPath);
        listing.absent.push_back({std::move(device), std::move(place)});
    }
    if (bus != nullptr)
        listing.leftOut = bus->leftOut;
    return listing;
}

} // namespace tavctl
