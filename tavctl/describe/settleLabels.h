// What the labels that were found for a box's ports mean for its link widths.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/describe/draft.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tavctl::describe {

// Several labels on a port mean a link width per label, which must be one for the whole box; it may
// have been asked for (`lanes`, else 0). The draft takes it and the labels of the upstream port
// that follow from it. Answers what contradicts it, and leaves the draft alone then; empty for
// nothing. `portPaths` are the slot paths of the draft's ports.
std::string settleLabels(Draft& draft, const pcibus::Bus& bus, const std::string& anchorPath,
                         const std::vector<std::string>& portPaths, std::int32_t lanes);

} // namespace tavctl::describe
