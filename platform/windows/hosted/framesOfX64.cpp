// 64-bit Windows reads the tables from the loaded file.
#include "platform/windows/hosted/frames.h"

namespace platform::hosted {

void registerFrames() noexcept {}

void deregisterFrames() noexcept {}

} // namespace platform::hosted
