#include "tavctl/mock/mockCommand.h"

#include "pcibus/pciFunction.h"
#include "platform/utf8Path.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/mock/mock.h"
#include "tavctl/mock/planFile.h"
#include "tavctl/options/resultOptions.h"
#include "tavctl/words/failure.h"
#include "tavctl/words/print.h"
#include "tavctl/words/words.h"

#include <fmt/core.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tavctl {

namespace {

struct MockOptions {
    CommonOptions common;
    std::vector<std::string> models;
    std::vector<std::string> places; // of the last ones of them
    std::vector<std::string> cards;  // places of cards that no description is about
    std::string plan;
    std::string on;
    std::string steps; // folder for the buses of the steps
    bool qemu = false; // options of QEMU's instead of a dump
    ResultTarget output;
};

[[noreturn]] void misuse(const char* option, std::string reason, const char* hint = "") {
    throw FailureException({"plan the bus", option, std::move(reason), {}, {}, hint},
                           ExitStatus::wrongUsage);
}

void addWords(const MockOptions& options, mock::Plan& plan) {
    const auto& models = options.models;
    const std::size_t first = models.size() - options.places.size();
    for (std::size_t i = 0; i < models.size(); ++i) {
        mock::PlannedBox& box = plan.boxes.emplace_back();
        box.model = {models[i], models[i]};
        if (i >= first)
            box.in = {options.places[i - first], options.places[i - first]};
    }
    for (const std::string& place : options.cards)
        plan.endpoints.emplace_back().in = {place, place};
}

// One for each step, and that before the first.
std::vector<mock::Plan> plansOf(const MockOptions& options) {
    std::vector<mock::Plan> plans(1);
    if (!options.plan.empty())
        plans = mock::readPlanFile(options.plan);
    if (options.places.size() > options.models.size())
        misuse("--in", fmt::format("{} for {}", counted(options.places.size(), "place"),
                                   counted(options.models.size(), "model")));
    for (mock::Plan& plan : plans)
        addWords(options, plan);
    if (plans.front().boxes.empty() && plans.front().endpoints.empty())
        misuse("", "nothing is to stand on it", "tavctl mock --help");
    if (plans.size() > 1 && options.steps.empty())
        misuse("--steps", "the plan has steps; this option says where their buses go");
    return plans;
}

void tellOfDevices(const mock::MadeBus& made) {
    for (const MatchedDevice& box : made.boxes)
        complain(fmt::format(
            "{} at {} ({})", box.record.modelName,
            pcibus::addressTextOf(box.record.bus, box.record.device, box.record.function),
            box.record.terminalName));
}

std::vector<mock::MadeBus> makeAll(const std::vector<mock::Plan>& plans,
                                   const mock::Catalog& catalog, const mock::RecordedMachine* on,
                                   mock::Form form) {
    std::vector<mock::MadeBus> made;
    bool isRenumbered = false;
    for (const mock::Plan& plan : plans) {
        try {
            made.push_back(mock::makeBus(plan, catalog, on, "tavctl " TAVCTL_VERSION, form));
        } catch (const FailureException& exception) {
            if (made.empty())
                throw;
            Failure failure = exception.failure();
            failure.operation += fmt::format(", step {}", made.size());
            throw FailureException(failure, exception.exitStatus());
        }
        isRenumbered = isRenumbered || made.back().isRenumbered;
    }
    if (isRenumbered)
        complain("buses of the recorded machine have other numbers now: they did not suffice for "
                 "what was added");
    return made;
}

// The bus of each step in a file of its own.
std::vector<ResultTarget> targetsOf(const MockOptions& options, std::size_t count) {
    if (options.steps.empty())
        return {options.output};
    std::vector<ResultTarget> targets;
    for (std::size_t step = 0; step < count; ++step)
        targets.push_back({platform::utf8Text(platform::utf8Path(options.steps) /
                                              fmt::format("step-{:03}.dump", step)),
                           options.output.replace});
    return targets;
}

ExitStatus runMock(const MockOptions& options) {
    const HostSetup setup(options.common);
    const std::vector<mock::Plan> plans = plansOf(options);
    const std::vector<ResultTarget> targets = targetsOf(options, plans.size());
    for (const ResultTarget& target : targets)
        requireFree(target);
    const auto catalog = std::make_unique<mock::Catalog>(descriptionFiles());
    if (catalog->models().empty())
        explainNoDescriptions();
    // Once for all steps.
    std::unique_ptr<const mock::RecordedMachine> on;
    if (!options.on.empty())
        on = std::make_unique<const mock::RecordedMachine>(mock::readRecordedMachine(options.on));
    const std::vector<mock::MadeBus> made = makeAll(
        plans, *catalog, on.get(), options.qemu ? mock::Form::qemuOptions : mock::Form::dump);
    for (std::size_t i = 0; i < made.size(); ++i) {
        writeResult(made[i].text, targets[i]);
        if (!targets[i].isStandardOutput())
            complain(fmt::format("wrote {}: {}", targets[i].file,
                                 counted(made[i].boxes.size(), "device")));
    }
    if (options.steps.empty() && !options.output.isStandardOutput())
        tellOfDevices(made.front());
    return ExitStatus::done;
}

} // namespace

Command addMockCommand(OptionParser& parser) {
    CommandOptions command = parser.command("mock", "Make a bus with boxes of given models");
    const auto options = std::make_shared<MockOptions>();
    command.arguments(options->models, ValueForm::text("MODEL"), "Models of the boxes");
    command.values("--in", options->places, ValueForm::text("PLACE"),
                   "Places of the last ones: TAV1:2, root 40, 00:04.0");
    command.values("--card", options->cards, ValueForm::text("PLACE"), "Places of network cards");
    command.value("--plan", options->plan, ValueForm::file(),
                  "Boxes and cards from a plan file, too");
    command.value("--on", options->on, ValueForm::file("DUMP"), "Add them to a recorded bus");
    command.value("--steps", options->steps, ValueForm::folder(),
                  "Folder for the buses of a plan's steps");
    command.flag("--qemu", options->qemu, "Print options of QEMU that make the bus");
    tavctl::addTo(command, options->output);
    command.excludes("--steps", "--output");
    command.excludes("--qemu", "--steps");
    command.excludes("--qemu", "--on");
    command.value("--descriptions", options->common.descriptions, ValueForm::folder(),
                  "Folder that holds \"PCI Hardware Descriptions\"");
    command.flag("--debug", options->common.debug,
                 "Tell with a failure the plug-in's whole error record");
    command.footer("The plug-in lists exactly these boxes there; exit status 1 when it would not.\n"
                   "Writes: the file of -o, or those of --steps.\n"
                   "Example: tavctl mock \"TAV-B3 Switch Box\" -o lab.dump");
    return makeCommand<MockOptions>(command, options, runMock);
}

} // namespace tavctl
