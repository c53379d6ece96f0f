#include "platform/childProgram.h"

#include "platform/earlyEnd.h"
#include "platform/linux/earlyEndChild.h"
#include "platform/linux/interruption.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace platform {

namespace {

// Both ends of a pipe; the program gets copies of those that it is to have.
class Pipe {
public:
    Pipe() {
        if (pipe2(ends_.data(), O_CLOEXEC) != 0)
            code_ = lastSystemCode();
    }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    [[nodiscard]] SystemCode code() const { return code_; }
    [[nodiscard]] int readEnd() const { return ends_[0]; }
    [[nodiscard]] int writeEnd() const { return ends_[1]; }
    void closeEnd(std::size_t end) {
        if (ends_[end] >= 0)
            close(ends_[end]);
        ends_[end] = -1;
    }

private:
    std::array<int, 2> ends_{-1, -1};
    SystemCode code_ = kNoSystemError;
};

// A program that has ended does not read on; the signal that this brings is not for us.
class NoBrokenPipeSignal {
public:
    NoBrokenPipeSignal() noexcept {
        sigemptyset(&only_);
        sigaddset(&only_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &only_, &before_);
        sigset_t pending;
        sigpending(&pending);
        wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    }
    ~NoBrokenPipeSignal() {
        constexpr timespec kNoTime{};
        if (!wasPending_)
            sigtimedwait(&only_, nullptr, &kNoTime);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
    NoBrokenPipeSignal& operator=(const NoBrokenPipeSignal&) = delete;

private:
    sigset_t only_{};
    sigset_t before_{};
    bool wasPending_ = false;
};

bool isForLater(int error) noexcept {
    return error == EINTR || error == EAGAIN;
}

// Writes what the program takes at once; closes the pipe behind the last of it, and when the
// program takes no more.
void writeSome(Pipe& pipe, std::string_view& text) {
    const ssize_t written = write(pipe.writeEnd(), text.data(), text.size());
    if (written > 0)
        text.remove_prefix(static_cast<std::size_t>(written));
    if (text.empty() || (written < 0 && !isForLater(errno)))
        pipe.closeEnd(1);
}

// The same the other way round.
void readSome(Pipe& pipe, std::string& text, std::vector<char>& chunk) {
    const ssize_t size = read(pipe.readEnd(), chunk.data(), chunk.size());
    if (size > 0)
        text.append(chunk.data(), static_cast<std::size_t>(size));
    else if (size == 0 || !isForLater(errno))
        pipe.closeEnd(0);
}

// Both directions at once, as the program is ready for them, until it closes its output.
void converse(Pipe& toProgram, std::string_view input, Pipe& fromProgram, std::string& output) {
    const NoBrokenPipeSignal quiet;
    std::vector<char> chunk(1 << 16);
    fcntl(toProgram.writeEnd(), F_SETFL, O_NONBLOCK);
    if (input.empty())
        toProgram.closeEnd(1);
    while (fromProgram.readEnd() >= 0) {
        std::array<pollfd, 2> ends{pollfd{fromProgram.readEnd(), POLLIN, 0},
                                   pollfd{toProgram.writeEnd(), POLLOUT, 0}};
        if (poll(ends.data(), ends.size(), -1) < 0) {
            if (!isForLater(errno))
                return;
            continue;
        }
        if (ends[1].revents != 0)
            writeSome(toProgram, input);
        if (ends[0].revents != 0)
            readSome(fromProgram, output, chunk);
    }
}

// The file of the program, or empty and why there is none. Only folders that are named from the
// root count: what lies in the folder that somebody works in is not this program's to run.
std::string findProgram(const std::string& name, SystemCode& code) {
    code = ENOENT;
    if (name.find('/') != std::string::npos)
        return name.starts_with('/') ? name : std::string();
    const char* const variable = std::getenv("PATH");
    std::string_view folders = variable == nullptr ? "/usr/bin:/bin" : variable;
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folders.size(), folder.size() + 1));
        if (!folder.starts_with('/'))
            continue;
        std::string file = std::string(folder) + "/" + name;
        struct stat status = {};
        if (stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
            continue;
        if (access(file.c_str(), X_OK) == 0)
            return file;
        code = EACCES;
    }
    return {};
}

SystemCode start(const std::vector<std::string>& words, const Pipe& input, const Pipe& output,
                 pid_t& child) {
    SystemCode code = kNoSystemError;
    const std::string file = findProgram(words.front(), code);
    if (file.empty())
        return code;
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.readEnd(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.writeEnd(), STDOUT_FILENO);
    const int result =
        posix_spawn(&child, file.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return static_cast<SystemCode>(result);
}

// A program that runs, and ends when this one is ended early.
class Child {
public:
    Child(const std::vector<std::string>& words, const Pipe& input, const Pipe& output) {
        const EarlyEndHeldBack untilNamed;
        code_ = start(words, input, output, process_);
        if (code_ == kNoSystemError)
            setChildOfEarlyEnd(process_);
    }
    ~Child() {
        if (code_ == kNoSystemError)
            wait();
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    [[nodiscard]] SystemCode code() const { return code_; }

    // Its status; -1 when it was ended from outside.
    int wait() noexcept {
        code_ = ECHILD;
        // Its number is nobody else's while it has not been asked for its status.
        siginfo_t ended = {};
        pastInterruptions(
            [&] { return waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOWAIT); });
        setChildOfEarlyEnd(0);
        int status = 0;
        if (pastInterruptions([&] { return waitpid(process_, &status, 0); }) < 0)
            return -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t process_ = -1;
    SystemCode code_ = kNoSystemError;
};

} // namespace

ProgramRun runProgram(const std::vector<std::string>& words, std::string_view input) {
    ProgramRun run;
    Pipe toProgram;
    Pipe fromProgram;
    for (const Pipe* pipe : {&toProgram, &fromProgram}) {
        if (pipe->code() != kNoSystemError)
            run.failure = pipe->code();
    }
    if (run.failure != kNoSystemError)
        return run;
    Child child(words, toProgram, fromProgram);
    run.failure = child.code();
    if (run.failure != kNoSystemError)
        return run;
    toProgram.closeEnd(0);
    fromProgram.closeEnd(1);
    converse(toProgram, input, fromProgram, run.output);
    toProgram.closeEnd(1);
    run.exitStatus = child.wait();
    return run;
}

} // namespace platform
