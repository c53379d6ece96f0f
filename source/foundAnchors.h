// The anchors of one model that were found on the bus: address and slot path of number i belong
// together.
#pragma once

#include "pxidrivertools/cSlotPath.h"
#include "quil/tBusAddress.h"

#include <deque>
#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

struct FoundAnchors {
    std::vector<tBusAddress> addresses;
    // May be longer than the list of addresses: see addDeviceAnchors() in cPciTavPluginCache.cpp.
    std::deque<nZoPxiDriverTools_1_0::cSlotPath> slotPaths;
};

} // namespace nZoTavManagerPciPlugin_15_0
