// tavctl draw: the devices of the bus as a picture.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addDrawCommand(OptionParser& parser);

} // namespace tavctl
