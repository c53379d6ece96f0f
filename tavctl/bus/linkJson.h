// A link as it runs, for programs.
#pragma once

#include "tavctl/bus/linkState.h"
#include "tavctl/words/json.h"

namespace tavctl {

// Adds negotiatedWidth (lanes), negotiatedSpeed (by its number), possibleWidth and possibleSpeed
// (what both ends can) to an object, null where they are not known, and whether it is degraded,
// null where nothing is known of the link.
void addLink(Json& object, const LinkState& link);

} // namespace tavctl
