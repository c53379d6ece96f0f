#include "tavctl/draw/placement.h"

#include <algorithm>

namespace tavctl {

namespace {

using pcibus::PciFunction;

bool isDrawn(const BusTreeView& view, std::size_t device) {
    const auto functions = functionsOf(view.devices()[device]);
    return std::any_of(functions.begin(), functions.end(),
                       [&](std::uint32_t handle) { return view.isShown(handle); });
}

// The way up from a function to the root, itself first.
std::vector<const PciFunction*> wayUp(const pcibus::Bus& bus, std::uint32_t handle) {
    std::vector<const PciFunction*> way;
    const PciFunction* function = bus.find(handle);
    while (function != nullptr) {
        way.push_back(function);
        function = bus.parentOfBus(function->bus);
    }
    return way;
}

// A device stands where the highest of its functions does.
BoxPlace placeOf(const BusTreeView& view, std::size_t device) {
    std::vector<const PciFunction*> way;
    for (const std::uint32_t handle : functionsOf(view.devices()[device])) {
        const auto candidate = wayUp(view.bus(), handle);
        if (way.empty() || candidate.size() < way.size())
            way = candidate;
    }
    BoxPlace place;
    for (std::size_t i = 1; i < way.size(); ++i) {
        for (const TreeMark& mark : view.marksOf(way[i]->handle())) {
            if (mark.role != TreeMark::Role::port || mark.device == device ||
                !isDrawn(view, mark.device))
                continue;
            return {mark.device, mark.port, {}};
        }
        place.way.insert(place.way.begin(), way[i]->handle());
    }
    return place;
}

} // namespace

Placement placeBoxes(const BusTreeView& view) {
    Placement placement;
    for (std::size_t i = 0; i < view.devices().size(); ++i) {
        placement.devices.emplace_back();
        if (isDrawn(view, i))
            placement.devices.back() = placeOf(view, i);
    }
    return placement;
}

std::size_t drawnDevices(const Placement& placement) {
    const auto count =
        std::count_if(placement.devices.begin(), placement.devices.end(),
                      [](const std::optional<BoxPlace>& place) { return place.has_value(); });
    return static_cast<std::size_t>(count);
}

std::vector<std::size_t> holdersOf(const Placement& placement, std::size_t device) {
    std::vector<std::size_t> holders;
    while (placement.devices[device]->parent) {
        device = *placement.devices[device]->parent;
        holders.push_back(device);
    }
    return holders;
}

std::vector<std::size_t> devicesIn(const Placement& placement, std::size_t device,
                                   std::size_t port) {
    std::vector<std::size_t> devices;
    for (std::size_t i = 0; i < placement.devices.size(); ++i) {
        const auto& place = placement.devices[i];
        if (place && place->parent == device && place->port == port)
            devices.push_back(i);
    }
    return devices;
}

} // namespace tavctl
