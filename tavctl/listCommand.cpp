#include "tavctl/listCommand.h"

#include "tavctl/deviceListing.h"
#include "tavctl/diagnosis.h"
#include "tavctl/failure.h"
#include "tavctl/hostPlugin.h"

#include <cstdio>

namespace tavctl {

ExitStatus runList(const CommonOptions& options) {
    const HostSetup setup(options);
    const HostPlugin plugin(options.plugin);
    const std::int32_t status = plugin.initialize();
    if (status < 0)
        throw FailureException(diagnoseInitialize(status, plugin.path()));
    const auto devices = readDevices(plugin);
    if (options.json) {
        std::fputs(listingAsJson(devices).c_str(), stdout);
    } else if (devices.empty()) {
        std::fputs("tavctl: no described device is present on this bus\n", stderr);
    } else {
        std::fputs(listingAsTable(devices).c_str(), stdout);
    }
    return ExitStatus::done;
}

} // namespace tavctl
