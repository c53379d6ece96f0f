// What has changed from one look to the next.
#pragma once

#include "tavctl/monitor/event.h"
#include "tavctl/view/machineState.h"

#include <vector>

namespace tavctl::monitor {

// The state as events: the devices that are there, their links that are degraded, and the names of
// those that are absent.
std::vector<Event> initialEvents(const MachineState& state);

// What left first, then what changed, then what came. A device is known by name and model, or else
// by its slot and model, in whatever place it is; of what comes and goes with its device, inside it
// or behind its connectors, nothing more is told. New bus numbers alone move devices, and nothing
// else: what is plugged into a connector is known by its slots from there on.
std::vector<Event> differences(const MachineState& before, const MachineState& now);

} // namespace tavctl::monitor
