#include "tavctl/match/placedDevices.h"

#include "pxidrivertools/busPlace.h"

#include <algorithm>

namespace tavctl {

namespace {

using nZoTavManagerPciPlugin_15_0::tBusAddress;
using nZoTavManagerPciPlugin_15_0::tDeviceRecord;
using nZoTavManagerPciPlugin_15_0::tPortEntry;
using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath;
using pcibus::Bus;
using pcibus::PciFunction;

bool isSameDevice(const ListedDevice& listed, const MatchedDevice& matched) {
    const tDeviceRecord& record = matched.record;
    return listed.model == record.modelName && listed.terminalName == record.terminalName &&
           listed.bus == record.bus && listed.device == record.device &&
           listed.function == record.function &&
           std::equal(listed.ports.begin(), listed.ports.end(), record.ports.begin(),
                      record.ports.end(), [](const ListedPort& a, const tPortEntry& b) {
                          return a.label == b.connectorLabel &&
                                 a.secondaryBus == static_cast<std::int32_t>(b.first);
                      });
}

// The handle, if the bus has a function of it.
std::optional<std::uint32_t> onBus(const Bus& bus, std::uint32_t handle) {
    return bus.find(handle) != nullptr ? std::optional(handle) : std::nullopt;
}

std::optional<std::uint32_t> onBus(const Bus& bus, const std::optional<tBusAddress>& address) {
    if (!address)
        return std::nullopt;
    return onBus(bus, std::uint32_t{address->bus} << 8 | std::uint32_t{address->device} << 3 |
                          address->function);
}

// False when not even the bridge above its place is there.
bool placeMissing(cSlotPath place, const Bus& bus, PlacedPort& port) {
    port.missing = true;
    if (place.hops.size() < 2)
        return false;
    port.missingHop = place.hops.front();
    place.hops.pop_front();
    const PciFunction* const above = functionAt(bus, place);
    if (above == nullptr || !above->isBridge())
        return false;
    port.missingBelow = above->handle();
    return true;
}

// With alternate anchors every port is described once for each anchor.
bool isKnown(const PlacedPort& port, const std::vector<PlacedPort>& ports) {
    return std::any_of(ports.begin(), ports.end(), [&](const PlacedPort& known) {
        return known.missing == port.missing && known.bridge == port.bridge &&
               known.missingBelow == port.missingBelow && known.missingHop == port.missingHop;
    });
}

// As the plug-in carries what the model gives.
std::optional<std::int32_t> unlessZero(std::uint32_t value) {
    return value != 0 ? std::optional(static_cast<std::int32_t>(value)) : std::nullopt;
}

void addPort(const MatchedPort& matched, const Bus& bus, std::vector<PlacedPort>& ports) {
    PlacedPort port;
    port.bridge = onBus(bus, matched.bridge);
    if (!port.bridge && !placeMissing(*matched.place, bus, port))
        return;
    for (const tPortEntry& entry : matched.entries) {
        port.labels.push_back(entry.connectorLabel);
        port.linkWidth = unlessZero(entry.second);
        port.linkSpeed = unlessZero(entry.third);
    }
    if (!isKnown(port, ports))
        ports.push_back(std::move(port));
}

// The ports only when every one of them has a place.
void placeAsMatched(const MatchedDevice& matched, const Bus& bus, PlacedDevice& placed) {
    placed.anchor = onBus(bus, matched.address);
    placed.upstreamPort = onBus(bus, matched.upstreamPort);
    if (!std::all_of(matched.ports.begin(), matched.ports.end(),
                     [](const MatchedPort& port) { return port.place.has_value(); }))
        return;
    for (const MatchedPort& port : matched.ports)
        addPort(port, bus, placed.ports);
}

// Ports of one bus are labels of one port.
void placeByAttributes(const Bus& bus, PlacedDevice& placed) {
    std::optional<std::int32_t> before;
    for (const ListedPort& listed : placed.listed.ports) {
        if (placed.ports.empty() || listed.secondaryBus != before ||
            listed.secondaryBus.value_or(0) == 0) {
            PlacedPort port;
            port.linkWidth = listed.linkWidth;
            port.linkSpeed = listed.linkSpeed;
            const std::int32_t number = listed.secondaryBus.value_or(0);
            const PciFunction* const bridge =
                number > 0 && static_cast<std::size_t>(number) < Bus::kBusCount
                    ? bus.parentOfBus(static_cast<std::uint8_t>(number))
                    : nullptr;
            if (bridge != nullptr)
                port.bridge = bridge->handle();
            placed.ports.push_back(std::move(port));
        }
        placed.ports.back().labels.push_back(listed.label);
        before = listed.secondaryBus;
    }
}

} // namespace

std::vector<PlacedDevice> placeDevices(const std::vector<ListedDevice>& devices,
                                       const Survey& survey, const Bus& bus) {
    std::vector<PlacedDevice> result;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        PlacedDevice placed;
        placed.listed = devices[i];
        placed.reported = onBus(bus, static_cast<std::uint32_t>(placed.listed.bus << 8 |
                                                                placed.listed.device << 3 |
                                                                placed.listed.function));
        if (i < survey.size() && isSameDevice(placed.listed, survey[i]))
            placeAsMatched(survey[i], bus, placed);
        if (placed.ports.empty())
            placeByAttributes(bus, placed);
        result.push_back(std::move(placed));
    }
    return result;
}

std::vector<std::uint32_t> functionsOf(const PlacedDevice& device) {
    std::vector<std::uint32_t> functions;
    for (const auto& function : {device.reported, device.anchor, device.upstreamPort}) {
        if (function)
            functions.push_back(*function);
    }
    for (const PlacedPort& port : device.ports) {
        if (port.bridge)
            functions.push_back(*port.bridge);
    }
    return functions;
}

} // namespace tavctl
