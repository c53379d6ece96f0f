// A build of the device list with the plug-in's own code that changes nothing outside the process:
// the terminal names are given and stored in a copy. It knows of each device what the plug-in's
// interface does not tell.
#pragma once

#include "tavctl/host/hostSetup.h"
#include "tavctl/match/matchedDevice.h"

#include <vector>

namespace tavctl {

// The devices as the plug-in lists them.
using Survey = std::vector<MatchedDevice>;

// Surveys the bus and the descriptions in force, with the names in force as far as this user may
// read them: after a look of the plug-in's with the same setup, with the names that it gave. A
// failure is told as the plug-in's own would be. Raises FailureException.
Survey surveyDevices(const HostSetup& setup);

} // namespace tavctl
