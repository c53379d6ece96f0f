#include "tavctl/list/listCommand.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/deviceListing.h"
#include "tavctl/host/deviceLook.h"
#include "tavctl/host/namedDump.h"
#include "tavctl/list/listFilter.h"
#include "tavctl/list/listing.h"
#include "tavctl/match/visibleBus.h"
#include "tavctl/words/print.h"

#include <utility>
#include <vector>

namespace tavctl {

namespace {

struct ListOptions {
    CommonOptions common;
    ListFilter filter;
    bool verbose = false;
};

void tellOfNone(const ListOptions& options, const Devices& devices) {
    if (devices.present.empty() && !options.filter.absent)
        complain("no described device is present on this bus");
    else
        complain(options.filter.isNarrow() ? "no device is as asked for"
                                           : "no device with a name is absent");
}

ExitStatus runList(const ListOptions& options) {
    const NamedDump dump(options.common.dump); // standard input is there once only
    Devices devices = lookAsHost(options.common, storesUnasked(options.common)).devices;
    Listing listing;
    {
        const auto bus = wholeBusIfReadable();
        listing = makeListing(devices.present, std::move(devices.absent), bus ? &*bus : nullptr);
    }
    tellLeftOut(listing.leftOut);
    options.filter.apply(listing);
    const bool isProblem = options.filter.degraded && !listing.devices.empty();
    const auto exitStatus = isProblem ? ExitStatus::problemFound : ExitStatus::done;
    if (options.common.json) {
        print(listingAsJson(listing));
        return exitStatus;
    }
    if (!options.filter.tellsAbsent())
        listing.absent.clear();
    const ListingForm form{options.verbose, options.filter.degraded, screenWidth()};
    const std::string present = listingAsTable(listing, form);
    const std::string absent = absentAsTable(listing, form);
    if (present.empty() && absent.empty())
        tellOfNone(options, devices);
    else
        print(present + (present.empty() || absent.empty() ? "" : "\n") + absent);
    std::vector<ListedDevice> shown;
    for (const ListingEntry& entry : listing.devices)
        shown.push_back(entry.device);
    explainMarks(shown);
    return exitStatus;
}

} // namespace

Command addListCommand(OptionParser& parser) {
    auto options = std::make_shared<ListOptions>();
    CommandOptions command = parser.command("list", "List the devices");
    command.flag("-v,--verbose", options->verbose, "Show the ports, and cut nothing");
    options->filter.addTo(command);
    options->common.addTo(command);
    command.footer("Writes: the terminal names, on the machine's own bus or with --state.\n"
                   "Example: tavctl list TAV1 -v");
    return makeCommand(command, std::move(options), runList);
}

} // namespace tavctl
