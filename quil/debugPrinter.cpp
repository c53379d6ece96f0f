#include "quil/debugPrinter.h"

#include "platform/debugOutput.h"

#include <cstdarg>
#include <cstdio>

namespace nZOQUIL000 {

void debugPrint(const char* format, ...) noexcept {
    char text[kDebugTextSize];
    text[0] = '\0'; // in case that nothing can be formatted
    std::va_list arguments;
    va_start(arguments, format);
    static_cast<void>(std::vsnprintf(text, sizeof text, format, arguments));
    va_end(arguments);
    // Not every C library ends a text that it has cut.
    text[sizeof text - 1] = '\0';
    platform::writeDebugOutput(text);
}

} // namespace nZOQUIL000
