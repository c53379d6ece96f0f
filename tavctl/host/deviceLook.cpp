#include "tavctl/host/deviceLook.h"

#include "platform/busLocation.h"
#include "platform/utf8Path.h"
#include "pxidrivertools/iIniFile.h"
#include "tavctl/host/nameFile.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/statusText.h"

#include <fmt/core.h>

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace tavctl {

namespace {

// Nothing, after a line that says so, when the names cannot be stored.
std::optional<Devices> devicesOfHost(const CommonOptions& options, const HostSetup& setup) {
    using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;
    const auto giveUp = [](const std::string& file, const std::string& reason) {
        complain(fmt::format("nothing is stored ({}: {})", file, reason));
        return std::nullopt;
    };
    if (const std::string reason = whyNotStorable(setup.nameFile()); !reason.empty())
        return giveUp(platform::utf8Text(setup.nameFile().parent_path()), reason);
    try {
        return lookForDevices(options, setup);
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

} // namespace

Devices lookForDevices(const CommonOptions& options, const HostSetup& setup) {
    Devices devices;
    devices.present = devicesOfPlugin(options, setup);
    devices.absent = absentDevices(setup, devices.present);
    return devices;
}

bool storesUnasked(const CommonOptions& options) {
    return !options.state.empty() || (options.dump.empty() && !platform::isBusRecorded());
}

HostLook lookAsHost(const CommonOptions& options, bool stores) {
    HostLook look;
    if (stores) {
        look.setup = std::make_unique<const HostSetup>(options);
        if (auto devices = devicesOfHost(options, *look.setup)) {
            look.devices = std::move(*devices);
            return look;
        }
        look.setup.reset(); // one at a time
    }
    look.setup = std::make_unique<const HostSetup>(options, Names::copied);
    look.devices = lookForDevices(options, *look.setup);
    return look;
}

} // namespace tavctl
