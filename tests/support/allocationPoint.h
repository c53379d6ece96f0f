// Where an allocation asks whether it is the one that is to fail. For those who replace the
// functions that allocate; tests use allocationFaults.h.
#pragma once

#include "tests/support/allocationFaults.h"

namespace testsupport {

// Counts the allocation. True when it must fail.
bool allocationMustFail(AllocationKind kind) noexcept;

// While it lives, allocations of this thread are not counted: they are part of one that was.
class PartOfAllocation {
public:
    PartOfAllocation() noexcept;
    ~PartOfAllocation();
    PartOfAllocation(const PartOfAllocation&) = delete;
    PartOfAllocation& operator=(const PartOfAllocation&) = delete;
};

} // namespace testsupport
