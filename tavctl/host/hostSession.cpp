#include "tavctl/host/hostSession.h"

#include "platform/busLocation.h"
#include "platform/utf8Path.h"
#include "quil/zoerr.h"
#include "source/cPciTavFilesystem.h"
#include "source/cTerminalNameDb.h"
#include "tavctl/bus/busFile.h"
#include "tavctl/host/diagnosis.h"
#include "tavctl/host/hostPlugin.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/progress.h"

#include <optional>
#include <string>

namespace tavctl {

std::vector<ListedDevice> devicesOfPlugin(const CommonOptions& options) {
    const Progress progress("the plug-in looks for devices");
    const HostPlugin plugin(options.plugin);
    const std::int32_t status = plugin.initialize();
    if (status < 0)
        throw FailureException(diagnoseInitialize(status, plugin.path()));
    return readDevices(plugin);
}

std::string chosenBusLocation() {
    const std::optional<std::string> location = platform::busLocation();
    if (!location)
        throw FailureException({"read the bus",
                                "this machine",
                                "this system publishes none; name a recorded one with --dump",
                                {},
                                {}});
    return *location;
}

pcibus::Bus readChosenBus() {
    const std::string location = chosenBusLocation();
    const Progress progress("reading the bus");
    return readBusFile(location);
}

std::filesystem::path nameFilePath() {
    using namespace nZoTavManagerPciPlugin_15_0;
    try {
        return platform::utf8Path(cPciTavFilesystem().GetConfigPath() + kNameFile);
    } catch (const zoerr::Exception& exception) {
        throw FailureException(diagnoseInitialize(exception.status().code, "this program"));
    }
}

} // namespace tavctl
