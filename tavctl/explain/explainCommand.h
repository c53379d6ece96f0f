// tavctl explain: why a model is listed or not.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addExplainCommand(CLI::App& app);

} // namespace tavctl
