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

bool takesEscapes(std::FILE* stream) noexcept {
    return useEscapesOnConsole(handleOf(stream));
}

} // namespace platform
