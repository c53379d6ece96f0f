#include "platform/commandLine.h"

#include <csignal>

namespace platform {

std::vector<std::string> commandLine(int argc, char** argv) {
    return {argv, argv + argc};
}

void prepareOutput() noexcept {
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace platform
