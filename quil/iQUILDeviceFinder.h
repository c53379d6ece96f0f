// Where the system sees the PCI functions of given identifiers, as the cache build asks it.
#pragma once

#include "quil/deviceProperty.h"
#include "quil/tBusAddress.h"
#include "quil/tPciIds.h"

#include <vector>

namespace nZoTavManagerPciPlugin_15_0 {

// Every operation raises zoerr::Exception when the system cannot be asked. The virtual operations
// keep this order.
class iQUILDeviceFinder {
public:
    // Appends the bus address of each function with these identifiers, in the order in which the
    // system enumerates its devices. Nothing is cleared, sorted or left out as a duplicate.
    virtual void FindByPciIds(const tPciIds& ids, std::vector<tBusAddress>& addresses) = 0;

    // Fill their output from the properties of one device; an output read before a failure stays
    // filled.
    virtual void ReadPciIds(tEnumeratedDevice& device, tPciIds& ids) = 0;
    virtual void ReadBusAddress(tEnumeratedDevice& device, tBusAddress& address) = 0;

    virtual ~iQUILDeviceFinder() = default;
};

} // namespace nZoTavManagerPciPlugin_15_0
