#include "tavctl/view/partOptions.h"

#include "tavctl/bus/busAddress.h"
#include "tavctl/view/deviceWord.h"
#include "tavctl/words/failure.h"

#include <map>
#include <set>

namespace tavctl {

namespace {

// The functions to show, by the number of their domain.
using Shown = std::map<std::uint32_t, std::vector<std::uint32_t>>;

void addDevice(const PlacedDevice& device, Shown& shown) {
    const auto functions = functionsOf(device);
    shown[0].insert(shown[0].end(), functions.begin(), functions.end());
}

void addModel(const MarkedBus& marked, const std::string& model, Shown& shown) {
    std::set<std::string> models;
    bool isThere = false;
    for (const PlacedDevice& device : marked.devices) {
        models.insert(device.listed.model);
        if (device.listed.model.find(model) == std::string::npos)
            continue;
        isThere = true;
        addDevice(device, shown);
    }
    if (isThere)
        return;
    std::string reason = "no device of this model is present";
    for (const std::string& present : models)
        reason.append(present == *models.begin() ? "; there is " : ", ").append(present);
    throw FailureException({"find model", model, reason, {}, {}}, ExitStatus::problemFound);
}

void addAddress(const MarkedBus& marked, const std::string& address, Shown& shown) {
    const FunctionPlace place = functionAtAddress(marked.whole, address);
    shown[place.domain->number()].push_back(place.function->handle());
}

void addWords(const PartOptions& options, const MarkedBus& marked, Shown& shown) {
    for (const DeviceWord& chosen : readDeviceWords(options.devices, marked.listed())) {
        if (chosen.kind == DeviceWord::Kind::address)
            addAddress(marked, chosen.word, shown);
        for (const std::size_t device : chosen.devices)
            addDevice(marked.devices[device], shown);
    }
}

} // namespace

void PartOptions::addTo(CommandOptions command) {
    command.arguments(devices, ValueForm::device(), "Only these: name, address or model");
    command.value("-s", address, ValueForm::text("ADDRESS"), "The same as DEVICE");
    command.value("--model", model, ValueForm::text("NAME"), "Only devices of models named so");
    command.value("--pci-ids", pciIds, ValueForm::file(), "Names of vendors and devices (pci.ids)");
}

void showPart(const PartOptions& options, const MarkedBus& marked,
              std::vector<BusTreeView>& views) {
    if (options.devices.empty() && options.address.empty() && options.model.empty())
        return;
    Shown shown;
    addWords(options, marked, shown);
    if (!options.address.empty())
        addAddress(marked, options.address, shown);
    if (!options.model.empty())
        addModel(marked, options.model, shown);
    for (BusTreeView& view : views)
        view.showOnly(shown[view.domain().number()]);
}

} // namespace tavctl
