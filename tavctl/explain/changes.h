// Looks for single changes to a description that make the plug-in list a device, by making each and
// matching again.
#pragma once

#include "pcibus/bus.h"
#include "pcibus/position.h"
#include "tavctl/description/description.h"
#include "tavctl/explain/explanation.h"
#include "tavctl/match/modelMatcher.h"

#include <string>

namespace tavctl::explain {

// The section that describes this bridge; the first of equal ones.
std::string sectionOf(const lint::Description& description,
                      const nZoTavManagerPciPlugin_15_0::tBridgeDescription& bridge);

// The traversal map from one position to another below the same root bus.
std::string mapBetween(const pcibus::Position& from, const pcibus::Position& to);

// Fills in the changes of the nearest rejected candidates and, when nothing is listed, the
// functions that nearly have the anchor's identifiers. `bus` is what the matcher sees.
void findChanges(const lint::Description& description, ModelMatcher& matcher,
                 const pcibus::Bus& bus, Explanation& explanation);

} // namespace tavctl::explain
