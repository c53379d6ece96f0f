#include "tavctl/list/listCommand.h"

#include "platform/entryType.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/deviceListing.h"
#include "tavctl/host/deviceLook.h"
#include "tavctl/host/namedDump.h"
#include "tavctl/list/collectionListing.h"
#include "tavctl/list/listFilter.h"
#include "tavctl/list/listing.h"
#include "tavctl/match/visibleBus.h"
#include "tavctl/recordings/recording.h"
#include "tavctl/words/print.h"

#include <filesystem>
#include <string>
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

// More than one recorded bus, or a folder of them; none where there is one bus to look at. What
// stands behind --dump and is there is a recording, too: a shell puts them all for a pattern. So is
// standard input, which no device is called like.
std::vector<std::string> collectionOf(const ListOptions& options, ListFilter& filter) {
    std::vector<std::string> paths;
    if (options.common.dump.empty())
        return paths;
    paths.push_back(options.common.dump);
    std::erase_if(filter.devices, [&](const std::string& word) {
        using std::filesystem::file_type;
        const file_type type = platform::typeOfEntry(word);
        if (word != "-" && (type == file_type::not_found || type == file_type::none))
            return false;
        paths.push_back(word);
        return true;
    });
    if (paths.size() == 1 && !isCollection(paths.front()))
        paths.clear();
    return paths;
}

ExitStatus runList(const ListOptions& options) {
    ListFilter filter = options.filter;
    if (const auto paths = collectionOf(options, filter); !paths.empty())
        return listCollection(paths, options.common, filter, options.verbose);
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
