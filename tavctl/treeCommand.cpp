#include "tavctl/treeCommand.h"

#include "tavctl/busAddress.h"
#include "tavctl/failure.h"
#include "tavctl/hostSession.h"
#include "tavctl/treeText.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace tavctl {

namespace {

struct TreeOptions {
    CommonOptions common;
    std::string address;
    std::string model;
    std::string pciIds;
    bool numeric = false;
};

ExitStatus runTree(const TreeOptions& options) {
    const HostSetup setup(options.common);
    const PciNames names = PciNames::load(options.pciIds);
    const auto listed = devicesOfPlugin(options.common);
    const pcibus::Bus bus = readChosenBus();
    const auto devices = placeDevices(listed, surveyDevices(nameFilePath()), bus);
    if (bus.functions().empty())
        std::fputs("tavctl: there is no function on this bus\n", stderr);
    BusTreeView view(bus, devices);
    std::vector<std::uint32_t> shown;
    if (!options.address.empty())
        shown.push_back(functionAtAddress(bus, options.address).handle());
    if (!options.model.empty()) {
        const auto found = functionsOfModel(devices, options.model);
        shown.insert(shown.end(), found.begin(), found.end());
    }
    if (!shown.empty())
        view.showOnly(shown);
    const std::string text = options.common.json ? treeAsJson(view, names)
                                                 : treeAsText(view, names, options.numeric,
                                                              TextStyle::forStream(stdout));
    std::fwrite(text.data(), 1, text.size(), stdout);
    return ExitStatus::done;
}

} // namespace

Command addTreeCommand(CLI::App& app) {
    auto options = std::make_shared<TreeOptions>();
    CLI::App* const command =
        app.add_subcommand("tree", "Show the bus as a tree with the devices marked in it");
    command->add_option("-s", options->address, "Only this function, below it, and the way to it")
        ->type_name("ADDRESS");
    command->add_option("--model", options->model, "Only devices of models named so, likewise")
        ->type_name("NAME");
    command->add_flag("-n,--numeric", options->numeric, "Identifiers instead of names");
    command->add_option("--pci-ids", options->pciIds, "Names of vendors and devices (pci.ids)")
        ->type_name("FILE");
    options->common.addTo(*command);
    command->footer("Example: tavctl tree -s 01:00.0");
    return makeCommand(command, std::move(options), runTree);
}

} // namespace tavctl
