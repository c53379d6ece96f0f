// The plug-in's two ways to the bus over a bus that is at hand, for matching against recorded and
// made-up machines: it answers as the bridge library and the system's devices do for that bus.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/match/modelMatcher.h"

#include <memory>

namespace tavctl {

MatchBus recordedBus(std::shared_ptr<const pcibus::Bus> bus);

} // namespace tavctl
