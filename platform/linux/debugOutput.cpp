#include "platform/debugOutput.h"

#include <cstdio>

namespace platform {

void writeDebugOutput(const char* text) noexcept {
    std::fputs(text, stderr);
}

} // namespace platform
