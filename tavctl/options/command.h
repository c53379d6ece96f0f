// What a command of tavctl's is to the program as a whole. Each command's header declares one
// function that adds it: its words and options to the command line, and what runs it.
#pragma once

#include "tavctl/options/options.h"
#include "tavctl/words/exitStatus.h"
#include "tavctl/words/failure.h"

#include <functional>
#include <memory>

namespace tavctl {

struct Command {
    CommandOptions options;
    // Runs the command with what the command line said. Raises FailureException.
    std::function<ExitStatus()> run;
    std::function<FailureForm()> failureForm; // how failures are to be told
};

// `Values` is what the options of one command set, with the common ones as its member `common`; it
// lives as long as the command.
template <typename Values>
Command makeCommand(CommandOptions options, std::shared_ptr<Values> values,
                    ExitStatus (*run)(const Values&)) {
    return {options, [values, run] { return run(*values); },
            [values] {
                return FailureForm{values->common.json, values->common.debug};
            }};
}

} // namespace tavctl
