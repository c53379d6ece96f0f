// Where the devices that the plug-in lists stand on the bus: their bridges and ports as functions
// of the bus tree, the ports in label order and with those that are described but not there.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/host/deviceListing.h"
#include "tavctl/match/deviceSurvey.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavctl {

// Functions are told by their handles (see pcibus/pciFunction.h).
struct PlacedPort {
    std::vector<std::string> labels;     // empty: no label is left for it, or it is missing
    std::optional<std::uint32_t> bridge; // none: missing, or its place cannot be told
    // Where a missing port should stand: below this bridge, at this hop (device << 3 | function).
    std::optional<std::uint32_t> missingBelow;
    std::uint8_t missingHop = 0;
    std::optional<std::int32_t> linkWidth; // in lanes, and the code of the link speed, of a port
    std::optional<std::int32_t> linkSpeed; // whose model counts lanes
    bool missing = false;
};

struct PlacedDevice {
    ListedDevice listed;
    std::optional<std::uint32_t> reported; // none: nothing is at the reported address
    std::optional<std::uint32_t> anchor;
    std::optional<std::uint32_t> upstreamPort;
    std::vector<PlacedPort> ports;
};

// The survey adds what the plug-in's interface does not tell; a device that it does not know alike
// is placed by its attributes alone, and then has no anchor and no missing ports.
std::vector<PlacedDevice> placeDevices(const std::vector<ListedDevice>& devices,
                                       const Survey& survey, const pcibus::Bus& bus);

// Every function of the device that was placed.
std::vector<std::uint32_t> functionsOf(const PlacedDevice& device);

} // namespace tavctl
