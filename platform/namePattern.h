// Matches file names against the patterns of directory listings.
#pragma once

#include <string_view>

namespace platform {

// "*" stands for any number of characters, "?" for one character of UTF-8 (or one byte that is
// none); every other character for itself, in its exact case. A leading dot of the name must be
// written out in the pattern. The time taken grows with the product of the two lengths at most.
bool matchesNamePattern(std::string_view name, std::string_view pattern) noexcept;

} // namespace platform
