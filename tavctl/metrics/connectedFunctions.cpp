#include "tavctl/metrics/connectedFunctions.h"

#include "tavctl/words/words.h"

#include <cstddef>
#include <utility>

namespace tavctl {

namespace {

struct Connector {
    std::string name; // of the device; empty: no connector leads to this bus
    std::vector<std::string> labels;
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
                connector.name = device.terminalName;
            if (connector.name == device.terminalName)
                connector.labels.push_back(port.label);
        }
    }
    return connectors;
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
            const std::string words = connectorName(connector.name, connector.labels);
            if (connected.name.empty()) {
                connected.name = connector.name;
                connected.connector = separated(connector.labels, " ");
                connected.path = words;
            } else {
                connected.path = words + " > " + connected.path;
            }
        }
        if (!connected.name.empty())
            found.push_back(std::move(connected));
    }
    return found;
}

} // namespace tavctl
