#include "platform/largeBlock.h"

#include <cstdlib>

namespace platform {

// Large pages need a privilege here that hosts do not have.
void* allocateLargeBlock(std::size_t size) noexcept {
    return std::malloc(size);
}

} // namespace platform
