// What several commands ask a bus that has been read.
#pragma once

#include "pcibus/bus.h"
#include "pxidrivertools/cSlotPath.h"

#include <array>
#include <cstdint>
#include <string>

namespace tavctl {

// A slot path in machine form, "MR00:20".
std::string slotPathText(const nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cSlotPath& path);

// The slot path of a function in machine form, and the function there; null when there is none.
std::string slotPathOf(const pcibus::Bus& bus, const pcibus::PciFunction& function);
const pcibus::PciFunction* functionAtSlotPath(const pcibus::Bus& bus, const std::string& path);

// For each bus the highest one at or below it.
using LastBuses = std::array<std::uint8_t, pcibus::Bus::kBusCount>;
LastBuses lastBusesOf(const pcibus::Bus& bus);

// The last bus that a bridge forwards; 0 for one that is not configured. What it says, which may be
// more than there is; where it says nothing that can be, the highest one at or below its secondary
// bus.
std::uint8_t lastForwardedBus(const pcibus::Bus& bus, const LastBuses& lastBuses,
                              const pcibus::PciFunction& bridge);

} // namespace tavctl
