#include "tavctl/metrics/connectedFunctions.h"

#include <fmt/core.h>

#include <cstddef>
#include <utility>

namespace tavctl {

namespace {

struct Connector {
    std::string name; // of the device; empty: no connector leads to this bus
    std::string labels;
    bool hasSeveral = false;
};

bool leadsToBus(const ListedPort& port) {
    return port.secondaryBus && *port.secondaryBus > 0 &&
           static_cast<std::size_t>(*port.secondaryBus) < pcibus::Bus::kBusCount;
}

// Where several devices have one port the first of them counts.
std::vector<Connector> connectorsByBus(const std::vector<ListedDevice>& devices) {
    std::vector<Connector> connectors(pcibus::Bus::kBusCount);
    for (const ListedDevice& device : devices) {
        for (const ListedPort& port : device.ports) {
            if (!leadsToBus(port))
                continue;
            Connector& connector = connectors[static_cast<std::size_t>(*port.secondaryBus)];
            if (connector.name.empty())
                connector = {device.terminalName, port.label, false};
            else if (connector.name == device.terminalName)
                connector = {device.terminalName, connector.labels + " " + port.label, true};
        }
    }
    return connectors;
}

std::string wordsOf(const Connector& connector) {
    return fmt::format("{} connector{} {}", connector.name, connector.hasSeveral ? "s" : "",
                       connector.labels);
}

} // namespace

std::vector<ConnectedBus> connectedBuses(const std::vector<ListedDevice>& devices,
                                         const pcibus::Bus& bus) {
    const std::vector<Connector> connectors = connectorsByBus(devices);
    std::vector<ConnectedBus> found;
    for (std::size_t number = 1; number < pcibus::Bus::kBusCount; ++number) {
        ConnectedBus connected;
        connected.bus = static_cast<std::uint8_t>(number);
        const pcibus::PciFunction* above = bus.parentOfBus(connected.bus);
        for (std::size_t at = number; above != nullptr;
             at = above->bus, above = bus.parentOfBus(above->bus)) {
            const Connector& connector = connectors[at];
            if (connector.name.empty())
                continue;
            if (connected.name.empty()) {
                connected.name = connector.name;
                connected.connector = connector.labels;
                connected.path = wordsOf(connector);
            } else {
                connected.path = wordsOf(connector) + " > " + connected.path;
            }
        }
        if (!connected.name.empty())
            found.push_back(std::move(connected));
    }
    return found;
}

} // namespace tavctl
