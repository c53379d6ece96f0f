// The C library's functions that allocate, in the program's own version: every module of the
// process calls these. Behind them stands the sanitizer's version where there is one, else the
// library's.
#include "tests/support/allocationPoint.h"
#include "tests/support/linux/loaderBlocks.h"

#include <cerrno>
#include <cstdlib>

extern "C" {
// The names are the system's.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
__attribute__((weak)) void* __interceptor_malloc(std::size_t size);
__attribute__((weak)) void* __interceptor_calloc(std::size_t count, std::size_t size);
__attribute__((weak)) void* __interceptor_realloc(void* block, std::size_t size);
__attribute__((weak)) void* __interceptor_memalign(std::size_t alignment, std::size_t size);
__attribute__((weak)) void __interceptor_free(void* block);
}

namespace {

using testsupport::AllocationKind;
using testsupport::allocationMustFail;
using testsupport::LoaderBlocks;

// Plain: tests that count have one thread.
constinit std::int64_t live = 0;
constinit LoaderBlocks loaderBlocks;

void* outOfMemory() noexcept {
    errno = ENOMEM;
    return nullptr;
}

void* arrived(void* block, const void* caller) noexcept {
    if (block != nullptr && !loaderBlocks.arrived(block, caller))
        ++live;
    return block;
}

void leaves(const void* block) noexcept {
    if (block != nullptr && !loaderBlocks.left(block))
        --live;
}

void* allocateAligned(std::size_t alignment, std::size_t size, const void* caller) noexcept {
    if (allocationMustFail(AllocationKind::aligned))
        return outOfMemory();
    void* const block = __interceptor_memalign != nullptr ? __interceptor_memalign(alignment, size)
                                                          : __libc_memalign(alignment, size);
    return arrived(block, caller);
}

} // namespace

#define TAV_REPLACES extern "C" __attribute__((visibility("default")))

TAV_REPLACES void* malloc(std::size_t size) noexcept {
    if (allocationMustFail(AllocationKind::malloc))
        return outOfMemory();
    void* const block =
        __interceptor_malloc != nullptr ? __interceptor_malloc(size) : __libc_malloc(size);
    return arrived(block, __builtin_return_address(0));
}

TAV_REPLACES void* calloc(std::size_t count, std::size_t size) noexcept {
    if (allocationMustFail(AllocationKind::calloc))
        return outOfMemory();
    void* const block = __interceptor_calloc != nullptr ? __interceptor_calloc(count, size)
                                                        : __libc_calloc(count, size);
    return arrived(block, __builtin_return_address(0));
}

TAV_REPLACES void* realloc(void* block, std::size_t size) noexcept {
    const bool isFree = block != nullptr && size == 0;
    if (!isFree && allocationMustFail(AllocationKind::realloc))
        return outOfMemory();
    void* const result = __interceptor_realloc != nullptr ? __interceptor_realloc(block, size)
                                                          : __libc_realloc(block, size);
    if (result == nullptr && !isFree)
        return nullptr; // the block is as it was
    leaves(block);
    return arrived(result, __builtin_return_address(0));
}

TAV_REPLACES void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return allocateAligned(alignment, size, __builtin_return_address(0));
}

TAV_REPLACES void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return allocateAligned(alignment, size, __builtin_return_address(0));
}

TAV_REPLACES int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    const int before = errno;
    void* const result = allocateAligned(alignment, size, __builtin_return_address(0));
    errno = before;
    if (result == nullptr)
        return ENOMEM;
    *block = result;
    return 0;
}

TAV_REPLACES void free(void* block) noexcept {
    leaves(block);
    if (__interceptor_free != nullptr)
        __interceptor_free(block);
    else
        __libc_free(block);
}

namespace testsupport {

std::int64_t liveAllocations() {
    loaderBlocks.findLoader();
    return live;
}

} // namespace testsupport
