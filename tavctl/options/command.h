// What a command of tavctl's is to the program as a whole. Each command's header declares one
// function that adds it: its words and options to the command line, and what runs it.
#pragma once

#include "tavctl/options/options.h"
#include "tavctl/words/exitStatus.h"

#include <functional>
#include <memory>

namespace tavctl {

struct Command {
    CommandOptions options;
    // Runs the command with what the command line said. Raises FailureException.
    std::function<ExitStatus()> run;
    std::function<bool()> wantsJson; // whether failures are to be told as JSON
};

// `Values` is what the options of one command set, with the common ones as its member `common`; it
// lives as long as the command.
template <typename Values>
Command makeCommand(CommandOptions options, std::shared_ptr<Values> values,
                    ExitStatus (*run)(const Values&)) {
    return {options, [values, run] { return run(*values); },
            [values] { return values->common.json; }};
}

} // namespace tavctl
