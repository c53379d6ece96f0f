// A number that nobody outside this process can know: what keys a hash of names from a file, so
// that whoever writes the file cannot choose names that collide.
#pragma once

#include <cstdint>

namespace platform {

// Another one at each call. Never waits and never fails: a system that has no random numbers to
// give yet gets one made of the time and of where things stand in memory.
std::uint64_t randomSeed() noexcept;

} // namespace platform
