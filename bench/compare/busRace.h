// The rows of the table for whole processes that list the largest bus.
#pragma once

#include "bench/compare/table.h"

#include <vector>

namespace bench {

// Runs tavctl with 200 description files, of which 50 match, and lspci, which matches nothing,
// `rounds` times in turn.
std::vector<Row> raceBuses(int rounds);

} // namespace bench
