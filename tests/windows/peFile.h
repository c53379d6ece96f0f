// What the headers of a program or library for Windows say of it: its target, what the loader may
// do with it, and its tables of imports and exports.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace testwindows {

struct PeSection {
    std::string name;
    std::size_t address = 0; // counted from where the file is loaded
    std::size_t bytes = 0;
};

struct PeFile {
    std::uint16_t machine = 0;            // IMAGE_FILE_MACHINE_...
    std::uint16_t characteristics = 0;    // IMAGE_FILE_...
    std::uint16_t dllCharacteristics = 0; // IMAGE_DLLCHARACTERISTICS_...
    std::uint32_t linkedAt = 0;           // seconds since 1970, in the header
    std::uint32_t exportsMadeAt = 0;      // the same, in the table of exports
    std::uint32_t checksum = 0;           // of the whole file, in the header
    std::size_t relocationBytes = 0;
    std::size_t loadConfigurationBytes = 0;
    std::size_t imageBytes = 0;                           // what the loader sets aside
    std::size_t sectionAlignment = 0;                     // to which each section is filled up
    std::vector<PeSection> sections;                      // in the order of the file's table
    std::map<std::string, std::set<std::string>> imports; // library in lower case -> functions
    std::multiset<std::string> exports;
    std::size_t exportsByNumberOnly = 0;
};

// Raises std::runtime_error for a file that cannot be read or is no such program.
PeFile readPeFile(const std::filesystem::path& file);

} // namespace testwindows
