#include "tavctl/completion/completionCommand.h"

#include "tavctl/completion/completion.h"
#include "tavctl/host/hostSession.h"
#include "tavctl/host/hostSetup.h"
#include "tavctl/options/resultOptions.h"
#include "tavctl/words/print.h"

#include <algorithm>

namespace tavctl {

namespace {

constexpr const char* kDevices = "devices";

struct CompletionOptions {
    CommonOptions common;
    std::string shell;
    ResultTarget output;
};

// The words that stand for the devices of the bus at hand, each once: names, addresses, models.
std::string wordsOfDevices(const CommonOptions& common) {
    const HostSetup setup(common, Names::copied);
    const auto devices = devicesOfPlugin(common, setup);
    std::string words;
    for (const ListedDevice& device : devices)
        words += device.terminalName + "\n";
    for (const ListedDevice& device : devices)
        words += addressOf(device) + "\n";
    std::vector<std::string> models;
    for (const ListedDevice& device : devices) {
        if (std::find(models.begin(), models.end(), device.model) != models.end())
            continue;
        models.push_back(device.model);
        words += device.model + "\n";
    }
    return words;
}

ExitStatus runCompletion(const CompletionOptions& options, CommandWords (*wordsOfAll)()) {
    if (options.shell == kDevices) {
        print(wordsOfDevices(options.common));
        return ExitStatus::done;
    }
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
                     ValueForm::choice("SHELL", {"bash", "zsh", "fish", "powershell", kDevices}),
                     "bash, zsh, fish or powershell; devices: their words");
    addTo(command, options->output);
    options->common.addBusTo(command);
    command.footer("Writes: the file of -o only.\n"
                   "Example: tavctl completion bash -o tavctl.bash");
    return {command, [options, wordsOfAll] { return runCompletion(*options, wordsOfAll); },
            [options] {
                return FailureForm{false, options->common.debug};
            }};
}

} // namespace tavctl
