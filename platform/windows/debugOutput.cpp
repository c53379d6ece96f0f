#include "platform/debugOutput.h"

#include "platform/windows/systemHeaders.h"

namespace platform {

void writeDebugOutput(const char* text) noexcept {
    OutputDebugStringA(text);
}

} // namespace platform
