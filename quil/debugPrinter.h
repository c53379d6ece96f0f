// Formatted text for whoever debugs the process.
#pragma once

#include <cstddef>

namespace nZOQUIL000 {

// Size of the buffer that a message is formatted into, on the stack; what is longer is cut.
inline constexpr std::size_t kDebugTextSize = 512;

// Formats as std::printf does and hands the text on in one call. Of a format that cannot be carried
// out to its end, the text up to there is handed on.
[[gnu::format(printf, 1, 2)]] void debugPrint(const char* format, ...) noexcept;

} // namespace nZOQUIL000
