// A process that initialises the plug-in again and again, as a program of its own that a test can
// kill: what the test and the program agree on.
//
//     neighbour PLUGIN BUSES JOURNAL EPOCHS FIRST END
//
// Cycle number n of FIRST to END - 1 works on the dump BUSES followed by n % kBuses, and leaves one
// line in JOURNAL when it is over: n, the epoch at its start, initialize's status, and the terminal
// names. EPOCHS is a file of one std::uint64_t that the test counts up.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>

namespace testhostile {

inline constexpr unsigned kBuses = 3;

using Epoch = std::atomic<std::uint64_t>;

// The number in the file, for as long as the process lives. Raises std::runtime_error.
Epoch& mapEpoch(const std::filesystem::path& file);

} // namespace testhostile
