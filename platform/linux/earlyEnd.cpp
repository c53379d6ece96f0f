// The handler runs in the first thread only, which is the one that makes files: between two of its
// system calls, so that whatever has been made has been named here before.
#include "platform/earlyEnd.h"

#include "platform/linux/earlyEndChild.h"
#include "platform/linux/stopDescriptor.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstring>

namespace platform {

namespace {

using Kind = RemovedAtEarlyEnd::Kind;

// SIGPIPE is among them for a reader that has gone.
constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE};

struct Slot {
    std::atomic<bool> isUsed = false;
    Kind kind = Kind::file;
    std::array<char, PATH_MAX> path{};
};

// Nothing that a handler touches is ever taken down.
std::array<Slot, RemovedAtEarlyEnd::kMost> slots;
std::atomic<pid_t> firstThread = 0;
std::atomic<pid_t> child = 0;
std::atomic<int> holders = 0;
std::atomic<int> waitingSignal = 0;
std::atomic<bool> isStopAwaited = false;
std::atomic<bool> isStopMade = false;
std::atomic<int> stopEvent = -1; // readable from the request on
static_assert(std::atomic<pid_t>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

// All of these call only what a signal handler may.

bool removeEntries(int folder) noexcept {
    alignas(dirent64) static std::array<char, 4096> entries;
    bool any = false;
    for (;;) {
        const ssize_t size = getdents64(folder, entries.data(), entries.size());
        if (size <= 0)
            return any;
        for (ssize_t at = 0; at < size;) {
            const auto* const entry =
                reinterpret_cast<const dirent64*>(&entries[static_cast<std::size_t>(at)]);
            at += entry->d_reclen;
            any = unlinkat(folder, entry->d_name, 0) == 0 || any;
        }
    }
}

void removeFolder(const char* path) noexcept {
    const int folder = open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder >= 0) {
        // A listing that entries are taken from may pass some over.
        while (removeEntries(folder))
            lseek(folder, 0, SEEK_SET);
        close(folder);
    }
    rmdir(path);
}

void removeAll() noexcept {
    for (const Slot& slot : slots) {
        if (!slot.isUsed)
            continue;
        if (slot.kind == Kind::folder)
            removeFolder(slot.path.data());
        else
            unlink(slot.path.data());
    }
}

[[noreturn]] void end(int signal) noexcept {
    removeAll();
    if (child != 0)
        kill(child, SIGTERM);
    struct sigaction usual = {};
    usual.sa_handler = SIG_DFL;
    sigaction(signal, &usual, nullptr);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    raise(signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    constexpr int kEndedBySignal = 128; // as shells count
    _exit(kEndedBySignal + signal);     // the first process of a system is not ended by signals
}

// Comes by itself, and more than once: from the terminal and from its shell, at each write.
bool asksTwice(int signal) noexcept {
    return signal != SIGHUP && signal != SIGPIPE;
}

bool isRequest(int signal) noexcept {
    return signal == SIGINT || signal == SIGTERM || signal == SIGHUP;
}

void noteStop() noexcept {
    isStopMade = true;
    const std::uint64_t one = 1;
    static_cast<void>(write(stopEvent, &one, sizeof one) == sizeof one);
}

void meet(int signal) noexcept {
    const int error = errno;
    if (gettid() != firstThread) {
        syscall(SYS_tgkill, getpid(), firstThread.load(), signal);
    } else if (isStopAwaited && isRequest(signal) && !(isStopMade && asksTwice(signal))) {
        noteStop();
    } else if (holders == 0 || (waitingSignal != 0 && asksTwice(signal))) {
        end(signal);
    } else if (waitingSignal == 0) {
        waitingSignal = signal;
    }
    errno = error;
}

} // namespace

void meetEarlyEnds() noexcept {
    firstThread = gettid();
    struct sigaction action = {};
    action.sa_handler = meet;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : kSignals)
        sigaddset(&action.sa_mask, signal);
    for (const int signal : kSignals) {
        struct sigaction old = {};
        if (sigaction(signal, nullptr, &old) == 0 && old.sa_handler == SIG_DFL)
            sigaction(signal, &action, nullptr);
    }
}

void setChildOfEarlyEnd(pid_t process) noexcept {
    child = process;
}

RemovedAtEarlyEnd::RemovedAtEarlyEnd(Kind kind, const std::filesystem::path& path) {
    const std::string& name = path.native();
    for (std::size_t i = 0; i < kMost && slot_ == kMost && name.size() < PATH_MAX; ++i) {
        if (slots[i].isUsed)
            continue;
        slot_ = i;
        slots[i].kind = kind;
        std::memcpy(slots[i].path.data(), name.c_str(), name.size() + 1);
        slots[i].isUsed = true;
    }
}

RemovedAtEarlyEnd::~RemovedAtEarlyEnd() {
    if (slot_ != kMost)
        slots[slot_].isUsed = false;
}

EarlyEndHeldBack::EarlyEndHeldBack() noexcept {
    ++holders;
}

EarlyEndHeldBack::~EarlyEndHeldBack() {
    if (--holders == 0 && waitingSignal != 0)
        end(waitingSignal);
}

StopRequest::StopRequest() noexcept {
    stopEvent = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    isStopMade = false;
    isStopAwaited = true;
}

StopRequest::~StopRequest() {
    isStopAwaited = false;
    close(stopEvent.exchange(-1));
}

bool StopRequest::isMade() const noexcept {
    return isStopMade;
}

int stopDescriptor() noexcept {
    return stopEvent;
}

} // namespace platform
