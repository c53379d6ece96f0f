// Runs a part of the test in a child process that stops at each of its system calls, and lets the
// test decide what becomes of the call: let it be, fail it, cut it short, or end the process there.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace testfaults {

// A call that the child is about to make.
struct SystemCall {
    long number = 0; // as the kernel counts them
    std::array<std::uint64_t, 6> arguments{};
};

// What is to become of a call.
struct Verdict {
    enum class Kind {
        proceed,
        fail,      // it is not made, and gives the error
        failAfter, // it is made, and gives the error all the same, as a close may
        shorten,   // it is made with the size `size`, the third argument
        kill,      // the process ends before it is made
        signal,    // it is made, and the process gets the signal `error` meanwhile
    };
    Kind kind = Kind::proceed;
    int error = 0;
    std::uint64_t size = 0;
};

using Decide = std::function<Verdict(const SystemCall&)>;

// How the child ended.
struct TracedEnd {
    int exitStatus = -1; // -1: a signal ended it
    int signal = 0;      // which
};

// Runs `body` in a child, which has this process's memory as it is now. Calls that it makes while a
// WatchedPart exists are put to `decide`, those of further threads excepted. The child ends with
// what the body answers, past all that runs at a program's end; what else it has to tell goes
// through a SharedValue. Raises std::runtime_error, with the reason, where a process may not be
// traced.
TracedEnd runTraced(const std::function<int()>& body, const Decide& decide);

// The same with nobody watching. What the body answers; -1 when a signal ended the child.
int runInChild(const std::function<int()>& body);

// In the child: the part whose calls are watched. One at a time.
class WatchedPart {
public:
    WatchedPart();
    ~WatchedPart();
    WatchedPart(const WatchedPart&) = delete;
    WatchedPart& operator=(const WatchedPart&) = delete;
};

// Memory that a process shares with the children that it starts later.
void* allocateShared(std::size_t size);
void releaseShared(void* memory, std::size_t size) noexcept;

// A plain value in such memory, zero at first.
template <typename Value>
class SharedValue {
public:
    SharedValue() : value_(static_cast<Value*>(allocateShared(sizeof(Value)))) {}
    ~SharedValue() { releaseShared(value_, sizeof(Value)); }
    SharedValue(const SharedValue&) = delete;
    SharedValue& operator=(const SharedValue&) = delete;

    Value& operator*() const { return *value_; }
    Value* operator->() const { return value_; }

private:
    Value* value_;
};

} // namespace testfaults
