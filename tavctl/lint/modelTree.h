// Buses made up from descriptions, for asking which models one piece of hardware is taken for.
#pragma once

#include "pcibus/bus.h"
#include "source/modelDescription.h"

#include <memory>
#include <span>

namespace tavctl::lint {

// Whether some bus that fits the first model is listed as the second one too, by the same anchor.
// A few likely buses are tried, so a "no" is no proof.
bool satisfiedByOneTree(const nZoTavManagerPciPlugin_15_0::tModelDescription& first,
                        const nZoTavManagerPciPlugin_15_0::tModelDescription& second);

// A bus with the anchor of that number of the first model and the bridges that the models describe
// from it, where several describe one place as the first of them does. Null when there is no such
// bus.
std::shared_ptr<const pcibus::Bus>
busOf(std::span<const nZoTavManagerPciPlugin_15_0::tModelDescription* const> models,
      std::size_t anchor, bool withOptional);

} // namespace tavctl::lint
