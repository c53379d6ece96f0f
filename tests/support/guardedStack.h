// A thread's stack of a given size with a guard page below it, and somebody else's memory behind
// that.
#pragma once

#include <cstddef>
#include <functional>

namespace testsupport {

// Shared with child processes, so that what one of them did to it can be seen after its end.
class GuardedStack {
public:
    // A whole number of pages.
    explicit GuardedStack(std::size_t bytes);
    ~GuardedStack();
    GuardedStack(const GuardedStack&) = delete;
    GuardedStack& operator=(const GuardedStack&) = delete;

    // Runs the work to its end on a thread of its own that has this stack. The system's part of a
    // thread takes some of it.
    void runThread(const std::function<void()>& work);

    // Runs the work on this stack, without a thread.
    void run(const std::function<void()>& work);

    // How much of the stack has been used so far.
    [[nodiscard]] std::size_t used() const;

    // How many bytes behind the guard page are not what they were.
    [[nodiscard]] std::size_t changedBehindGuard() const;

private:
    unsigned char* memory_;
    std::size_t bytes_;
};

} // namespace testsupport
