#include "tests/support/allocationFaults.h"

#include "tests/support/allocationPoint.h"

#include <cstdlib>
#include <new>

namespace {

using testsupport::AllocationKind;

thread_local std::size_t allocationsUntilFault = 0; // 0: none is to fail
thread_local bool faulted = false;
thread_local AllocationKind faultedKind = AllocationKind::operatorNew;
thread_local unsigned partsOfAllocations = 0;

void* allocate(std::size_t size) noexcept {
    if (testsupport::allocationMustFail(AllocationKind::operatorNew))
        return nullptr;
    const testsupport::PartOfAllocation part;
    return std::malloc(size == 0 ? 1 : size);
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

bool allocationMustFail(AllocationKind kind) noexcept {
    if (partsOfAllocations != 0 || allocationsUntilFault == 0 || --allocationsUntilFault != 0)
        return false;
    faulted = true;
    faultedKind = kind;
    return true;
}

PartOfAllocation::PartOfAllocation() noexcept {
    ++partsOfAllocations;
}

PartOfAllocation::~PartOfAllocation() {
    --partsOfAllocations;
}

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

AllocationKind AllocationFault::kind() const {
    return faultedKind;
}

} // namespace testsupport
