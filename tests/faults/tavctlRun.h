// The program whole, in a child process that stops at its system calls.
#pragma once

#include "tests/faults/tracedRun.h"

#include <string>
#include <vector>

namespace testfaults {

// Runs tavctl with these words behind its own name. It says nothing: both outputs go nowhere.
TracedEnd runTavctl(const std::vector<std::string>& words, const Decide& decide);

} // namespace testfaults
