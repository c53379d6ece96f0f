#include "tavctl/view/partOptions.h"

#include "tavctl/bus/busAddress.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/words/failure.h"

#include <set>
#include <utility>

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

void PartOptions::addTo(CommandOptions command) {
    command.value("-s", address, ValueForm::text("ADDRESS"),
                  "Only this function, below it, and the way to it");
    command.value("--model", model, ValueForm::text("NAME"),
                  "Only devices of models named so, likewise");
    command.value("--pci-ids", pciIds, ValueForm::file(), "Names of vendors and devices (pci.ids)");
}

MarkedBus::MarkedBus(const CommonOptions& options, const HostSetup& setup) {
    const auto listed = devicesOfPlugin(options, setup);
    if (!options.json)
        explainMarks(listed);
    ReadBus read = readChosenBus();
    bus = std::move(read.bus);
    leftOut = read.leftOut;
    devices = placeDevices(listed, surveyDevices(setup), bus);
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
