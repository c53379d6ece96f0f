#include "tavctl/draw/placement.h"

#include <algorithm>
#include <set>

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

// The functions of the root buses that lead to devices.
std::set<std::uint32_t> leadingFunctions(const Placement& placement) {
    std::set<std::uint32_t> leading;
    for (const auto& place : placement.devices) {
        if (place && !place->way.empty())
            leading.insert(place->way.front());
    }
    return leading;
}

std::vector<RootBusBox> rootBusBoxes(const BusTreeView& view, const Placement& placement) {
    const std::set<std::uint32_t> leading = leadingFunctions(placement);
    std::vector<RootBusBox> boxes;
    for (const std::uint8_t root : view.bus().rootBuses()) {
        RootBusBox box;
        box.bus = root;
        for (const PciFunction& function : view.bus().functionsOn(root)) {
            if (view.isShown(function.handle()) && !leading.contains(function.handle()))
                box.functions.push_back(&function);
        }
        if (!box.functions.empty())
            boxes.push_back(std::move(box));
    }
    return boxes;
}

} // namespace

Placement placeBoxes(const BusTreeView& view, bool allFunctions) {
    Placement placement;
    for (std::size_t i = 0; i < view.devices().size(); ++i) {
        placement.devices.emplace_back();
        if (isDrawn(view, i))
            placement.devices.back() = placeOf(view, i);
    }
    if (allFunctions)
        placement.rootBuses = rootBusBoxes(view, placement);
    return placement;
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
