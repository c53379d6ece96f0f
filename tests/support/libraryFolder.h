// Where libraries of a bare name are found.
#pragma once

#include <filesystem>

namespace testsupport {

// Lets the libraries of this process find others in the folder. On Linux they look beside
// themselves anyway; on Windows they look beside the program, and then where they are told to.
void findLibrariesIn(const std::filesystem::path& folder);

// The name that a library, or a program, has on this system.
std::string libraryName(const std::string& name);
std::string programName(const std::string& name);

} // namespace testsupport
