// A build of the device list with the plug-in's own code that changes nothing outside the process:
// the terminal names are given and stored in a copy. It knows of each device what the plug-in's
// interface does not tell: the slot path of its anchor and the description that it was matched by.
#pragma once

#include "source/deviceRecord.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tavctl {

struct SurveyedDevice {
    nZoTavManagerPciPlugin_15_0::tDeviceRecord record;
    std::string slotPath;    // of the anchor, in machine form: its section of the name file
    std::uint32_t model = 0; // position in Survey::models
};

struct Survey {
    std::vector<nZoTavManagerPciPlugin_15_0::tModelDescription> models; // in load order
    std::vector<SurveyedDevice> devices;                                // as the plug-in lists them
};

// Surveys the bus and the descriptions in force (see HostSetup), with the names of the file
// `names`, which may be missing. A failure is told as the plug-in's own would be. Raises
// FailureException.
Survey surveyDevices(const std::filesystem::path& names);

} // namespace tavctl
