// What a command of tavctl's is to the program as a whole. Each command's header declares one
// function that adds it: its words and options to the command line, and what runs it.
#pragma once

#include "tavctl/host/commonOptions.h"
#include "tavctl/words/exitStatus.h"

#include <functional>
#include <memory>

namespace tavctl {

struct Command {
    CLI::App* app = nullptr; // the command's part of the command line; belongs to the whole
    // Runs the command with what the command line said. Raises FailureException.
    std::function<ExitStatus()> run;
    std::function<bool()> wantsJson; // whether failures are to be told as JSON
};

// `Options` is the options of one command, with the common ones as its member `common`; it lives as
// long as the command.
template <typename Options>
Command makeCommand(CLI::App* app, std::shared_ptr<Options> options,
                    ExitStatus (*run)(const Options&)) {
    return {app, [options, run] { return run(*options); },
            [options] { return options->common.json; }};
}

} // namespace tavctl
