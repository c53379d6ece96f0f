// Whether a bridge is the box's own, or the port that the box is plugged into.
#pragma once

#include "tavctl/bus/wholeBus.h"

namespace tavctl::describe {

// Raises FailureException for a root port or a downstream port with exactly one upstream port right
// below it, which it names: that is the bridge that is meant. Where it cannot be told so surely,
// says on standard error what speaks against the bridge.
void requireBoxBridge(const DomainBus& domain, const pcibus::PciFunction& bridge);

} // namespace tavctl::describe
