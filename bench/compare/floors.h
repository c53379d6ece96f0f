// What the machine itself needs for the bytes that a contender works on: below that nobody gets.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

// Looking once at every byte of a file that is in memory, for line ends. Seconds.
double memchrSeconds(const std::string& path);

// Opening, reading and closing a file, into memory that is there already.
double readSeconds(const std::string& path);

// Writing that many bytes over a file in one piece.
double writeSeconds(const std::string& path, std::size_t bytes);

// Opening each file, reading 64 bytes of it and closing it.
double headersSeconds(const std::vector<std::string>& paths);

} // namespace bench
