// The failure of a description that the plug-in cannot load, in the words of lint.
#pragma once

#include "tavctl/description/description.h"
#include "tavctl/words/failure.h"

namespace tavctl::lint {

// Its object is the place in the file, its status the one that the plug-in's load ends with. The
// description must be one that does not load.
Failure loadFailure(const Description& description);

} // namespace tavctl::lint
