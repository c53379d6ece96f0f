// The rows of the table for what a host pays that has loaded the plug-in: its size, its memory, and
// the time of one question.
#pragma once

#include "bench/compare/table.h"

#include <string>
#include <vector>

namespace bench {

// `dlls` are the plug-in for other systems, of which only the size is told.
std::vector<Row> pluginRows(const std::vector<std::string>& dlls);

} // namespace bench
