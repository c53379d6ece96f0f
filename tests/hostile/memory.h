// How much memory this process has in use, and what a child process may take.
#pragma once

#include <cstddef>

namespace testhostile {

inline constexpr std::size_t kMegabyte = std::size_t{1} << 20;

// Bytes that are allocated and not freed, in all of the process.
std::size_t liveBytes();

// The most memory that this process has really occupied so far.
std::size_t peakResidentBytes();

// A bound on resident memory for a program that works on this many bytes of input and may keep
// `perByte` bytes for each: what any program takes is added, and what sanitizers need.
std::size_t memoryBound(std::size_t inputBytes, std::size_t perByte);

} // namespace testhostile
