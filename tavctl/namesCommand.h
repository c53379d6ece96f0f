// tavctl names: the terminal names that are stored, and care for them.
#pragma once

#include "tavctl/command.h"

namespace tavctl {

Command addNamesCommand(CLI::App& app);

} // namespace tavctl
