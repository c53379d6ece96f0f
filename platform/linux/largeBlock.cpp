#include "platform/largeBlock.h"

#include <sys/mman.h>

#include <cstdlib>

namespace platform {

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

} // namespace

void* allocateLargeBlock(std::size_t size) noexcept {
    void* block = nullptr;
    if (posix_memalign(&block, kLargePage, size) != 0)
        return nullptr;
    // What does not fill a large page stays in small ones. A system without large pages refuses,
    // which does no harm.
    madvise(block, size / kLargePage * kLargePage, MADV_HUGEPAGE);
    return block;
}

} // namespace platform
