#include "platform/terminal.h"

#include "platform/windows/systemHeaders.h"

#include <io.h>

namespace platform {

namespace {

HANDLE handleOf(std::FILE* stream) noexcept {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

} // namespace

// Other character devices, as the null device, are no consoles and have no mode.
bool isTerminal(std::FILE* stream) noexcept {
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0;
}

bool showsColour(std::FILE* stream) noexcept {
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0 &&
           SetConsoleMode(handleOf(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

} // namespace platform
