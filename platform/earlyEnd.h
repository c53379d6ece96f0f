// An end that somebody else puts to the program before its work is done: Ctrl-C, a terminal that
// closes, a request to end, a reader that has gone. What stands on a disk for the time of the work
// only is removed then, and the process ends as the system has it for that kind of end.
//
// Nothing here is for libraries: how a process ends is its program's own matter.
#pragma once

#include <cstddef>
#include <filesystem>

namespace platform {

// From here on early ends are met as this file says; before, they are the system's alone. Once, by
// the program's first thread. An end that the process was started to pass over, as "nohup" does, is
// passed over.
void meetEarlyEnds() noexcept;

// While it exists an early end removes this file, or this folder with the files in it. It is made
// before the thing is, so that there is no moment between; the thing must have a name that nobody
// else gives to anything. What is not there when the end comes is no matter. For the first thread.
class RemovedAtEarlyEnd {
public:
    enum class Kind { file, folder };

    // A path longer than the system allows, and more of them than a program has at a time, are
    // passed over.
    RemovedAtEarlyEnd(Kind kind, const std::filesystem::path& path);
    ~RemovedAtEarlyEnd();
    RemovedAtEarlyEnd(const RemovedAtEarlyEnd&) = delete;
    RemovedAtEarlyEnd& operator=(const RemovedAtEarlyEnd&) = delete;

    static constexpr std::size_t kMost = 16;

private:
    std::size_t slot_ = kMost; // kMost: none
};

// While it exists an early end waits; the process ends when the last of them is destroyed. Whoever
// asks a second time is not made to wait: what is held up may hang. For the first thread.
class EarlyEndHeldBack {
public:
    EarlyEndHeldBack() noexcept;
    ~EarlyEndHeldBack();
    EarlyEndHeldBack(const EarlyEndHeldBack&) = delete;
    EarlyEndHeldBack& operator=(const EarlyEndHeldBack&) = delete;
};

// While it exists a request to end (Ctrl-C, one of the system's, a terminal that closes) is left to
// the program, which is to end soon of its own accord: see DeviceEvents::wait() in
// platform/deviceEvents.h. Whoever asks a second time is not made to wait. One at a time.
class StopRequest {
public:
    StopRequest() noexcept;
    ~StopRequest();
    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;

    [[nodiscard]] bool isMade() const noexcept;
};

} // namespace platform
