#include "tavctl/list/listCommand.h"

#include "tavctl/host/deviceListing.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/words/print.h"

namespace tavctl {

namespace {

struct ListOptions {
    CommonOptions common;
    bool verbose = false;
};

ExitStatus runList(const ListOptions& options) {
    const HostSetup setup(options.common);
    const auto devices = devicesOfPlugin(options.common);
    if (options.common.json) {
        print(listingAsJson(devices));
    } else if (devices.empty()) {
        complain("no described device is present on this bus");
    } else {
        print(listingAsTable(devices, options.verbose));
    }
    return ExitStatus::done;
}

} // namespace

Command addListCommand(OptionParser& parser) {
    auto options = std::make_shared<ListOptions>();
    CommandOptions command = parser.command("list", "List the devices");
    command.flag("-v,--verbose", options->verbose, "Show the ports, and cut nothing");
    options->common.addTo(command);
    command.footer("Example: tavctl list -v --dump bus.txt");
    return makeCommand(command, std::move(options), runList);
}

} // namespace tavctl
