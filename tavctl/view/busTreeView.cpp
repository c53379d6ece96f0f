#include "tavctl/view/busTreeView.h"

#include <algorithm>

namespace tavctl {

using pcibus::PciFunction;

const char* roleName(TreeMark::Role role) {
    switch (role) {
    case TreeMark::Role::device:
        return "device";
    case TreeMark::Role::upstreamPort:
        return "upstreamPort";
    case TreeMark::Role::anchor:
        return "anchor";
    case TreeMark::Role::port:
        break;
    }
    return "port";
}

BusTreeView::BusTreeView(const DomainBus& domain, const std::vector<PlacedDevice>& devices)
    : domain_(domain), devices_(devices), shown_(kHandleCount, true),
      lastBuses_(lastBusesOf(domain.bus())) {
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const PlacedDevice& device = devices[i];
        if (device.reported)
            marks_[*device.reported].push_back({TreeMark::Role::device, i, 0});
        if (device.upstreamPort && device.upstreamPort != device.reported)
            marks_[*device.upstreamPort].push_back({TreeMark::Role::upstreamPort, i, 0});
        if (device.anchor && device.anchor != device.reported &&
            device.anchor != device.upstreamPort)
            marks_[*device.anchor].push_back({TreeMark::Role::anchor, i, 0});
        for (std::size_t port = 0; port < device.ports.size(); ++port) {
            const PlacedPort& placed = device.ports[port];
            if (placed.bridge)
                marks_[*placed.bridge].push_back({TreeMark::Role::port, i, port});
            else if (placed.missingBelow)
                missing_[*placed.missingBelow].push_back({i, port, placed.missingHop});
        }
    }
}

void BusTreeView::showOnly(const std::vector<std::uint32_t>& handles) {
    std::fill(shown_.begin(), shown_.end(), false);
    for (const std::uint32_t handle : handles)
        showBelow(handle);
    for (const std::uint32_t handle : handles) {
        const PciFunction* function = bus().find(handle);
        while (function != nullptr) {
            shown_[function->handle()] = true;
            function = bus().parentOfBus(function->bus);
        }
    }
}

void BusTreeView::showBelow(std::uint32_t handle) {
    std::vector<std::uint32_t> waiting{handle};
    while (!waiting.empty()) {
        const std::uint32_t next = waiting.back();
        waiting.pop_back();
        if (shown_[next])
            continue;
        shown_[next] = true;
        for (const PciFunction& function : below(*bus().find(next)))
            waiting.push_back(function.handle());
    }
}

const std::vector<TreeMark>& BusTreeView::marksOf(std::uint32_t handle) const {
    static const std::vector<TreeMark> kNone;
    const auto found = marks_.find(handle);
    return found == marks_.end() ? kNone : found->second;
}

const std::vector<MissingPort>& BusTreeView::missingBelow(std::uint32_t handle) const {
    static const std::vector<MissingPort> kNone;
    const auto found = missing_.find(handle);
    return found == missing_.end() ? kNone : found->second;
}

bool BusTreeView::leadsToBus(const PciFunction& function) const {
    return bus().isBridge(function) && function.secondaryBus != 0 &&
           bus().parentOfBus(function.secondaryBus) == &function;
}

std::span<const PciFunction> BusTreeView::below(const PciFunction& function) const {
    if (!leadsToBus(function))
        return {};
    return bus().functionsOn(function.secondaryBus);
}

std::uint8_t BusTreeView::lastBusOf(const PciFunction& bridge) const {
    return lastForwardedBus(bus(), lastBuses_, bridge);
}

} // namespace tavctl
