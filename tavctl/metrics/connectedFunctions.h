// Which functions of the bus are behind which connector.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/host/deviceListing.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tavctl {

// One way from the outside to a bus: connectors of boxes that are plugged into each other.
struct ConnectedBus {
    std::uint8_t bus = 0;
    std::string name;      // of the device with the innermost connector
    std::string connector; // its label; of a port with several, all of them with blanks between
    std::string path;      // "TAV1 connector 2 > TAVCard1 connector LEFT"
};

// Every bus below a connector, ascending.
std::vector<ConnectedBus> connectedBuses(const std::vector<ListedDevice>& devices,
                                         const pcibus::Bus& bus);

} // namespace tavctl
