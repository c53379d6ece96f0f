// The whole command line: every command with its options, and what happens when it is not
// understood.
#pragma once

#include "tavctl/options/command.h"
#include "tavctl/words/exitStatus.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavctl {

// Runs the command that the words name, the program's own name first, and tells every failure on
// standard error, as JSON when the words have --json.
ExitStatus runCommandLine(const std::vector<std::string>& words);

class CommandLine {
public:
    // Every command, or the one of this name only.
    explicit CommandLine(std::string_view only = {});

    // As runCommandLine().
    ExitStatus run(const std::vector<std::string>& words);

    // The commands with their options, for whoever lists them (see completion.h).
    [[nodiscard]] const CLI::App& app() const { return *app_; }

private:
    ExitStatus runParsed();
    [[nodiscard]] ExitStatus refuse(const CLI::ParseError& error,
                                    const std::vector<std::string>& words) const;

    std::unique_ptr<CLI::App> app_;
    std::vector<Command> commands_;
};

// The words of the subcommands of `app`, and the names of its options with their dashes.
std::vector<std::string> commandNames(const CLI::App& app);
std::vector<std::string> optionNames(const CLI::App& app);

} // namespace tavctl
