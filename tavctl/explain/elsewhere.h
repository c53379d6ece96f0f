// Looks for anchors where the plug-in does not.
#pragma once

#include "tavctl/explain/explain.h"

#include <vector>

namespace tavctl::explain {

// Tells each explanation which functions of other domains have an anchor's identifiers, as far as
// the bus that this process sees can be read for this. The explanations are those of the
// descriptions, in their order.
void findElsewhere(const Descriptions& descriptions, std::vector<Explanation>& explanations);

} // namespace tavctl::explain
