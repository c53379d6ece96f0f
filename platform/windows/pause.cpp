#include "platform/pause.h"

#include "platform/windows/systemHeaders.h"

namespace platform {

void pause(std::chrono::milliseconds time) noexcept {
    Sleep(static_cast<DWORD>(time.count()));
}

} // namespace platform
