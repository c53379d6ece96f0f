// What to wait at for a request to end (see StopRequest in platform/earlyEnd.h). Private to this
// folder.
#pragma once

namespace platform {

// Readable from the request on; negative while nobody awaits one.
int stopDescriptor() noexcept;

} // namespace platform
