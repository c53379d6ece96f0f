#include "platform/terminal.h"

#include "platform/windows/systemHeaders.h"

#include <io.h>

namespace platform {

bool isTerminal(std::FILE* stream) noexcept {
    return _isatty(_fileno(stream)) != 0;
}

bool showsColour(std::FILE* stream) noexcept {
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    DWORD mode = 0;
    return isTerminal(stream) && GetConsoleMode(handle, &mode) &&
           SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

} // namespace platform
