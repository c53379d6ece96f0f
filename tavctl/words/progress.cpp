#include "tavctl/words/progress.h"

#include "platform/terminal.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <system_error>
#include <utility>

namespace tavctl {

namespace {

constexpr std::size_t kBarCells = 10;
// A line that the terminal broke could not be cleared.
constexpr std::size_t kWidest = 79;

// To the first column and the rest of the line cleared.
std::string clearing(const ProgressLine& line) {
    return line.takesEscapes ? "\r\033[K" : fmt::format("\r{:{}}\r", "", kWidest);
}

constexpr const char* kProgram = "tavctl: ";
constexpr std::int64_t kMostSeconds = 90; // told as such; more in minutes

// Control characters would be commands to the terminal.
std::string plain(std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == '\x7F'; }, '?');
    return text;
}

// "100,000"
std::string grouped(std::size_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t at = digits.size(); at > 3; at -= 3)
        digits.insert(at - 3, 1, ',');
    return digits;
}

std::string timeText(std::chrono::milliseconds time) {
    const std::int64_t seconds = (time.count() + 999) / 1000;
    return seconds > kMostSeconds ? fmt::format("{} min", (seconds + 59) / 60)
                                  : fmt::format("{} s", seconds);
}

} // namespace

ProgressLine standardProgressLine() {
    ProgressLine line;
    line.isTerminal = platform::isTerminal(stderr);
    line.takesEscapes = platform::takesEscapes(stderr);
    return line;
}

std::string progressText(const std::string& what, std::size_t done, std::size_t total,
                         std::chrono::milliseconds elapsed) {
    done = std::min(done, total);
    const double share = static_cast<double>(done) / static_cast<double>(total);
    const auto full = static_cast<std::size_t>(share * kBarCells);
    std::string count = fmt::format("{} of {}", grouped(done), grouped(total));
    if (done != 0) {
        const double each = static_cast<double>(elapsed.count()) / static_cast<double>(done);
        const std::chrono::milliseconds left(
            static_cast<std::int64_t>(each * static_cast<double>(total - done)));
        count += fmt::format(", about {} left", timeText(left));
    }
    std::string text =
        fmt::format("{} [{:#<{}}{:-<{}}] {}", what, "", full, "", kBarCells - full, count);
    const auto fits = [](const std::string& line) {
        return std::char_traits<char>::length(kProgram) + line.size() <= kWidest;
    };
    if (!fits(text))
        text = fmt::format("{}: {}", what, count);
    return fits(text) ? text : count;
}

Progress::Progress(std::string what, const ProgressLine& line)
    : Progress(std::move(what), 0, line) {}

Progress::Progress(std::string what, std::size_t steps, const ProgressLine& line)
    : what_(plain(std::move(what))), steps_(steps), line_(line) {
    if (!line_.isTerminal)
        return;
    try {
        thread_ = line_.startThread([this] { run(); });
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): the work is what counts
    }
}

Progress::~Progress() {
    if (!thread_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

std::string Progress::text() const {
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - begin_);
    if (steps_ == 0)
        return fmt::format("{}... {} s", what_, elapsed.count() / 1000);
    return progressText(what_, done_.load(std::memory_order_relaxed), steps_, elapsed);
}

void Progress::write(const std::string& line) noexcept {
    std::fputs(line.c_str(), line_.stream);
    std::fflush(line_.stream);
}

// Without memory the line stays as it is: the work is what counts.
void Progress::show() noexcept {
    try {
        write(fmt::format("{}{}{}", clearing(line_), kProgram, text()));
        isShown_ = true;
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch)
    }
}

void Progress::clear() noexcept {
    if (!isShown_)
        return;
    try {
        write(clearing(line_));
        isShown_ = false;
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch)
    }
}

void Progress::run() {
    std::unique_lock lock(mutex_);
    const auto hasEnded = [this] { return ended_; };
    if (changed_.wait_for(lock, line_.delay, hasEnded))
        return;
    do {
        if (hidden_)
            isDue_ = true;
        else
            show();
    } while (!changed_.wait_for(lock, std::chrono::seconds(1), hasEnded));
    clear();
}

Progress::Hidden::Hidden(Progress& progress) : progress_(progress) {
    const std::lock_guard lock(progress_.mutex_);
    progress_.hidden_ = true;
    progress_.isDue_ = progress_.isShown_;
    progress_.clear();
}

Progress::Hidden::~Hidden() {
    const std::lock_guard lock(progress_.mutex_);
    progress_.hidden_ = false;
    if (progress_.isDue_)
        progress_.show();
}

} // namespace tavctl
