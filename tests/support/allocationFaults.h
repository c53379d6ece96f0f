// Lets the Nth allocation fail, in the test program and in the libraries that it loads: with
// operator new where tav_test_allocation_faults is linked; where tav_test_c_allocation_faults is
// linked as well, with the C library's functions too, and those of the library's own allocations.
//
//     for (std::size_t nth = 1;; ++nth) {
//         testsupport::AllocationFault fault(nth);
//         call();
//         if (!fault.happened())
//             break; // the call makes nth - 1 allocations
//     }
#pragma once

#include <cstddef>
#include <cstdint>

namespace testsupport {

enum class AllocationKind : std::uint8_t { operatorNew, malloc, calloc, realloc, aligned };

// While it lives, the nth allocation of this thread from now on, counted from 1, fails: operator
// new raises std::bad_alloc, the others return null. One at a time.
class AllocationFault {
public:
    explicit AllocationFault(std::size_t nth);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    [[nodiscard]] bool happened() const;
    // Which function the failed allocation was made with.
    [[nodiscard]] AllocationKind kind() const;
};

// How many blocks of memory are in use, of whoever allocated them but the system's loader, which
// keeps some for later. With tav_test_c_allocation_faults only, in a program of one thread.
std::int64_t liveAllocations();

} // namespace testsupport
