#include "tavctl/words/progress.h"

#include "platform/terminal.h"

#include <utility>

namespace tavctl {

namespace {

// To the first column and the rest of the line cleared.
constexpr const char* kClearLine = "\r\033[K";

} // namespace

ProgressLine standardProgressLine() {
    ProgressLine line;
    line.isTerminal = platform::isTerminal(stderr);
    return line;
}

Progress::Progress(std::string what, const ProgressLine& line)
    : what_(std::move(what)), line_(line) {
    if (line_.isTerminal)
        thread_ = std::thread([this] { run(); });
}

Progress::~Progress() {
    if (!thread_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        done_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void Progress::run() {
    std::unique_lock lock(mutex_);
    const auto isDone = [this] { return done_; };
    if (changed_.wait_for(lock, line_.delay, isDone))
        return;
    int seconds = static_cast<int>(line_.delay.count() / 1000);
    do {
        std::fprintf(line_.stream, "%stavctl: %s... %d s", kClearLine, what_.c_str(), seconds++);
        std::fflush(line_.stream);
    } while (!changed_.wait_for(lock, std::chrono::seconds(1), isDone));
    std::fputs(kClearLine, line_.stream);
    std::fflush(line_.stream);
}

} // namespace tavctl
