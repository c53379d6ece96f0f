// Where the system keeps data for every program.
#pragma once

#include <string>
#include <vector>

namespace platform {

// The folders in which packages put data that many programs read, such as lists of names, each with
// its last separator and in the order in which they are looked through; none where there is no such
// habit. Nobody but an administrator can write there. Raises std::bad_alloc.
std::vector<std::string> sharedDataFolders();

} // namespace platform
