#include "tavctl/view/machineState.h"

#include "tavctl/bus/busAddress.h"
#include "tavctl/bus/busQueries.h"

#include <algorithm>
#include <unordered_map>

namespace tavctl {

namespace {

using pcibus::PciFunction;

// A port of a device, by positions; of a bridge that is none, no port.
struct BoxPart {
    std::size_t device = 0;
    std::optional<std::size_t> port;
};

// "00,08" of "MR00:00,08,20": the way up to the root.
std::string hopsOf(const std::string& slotPath) {
    return slotPath.substr(slotPath.find(':') + 1);
}

class StateReader {
public:
    StateReader(const std::vector<PlacedDevice>& placed, const WholeBus& whole,
                const PciNames& names)
        : placed_(placed), domain_(whole.main()), names_(names) {
        for (std::size_t i = 0; i < placed.size(); ++i) {
            for (const std::uint32_t handle : functionsOf(placed[i]))
                parts_.try_emplace(handle, BoxPart{i, {}});
        }
        // A bridge may be a port of one device and what another is reported at.
        for (std::size_t i = 0; i < placed.size(); ++i) {
            for (std::size_t port = 0; port < placed[i].ports.size(); ++port) {
                if (placed[i].ports[port].bridge)
                    parts_.insert_or_assign(*placed[i].ports[port].bridge, BoxPart{i, port});
            }
        }
    }

    [[nodiscard]] MachineState state() const {
        MachineState state;
        for (const PlacedDevice& device : placed_)
            state.devices.push_back(seenDevice(device));
        for (const PciFunction& function : bus().functions()) {
            SeenFunction seen = seenFunction(function);
            state.functions.insert(keyOf(seen));
            const auto above = nearestPart(function);
            if (parts_.contains(function.handle()) || !above || !above->second.port)
                continue;
            // Both paths end at the same root.
            const std::string hops = hopsOf(seen.slotPath);
            const std::size_t end = hops.size() - hopsOf(slotPathOf(bus(), *above->first)).size();
            seen.place = hops.substr(0, end);
            state.devices[above->second.device].connectors[*above->second.port].functions.push_back(
                std::move(seen));
        }
        return state;
    }

private:
    [[nodiscard]] const pcibus::Bus& bus() const { return domain_.bus(); }

    // The nearest bridge above that is a part of a device.
    [[nodiscard]] std::optional<std::pair<const PciFunction*, BoxPart>>
    nearestPart(const PciFunction& function) const {
        for (const PciFunction* at = bus().parentOfBus(function.bus); at != nullptr;
             at = bus().parentOfBus(at->bus)) {
            if (const auto found = parts_.find(at->handle()); found != parts_.end())
                return std::pair(at, found->second);
        }
        return std::nullopt;
    }

    // The uppermost function of a device that is on the bus.
    [[nodiscard]] const PciFunction* topOf(const PlacedDevice& device) const {
        const PciFunction* top = nullptr;
        std::size_t hops = 0;
        for (const auto& handle : {device.upstreamPort, device.reported, device.anchor}) {
            const PciFunction* const function = handle ? bus().find(*handle) : nullptr;
            if (function == nullptr)
                continue;
            const std::string path = slotPathOf(bus(), *function);
            const auto count = static_cast<std::size_t>(std::count(path.begin(), path.end(), ','));
            if (top == nullptr || count < hops) {
                top = function;
                hops = count;
            }
        }
        return top;
    }

    [[nodiscard]] SeenDevice seenDevice(const PlacedDevice& device) const {
        const ListedDevice& listed = device.listed;
        SeenDevice seen{listed.terminalName,
                        listed.model,
                        listed.isStored,
                        "0000:" + addressOf(listed),
                        listed.slotPath,
                        {},
                        {},
                        {}};
        if (const PciFunction* const top = topOf(device)) {
            const auto above = nearestPart(*top);
            if (above && above->second.port) {
                const PlacedDevice& outer = placed_[above->second.device];
                seen.in = ConnectorName{outer.listed.terminalName, outer.listed.isStored,
                                        outer.ports[*above->second.port].labels};
            }
            if (!above || !above->second.port || bus().parentOfBus(top->bus) != above->first)
                seen.upstream = linkAbove(domain_, *top);
        }
        for (const PlacedPort& port : device.ports) {
            const PciFunction* const bridge = port.bridge ? bus().find(*port.bridge) : nullptr;
            seen.connectors.push_back(
                {port.labels, bridge == nullptr ? LinkState() : linkBelow(domain_, *bridge), {}});
        }
        return seen;
    }

    [[nodiscard]] SeenFunction seenFunction(const PciFunction& function) const {
        return {{},
                slotPathOf(bus(), function),
                fullAddress(domain_.number(), function),
                function.vendorId,
                function.deviceId,
                names_.vendor(function.vendorId),
                names_.device(function.vendorId, function.deviceId)};
    }

    const std::vector<PlacedDevice>& placed_;
    const DomainBus& domain_;
    const PciNames& names_;
    std::unordered_map<std::uint32_t, BoxPart> parts_;
};

} // namespace

FunctionKey keyOf(const SeenFunction& function) {
    return {function.slotPath, std::uint32_t{function.vendorId} << 16 | function.deviceId};
}

MachineState makeState(const std::vector<PlacedDevice>& placed, std::vector<AbsentDevice> absent,
                       const WholeBus& whole, const PciNames& names) {
    MachineState state = StateReader(placed, whole, names).state();
    state.absent = std::move(absent);
    return state;
}

} // namespace tavctl
