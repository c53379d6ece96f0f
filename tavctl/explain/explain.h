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

// One explanation for each description, all of which must load, of what the matcher makes of its
// bus; with the changes that would make it list a device. Those are tried on `bus`, which is the
// matcher's read by ourselves: however many there are, the matcher's is not read again.
std::vector<Explanation> explain(const Descriptions& descriptions, ModelMatcher& matcher,
                                 const std::shared_ptr<const pcibus::Bus>& bus);

} // namespace tavctl::explain
