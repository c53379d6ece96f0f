// A signal that one process gives and another waits for, by a name that both know.
#pragma once

#include "platform/windows/uniqueHandle.h"

#include <stdexcept>
#include <string>

namespace testwindows {

struct SignalKind {
    using Handle = HANDLE;
    static Handle none() noexcept { return nullptr; }
    static void close(Handle handle) noexcept { CloseHandle(handle); }
};

// Stays given. What is never given is waited for until the test's own limit of time.
class Signal {
public:
    explicit Signal(const std::string& name)
        : name_(name), handle_(CreateEventA(nullptr, TRUE, FALSE, name.c_str())) {
        if (!handle_)
            throw std::runtime_error("cannot make the signal " + name);
    }
    // A name that no other test has.
    static std::string uniqueName() {
        static int count = 0;
        return "TavTest_" + std::to_string(GetCurrentProcessId()) + "_" + std::to_string(++count);
    }

    [[nodiscard]] const std::string& name() const { return name_; }
    void give() const { SetEvent(handle_.get()); }
    void wait() const { WaitForSingleObject(handle_.get(), INFINITE); }
    [[nodiscard]] bool given() const {
        return WaitForSingleObject(handle_.get(), 0) == WAIT_OBJECT_0;
    }

private:
    std::string name_;
    platform::UniqueHandle<SignalKind> handle_;
};

} // namespace testwindows
