// A console without a window, for programs that behave otherwise where a person looks on.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace testwindows {

// Runs the program in a console of its own, in which its standard streams are the console's, and
// answers its exit status. Raises std::runtime_error when that cannot be had.
int runInConsole(const std::filesystem::path& program, const std::vector<std::string>& arguments);

} // namespace testwindows
