// Whether ports can be shared out among connectors of so many lanes each.
#pragma once

#include "pcibus/pciFunction.h"

#include <cstdint>
#include <string>

namespace tavctl::describe {

// Why a port does not come out even; empty when it does, and without lanes for each label. A port
// that is not as wide as one connector would take no label, and the labels of the others would move
// up without a word.
std::string lanesTrouble(const pcibus::PciFunction& port, const std::string& kind,
                         std::int32_t lanesPerLabel);

// Raises FailureException for such trouble.
void requireLanes(const pcibus::PciFunction& port, const std::string& kind,
                  std::int32_t lanesPerLabel);

} // namespace tavctl::describe
