// Statuses of asking the system for its devices. zoquilerr_memoryFull and the like, which every
// layer may report, stand in tErrorStatus.h.
#pragma once

#include <cstdint>

namespace nZOQUIL000 {

inline constexpr std::int32_t kQuilErrDeviceQuery = -52006;    // a query of a device failed
inline constexpr std::int32_t kQuilErrBufferTooSmall = -52019; // a value is longer than its buffer

} // namespace nZOQUIL000
