// What to wait at for a request to end (see StopRequest in platform/earlyEnd.h). Private to this
// folder.
#pragma once

#include "platform/windows/systemHeaders.h"

namespace platform {

// Set from the request on; null where the system has none left.
HANDLE stopEvent() noexcept;

} // namespace platform
