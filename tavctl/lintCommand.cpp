#include "tavctl/lintCommand.h"

#include "tavctl/descriptionFiles.h"
#include "tavctl/lint/lint.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <vector>

namespace tavctl {

namespace {

struct LintOptions {
    CommonOptions common;
    std::vector<std::string> files; // none: those of the configured folder
    bool rules = false;
};

void print(const std::string& text) {
    std::fputs(text.c_str(), stdout);
}

ExitStatus runLint(const LintOptions& options) {
    const bool json = options.common.json;
    if (options.rules) {
        print(json ? lint::rulesAsJson() : lint::rulesAsText());
        return ExitStatus::done;
    }
    const HostSetup setup(options.common);
    const auto files = options.files.empty() ? descriptionFiles() : options.files;
    const lint::Report report = lint::lint(files);
    print(json ? lint::reportAsJson(report) : lint::reportAsText(report));
    if (files.empty()) {
        std::fputs("tavctl: there are no description files to check\n", stderr);
        return ExitStatus::problemFound;
    }
    return report.errors() == 0 ? ExitStatus::done : ExitStatus::problemFound;
}

} // namespace

Command addLintCommand(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("lint", "Check description files");
    const auto options = std::make_shared<LintOptions>();
    options->common.addTo(*command);
    command
        ->add_option("FILE", options->files,
                     "Files to check (default: all of the configured folder)")
        ->type_name("");
    command->add_flag("--rules", options->rules, "Print the rules and check nothing");
    command->footer("Every problem of every file. Errors give exit status 1, warnings 0.\n"
                    "Example: tavctl lint --descriptions descriptions");
    return makeCommand<LintOptions>(command, options, runLint);
}

} // namespace tavctl
