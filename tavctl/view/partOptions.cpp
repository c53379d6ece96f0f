#include "tavctl/view/partOptions.h"

#include "tavctl/bus/busAddress.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/words/failure.h"

#include <CLI/CLI.hpp>
#include <set>

namespace tavctl {

namespace {

std::vector<std::uint32_t> functionsOfModel(const std::vector<PlacedDevice>& devices,
                                            const std::string& model) {
    std::vector<std::uint32_t> functions;
    std::set<std::string> models;
    for (const PlacedDevice& device : devices) {
        models.insert(device.listed.model);
        if (device.listed.model.find(model) == std::string::npos)
            continue;
        const auto found = functionsOf(device);
        functions.insert(functions.end(), found.begin(), found.end());
    }
    if (!functions.empty())
        return functions;
    std::string reason = "no device of this model is present";
    for (const std::string& present : models)
        reason.append(present == *models.begin() ? "; there is " : ", ").append(present);
    throw FailureException({"find model", model, reason, {}, {}}, ExitStatus::problemFound);
}

} // namespace

void PartOptions::addTo(CLI::App& command) {
    command.add_option("-s", address, "Only this function, below it, and the way to it")
        ->type_name("ADDRESS");
    command.add_option("--model", model, "Only devices of models named so, likewise")
        ->type_name("NAME");
    command.add_option("--pci-ids", pciIds, "Names of vendors and devices (pci.ids)")
        ->type_name("FILE");
}

MarkedBus::MarkedBus(const CommonOptions& options) {
    const auto listed = devicesOfPlugin(options);
    bus = readChosenBus();
    devices = placeDevices(listed, surveyDevices(nameFilePath()), bus);
}

void showPart(const PartOptions& options, BusTreeView& view) {
    std::vector<std::uint32_t> shown;
    if (!options.address.empty())
        shown.push_back(functionAtAddress(view.bus(), options.address).handle());
    if (!options.model.empty()) {
        const auto found = functionsOfModel(view.devices(), options.model);
        shown.insert(shown.end(), found.begin(), found.end());
    }
    if (!shown.empty())
        view.showOnly(shown);
}

} // namespace tavctl
