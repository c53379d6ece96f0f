// tavctl lint: every problem of description files.
#pragma once

#include "tavctl/command.h"

namespace tavctl {

Command addLintCommand(CLI::App& app);

} // namespace tavctl
