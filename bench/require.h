// What a benchmark relies on: a figure for work that was not done would be worse than none.
#pragma once

#include <stdexcept>
#include <string>

namespace bench {

// Ends the program with this reason when the condition does not hold.
inline void require(bool condition, const std::string& what) {
    if (!condition)
        throw std::runtime_error(what);
}

} // namespace bench
