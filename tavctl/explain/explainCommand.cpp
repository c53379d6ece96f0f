#include "tavctl/explain/explainCommand.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/explain/elsewhere.h"
#include "tavctl/explain/explain.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/host/diagnosis.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/match/modelMatcher.h"
#include "tavctl/match/visibleBus.h"
#include "tavctl/words/nearestName.h"
#include "tavctl/words/print.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace tavctl {

namespace {

struct ExplainOptions {
    CommonOptions common;
    std::string model; // empty: every model
};

explain::Descriptions loadDescriptions() {
    explain::Descriptions descriptions;
    for (const std::string& file : descriptionFiles()) {
        descriptions.push_back(std::make_unique<lint::Description>(file));
        if (!descriptions.back()->loads())
            throw FailureException(
                diagnoseInitialize(descriptions.back()->reads().problems().front().status, {}));
    }
    return descriptions;
}

[[noreturn]] void failWithoutModel(const std::string& model, const explain::Descriptions& all) {
    std::vector<std::string> names;
    for (const auto& each : all)
        names.push_back(each->model().model);
    std::string reason = "no description file describes this model";
    const std::string near = nearestName(model, names);
    if (!near.empty())
        reason += fmt::format("; did you mean \"{}\"?", near);
    throw FailureException({"explain", model, reason, {}, {}}, ExitStatus::problemFound);
}

ExitStatus runExplain(const ExplainOptions& options) {
    const HostSetup setup(options.common, Names::copied);
    explain::Descriptions descriptions = loadDescriptions();
    const auto isMeant = [&](const std::string& model) {
        return options.model.empty() || model == options.model;
    };
    if (!options.model.empty() &&
        std::none_of(descriptions.begin(), descriptions.end(),
                     [&](const auto& each) { return isMeant(each->model().model); }))
        failWithoutModel(options.model, descriptions);

    ModelMatcher matcher(hostBus());
    const auto read = std::make_shared<const ReadBus>(machineBus());
    tellLeftOut(read->leftOut);
    const std::shared_ptr<const pcibus::Bus> bus(read, &read->bus);
    const bool any = !descriptions.empty();
    std::erase_if(descriptions, [&](const auto& each) { return !isMeant(each->model().model); });
    auto explanations = explain::explain(descriptions, matcher, bus);
    if (read->leftOut && read->leftOut->otherDomains != 0)
        explain::findElsewhere(descriptions, explanations);
    print(options.common.json ? explain::explanationsAsJson(explanations, read->leftOut)
                              : explain::explanationsAsText(explanations, read->leftOut));
    if (!any)
        explainNoDescriptions();
    const bool listed = std::any_of(explanations.begin(), explanations.end(),
                                    [](const auto& each) { return each.listed() != 0; });
    return options.model.empty() || listed ? ExitStatus::done : ExitStatus::problemFound;
}

} // namespace

Command addExplainCommand(OptionParser& parser) {
    CommandOptions command = parser.command("explain", "Tell why a model is listed or not");
    const auto options = std::make_shared<ExplainOptions>();
    options->common.addTo(command);
    command.optionalArgument(options->model, ValueForm::text("MODEL"),
                             "Model to explain in full (default: all)");
    command.footer("Writes: nothing.\n"
                   "Exit status 1 when MODEL is not listed.\n"
                   "Example: tavctl explain \"My Box\" --dump bus.txt");
    return makeCommand<ExplainOptions>(command, options, runExplain);
}

} // namespace tavctl
