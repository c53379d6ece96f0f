#include "tavctl/host/hostSession.h"

#include "platform/busLocation.h"
#include "platform/entryType.h"
#include "platform/utf8Path.h"
#include "quil/zoerr.h"
#include "source/cPciTavFilesystem.h"
#include "tavctl/bus/busFile.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/host/diagnosis.h"
#include "tavctl/host/hostPlugin.h"
#include "tavctl/host/nameFile.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/progress.h"

#include <fmt/core.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace tavctl {

namespace {

// A name and the model that it is stored for: no two slots have the same.
using StoredNames = std::set<std::pair<std::string, std::string>>;

// While no other host saves them.
NameFile namesInForce(const HostSetup& setup) {
    const NameLock lock(setup.nameFileInForce(), NameLock::Purpose::reading);
    return {setup.nameFileInForce(), true};
}

StoredNames storedNames(const HostSetup& setup) {
    StoredNames names;
    if (setup.nameFileInForce().empty())
        return names;
    const NameFile file = namesInForce(setup);
    for (const NameEntry& entry : file.entries())
        names.emplace(entry.terminalName, entry.model);
    return names;
}

// There may be very many names, and few devices.
void findSlots(const HostSetup& setup, std::vector<ListedDevice>& devices) {
    if (setup.nameFileInForce().empty() || devices.empty())
        return;
    // A model that is listed twice in one slot has one name there.
    std::multimap<std::pair<std::string, std::string>, ListedDevice*> wanted;
    for (ListedDevice& device : devices)
        wanted.insert({{device.terminalName, device.model}, &device});
    const NameFile file = namesInForce(setup);
    for (const NameEntry& entry : file.entries()) {
        const auto [first, last] = wanted.equal_range({entry.terminalName, entry.model});
        for (auto device = first; device != last; ++device) {
            if (device->second->slotPath.empty())
                device->second->slotPath = entry.slotPath;
        }
    }
}

// Without the plug-in when it answers: it holds the names, too.
std::vector<ListedDevice> readDevicesOfPlugin(const CommonOptions& options, const HostSetup& setup,
                                              bool stores) {
    const HostPlugin plugin(options.plugin);
    std::optional<NameStoring> storing;
    if (stores)
        storing.emplace(setup.nameFile());
    const Progress progress("the plug-in looks for devices");
    const std::int32_t status = plugin.initialize();
    storing.reset();
    if (status < 0)
        throw FailureException(diagnoseInitialize(status, plugin.path()));
    tellOfBridgesAlone();
    tellOfShortNames();
    return readDevices(plugin);
}

} // namespace

void tellOfBridgesAlone() {
    if (platform::isBusRecorded() && !platform::deviceBusLocation())
        complain(
            "TAV_PCI_DUMP stands for the bridges alone on this system, and the devices are the "
            "machine's own; --dump takes both from one recorded bus");
}

std::vector<ListedDevice> devicesOfPlugin(const CommonOptions& options, const HostSetup& setup) {
    if (!setup.whyNotCopied().empty())
        complain(fmt::format("the stored names are not known ({}: {})",
                             platform::utf8Text(setup.nameFile()), setup.whyNotCopied()));
    const bool stores = setup.nameFileInForce() == setup.nameFile();
    const StoredNames before = stores ? StoredNames() : storedNames(setup);
    std::vector<ListedDevice> devices = readDevicesOfPlugin(options, setup, stores);
    if (devices.empty())
        explainNoDescriptions();
    for (ListedDevice& device : devices)
        device.isStored = stores || before.contains({device.terminalName, device.model});
    findSlots(setup, devices);
    return devices;
}

std::vector<AbsentDevice> absentDevices(const NameFile& file,
                                        const std::vector<ListedDevice>& devices) {
    std::vector<AbsentDevice> absent;
    std::set<std::pair<std::string, std::string>> present;
    for (const ListedDevice& device : devices)
        present.emplace(device.terminalName, device.model);
    for (const NameEntry& entry : file.entries()) {
        if (!entry.terminalName.empty() && !present.contains({entry.terminalName, entry.model}))
            absent.push_back({entry.terminalName, entry.model, entry.slotPath});
    }
    return absent;
}

std::vector<AbsentDevice> absentDevices(const HostSetup& setup,
                                        const std::vector<ListedDevice>& devices) {
    if (setup.nameFileInForce().empty())
        return {};
    return absentDevices(namesInForce(setup), devices);
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

std::optional<pcibus::LeftOut> leftOutOfChosenBus() {
    const std::optional<std::string> location = platform::busLocation();
    if (!location)
        return std::nullopt;
    const auto type = platform::typeOfEntry(*location);
    if (type != std::filesystem::file_type::directory &&
        type != std::filesystem::file_type::regular)
        return std::nullopt;
    try {
        return readBusFile(*location).leftOut;
    } catch (const FailureException&) {
        return std::nullopt;
    }
}

std::filesystem::path nameFilePath(const HostSetup& setup) {
    if (!setup.nameFile().empty())
        return setup.nameFile();
    try {
        nZoTavManagerPciPlugin_15_0::cPciTavFilesystem().GetConfigPath();
    } catch (const zoerr::Exception& exception) {
        throw FailureException(diagnoseInitialize(exception.status().code, "this program"));
    }
    throw FailureException({"find terminal names", {}, "no folder is configured", {}, {}});
}

} // namespace tavctl
