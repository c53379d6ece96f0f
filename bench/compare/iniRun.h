// One contender on one file, in this process: what a child process of the comparison does, so that
// nobody inherits another one's heap.
#pragma once

#include "bench/compare/iniContender.h"
#include "bench/iniTexts.h"

#include <string>

namespace bench {

struct IniFigures {
    double load = 0;     // seconds a load
    double find = 0;     // seconds a look-up of a random key; 0 without a shape
    double copy = 0;     // the same with a copy of its value
    double save = 0;     // seconds a save; 0 for a contender that cannot
    double resident = 0; // bytes of the process after the first load; of a small file, its own
};

// `shape` is that of the file, or null for a file of another make. What the contender saves goes
// over the file.
IniFigures runIni(const IniEntrant& entrant, const std::string& path, const IniShape* shape);

// Seconds that it takes to list a folder of so many files and to load and drop each.
double runIniFolder(const IniEntrant& entrant, const std::string& folder, std::size_t files);

} // namespace bench
