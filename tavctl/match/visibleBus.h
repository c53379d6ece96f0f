// The PCI functions of the bus that this process sees, as far as it can be seen.
#pragma once

#include "tavctl/bus/wholeBus.h"

#include <optional>

namespace tavctl {

// The recorded bus, or the live one where the system publishes it; elsewhere what the bridge
// library and the system's list of devices tell, which is neither other domains nor links. Raises
// FailureException.
WholeBus machineBus();

// The same for telling beside what was found, which needs the bus more: nothing where it cannot be
// read, or is recorded where it can be read but once.
std::optional<WholeBus> wholeBusIfReadable();

// What the bridge library and the system's list of devices tell, whatever else there is.
pcibus::Bus busOfBridgeLibrary();

} // namespace tavctl
