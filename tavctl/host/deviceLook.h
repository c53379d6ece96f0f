// A look for devices as a host takes it, which gives names to those that have none.
#pragma once

#include "tavctl/host/deviceListing.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/options/commonOptions.h"

#include <memory>
#include <vector>

namespace tavctl {

struct Devices {
    std::vector<ListedDevice> present;
    std::vector<AbsentDevice> absent;
};

// The devices with this setup in force. Raises FailureException.
Devices lookForDevices(const CommonOptions& options, const HostSetup& setup);

// Whether names are stored unasked, as a host stores them: on the machine's own bus, or where
// somebody says where to store them.
bool storesUnasked(const CommonOptions& options);

struct HostLook {
    std::unique_ptr<const HostSetup> setup; // in force as long as this is
    Devices devices;
};

// Stores the names, or only looks. Where they cannot be stored it says so in a line, and only
// looks. Raises FailureException.
HostLook lookAsHost(const CommonOptions& options, bool stores);

} // namespace tavctl
