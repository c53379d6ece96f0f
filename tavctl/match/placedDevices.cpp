#include "tavctl/match/placedDevices.h"

#include "pcibus/position.h"
#include "pxidrivertools/cSlotPath.h"

#include <algorithm>

namespace tavctl {

namespace {

using nZoTavManagerPciPlugin_15_0::kNoText;
using nZoTavManagerPciPlugin_15_0::tBridgeDescription;
using nZoTavManagerPciPlugin_15_0::tModelDescription;
using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath;
using pcibus::Bus;
using pcibus::PciFunction;

const PciFunction* functionAtPath(const Bus& bus, const cSlotPath& path) {
    const std::vector<std::uint8_t> hops(path.hops.begin(), path.hops.end());
    return pcibus::functionAt(bus, path.rootBus, hops);
}

// The place that a traversal map leads to from the anchor; false for a map that cannot be applied.
bool follow(const std::string& map, cSlotPath& path) {
    nZOQUIL000::tErrorStatus status;
    path.ApplyRelativePath(map, status);
    return !status.failed();
}

bool isSameDevice(const ListedDevice& listed, const SurveyedDevice& surveyed) {
    const auto& record = surveyed.record;
    return listed.model == record.modelName && listed.terminalName == record.terminalName &&
           listed.bus == record.bus && listed.device == record.device &&
           listed.function == record.function && listed.ports.size() == record.ports.size();
}

// How many labels a port takes that the listed port is the first of.
std::size_t labelCount(const ListedDevice& device, const ListedPort& port) {
    if (!device.linkWidthPerLabel || *device.linkWidthPerLabel <= 0 || !port.second)
        return 1;
    return static_cast<std::size_t>(*port.second / *device.linkWidthPerLabel);
}

// Hands the listed ports out to the described ones, as the walk did.
class PortPlacing {
public:
    PortPlacing(const ListedDevice& device, const cSlotPath& anchor, const Bus& bus)
        : device_(device), anchor_(anchor), bus_(bus) {}

    // False when the listed ports do not come out even: they were not described so.
    bool place(const std::vector<tBridgeDescription>& described, std::vector<PlacedPort>& ports) {
        for (const tBridgeDescription& description : described) {
            cSlotPath path(anchor_);
            if (!follow(description.traversalMap, path))
                return false;
            PlacedPort port;
            if (const PciFunction* const bridge = functionAtPath(bus_, path);
                bridge != nullptr && bridge->isBridge())
                takeLabels(*bridge, port);
            else if (!missingPort(path, port))
                continue;
            if (!isKnown(port, ports))
                ports.push_back(std::move(port));
        }
        return next_ == device_.ports.size();
    }

private:
    void takeLabels(const PciFunction& bridge, PlacedPort& port) {
        port.bridge = bridge.handle();
        if (next_ == device_.ports.size())
            return;
        const ListedPort& first = device_.ports[next_];
        port.linkWidth = first.second;
        port.linkSpeed = first.third;
        for (std::size_t n = labelCount(device_, first); n > 0; --n) {
            if (next_ == device_.ports.size() ||
                device_.ports[next_].first != static_cast<std::int32_t>(bridge.secondaryBus))
                return;
            port.labels.push_back(device_.ports[next_++].label);
        }
    }

    // False when not even the bridge above it is there.
    bool missingPort(cSlotPath& path, PlacedPort& port) {
        port.missing = true;
        if (path.hops.size() < 2)
            return false;
        port.missingHop = path.hops.front();
        path.hops.pop_front();
        const PciFunction* const above = functionAtPath(bus_, path);
        if (above == nullptr || !above->isBridge())
            return false;
        port.missingBelow = above->handle();
        return true;
    }

    // With alternate anchors every port is described once for each anchor.
    static bool isKnown(const PlacedPort& port, const std::vector<PlacedPort>& ports) {
        return std::any_of(ports.begin(), ports.end(), [&](const PlacedPort& known) {
            return known.missing == port.missing && known.bridge == port.bridge &&
                   known.missingBelow == port.missingBelow && known.missingHop == port.missingHop;
        });
    }

    const ListedDevice& device_;
    const cSlotPath& anchor_;
    const Bus& bus_;
    std::size_t next_ = 0; // of the listed ports
};

void placeByDescription(const SurveyedDevice& surveyed, const tModelDescription& model,
                        const Bus& bus, PlacedDevice& placed) {
    cSlotPath anchor;
    nZOQUIL000::tErrorStatus status;
    anchor.ParseMachineText(surveyed.slotPath, status);
    if (const PciFunction* const function = functionAtPath(bus, anchor))
        placed.anchor = function->handle();
    if (model.upstreamPort.traversalMap != kNoText) {
        cSlotPath path(anchor);
        if (follow(model.upstreamPort.traversalMap, path)) {
            if (const PciFunction* const function = functionAtPath(bus, path))
                placed.upstreamPort = function->handle();
        }
    }
    if (!PortPlacing(placed.listed, anchor, bus).place(model.downstreamPorts, placed.ports))
        placed.ports.clear();
}

// Ports of one bus are labels of one port.
void placeByAttributes(const Bus& bus, PlacedDevice& placed) {
    std::optional<std::int32_t> before;
    for (const ListedPort& listed : placed.listed.ports) {
        if (placed.ports.empty() || listed.first != before || listed.first.value_or(0) == 0) {
            PlacedPort port;
            port.linkWidth = listed.second;
            port.linkSpeed = listed.third;
            const std::int32_t number = listed.first.value_or(0);
            const PciFunction* const bridge =
                number > 0 && static_cast<std::size_t>(number) < Bus::kBusCount
                    ? bus.parentOfBus(static_cast<std::uint8_t>(number))
                    : nullptr;
            if (bridge != nullptr)
                port.bridge = bridge->handle();
            placed.ports.push_back(std::move(port));
        }
        placed.ports.back().labels.push_back(listed.label);
        before = listed.first;
    }
}

} // namespace

std::vector<PlacedDevice> placeDevices(const std::vector<ListedDevice>& devices,
                                       const Survey& survey, const Bus& bus) {
    std::vector<PlacedDevice> result;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        PlacedDevice placed;
        placed.listed = devices[i];
        const auto handle = static_cast<std::uint32_t>(
            placed.listed.bus << 8 | placed.listed.device << 3 | placed.listed.function);
        if (bus.find(handle) != nullptr)
            placed.reported = handle;
        if (i < survey.devices.size() && isSameDevice(placed.listed, survey.devices[i]))
            placeByDescription(survey.devices[i], survey.models.at(survey.devices[i].model), bus,
                               placed);
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
