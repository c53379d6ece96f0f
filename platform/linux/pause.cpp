#include "platform/pause.h"

#include <thread>

namespace platform {

void pause(std::chrono::milliseconds time) noexcept {
    std::this_thread::sleep_for(time);
}

} // namespace platform
