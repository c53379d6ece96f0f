// What would have ended the load of a description, as findings.
#pragma once

#include "tavctl/description/findings.h"

namespace tavctl::lint {

// Whether the file is no description at all but one that Windows' Explorer writes. Then that is all
// there is to say of it.
bool isExplorersFile(const Description& description);

// Adds everything that ends the load.
void checkLoad(const Description& description, Findings& findings);

// What the plug-in's load ends with: of all those findings the one that its loader meets first. The
// description must be one that does not load.
Finding endOfLoad(const Description& description);

} // namespace tavctl::lint
