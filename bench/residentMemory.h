// How much memory this process has, as the system counts it.
#pragma once

#include <malloc.h>

#include <cstddef>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

namespace bench {

inline double residentBytes() {
    std::ifstream status("/proc/self/smaps_rollup"); // counted; "status" is some pages off
    for (std::string line; std::getline(status, line);) {
        unsigned long kilobytes = 0;
        if (std::sscanf(line.c_str(), "Rss: %lu kB", &kilobytes) == 1)
            return static_cast<double>(kilobytes) * 1024;
    }
    throw std::runtime_error("the system does not say how much memory is resident");
}

// Allocated and not freed.
inline std::size_t heapBytesInUse() {
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

} // namespace bench
