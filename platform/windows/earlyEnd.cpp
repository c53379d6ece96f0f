// The system tells of an early end in a thread of its own, while the others run on: whoever gets
// the gate to end the process keeps it, and the first thread stops where it next makes or forgets
// something, or holds ends back.
#include "platform/earlyEnd.h"

#include "platform/windows/console.h"
#include "platform/windows/stopEvent.h"

#include <array>
#include <mutex>
#include <system_error>

namespace platform {

namespace {

namespace fs = std::filesystem;
using Kind = RemovedAtEarlyEnd::Kind;

// How the system itself ends a process for Ctrl-C.
constexpr UINT kEndStatus = 0xC000013A;

struct Slot {
    bool isUsed = false;
    Kind kind = Kind::file;
    fs::path path;
};

struct State {
    std::mutex gate;
    std::array<Slot, RemovedAtEarlyEnd::kMost> slots;
    int holders = 0;
    bool isWaiting = false; // an end, for the holders
    // Made once, and set from a request on.
    HANDLE stopEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    bool isStopAwaited = false;
    bool isStopMade = false;
};

// Never taken down: the system's thread may come at any time.
State& state() {
    static State* const only = new State;
    return *only;
}

bool isGone(const Slot& slot) {
    std::error_code error;
    if (slot.kind == Kind::folder)
        fs::remove_all(slot.path, error);
    else
        fs::remove(slot.path, error);
    return !error;
}

// What the first thread has open cannot be removed before it closes it. The system does not wait
// for long.
void removeAll(const State& all) {
    constexpr int kTries = 200;
    constexpr DWORD kMilliseconds = 10;
    for (int tried = 0; tried < kTries; ++tried) {
        bool done = true;
        for (const Slot& slot : all.slots)
            done = (!slot.isUsed || isGone(slot)) && done;
        if (done)
            return;
        Sleep(kMilliseconds);
    }
}

// Answers the system: true when the process is to go on. After any other answer, and for a console
// that closes after each, the system ends it.
BOOL WINAPI meet(DWORD event) {
    State& all = state();
    all.gate.lock();
    if (all.isStopAwaited && !all.isStopMade) {
        all.isStopMade = true;
        SetEvent(all.stopEvent);
    } else if (all.holders == 0 || all.isWaiting) {
        removeAll(all);
        restoreConsole();
        return FALSE; // with the gate shut
    } else {
        all.isWaiting = true;
    }
    all.gate.unlock();
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(INFINITE); // the last holder, or whoever was asked, ends the process meanwhile
    return TRUE;
}

} // namespace

void meetEarlyEnds() noexcept {
    state();
    SetConsoleCtrlHandler(meet, TRUE);
}

RemovedAtEarlyEnd::RemovedAtEarlyEnd(Kind kind, const fs::path& path) {
    State& all = state();
    const std::lock_guard lock(all.gate);
    for (std::size_t i = 0; i < kMost && slot_ == kMost; ++i) {
        if (all.slots[i].isUsed)
            continue;
        all.slots[i] = {true, kind, path};
        slot_ = i;
    }
}

RemovedAtEarlyEnd::~RemovedAtEarlyEnd() {
    State& all = state();
    const std::lock_guard lock(all.gate);
    if (slot_ != kMost)
        all.slots[slot_].isUsed = false;
}

EarlyEndHeldBack::EarlyEndHeldBack() noexcept {
    State& all = state();
    const std::lock_guard lock(all.gate);
    ++all.holders;
}

EarlyEndHeldBack::~EarlyEndHeldBack() {
    State& all = state();
    all.gate.lock();
    if (--all.holders == 0 && all.isWaiting) {
        removeAll(all);
        restoreConsole();
        ExitProcess(kEndStatus);
    }
    all.gate.unlock();
}

StopRequest::StopRequest() noexcept {
    State& all = state();
    const std::lock_guard lock(all.gate);
    ResetEvent(all.stopEvent);
    all.isStopMade = false;
    all.isStopAwaited = true;
}

StopRequest::~StopRequest() {
    State& all = state();
    const std::lock_guard lock(all.gate);
    all.isStopAwaited = false;
}

bool StopRequest::isMade() const noexcept {
    State& all = state();
    const std::lock_guard lock(all.gate);
    return all.isStopMade;
}

HANDLE stopEvent() noexcept {
    return state().stopEvent;
}

} // namespace platform
