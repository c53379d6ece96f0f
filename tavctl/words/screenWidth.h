// How long the lines of a result may be.
#pragma once

#include <cstddef>
#include <limits>

namespace tavctl {

// Lines are as long as they come out: in pipes and files, for programs that read them.
inline constexpr std::size_t kUnbounded = std::numeric_limits<std::size_t>::max();

// In characters: the width of the terminal that standard output leads to, 80 for one that does not
// tell, kUnbounded for anything else.
std::size_t screenWidth();

} // namespace tavctl
