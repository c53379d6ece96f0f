// Counts what the calling thread allocates with operator new while an object of this class lives,
// and can make one allocation fail.
#pragma once

namespace fakes {

class AllocationWatch {
public:
    explicit AllocationWatch(int failingCall = 0) noexcept; // counted from 1; 0 for none
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    [[nodiscard]] int calls() const noexcept;
};

} // namespace fakes
