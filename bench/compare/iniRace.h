// The INI rows of the table.
#pragma once

#include "bench/compare/table.h"

#include <string>
#include <vector>

namespace bench {

// Runs every contender on every input, `rounds` times in turn, each in a process of its own:
// `program` is this one, which must answer "--ini ENTRANT INPUT FILE" by runIniChild() and
// "--folder ENTRANT FOLDER" by runIniFolderChild().
std::vector<Row> raceInis(const std::string& program, int rounds);

// Prints the figures of one contender (by number) on one input (by number).
void runIniChild(std::size_t entrant, std::size_t input, const std::string& path);

// The same of one contender on a folder of descriptions.
void runIniFolderChild(std::size_t entrant, const std::string& folder);

} // namespace bench
