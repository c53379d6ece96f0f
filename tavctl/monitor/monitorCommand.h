// tavctl monitor: stays, and tells what changes.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addMonitorCommand(OptionParser& parser);

} // namespace tavctl
