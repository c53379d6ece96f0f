#include "tavctl/describe/describeCommand.h"

#include "pxidrivertools/asciiText.h"
#include "pxidrivertools/escapedText.h"
#include "source/descriptionLoader.h"
#include "tavctl/bus/busAddress.h"
#include "tavctl/bus/busQueries.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/describe/boxBridge.h"
#include "tavctl/describe/draft.h"
#include "tavctl/describe/proof.h"
#include "tavctl/describe/watch.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/match/visibleBus.h"
#include "tavctl/options/resultOptions.h"
#include "tavctl/view/deviceWord.h"
#include "tavctl/view/markedBus.h"
#include "tavctl/words/document.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/json.h"
#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tavctl {

namespace {

struct DescribeOptions {
    CommonOptions common;
    std::string box; // by address, name or model
    ResultTarget output;
    describe::DraftRequest request;
};

[[noreturn]] void fail(const std::string& object, std::string reason) {
    throw FailureException({"describe", object, std::move(reason), {}, {}},
                           ExitStatus::problemFound);
}

// The text is put into the file as it is.
void requireModelName(const std::string& model) {
    using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;
    if (model == "_" || escapeText(model) != model || trim(model) != model)
        fail(model, "a model's name must have no quotes, backslashes or blanks around it, and must "
                    "not be \"_\"");
}

const pcibus::PciFunction& bridgeAt(const pcibus::Bus& bus, const std::string& address) {
    const pcibus::PciFunction& function = functionAtAddress(bus, address);
    if (function.isBridge())
        return function;
    const pcibus::PciFunction* const above = bus.parentOfBus(function.bus);
    fail(address, above == nullptr ? std::string("it is no bridge, and stands on a root bus")
                                   : fmt::format("it is no bridge; the one above it is {}",
                                                 pcibus::addressText(*above)));
}

std::string withDomain(const std::string& address) {
    const auto read = readDomainAddress(address);
    return fullAddress(*read);
}

std::string asJson(const std::string& address, const describe::Draft& draft,
                   const describe::Proof& proof, const std::optional<pcibus::LeftOut>& leftOut) {
    Json whole = newDocument();
    whole.add("leftOut", leftOutJson(leftOut));
    whole.add("bridge", withDomain(address));
    whole.add("text", describe::textOf(draft));
    whole.add("unfinished", textOrNull(draft.unfinished));
    Json others = Json::array();
    for (const std::string& other : proof.others)
        others.push_back(withDomain(other));
    whole.add("alsoListed", std::move(others));
    return whole.line();
}

void tell(const DescribeOptions& options, const describe::Draft& draft,
          const describe::Proof& proof) {
    if (!proof.others.empty())
        complainInLines(wrapped(fmt::format("tavctl: by this description the plug-in also lists {}",
                                            enumerated(proof.others)),
                                0));
    if (!options.output.isStandardOutput())
        complain(
            fmt::format("wrote {}: {}", options.output.file, counted(draft.ports.size(), "port")));
}

// Of the bridge that a device that is described already is told by: a box with another description
// is a likely beginning.
std::string addressOfDevice(const DescribeOptions& options, const HostSetup& setup) {
    const MarkedBus marked(options.common, setup);
    const auto chosen = readDeviceWords({options.box}, marked.listed()).front();
    if (chosen.devices.size() > 1)
        fail(options.box, "several devices are of this model; name one of them");
    const PlacedDevice& device = marked.devices[chosen.devices.front()];
    for (const auto& handle : {device.upstreamPort, device.anchor, device.reported}) {
        const auto* const function = handle ? marked.whole.searched->findBridge(*handle) : nullptr;
        if (function != nullptr)
            return pcibus::addressText(*function);
    }
    fail(options.box, "it is told by no bridge");
}

// By the bus as it is, and by what somebody finds out on it.
describe::Proof makeDraft(const DescribeOptions& options, const std::string& address,
                          describe::Draft& draft, std::optional<pcibus::LeftOut>& leftOut) {
    const WholeBus whole = machineBus();
    leftOut = whole.leftOut;
    tellLeftOut(leftOut);
    std::shared_ptr<const pcibus::Bus> bus = whole.searched;
    const pcibus::PciFunction* bridge = &bridgeAt(*bus, address);
    describe::requireBoxBridge(whole.main(), *whole.main().bus().find(bridge->handle()));
    draft = describe::draftOf(*bus, *bridge, options.request);
    if (options.request.watch) {
        const std::string path = slotPathOf(*bus, *bridge);
        describe::Watch watch(std::cin, std::cerr, [] { return machineBus().searched; });
        bus = watch.run(draft, path);
        bridge = functionAtSlotPath(*bus, path);
    }
    if (!draft.unfinished.empty())
        return {};
    describe::Proof proof = describe::makeProvable(draft, bus, *bridge);
    if (proof.lists)
        return proof;
    draft.unfinished =
        fmt::format("no description by this bridge makes the plug-in list it: {}", proof.obstacle);
    if (!options.request.watch)
        fail(address, draft.unfinished);
    return proof;
}

ExitStatus runDescribe(const DescribeOptions& options) {
    requireModelName(options.request.model);
    requireFree(options.output);
    if (options.request.watch && options.common.dump == "-")
        throw FailureException({"describe",
                                "--watch",
                                "the answers come from standard input, and so does the bus",
                                {},
                                {}},
                               ExitStatus::wrongUsage);
    const bool isAddress = readDomainAddress(options.box).has_value();
    const HostSetup setup(options.common, isAddress ? Names::configured : Names::copied);
    const std::string address = isAddress ? options.box : addressOfDevice(options, setup);
    const auto draft = std::make_unique<describe::Draft>();
    std::optional<pcibus::LeftOut> leftOut;
    const describe::Proof proof = makeDraft(options, address, *draft, leftOut);
    writeResult(options.common.json ? asJson(address, *draft, proof, leftOut)
                                    : describe::textOf(*draft),
                options.output);
    tell(options, *draft, proof);
    // What somebody has found out by hand is written all the same.
    if (!draft->unfinished.empty())
        fail(address, draft->unfinished);
    return ExitStatus::done;
}

} // namespace

Command addDescribeCommand(OptionParser& parser) {
    CommandOptions command =
        parser.command("describe", "Write a description file for a box on the bus");
    const auto options = std::make_shared<DescribeOptions>();
    options->common.addTo(command);
    command.argument(options->box, ValueForm::device(),
                     "Its upstream bridge, such as 01:00.0; or a device");
    tavctl::addTo(command, options->output);
    command.value("--model", options->request.model, ValueForm::text("NAME"), "Name of the model");
    command.value("--category", options->request.category,
                  ValueForm::choice("WORD", {"PCI", "Expresscard", "SwitchboxTav"}),
                  "PCI, Expresscard or SwitchboxTav (default)");
    command.number("--lanes", options->request.linkWidthPerLabel, "N", 1, 32,
                   "Lanes of a connector (1-32): more take several labels");
    command.flag("--whole", options->request.whole, "Take bridges further down for the box's own");
    command.flag("--watch", options->request.watch,
                 "Find the connectors by plugging something into each");
    command.footer("Writes: the file of -o only.\n"
                   "Example: tavctl describe 01:00.0 --dump samples/switchboxes.dump");
    return makeCommand<DescribeOptions>(command, options, runDescribe);
}

} // namespace tavctl
