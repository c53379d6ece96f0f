#include "platform/commandLine.h"

namespace platform {

std::vector<std::string> commandLine(int argc, char** argv) {
    return {argv, argv + argc};
}

void prepareOutput() noexcept {}

} // namespace platform
