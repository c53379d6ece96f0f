// tavctl describe: a description file for what is on the bus.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addDescribeCommand(OptionParser& parser);

} // namespace tavctl
