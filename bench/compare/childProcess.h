// A whole process as a user starts one: from its start to its end.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

struct ChildRun {
    double seconds = 0;
    std::size_t pages = 0; // of memory that it touched, and the system had to find or make
    std::string output;    // of standard output
};

// Runs a program; the first argument is its path. With `keepsOutput`, standard output is read while
// it runs, otherwise it goes nowhere. Raises std::runtime_error when the status is not 0.
ChildRun runChild(const std::vector<std::string>& arguments, bool keepsOutput = false);

} // namespace bench
