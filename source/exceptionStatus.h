// The one place where an exception becomes a status.
#pragma once

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0 {

// The status of the exception in flight; to be called from a catch block. A zoerr::Exception gives
// its own, std::out_of_range kTavManErrInvalidParam, anything else kTavManErrSoftwareFault.
std::int32_t statusOfCurrentException() noexcept;

} // namespace nZoTavManagerPciPlugin_15_0
