// Explains how far the matching of models came.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/description/description.h"
#include "tavctl/explain/explanation.h"
#include "tavctl/match/modelMatcher.h"

#include <memory>
#include <vector>

namespace tavctl::explain {

using Descriptions = std::vector<std::unique_ptr<lint::Description>>;

// One explanation for each description, all of which must load. `bus` is what the matcher sees.
// With `changes`, those that would make the plug-in list a device are looked for.
std::vector<Explanation> explain(const Descriptions& descriptions, ModelMatcher& matcher,
                                 const pcibus::Bus& bus, bool changes);

} // namespace tavctl::explain
