// Where the running program stands.
#pragma once

#include <string>

namespace platform {

// The folder of the running program's file with its last separator; empty when it cannot be told.
// Raises std::bad_alloc.
std::string programFolder();

} // namespace platform
