// What would have ended the load of a description, as findings.
#pragma once

#include "tavctl/description/findings.h"

namespace tavctl::lint {

// Adds everything that ends the load.
void checkLoad(const Description& description, Findings& findings);

// What the plug-in's load ends with: of all those findings the one that its loader meets first. The
// description must be one that does not load.
Finding endOfLoad(const Description& description);

} // namespace tavctl::lint
