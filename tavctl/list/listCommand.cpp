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
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/statusText.h"

#include <fmt/core.h>

#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

namespace tavctl {

namespace {

using Devices = std::vector<ListedDevice>;

struct ListOptions {
    CommonOptions common;
    bool verbose = false;
};

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
        return devicesOfPlugin(options, setup);
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
    return devicesOfPlugin(options, setup);
}

ExitStatus runList(const ListOptions& options) {
    const NamedDump dump(options.common.dump); // standard input is there once only
    const Devices devices = devicesToList(options.common);
    const auto leftOut = leftOutOfChosenBus();
    tellLeftOut(leftOut);
    if (options.common.json) {
        print(listingAsJson(devices, leftOut));
        return ExitStatus::done;
    }
    if (devices.empty())
        complain("no described device is present on this bus");
    else
        print(listingAsTable(devices, options.verbose));
    explainMarks(devices);
    return ExitStatus::done;
}

} // namespace

Command addListCommand(OptionParser& parser) {
    auto options = std::make_shared<ListOptions>();
    CommandOptions command = parser.command("list", "List the devices");
    command.flag("-v,--verbose", options->verbose, "Show the ports, and cut nothing");
    options->common.addTo(command);
    command.footer("Writes: the terminal names, on the machine's own bus or with --state.\n"
                   "Example: tavctl list -v --dump bus.txt");
    return makeCommand(command, std::move(options), runList);
}

} // namespace tavctl
