#include "tavctl/where/whereCommand.h"

#include "platform/busLocation.h"
#include "platform/entryType.h"
#include "platform/utf8Path.h"
#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/view/deviceWord.h"
#include "tavctl/where/way.h"
#include "tavctl/words/document.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/nearestName.h"
#include "tavctl/words/print.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace tavctl {

namespace {

struct WhereOptions {
    CommonOptions common;
    std::string what;
    std::string pciIds;
};

// What the word was taken for, as JSON calls it.
struct Answer {
    const char* kind = "";
    std::vector<Found> found;
    bool isBehind = false; // the functions behind a connector, of which there may be none
};

SystemNames systemNamesOfBus() {
    const auto location = platform::busLocation();
    if (!location || platform::typeOfEntry(*location) != std::filesystem::file_type::directory)
        return {};
    return SystemNames(platform::utf8Path(*location));
}

std::optional<FunctionPlace> placeOf(const WholeBus& whole, const DomainAddress& address) {
    for (const DomainBus& domain : whole.domains) {
        const auto* const function =
            domain.number() == address.domain ? domain.bus().find(address.handle) : nullptr;
        if (function != nullptr)
            return FunctionPlace{&domain, function};
    }
    return std::nullopt;
}

class Question {
public:
    Question(const std::string& what, const MarkedBus& marked, const SystemNames& systemNames)
        : what_(what), marked_(marked), systemNames_(systemNames), ways_(marked, systemNames) {}

    [[nodiscard]] Answer answer() const {
        if (readDomainAddress(what_))
            return {"address", {ways_.to(functionAtAddress(marked_.whole, what_))}, false};
        if (const auto connector = namedConnector())
            return {"connector", ways_.behind(*connector), true};
        if (auto devices = namedDevices(); !devices.empty())
            return {"device", std::move(devices), false};
        if (auto named = namedBySystem(); !named.empty())
            return {"systemName", std::move(named), false};
        fail();
    }

private:
    // "TAV1:2". Labels may have colons, and so may names.
    [[nodiscard]] std::optional<WayStep> namedConnector() const {
        for (std::size_t i = 0; i < marked_.devices.size(); ++i) {
            const PlacedDevice& device = marked_.devices[i];
            const std::string prefix = device.listed.terminalName + ":";
            if (!what_.starts_with(prefix))
                continue;
            const std::string label = what_.substr(prefix.size());
            for (std::size_t port = 0; port < device.ports.size(); ++port) {
                const auto& labels = device.ports[port].labels;
                if (std::find(labels.begin(), labels.end(), label) != labels.end())
                    return WayStep{i, port};
            }
            failWithoutLabel(device.listed, label);
        }
        return std::nullopt;
    }

    [[nodiscard]] std::vector<Found> namedDevices() const {
        std::vector<Found> found;
        for (const PlacedDevice& device : marked_.devices) {
            if (device.listed.terminalName != what_ && device.listed.model != what_)
                continue;
            if (const auto place = placeOf(marked_.whole, {0, device.reported.value_or(0)});
                device.reported && place)
                found.push_back(ways_.to(*place));
        }
        return found;
    }

    [[nodiscard]] std::vector<Found> namedBySystem() const {
        std::vector<Found> found;
        for (const DomainAddress& address : systemNames_.find(what_)) {
            if (const auto place = placeOf(marked_.whole, address))
                found.push_back(ways_.to(*place));
        }
        return found;
    }

    [[noreturn]] static void failWithoutLabel(const ListedDevice& device,
                                              const std::string& label) {
        std::vector<std::string> labels;
        for (const ListedPort& port : device.ports)
            labels.push_back(port.label);
        std::string reason = fmt::format("{} has no such connector", device.terminalName);
        for (std::size_t i = 0; i < labels.size(); ++i)
            reason.append(i == 0 ? "; it has " : ", ").append(labels[i]);
        throw FailureException({"find connector", label, reason, {}, {}}, ExitStatus::problemFound);
    }

    [[noreturn]] void fail() const {
        std::string reason =
            systemNames_.areKnown()
                ? "nothing on this bus has this address or name"
                : "nothing on this bus has this address or name, and of a recording the system's "
                  "names are not known";
        std::vector<std::string> names = systemNames_.names();
        for (const PlacedDevice& device : marked_.devices)
            names.push_back(device.listed.terminalName);
        if (const std::string near = nearestName(what_, names); !near.empty())
            reason += fmt::format("; did you mean \"{}\"?", near);
        throw FailureException({"find", what_, reason, {}, {}}, ExitStatus::problemFound);
    }

    const std::string& what_;
    const MarkedBus& marked_;
    const SystemNames& systemNames_;
    Ways ways_;
};

std::string asJson(const std::string& what, const Answer& answer, const MarkedBus& marked,
                   const PciNames& names) {
    Json list = Json::array();
    for (const Found& found : answer.found)
        list.push_back(wayAsJson(marked, names, found));
    Json whole = newDocument();
    whole.add("leftOut", leftOutJson(marked.whole.leftOut));
    whole.add("what", what);
    whole.add("takenFor", answer.kind);
    whole.add("found", std::move(list));
    return whole.line();
}

ExitStatus runWhere(const WhereOptions& options) {
    const HostSetup setup(options.common, Names::copied);
    const PciNames names = PciNames::load(options.pciIds);
    const auto marked = std::make_unique<const MarkedBus>(options.common, setup);
    tellLeftOut(marked->whole.leftOut);
    const SystemNames systemNames = systemNamesOfBus();
    const Answer answer = Question(options.what, *marked, systemNames).answer();
    if (options.common.json) {
        print(asJson(options.what, answer, *marked, names));
    } else {
        std::string text;
        for (const Found& found : answer.found)
            text += wayAsText(*marked, names, found) + "\n";
        print(text);
        if (answer.found.empty())
            complain(fmt::format("nothing is behind {}", options.what));
    }
    const bool isOutside =
        !answer.isBehind &&
        std::all_of(answer.found.begin(), answer.found.end(),
                    [](const Found& found) { return found.way.empty() && found.marks.empty(); });
    if (isOutside && !options.common.json)
        complain("it is behind no connector of a described device");
    return isOutside ? ExitStatus::problemFound : ExitStatus::done;
}

} // namespace

Command addWhereCommand(OptionParser& parser) {
    auto options = std::make_shared<WhereOptions>();
    CommandOptions command =
        parser.command("where", "Tell in which connector of which device something is");
    command.argument(options->what, ValueForm::device("WHAT"),
                     "An address; a name of the system's, as eth2; or TAV1:2");
    command.value("--pci-ids", options->pciIds, ValueForm::file(),
                  "Names of vendors and devices (pci.ids)");
    options->common.addTo(command);
    command.footer("Writes: nothing.\n"
                   "Exit status 1 when it is behind no connector.\n"
                   "Example: tavctl where eth2");
    return makeCommand(command, std::move(options), runWhere);
}

} // namespace tavctl
