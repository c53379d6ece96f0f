// What the plug-in lists, line by line, and how two listings compare.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace testfaults {

using Lines = std::vector<std::string>;

Lines linesOf(const std::string& listing);

// The lines of the whole in order, some left out.
bool isPartOf(const Lines& part, const Lines& whole);

// The terminal names of a listing of runCycle's.
std::set<std::string> namesIn(const Lines& listing);

} // namespace testfaults
