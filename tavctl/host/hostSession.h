// The steps that the commands share: the devices that the plug-in reports, and the bus that it
// sees.
#pragma once

#include "tavctl/bus/busFile.h"
#include "tavctl/host/deviceListing.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/host/nameFile.h"
#include "tavctl/options/commonOptions.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace tavctl {

// Says, in a line, where the bus that the plug-in sees is recorded and its list of devices is not:
// as with TAV_PCI_DUMP on a system that lists devices of its own.
void tellOfBridgesAlone();

// Loads the plug-in as a host does, initialises it and reads its devices, each marked with whether
// its name is stored in the configured name file. Says in lines of their own where this user may
// not read that, and tellOfBridgesAlone(). Raises FailureException.
std::vector<ListedDevice> devicesOfPlugin(const CommonOptions& options, const HostSetup& setup);

// A stored name of which no device is there.
struct AbsentDevice {
    std::string name;
    std::string model;
    std::string slotPath; // where it stood, in machine form
};

// In the file's order.
std::vector<AbsentDevice> absentDevices(const NameFile& file,
                                        const std::vector<ListedDevice>& devices);

// In the order of the name file in force, which the plug-in has looked at for these devices. None
// where no name file is known. Raises FailureException.
std::vector<AbsentDevice> absentDevices(const HostSetup& setup,
                                        const std::vector<ListedDevice>& devices);

// Where the bus stands that this process sees (see pcibus/readBus.h): what --dump names, else the
// machine's own. Raises FailureException when the system publishes none.
std::string chosenBusLocation();

// What its reader leaves out. Nothing where the system publishes no bus, and for a recorded one
// that can be read but once, which whoever looks for devices needs more. Raises nothing of the
// reading: it is for telling beside what was found.
std::optional<pcibus::LeftOut> leftOutOfChosenBus();

// Where the terminal names are stored. Raises FailureException where no folder is configured.
std::filesystem::path nameFilePath(const HostSetup& setup);

} // namespace tavctl
