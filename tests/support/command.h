// Runs another program for a test.
#pragma once

#include <string>

namespace testsupport {

struct CommandResult {
    int exitStatus = -1; // 127 when there is no such program; -1 when a signal ended it
    std::string output;  // standard output and standard error, in the order written
};

// `command` is a line for the shell.
CommandResult runCommand(const std::string& command);

} // namespace testsupport
