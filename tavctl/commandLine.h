// The whole command line: every command with its options, and what happens when it is not
// understood.
#pragma once

#include "tavctl/options/commandWords.h"
#include "tavctl/words/exitStatus.h"

#include <string>
#include <vector>

namespace tavctl {

// Runs the command that the words name, the program's own name first, and tells every failure on
// standard error, as JSON when the words have --json.
ExitStatus runCommandLine(const std::vector<std::string>& words);

// Every command with its options, for whoever lists them (see completion.h).
CommandWords commandLineWords();

} // namespace tavctl
