// What the plug-in's code lists on a made-up bus, compared with what was planned.
#pragma once

#include "tavctl/match/matchedDevice.h"
#include "tavctl/mock/builder.h"

#include <string>
#include <vector>

namespace tavctl::mock {

// A box as it is to be listed; its machine is numbered.
struct PlannedDevice {
    std::string name; // in the plan
    std::size_t model = 0;
    std::string slotPath;                              // of the anchor, in machine form
    nZoTavManagerPciPlugin_15_0::tDeviceRecord record; // without a terminal name
};

std::vector<PlannedDevice> plannedDevices(const BuiltMachine& built, const Catalog& catalog);

// The devices that the plug-in lists for the plan, in its order, on the bus that the text says.
// Raises FailureException unless these and `present`, which were there before, are all that it
// lists there, and as planned; what it says is why.
std::vector<MatchedDevice> requireListing(const std::string& text, const BuiltMachine& built,
                                          const Catalog& catalog,
                                          const std::vector<MatchedDevice>& present);

} // namespace tavctl::mock
