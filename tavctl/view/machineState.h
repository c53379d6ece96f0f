// What a look at the machine has seen, as far as changes of it are told: the devices, and what is
// plugged into their connectors.
#pragma once

#include "tavctl/bus/linkState.h"
#include "tavctl/bus/pciNames.h"
#include "tavctl/bus/wholeBus.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/match/placedDevices.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tavctl {

// A connector as people call it: "TAV1 connector 2".
struct ConnectorName {
    std::string device; // its terminal name
    bool isStored = true;
    std::vector<std::string> labels; // none: a port without a label
};

// A function behind a connector that is no part of a device.
struct SeenFunction {
    std::string place;    // by slots from the connector on, so that new bus numbers do not matter
    std::string slotPath; // from the root on
    std::string address;  // "0000:06:00.0"
    std::uint16_t vendorId = 0;
    std::uint16_t deviceId = 0;
    std::string vendorName; // empty: not known, as the next
    std::string deviceName;
};

struct SeenConnector {
    std::vector<std::string> labels; // none: a port without a label
    LinkState link;
    std::vector<SeenFunction> functions; // of which this is the nearest connector
};

struct SeenDevice {
    std::string name;
    std::string model;
    bool isStored = true;            // the name
    std::string address;             // "0000:01:00.0"
    std::string slotPath;            // empty: not known
    std::optional<ConnectorName> in; // the connector that it is plugged into, if any
    LinkState upstream;              // unless that is a connector's link
    std::vector<SeenConnector> connectors;
};

// What a function is, wherever its bus numbers have moved to: slot path and identifiers.
using FunctionKey = std::pair<std::string, std::uint32_t>;

struct MachineState {
    std::vector<SeenDevice> devices; // in the order in which the plug-in lists them
    std::vector<AbsentDevice> absent;
    std::set<FunctionKey> functions; // every one of the domain that the devices are in
};

FunctionKey keyOf(const SeenFunction& function);

// The devices were placed on this bus.
MachineState makeState(const std::vector<PlacedDevice>& placed, std::vector<AbsentDevice> absent,
                       const WholeBus& whole, const PciNames& names);

} // namespace tavctl
