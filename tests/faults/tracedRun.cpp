#include "tests/faults/tracedRun.h"

#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

namespace testfaults {

namespace {

// Marks go to the tracer as a call that ignores its arguments.
constexpr long kMarkCall = SYS_getppid;
constexpr std::uint64_t kMarkBegins = 0x7A0F417501ULL;
constexpr std::uint64_t kMarkEnds = 0x7A0F417502ULL;

// A child that hangs is ended by its own alarm.
constexpr unsigned kAlarmSeconds = 120;

// Set in the stop's signal where a system call is the reason.
constexpr int kSystemCallStop = SIGTRAP | 0x80;

[[noreturn]] void refuse(const char* what) {
    throw std::runtime_error(std::string("cannot trace a child process: ") + what + ": " +
                             std::strerror(errno) +
                             "; in a container allow ptrace (SYS_PTRACE, or a seccomp profile "
                             "that does not forbid it)");
}

class Tracer {
public:
    Tracer(pid_t child, const Decide& decide) : child_(child), decide_(decide) {}
    ~Tracer() {
        if (child_ < 0)
            return;
        kill(child_, SIGKILL);
        int ignored = 0;
        waitpid(child_, &ignored, 0);
    }
    Tracer(const Tracer&) = delete;
    Tracer& operator=(const Tracer&) = delete;

    TracedEnd run() {
        if (!wait())
            return end_; // without a part to watch
        if (ptrace(PTRACE_SETOPTIONS, child_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) !=
            0)
            refuse("PTRACE_SETOPTIONS");
        int signal = 0;
        while (!done_) {
            // Nobody is there any more to go on after a verdict that kills; waiting tells.
            if (ptrace(PTRACE_SYSCALL, child_, nullptr, signal) != 0 && errno != ESRCH)
                refuse("PTRACE_SYSCALL");
            if (!wait())
                return end_;
            const int stop = WSTOPSIG(status_);
            signal = stop == kSystemCallStop ? 0 : stop;
            if (stop == kSystemCallStop)
                atSystemCall();
        }
        // What follows is nobody's business.
        if (ptrace(PTRACE_DETACH, child_, nullptr, 0) != 0)
            refuse("PTRACE_DETACH");
        while (wait())
            continue;
        return end_;
    }

private:
    // False when the child has ended.
    bool wait() {
        while (waitpid(child_, &status_, 0) < 0) {
            if (errno != EINTR)
                refuse("waitpid");
        }
        if (WIFSTOPPED(status_))
            return true;
        if (WIFEXITED(status_))
            end_.exitStatus = WEXITSTATUS(status_);
        else
            end_.signal = WTERMSIG(status_);
        child_ = -1;
        return false;
    }

    void atSystemCall() {
        user_regs_struct registers{};
        if (ptrace(PTRACE_GETREGS, child_, nullptr, &registers) != 0)
            refuse("PTRACE_GETREGS");
        isEntry_ = !isEntry_;
        const bool changed = isEntry_ ? enter(registers) : leave(registers);
        if (changed && ptrace(PTRACE_SETREGS, child_, nullptr, &registers) != 0)
            refuse("PTRACE_SETREGS");
    }

    // Both tell whether they changed the registers.
    bool enter(user_regs_struct& registers) {
        verdict_ = {};
        SystemCall call;
        call.number = static_cast<long>(registers.orig_rax);
        call.arguments = {registers.rdi, registers.rsi, registers.rdx,
                          registers.r10, registers.r8,  registers.r9};
        if (call.number == kMarkCall && call.arguments[0] == kMarkBegins)
            watching_ = true;
        else if (call.number == kMarkCall && call.arguments[0] == kMarkEnds)
            done_ = true;
        else if (watching_)
            verdict_ = decide_(call);
        switch (verdict_.kind) {
        case Verdict::Kind::fail:
            registers.orig_rax = static_cast<unsigned long long>(-1);
            return true;
        case Verdict::Kind::shorten:
            registers.rdx = verdict_.size;
            return true;
        case Verdict::Kind::kill:
            kill(child_, SIGKILL);
            return false;
        case Verdict::Kind::signal:
            kill(child_, verdict_.error);
            return false;
        case Verdict::Kind::proceed:
        case Verdict::Kind::failAfter:
            break;
        }
        return false;
    }

    bool leave(user_regs_struct& registers) const {
        if (verdict_.kind != Verdict::Kind::fail && verdict_.kind != Verdict::Kind::failAfter)
            return false;
        registers.rax = static_cast<unsigned long long>(-static_cast<long long>(verdict_.error));
        return true;
    }

    pid_t child_;
    const Decide& decide_;
    int status_ = 0;
    bool isEntry_ = false;
    bool watching_ = false;
    bool done_ = false;
    Verdict verdict_;
    TracedEnd end_;
};

} // namespace

int runInChild(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child < 0)
        refuse("fork");
    if (child == 0) {
        alarm(kAlarmSeconds);
        _exit(body());
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            refuse("waitpid");
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TracedEnd runTraced(const std::function<int()>& body, const Decide& decide) {
    constexpr int kNotTraced = 125;
    const pid_t child = fork();
    if (child < 0)
        refuse("fork");
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(errno == EPERM ? kNotTraced : kNotTraced + 1);
        alarm(kAlarmSeconds);
        _exit(body());
    }
    const TracedEnd end = Tracer(child, decide).run();
    if (end.exitStatus == kNotTraced || end.exitStatus == kNotTraced + 1) {
        errno = EPERM;
        refuse("PTRACE_TRACEME");
    }
    return end;
}

// Up to here nobody looks.
WatchedPart::WatchedPart() {
    raise(SIGSTOP);
    syscall(kMarkCall, kMarkBegins);
}

WatchedPart::~WatchedPart() {
    syscall(kMarkCall, kMarkEnds);
}

void* allocateShared(std::size_t size) {
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    return memory;
}

void releaseShared(void* memory, std::size_t size) noexcept {
    munmap(memory, size);
}

} // namespace testfaults
