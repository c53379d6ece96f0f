#include "tests/pxidrivertools/failingNew.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool armed = false;
thread_local int requested = 0;
thread_local int refused = 0;

} // namespace

FailingNew::FailingNew(int request) {
    requested = 0;
    refused = request;
    armed = true;
}

FailingNew::~FailingNew() {
    armed = false;
}

int FailingNew::requests() {
    return requested;
}

void* operator new(std::size_t size) {
    if (armed && ++requested == refused)
        throw std::bad_alloc();
    if (void* const block = std::malloc(size == 0 ? 1 : size))
        return block;
    throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

// Here so that every form comes from one place, whatever the library's forms fall back on.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
