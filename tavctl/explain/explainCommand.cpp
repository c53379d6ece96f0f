#include "tavctl/explain/explainCommand.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/explain/elsewhere.h"
#include "tavctl/explain/explain.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/host/diagnosis.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/match/modelMatcher.h"
#include "tavctl/match/visibleBus.h"
#include "tavctl/words/nearestName.h"
#include "tavctl/words/print.h"
#include "tavctl/words/progress.h"

#include <fmt/core.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavctl {

namespace {

struct ExplainOptions {
    CommonOptions common;
    std::string model; // empty: every model
};

explain::LoadedModels loadModels(const std::vector<std::string>& files) {
    Progress progress("reading descriptions", files.size());
    explain::LoadedModels models;
    for (const std::string& file : files) {
        // On the heap: stacks may be small.
        const auto description =
            std::make_unique<lint::Description>(file, lint::Description::Text::unwanted);
        if (!description->loads())
            throw FailureException(
                diagnoseInitialize(description->reads().problems().front().status, {}));
        models.add(std::move(*description));
        progress.step();
    }
    return models;
}

[[noreturn]] void failWithoutModel(const std::string& model,
                                   const std::vector<std::string>& names) {
    std::string reason = "no description file describes this model";
    const std::string near = nearestName(model, names);
    if (!near.empty())
        reason += fmt::format("; did you mean \"{}\"?", near);
    throw FailureException({"explain", model, reason, {}, {}}, ExitStatus::problemFound);
}

// Explanations as they come, in pieces: many models may make more text than there is memory.
class ExplanationWriter {
public:
    ExplanationWriter(bool json, std::size_t models, const std::optional<pcibus::LeftOut>& leftOut)
        : progress_("explaining models", models), json_(json), inFull_(models == 1),
          leftOut_(leftOut) {
        if (json_)
            text_ = R"({"models":[)";
    }

    void add(const explain::Explanation& explanation) {
        if (explanations_++ != 0)
            text_ += json_ ? "," : "\n";
        text_ += json_ ? explain::explanationAsJson(explanation)
                       : explain::explanationAsText(explanation, inFull_, leftOut_);
        if (text_.size() >= kPiece)
            write();
        progress_.step();
    }

    void finish() {
        if (json_)
            text_ += fmt::format(R"(],"leftOut":{}}})", leftOutJson(leftOut_).text()) + "\n";
        write();
    }

private:
    static constexpr std::size_t kPiece = std::size_t{1} << 20;

    void write() {
        const Progress::Hidden hidden(progress_);
        print(text_);
        text_.clear();
    }

    Progress progress_;
    bool json_;
    bool inFull_;
    std::optional<pcibus::LeftOut> leftOut_;
    std::size_t explanations_ = 0;
    std::string text_;
};

ExitStatus runExplain(const ExplainOptions& options) {
    const auto setup = std::make_unique<HostSetup>(options.common, Names::copied);
    explain::LoadedModels models = loadModels(descriptionFiles());
    tellOfBridgesAlone();
    if (models.size() == 0)
        explainNoDescriptions();
    if (!options.model.empty()) {
        const auto names = models.names();
        models.keepOnly(options.model);
        if (models.size() == 0)
            failWithoutModel(options.model, names);
    }
    const auto matcher = std::make_unique<ModelMatcher>(hostBus());
    const auto read = sharedMachineBus();
    tellLeftOut(read->leftOut);
    const std::shared_ptr<const pcibus::Bus> bus(read, &read->bus);
    const bool hasOthers = read->leftOut && read->leftOut->otherDomains != 0;
    bool listed = false;
    const auto writer =
        std::make_unique<ExplanationWriter>(options.common.json, models.size(), read->leftOut);
    explain::explain(
        std::move(models), *matcher, bus,
        [&](const explain::Explanation& each) {
            listed = listed || each.listed() != 0;
            writer->add(each);
        },
        hasOthers ? explain::Elsewhere::ofChosenBus() : explain::Elsewhere());
    writer->finish();
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
