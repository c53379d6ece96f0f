// Which kind of PCI Express port a bridge is, for telling a box's own bridge from the one that the
// box is plugged into, and a link above a bridge from one below it.
#pragma once

#include "tavctl/bus/wholeBus.h"

namespace tavctl {

// What its capability says; where that is not known, or says "root port" of a bridge that stands on
// no root bus, what follows from its place: links join a port to what is next below it, and what
// is below an upstream port leads down again.
pcibus::PortType portTypeOf(const DomainBus& domain, const pcibus::PciFunction& bridge);

} // namespace tavctl
