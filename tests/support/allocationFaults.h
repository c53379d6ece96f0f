// Lets the Nth allocation with operator new fail, in the test program and in the libraries that it
// loads. Link tav_test_allocation_faults to have it.
//
//     for (std::size_t nth = 1;; ++nth) {
//         testsupport::AllocationFault fault(nth);
//         call();
//         if (!fault.happened())
//             break; // the call makes nth - 1 allocations
//     }
#pragma once

#include <cstddef>

namespace testsupport {

// While it lives, the nth allocation of this thread from now on, counted from 1, raises
// std::bad_alloc. One at a time.
class AllocationFault {
public:
    explicit AllocationFault(std::size_t nth);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    [[nodiscard]] bool happened() const;
};

} // namespace testsupport
