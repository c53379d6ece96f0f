#include "quil/tConsoleTraceDestination.h"

#include "quil/debugPrinter.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace nZOQUIL000 {

namespace {

constexpr std::string_view kDescription = " --destination quil";

} // namespace

void tConsoleTraceDestination::writeCounted(const char* text, std::uint32_t length) noexcept {
    // The printer cuts there anyway, and a precision has a largest value.
    constexpr std::uint32_t kLongest = kDebugTextSize - 1;
    char format[16];
    std::snprintf(format, sizeof format, "%%.%us",
                  static_cast<unsigned>(std::min(length, kLongest)));
    debugPrint(format, text);
}

void tConsoleTraceDestination::write(const char* text) noexcept {
    debugPrint("%s", text);
}

char* tConsoleTraceDestination::describe(char* buffer, std::int32_t capacity,
                                         std::uint32_t* requiredSize) noexcept {
    if (requiredSize)
        *requiredSize = static_cast<std::uint32_t>(kDescription.size() + 1);
    if (capacity <= 0)
        return buffer;
    const std::size_t copied = kDescription.copy(buffer, static_cast<std::size_t>(capacity) - 1);
    buffer[copied] = '\0';
    return buffer + copied;
}

} // namespace nZOQUIL000
