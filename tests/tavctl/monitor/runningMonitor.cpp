#include "tests/tavctl/monitor/runningMonitor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <stdexcept>

namespace testtavctl {

namespace {

constexpr auto kPatience = std::chrono::seconds(60);

std::chrono::steady_clock::time_point deadline() {
    return std::chrono::steady_clock::now() + kPatience;
}

} // namespace

RunningMonitor::RunningMonitor(const std::string& options) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const std::string command = "exec " TAVCTL_FILE " monitor " + options;
    process_ = fork();
    if (process_ == 0) {
        // Tests that run in the background are started to pass some of them over.
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
            std::signal(number, SIG_DFL);
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    close(ends[1]);
    pipe_ = ends[0];
}

RunningMonitor::~RunningMonitor() {
    closeOutput();
    if (process_ > 0) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
}

bool RunningMonitor::read() {
    pollfd awaited{pipe_, POLLIN, 0};
    constexpr int kMilliseconds = 50;
    if (poll(&awaited, 1, kMilliseconds) <= 0)
        return true;
    std::array<char, 4096> piece{};
    const ssize_t size = ::read(pipe_, piece.data(), piece.size());
    if (size > 0)
        output_.append(piece.data(), static_cast<std::size_t>(size));
    return size > 0;
}

std::string RunningMonitor::line(const std::string& text) {
    for (const auto end = deadline(); std::chrono::steady_clock::now() < end;) {
        for (auto feed = output_.find('\n', asked_); feed != std::string::npos;
             feed = output_.find('\n', asked_)) {
            const std::string each = output_.substr(asked_, feed - asked_);
            asked_ = feed + 1;
            if (each.find(text) != std::string::npos)
                return each;
        }
        if (!read())
            break;
    }
    return "no line with " + text + " in\n" + output_;
}

void RunningMonitor::signal(int number) const {
    kill(process_, number);
}

void RunningMonitor::closeOutput() {
    if (pipe_ >= 0)
        close(pipe_);
    pipe_ = -1;
}

int RunningMonitor::end() {
    for (const auto end = deadline(); std::chrono::steady_clock::now() < end;) {
        if (pipe_ >= 0 && !read()) {
            close(pipe_);
            pipe_ = -1;
        }
        int status = 0;
        if (waitpid(process_, &status, pipe_ >= 0 ? WNOHANG : 0) == process_) {
            while (pipe_ >= 0 && read()) {
            }
            process_ = -1;
            constexpr int kEndedBySignal = 128;
            return WIFEXITED(status) ? WEXITSTATUS(status) : kEndedBySignal + WTERMSIG(status);
        }
    }
    return -1;
}

} // namespace testtavctl
