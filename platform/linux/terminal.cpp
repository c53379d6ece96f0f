#include "platform/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace platform {

bool isTerminal(std::FILE* stream) noexcept {
    return isatty(fileno(stream)) == 1;
}

bool takesEscapes(std::FILE* stream) noexcept {
    const char* const type = std::getenv("TERM");
    return isTerminal(stream) && type != nullptr && std::string_view(type) != "dumb";
}

std::size_t terminalWidth(std::FILE* stream) noexcept {
    winsize size{};
    return ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

} // namespace platform
