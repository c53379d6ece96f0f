#include "tavctl/list/listCommand.h"

#include "platform/busLocation.h"
#include "platform/utf8Path.h"
#include "pxidrivertools/iIniFile.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/deviceListing.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/host/nameFile.h"
#include "tavctl/host/namedDump.h"
#include "tavctl/list/listFilter.h"
#include "tavctl/list/listing.h"
#include "tavctl/match/visibleBus.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/statusText.h"

#include <fmt/core.h>

#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

namespace tavctl {

namespace {

struct ListOptions {
    CommonOptions common;
    ListFilter filter;
    bool verbose = false;
};

struct Devices {
    std::vector<ListedDevice> present;
    std::vector<AbsentDevice> absent;
};

Devices lookFor(const CommonOptions& options, const HostSetup& setup) {
    Devices devices;
    devices.present = devicesOfPlugin(options, setup);
    devices.absent = absentDevices(setup, devices.present);
    return devices;
}

// As a host gives names: on the machine's own bus, or where somebody says where to store them.
bool isToStore(const CommonOptions& options) {
    return !options.state.empty() || (options.dump.empty() && !platform::isBusRecorded());
}

// Nothing, after a line that says so, when the names cannot be stored.
std::optional<Devices> devicesOfHost(const CommonOptions& options) {
    using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;
    const HostSetup setup(options);
    const auto giveUp = [](const std::string& file, const std::string& reason) {
        complain(fmt::format("nothing is stored ({}: {})", file, reason));
        return std::nullopt;
    };
    if (const std::string reason = whyNotStorable(setup.nameFile()); !reason.empty())
        return giveUp(platform::utf8Text(setup.nameFile().parent_path()), reason);
    try {
        return lookFor(options, setup);
    } catch (const FailureException& exception) {
        const Failure& failure = exception.failure();
        const std::string file = platform::utf8Text(setup.nameFile());
        // A new file is made when the names are read.
        std::error_code ignored;
        const bool isMissing = failure.object == file &&
                               std::filesystem::symlink_status(setup.nameFile(), ignored).type() ==
                                   std::filesystem::file_type::not_found;
        if (failure.status != kIniFileErrNotStored && !isMissing)
            throw;
        return giveUp(file, failure.reason.empty() ? statusWords(*failure.status) : failure.reason);
    }
}

Devices devicesToList(const CommonOptions& options) {
    if (isToStore(options)) {
        if (auto devices = devicesOfHost(options))
            return std::move(*devices);
    }
    const HostSetup setup(options, Names::copied);
    return lookFor(options, setup);
}

void tellOfNone(const ListOptions& options, const Devices& devices) {
    if (devices.present.empty() && !options.filter.absent)
        complain("no described device is present on this bus");
    else
        complain(options.filter.isNarrow() ? "no device is as asked for"
                                           : "no device with a name is absent");
}

ExitStatus runList(const ListOptions& options) {
    const NamedDump dump(options.common.dump); // standard input is there once only
    Devices devices = devicesToList(options.common);
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
