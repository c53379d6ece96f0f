#include "tavctl/completion/completionCommand.h"

#include "tavctl/commandLine.h"
#include "tavctl/completion/completion.h"
#include "tavctl/words/resultFile.h"

#include <CLI/CLI.hpp>

namespace tavctl {

namespace {

struct CompletionOptions {
    std::string shell;
    std::string file;
};

ExitStatus runCompletion(const CompletionOptions& options) {
    const auto write = options.shell == "zsh"    ? zshCompletion
                       : options.shell == "fish" ? fishCompletion
                                                 : bashCompletion;
    const CommandLine whole;
    writeResult(write(whole.app()), options.file);
    return ExitStatus::done;
}

} // namespace

Command addCompletionCommand(CLI::App& app) {
    auto options = std::make_shared<CompletionOptions>();
    CLI::App* const command =
        app.add_subcommand("completion", "Write a script that completes the command line");
    command->add_option("SHELL", options->shell, "bash, zsh or fish")
        ->required()
        ->type_name("")
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    command->add_option("-o,--output", options->file, "File to write (default: standard output)")
        ->type_name("FILE");
    command->footer("Example: tavctl completion bash -o tavctl.bash");
    return {command, [options] { return runCompletion(*options); }, [] { return false; }};
}

} // namespace tavctl
