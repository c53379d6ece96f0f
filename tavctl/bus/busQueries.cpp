#include "tavctl/bus/busQueries.h"

#include "pxidrivertools/busPlace.h"

namespace tavctl {

using nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath;

std::string slotPathText(const cSlotPath& path) {
    nZOQUIL000::tErrorStatus status;
    std::string text;
    path.FormatMachineText(text, status);
    return text;
}

std::string slotPathOf(const pcibus::Bus& bus, const pcibus::PciFunction& function) {
    cSlotPath path;
    setSlotPath(path, bus, function);
    return slotPathText(path);
}

const pcibus::PciFunction* functionAtSlotPath(const pcibus::Bus& bus, const std::string& text) {
    cSlotPath path;
    nZOQUIL000::tErrorStatus status;
    path.ParseMachineText(text, status);
    return functionAt(bus, path);
}

// From every bus up to its root; a bus that has its number already leads to nothing higher.
LastBuses lastBusesOf(const pcibus::Bus& bus) {
    LastBuses last{};
    for (std::size_t number = 0; number < last.size(); ++number)
        last[number] = static_cast<std::uint8_t>(number);
    for (std::size_t number = last.size(); number-- > 0;) {
        const pcibus::PciFunction* parent = bus.parentOfBus(static_cast<std::uint8_t>(number));
        while (parent != nullptr && last[parent->bus] < number) {
            last[parent->bus] = static_cast<std::uint8_t>(number);
            parent = bus.parentOfBus(parent->bus);
        }
    }
    return last;
}

std::uint8_t lastForwardedBus(const pcibus::Bus& bus, const LastBuses& lastBuses,
                              const pcibus::PciFunction& bridge) {
    if (bridge.secondaryBus == 0)
        return 0;
    if (bridge.subordinateBus >= bridge.secondaryBus)
        return bridge.subordinateBus;
    return bus.parentOfBus(bridge.secondaryBus) == &bridge ? lastBuses[bridge.secondaryBus]
                                                           : bridge.secondaryBus;
}

} // namespace tavctl
