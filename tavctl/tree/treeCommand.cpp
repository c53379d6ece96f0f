#include "tavctl/tree/treeCommand.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/tree/treeText.h"
#include "tavctl/view/partOptions.h"
#include "tavctl/words/print.h"

#include <cstdio>
#include <memory>

namespace tavctl {

namespace {

struct TreeOptions {
    CommonOptions common;
    PartOptions part;
    bool numeric = false;
};

ExitStatus runTree(const TreeOptions& options) {
    const HostSetup setup(options.common, Names::copied);
    const PciNames names = PciNames::load(options.part.pciIds);
    const auto marked = std::make_unique<MarkedBus>(options.common, setup);
    tellLeftOut(marked->leftOut);
    if (marked->bus.functions().empty())
        complain("there is no function on this bus");
    BusTreeView view(marked->bus, marked->devices);
    showPart(options.part, view);
    if (options.common.json)
        print(treeAsJson(view, names, marked->leftOut));
    else
        print(treeAsText(view, names, options.numeric, TextStyle::forStream(stdout)),
              Dress::coloured);
    return ExitStatus::done;
}

} // namespace

Command addTreeCommand(OptionParser& parser) {
    auto options = std::make_shared<TreeOptions>();
    CommandOptions command =
        parser.command("tree", "Show the bus as a tree with the devices marked in it");
    command.flag("-n,--numeric", options->numeric, "Identifiers instead of names");
    options->part.addTo(command);
    options->common.addTo(command);
    command.footer("Writes: nothing.\n"
                   "Example: tavctl tree -s 01:00.0");
    return makeCommand(command, std::move(options), runTree);
}

} // namespace tavctl
