// The floor under everything that reads text: one pass over the bytes that only looks for line
// ends.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace bench {

inline std::size_t countLineEnds(std::string_view text) {
    std::size_t lines = 0;
    while (!text.empty()) {
        const void* const found = std::memchr(text.data(), '\n', text.size());
        if (found == nullptr)
            break;
        ++lines;
        text.remove_prefix(static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) +
                           1);
    }
    return lines;
}

} // namespace bench
