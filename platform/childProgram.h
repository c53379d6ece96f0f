// Runs another program and takes what it prints.
#pragma once

#include "platform/systemCode.h"

#include <string>
#include <string_view>
#include <vector>

namespace platform {

struct ProgramRun {
    SystemCode failure = kNoSystemError; // why it could not be run; then the rest says nothing
    int exitStatus = -1;                 // -1: it was ended from outside
    std::string output;                  // what it wrote to standard output
};

// Runs the program words[0] with the other words as its arguments and `input` as its standard
// input; waits for its end. It is looked for in those folders of PATH that are named from a root,
// never in the current folder nor from there, whatever the system's own search does. Its standard
// error is this program's, and an early end of this program is its end too (see earlyEnd.h). Raises
// std::bad_alloc. To be called in the program's first thread.
ProgramRun runProgram(const std::vector<std::string>& words, std::string_view input);

} // namespace platform
