// tavctl list: the devices that the plug-in reports.
#pragma once

#include "tavctl/commonOptions.h"
#include "tavctl/exitStatus.h"

namespace tavctl {

// Raises FailureException.
ExitStatus runList(const CommonOptions& options);

} // namespace tavctl
