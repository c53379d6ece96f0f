// What a process has taken of the system, in figures that Wine gives as Windows does: counted by
// taking and by walking, not asked for. (Wine's own figure of private bytes is the memory that is
// resident, which comes and goes.)
#pragma once

#include <cstddef>

namespace testwindows {

struct ProcessResources {
    std::size_t freeSlots = 0;    // of thread-local storage, which a process has 1,088 of
    std::size_t handles = 0;      // open ones
    std::size_t modules = 0;      // libraries that are loaded
    std::size_t heapBytes = 0;    // in use, in all of the process's heaps
    std::size_t privateBytes = 0; // committed, of this process alone: heaps, stacks and the like
};

ProcessResources processResources();

} // namespace testwindows
