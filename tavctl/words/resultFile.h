// Where a command's result goes: to a file that is named, else to standard output.
#pragma once

#include <string>

namespace tavctl {

// Writes the whole text; a file that cannot be written whole is removed again, a device is not.
// Raises FailureException.
void writeResult(const std::string& text, const std::string& file);

} // namespace tavctl
