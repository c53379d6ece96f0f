#include "platform/terminal.h"

#include "platform/windows/console.h"

#include <io.h>

namespace platform {

namespace {

HANDLE handleOf(std::FILE* stream) noexcept {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

} // namespace

// The C library takes every device for a terminal.
bool isTerminal(std::FILE* stream) noexcept {
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0;
}

std::size_t terminalWidth(std::FILE* stream) noexcept {
    CONSOLE_SCREEN_BUFFER_INFO buffer{};
    if (GetConsoleScreenBufferInfo(handleOf(stream), &buffer) == 0)
        return 0;
    // A character in the last column moves the cursor to the next line.
    const int width = buffer.srWindow.Right - buffer.srWindow.Left;
    return width > 0 ? static_cast<std::size_t>(width) : 0;
}

bool takesEscapes(std::FILE* stream) noexcept {
    return useEscapesOnConsole(handleOf(stream));
}

} // namespace platform
