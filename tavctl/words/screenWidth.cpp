#include "tavctl/words/screenWidth.h"

#include "platform/terminal.h"

#include <cstdio>

namespace tavctl {

std::size_t screenWidth() {
    constexpr std::size_t kUsual = 80;
    if (const std::size_t width = platform::terminalWidth(stdout))
        return width;
    return platform::isTerminal(stdout) ? kUsual : kUnbounded;
}

} // namespace tavctl
