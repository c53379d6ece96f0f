// tavctl mock: a made-up bus on which given boxes are listed.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addMockCommand(OptionParser& parser);

} // namespace tavctl
