// tavctl completion: the script by which a shell completes tavctl's command line.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addCompletionCommand(CLI::App& app);

} // namespace tavctl
