// tavctl names: the terminal names that are stored, and care for them.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addNamesCommand(OptionParser& parser);

} // namespace tavctl
