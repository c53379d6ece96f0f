// A process that initialises the plug-in again and again, as a program of its own that a test can
// kill: what the test and the program agree on.
//
//     neighbour PLUGIN BUSES JOURNAL FIRST END
//
// Cycle number n of FIRST to END - 1 works on the dump BUSES followed by n % kBuses, and leaves one
// line in JOURNAL when it is over: n, initialize's status, and the terminal names.
#pragma once

namespace testhostile {

inline constexpr unsigned kBuses = 3;

} // namespace testhostile
