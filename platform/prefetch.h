// Asks the processor for memory ahead of its use.
#pragma once

#ifndef __GNUC__
#include <xmmintrin.h>
#endif

namespace platform {

// Starts fetching what stands there and does not wait for it. Any address will do.
inline void prefetch(const void* place) noexcept {
#ifdef __GNUC__
    __builtin_prefetch(place);
#else
    _mm_prefetch(static_cast<const char*>(place), _MM_HINT_T0);
#endif
}

} // namespace platform
