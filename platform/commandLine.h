// The words of the command line, and what a program must set right before it prints.
#pragma once

#include <string>
#include <vector>

namespace platform {

// The program's arguments, the program's own name first, in UTF-8. Raises std::bad_alloc.
std::vector<std::string> commandLine(int argc, char** argv);

// Lets standard output and standard error carry UTF-8 and line ends as they are written, to a
// console as to a file, and makes a file that grows beyond the process's limit a failure to write
// like others rather than the process's end. A standard stream that is closed is kept from being
// the next file that is opened: writing to it fails.
void prepareOutput() noexcept;

// Lets standard input give its bytes as they are; otherwise it may give text by the system's
// habits.
void prepareInput() noexcept;

} // namespace platform
