#include "tavctl/explain/explainCommand.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/explain/elsewhere.h"
#include "tavctl/explain/explain.h"
#include "tavctl/explain/subject.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/host/diagnosis.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/match/modelMatcher.h"
#include "tavctl/match/visibleBus.h"
#include "tavctl/words/document.h"
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
    std::string subject; // empty: every model
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

// Explanations as they come, in pieces: many models may make more text than there is memory.
class ExplanationWriter {
public:
    ExplanationWriter(bool json, bool inFull, std::size_t models,
                      const std::optional<pcibus::LeftOut>& leftOut)
        : progress_("explaining models", models), json_(json), inFull_(inFull), leftOut_(leftOut) {
        if (!json_)
            return;
        Json begin = newDocument();
        begin.add("leftOut", leftOutJson(leftOut));
        text_ = begin.text();
        text_.pop_back(); // the models follow one by one
        text_ += R"(,"models":[)";
    }

    [[nodiscard]] bool isEmpty() const { return explanations_ == 0; }

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
            text_ += "]}\n";
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
    const explain::Subject subject =
        explain::subjectOf(options.subject, models.names(), options.common, *setup);
    if (!subject.model.empty())
        models.keepOnly(subject.model);
    const auto matcher = std::make_unique<ModelMatcher>(hostBus());
    const WholeBus whole = machineBus();
    tellLeftOut(whole.leftOut);
    bool listed = false;
    const bool inFull = !subject.word.empty() || models.size() == 1;
    const auto writer = std::make_unique<ExplanationWriter>(options.common.json, inFull,
                                                            models.size(), whole.leftOut);
    const auto tell = [&](explain::Explanation& each) {
        if (!subject.keep(each))
            return;
        listed = listed || each.listed() != 0;
        writer->add(each);
    };
    explain::explain(std::move(models), *matcher, whole.searched, tell, explain::Elsewhere(whole));
    if (subject.address && writer->isEmpty())
        explain::failWithoutModel(subject, whole);
    writer->finish();
    return subject.word.empty() || listed ? ExitStatus::done : ExitStatus::problemFound;
}

} // namespace

Command addExplainCommand(OptionParser& parser) {
    CommandOptions command = parser.command("explain", "Tell why a model is listed or not");
    const auto options = std::make_shared<ExplainOptions>();
    options->common.addTo(command);
    command.optionalArgument(options->subject, ValueForm::device("MODEL"),
                             "Model, device or address to explain (default: all)");
    command.footer("Writes: nothing.\n"
                   "Exit status 1 when it is not listed.\n"
                   "Example: tavctl explain TAV1");
    return makeCommand<ExplainOptions>(command, options, runExplain);
}

} // namespace tavctl
