#include "platform/childProgram.h"

#include <fcntl.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <thread>

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
void writeWhole(int descriptor, std::string_view text) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            return;
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
    }
}

void readWhole(int descriptor, std::string& text) {
    std::vector<char> chunk(1 << 16);
    for (;;) {
        const ssize_t size = read(descriptor, chunk.data(), chunk.size());
        if (size == 0 || (size < 0 && errno != EINTR))
            return;
        if (size > 0)
            text.append(chunk.data(), static_cast<std::size_t>(size));
    }
}

SystemCode start(const std::vector<std::string>& words, const Pipe& input, const Pipe& output,
                 pid_t& child) {
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
        posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return static_cast<SystemCode>(result);
}

} // namespace

ProgramRun runProgram(const std::vector<std::string>& words, std::string_view input) {
    ProgramRun run;
    Pipe toProgram;
    Pipe fromProgram;
    for (const Pipe* pipe : {&toProgram, &fromProgram}) {
        if (pipe->code() != kNoSystemError)
            run.failure = pipe->code();
    }
    pid_t child = -1;
    if (run.failure == kNoSystemError)
        run.failure = start(words, toProgram, fromProgram, child);
    if (run.failure != kNoSystemError)
        return run;
    toProgram.closeEnd(0);
    fromProgram.closeEnd(1);
    std::thread writer([&] {
        writeWhole(toProgram.writeEnd(), input);
        toProgram.closeEnd(1);
    });
    readWhole(fromProgram.readEnd(), run.output);
    writer.join();
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return run;
    }
    if (WIFEXITED(status))
        run.exitStatus = WEXITSTATUS(status);
    return run;
}

} // namespace platform
