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

// Runs the program words[0], which is searched for as the system does, with the other words as its
// arguments and `input` as its standard input; waits for its end. Its standard error is this
// program's. Raises std::bad_alloc, and std::system_error when no thread can be made.
ProgramRun runProgram(const std::vector<std::string>& words, std::string_view input);

} // namespace platform
