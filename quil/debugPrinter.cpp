#include "quil/debugPrinter.h"

#include "platform/debugOutput.h"

#include <cstdarg>
#include <cstdio>

namespace nZOQUIL000 {

void debugPrint(const char* format, ...) noexcept {
    char text[kDebugTextSize];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (length < 0)
        return;
    // Not every C library ends a text that it has cut.
    text[sizeof text - 1] = '\0';
    platform::writeDebugOutput(text);
}

} // namespace nZOQUIL000
