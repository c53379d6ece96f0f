// Slot paths on a bus that has been read.
#pragma once

#include "pcibus/bus.h"
#include "pxidrivertools/cSlotPath.h"

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// The function that a path leads to; null when there is none (see pcibus::functionAt). Whether the
// path itself could be made is the caller's to ask. Raises std::bad_alloc.
const pcibus::PciFunction* functionAt(const pcibus::Bus& bus, const cSlotPath& path);

// Makes `path` the one that leads to a function of the bus. Raises std::bad_alloc.
void setSlotPath(cSlotPath& path, const pcibus::Bus& bus, const pcibus::PciFunction& function);

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
