// tavctl tree: the bus as a tree of bridges, with the devices marked in it.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addTreeCommand(OptionParser& parser);

} // namespace tavctl
