// Waiting for a moment.
#pragma once

#include <chrono>

namespace platform {

// Gives the processor away for at least this long. Not by the language's own threads, which on
// Windows bring a library of threads along that a plug-in cannot be unloaded with.
void pause(std::chrono::milliseconds time) noexcept;

} // namespace platform
