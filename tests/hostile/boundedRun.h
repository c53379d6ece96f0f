// Runs a program that must come to an end, and tells what it took.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace testhostile {

struct BoundedResult {
    bool hung = false;    // it was ended for want of an end
    int exitStatus = -1;  // -1 when a signal ended it
    int signal = 0;       // the one that did
    std::string output;   // standard output
    std::string error;    // standard error
    std::size_t peak = 0; // bytes of memory that it really occupied at most
};

// A program that works for longer than `processorSeconds`, or waits for longer than a minute, is
// ended. Raises std::runtime_error when it cannot be started.
BoundedResult runBounded(const std::filesystem::path& program,
                         const std::vector<std::string>& arguments, unsigned processorSeconds = 60);

} // namespace testhostile
