#include "tests/support/allocationFaults.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocationsUntilFault = 0; // 0: none is to fail
thread_local bool faulted = false;

bool mustFail() {
    if (allocationsUntilFault == 0 || --allocationsUntilFault != 0)
        return false;
    faulted = true;
    return true;
}

void* allocate(std::size_t size) noexcept {
    return mustFail() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* allocateOrRaise(std::size_t size) {
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) {
    return allocateOrRaise(size);
}
void* operator new[](std::size_t size) {
    return allocateOrRaise(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace testsupport {

AllocationFault::AllocationFault(std::size_t nth) {
    faulted = false;
    allocationsUntilFault = nth;
}

AllocationFault::~AllocationFault() {
    allocationsUntilFault = 0;
}

bool AllocationFault::happened() const {
    return faulted;
}

} // namespace testsupport
