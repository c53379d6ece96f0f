// The plug-in's own status codes where its classes raise them, and the helper that raises them with
// the record of the calling line.
#pragma once

#include "include/tavPlugin.h"
#include "quil/zoerr.h"

#include <cstdint>

namespace nZoTavManagerPciPlugin_15_0 {

// Raises one of the plug-in's own codes from the source file `file`.
[[noreturn]] inline void raiseSoftwareFault(const char* file, const char* message = nullptr,
                                            std::int32_t line = __builtin_LINE()) {
    zoerr::raise(kTavManErrSoftwareFault,
                 nZOQUIL000::siteHere(file, "kTavManErrSoftwareFault", line), message);
}

[[noreturn]] inline void raiseInvalidParam(const char* file, const char* message = nullptr,
                                           std::int32_t line = __builtin_LINE()) {
    zoerr::raise(kTavManErrInvalidParam, nZOQUIL000::siteHere(file, "kTavManErrInvalidParam", line),
                 message);
}

} // namespace nZoTavManagerPciPlugin_15_0
