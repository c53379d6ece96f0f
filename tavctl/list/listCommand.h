// tavctl list: the devices that the plug-in reports.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addListCommand(OptionParser& parser);

} // namespace tavctl
