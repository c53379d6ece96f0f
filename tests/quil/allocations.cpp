#include "tests/quil/allocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local bool watching = false;
thread_local int callsSeen = 0;
thread_local int callToFail = 0;

} // namespace

// The array and nothrow forms come here too.
void* operator new(std::size_t size) {
    if (watching && ++callsSeen == callToFail)
        throw std::bad_alloc();
    if (void* const memory = std::malloc(size != 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace fakes {

AllocationWatch::AllocationWatch(int failingCall) noexcept {
    callsSeen = 0;
    callToFail = failingCall;
    watching = true;
}

AllocationWatch::~AllocationWatch() {
    watching = false;
}

int AllocationWatch::calls() const noexcept {
    return callsSeen;
}

} // namespace fakes
