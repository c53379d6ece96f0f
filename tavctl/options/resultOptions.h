// Where a command that makes a file puts it.
#pragma once

#include "tavctl/options/options.h"
#include "tavctl/words/resultFile.h"

namespace tavctl {

// Adds --output and --force to a command.
void addTo(CommandOptions command, ResultTarget& target);

} // namespace tavctl
