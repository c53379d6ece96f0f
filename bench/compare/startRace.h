// The rows of the table for what a short command costs, which is mostly its start: counted, since
// its time is noise.
#pragma once

#include "bench/compare/table.h"

#include <vector>

namespace bench {

// Runs tavctl and lspci on a bus of 24 functions, as sysfs files. valgrind counts instructions,
// those of the system's calls left out.
std::vector<Row> raceStarts();

} // namespace bench
