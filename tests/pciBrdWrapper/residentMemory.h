// How much memory this process really occupies.
#pragma once

#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>

// Reads the system's own account of the process.
inline std::size_t residentBytes() {
    std::ifstream file("/proc/self/status");
    for (std::string word; file >> word;) {
        std::size_t kilobytes = 0;
        if (word == "VmRSS:" && file >> kilobytes)
            return kilobytes * 1024;
    }
    throw std::runtime_error("the system does not tell how much memory is occupied");
}
