#include "tavctl/tree/treeCommand.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/tree/treeText.h"
#include "tavctl/view/partOptions.h"
#include "tavctl/words/print.h"

#include <algorithm>
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
    auto leftOut = marked->whole.leftOut;
    if (leftOut)
        leftOut->otherDomains = 0; // they are in the tree
    tellLeftOut(leftOut);
    auto views = marked->views();
    if (std::all_of(views.begin(), views.end(),
                    [](const BusTreeView& view) { return view.bus().functions().empty(); }))
        complain("there is no function on this bus");
    showPart(options.part, *marked, views);
    if (options.common.json)
        print(treeAsJson(views, names, leftOut));
    else
        print(treeAsText(views, names, {options.numeric, screenWidth()},
                         TextStyle::forStream(stdout)),
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
                   "Example: tavctl tree TAV1");
    return makeCommand(command, std::move(options), runTree);
}

} // namespace tavctl
