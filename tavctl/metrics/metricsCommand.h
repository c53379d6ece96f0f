// tavctl metrics: the devices, their links and connectors for a monitoring system.
#pragma once

#include "tavctl/options/command.h"

namespace tavctl {

Command addMetricsCommand(OptionParser& parser);

} // namespace tavctl
