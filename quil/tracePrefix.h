// What stands before the message of a trace line: "[  zotavpci|       quil\tTrace|  42] ", always
// of the same width.
#pragma once

#include "quil/tErrorSite.h"

#include <cstddef>
#include <cstdint>

namespace nZOQUIL000 {

struct tTracePrefix {
    const char* component = kComponent;
    const char* file = "";
    std::int32_t line = 0;
};

// Length of a whole prefix without its NUL.
inline constexpr std::size_t kTracePrefixLength = 51;

// Writes as much of the prefix as fits into `space` bytes with the NUL that always ends it, and
// answers the position of that NUL. Nothing is written to no space.
char* writeTracePrefix(char* out, std::size_t space, const tTracePrefix& prefix) noexcept;

} // namespace nZOQUIL000
