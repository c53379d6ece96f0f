// The rows of the table for what a host pays that has loaded the plug-in: its size, its memory, and
// the time of one question.
#pragma once

#include "bench/compare/table.h"

#include <vector>

namespace bench {

std::vector<Row> pluginRows();

} // namespace bench
