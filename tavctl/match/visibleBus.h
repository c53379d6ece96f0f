// The PCI functions of the bus that this process sees, as far as it can be seen.
#pragma once

#include "tavctl/bus/busFile.h"

namespace tavctl {

// The recorded bus, or the live one where the system publishes it; elsewhere what the bridge
// library and the system's list of devices tell. Raises FailureException.
ReadBus machineBus();

// What the bridge library and the system's list of devices tell, whatever else there is.
pcibus::Bus busOfBridgeLibrary();

} // namespace tavctl
