// What the headers of a program or library for Windows say of it: its target, what the loader may
// do with it, and its tables of imports and exports.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>

namespace testwindows {

struct PeFile {
    std::uint16_t machine = 0;            // IMAGE_FILE_MACHINE_...
    std::uint16_t characteristics = 0;    // IMAGE_FILE_...
    std::uint16_t dllCharacteristics = 0; // IMAGE_DLLCHARACTERISTICS_...
    std::size_t relocationBytes = 0;
    std::map<std::string, std::set<std::string>> imports; // library in lower case -> functions
    std::multiset<std::string> exports;
    std::size_t exportsByNumberOnly = 0;
};

// Raises std::runtime_error for a file that cannot be read or is no such program.
PeFile readPeFile(const std::filesystem::path& file);

} // namespace testwindows
