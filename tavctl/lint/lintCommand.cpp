#include "tavctl/lint/lintCommand.h"

#include "tavctl/bus/leftOutWords.h"
#include "tavctl/host/descriptionFiles.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/lint/against.h"
#include "tavctl/lint/lint.h"
#include "tavctl/recordings/recording.h"
#include "tavctl/words/print.h"

#include <fmt/core.h>

#include <string>
#include <vector>

namespace tavctl {

namespace {

struct LintOptions {
    CommonOptions common;
    std::vector<std::string> files; // none: those of the configured folder
    std::vector<std::string> dumps; // recorded buses to match the models against
    std::string comparedWith;       // folder of the descriptions before; empty: none
    bool rules = false;
};

std::vector<lint::Comparison> compareAll(const LintOptions& options,
                                         const std::vector<std::string>& files) {
    std::vector<lint::Comparison> comparisons;
    if (options.dumps.empty())
        return comparisons;
    const auto models = lint::loadModels(files);
    std::vector<lint::tModelDescription> before;
    if (!options.comparedWith.empty())
        before = lint::loadModels(descriptionFilesIn(options.comparedWith));
    comparisons = lint::compareAll(recordingsAt(options.dumps), models,
                                   options.comparedWith.empty() ? nullptr : &before);
    for (const lint::Comparison& each : comparisons) {
        tellLeftOut(each.leftOut, fmt::format(" of {}", each.dump));
        if (each.failure)
            complain(each.failure->sentence());
    }
    return comparisons;
}

ExitStatus runLint(const LintOptions& options) {
    const bool json = options.common.json;
    if (options.rules) {
        print(json ? lint::rulesAsJson() : lint::rulesAsText());
        return ExitStatus::done;
    }
    const HostSetup setup(options.common);
    const DescriptionFolder folder =
        options.files.empty() ? descriptionFolder() : DescriptionFolder{options.files, {}, {}};
    const auto& files = folder.files;
    const lint::Report report = lint::lint(folder);
    std::vector<lint::Comparison> comparisons;
    if (!report.endsLoad())
        comparisons = compareAll(options, files);
    print(json ? lint::reportAsJson(report, comparisons)
               : lint::reportAsText(report) + lint::comparisonsAsText(comparisons));
    if (report.endsLoad() && !options.dumps.empty())
        complain("the recorded buses were not looked at, since the files do not load");
    if (files.empty()) {
        explainNoDescriptions();
        return ExitStatus::problemFound;
    }
    if (lint::failedAny(comparisons))
        return ExitStatus::failed;
    return report.errors() == 0 && !lint::losesAny(comparisons) ? ExitStatus::done
                                                                : ExitStatus::problemFound;
}

} // namespace

Command addLintCommand(OptionParser& parser) {
    CommandOptions command = parser.command("lint", "Check description files");
    const auto options = std::make_shared<LintOptions>();
    options->common.addTo(command);
    command.arguments(options->files, ValueForm::file(),
                      "Files to check (default: all of the configured folder)");
    command.values("--against", options->dumps, ValueForm::file("DUMP..."),
                   "Recorded buses, or folders of them: say what each has");
    command.value("--compared-with", options->comparedWith, ValueForm::folder(),
                  "Other descriptions: say what buses gain and lose");
    command.needs("--compared-with", "--against");
    command.flag("--rules", options->rules, "Print the rules and check nothing");
    command.footer(
        "Every problem of every file. Exit status 1 for errors and for models that a bus\n"
        "loses; 0 for warnings.\n"
        "Writes: nothing.\n"
        "Example: tavctl lint --descriptions descriptions");
    return makeCommand<LintOptions>(command, options, runLint);
}

} // namespace tavctl
