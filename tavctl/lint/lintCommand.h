// tavctl lint: every problem of description files.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addLintCommand(OptionParser& parser);

} // namespace tavctl
