#include "tavctl/completion/completionCommand.h"

#include "tavctl/completion/completion.h"
#include "tavctl/options/resultOptions.h"

namespace tavctl {

namespace {

struct CompletionOptions {
    std::string shell;
    ResultTarget output;
};

ExitStatus runCompletion(const CompletionOptions& options, CommandWords (*wordsOfAll)()) {
    const auto write = options.shell == "zsh"          ? zshCompletion
                       : options.shell == "fish"       ? fishCompletion
                       : options.shell == "powershell" ? powershellCompletion
                                                       : bashCompletion;
    writeResult(write(wordsOfAll()), options.output);
    return ExitStatus::done;
}

} // namespace

Command addCompletionCommand(OptionParser& parser, CommandWords (*wordsOfAll)()) {
    auto options = std::make_shared<CompletionOptions>();
    CommandOptions command =
        parser.command("completion", "Write a script that completes the command line");
    command.argument(options->shell,
                     ValueForm::choice("SHELL", {"bash", "zsh", "fish", "powershell"}),
                     "bash, zsh, fish or powershell");
    addTo(command, options->output);
    command.footer("Writes: the file of -o only.\n"
                   "Example: tavctl completion bash -o tavctl.bash");
    return {command, [options, wordsOfAll] { return runCompletion(*options, wordsOfAll); },
            [] { return FailureForm{}; }};
}

} // namespace tavctl
