// Reads files without the cost of formatted streams. Private to this room.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace pcibus {

// A path for messages, in UTF-8 on every system.
std::string pathText(const std::filesystem::path& path);

// Both open the file, read and close it, and raise BusError ("file: reason") on failure.

// The whole file, whatever its size says: pipes and special files too.
std::string readWholeFile(const std::filesystem::path& file);

// Asks the system for no byte more than fits `result`, and answers how many there were.
std::size_t readFirstBytes(const std::filesystem::path& file, std::span<std::uint8_t> result);

} // namespace pcibus
