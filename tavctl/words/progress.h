// Tells a person who waits what the program is doing: one line on standard error from a second on,
// gone when the work is done. Says nothing when standard error is no terminal.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace tavctl {

// Where and when the line appears; tests put their own.
struct ProgressLine {
    std::FILE* stream = stderr;
    bool isTerminal = false;
    bool takesEscapes = true; // of a terminal; others are cleared by blanks
    std::chrono::milliseconds delay{1000};
    // May raise std::system_error, as std::thread does.
    std::function<std::thread(std::function<void()>)> startThread = [](std::function<void()> work) {
        return std::thread(std::move(work));
    };
};
ProgressLine standardProgressLine();

// "reading descriptions [#####-----] 51,234 of 100,000, about 4 s left", for the time that the
// work has taken so far.
std::string progressText(const std::string& what, std::size_t done, std::size_t total,
                         std::chrono::milliseconds elapsed);

// From its making to its destruction the work named `what` ("reading the bus") goes on. One object
// at a time. Where the system has no thread left for the line, there is none.
class Progress {
public:
    explicit Progress(std::string what, const ProgressLine& line = standardProgressLine());
    // Work in so many steps, of which the line tells how many are left.
    Progress(std::string what, std::size_t steps,
             const ProgressLine& line = standardProgressLine());
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // One more step is done.
    void step() { done_.fetch_add(1, std::memory_order_relaxed); }

    // While it is there, the line is not: for writing what a person sees on the same terminal. A
    // line that was there, or became due, comes back below it.
    class Hidden {
    public:
        explicit Hidden(Progress& progress);
        ~Hidden();
        Hidden(const Hidden&) = delete;
        Hidden& operator=(const Hidden&) = delete;

    private:
        Progress& progress_;
    };

private:
    void run();
    [[nodiscard]] std::string text() const;
    // The lock is held.
    void show() noexcept;
    void clear() noexcept;
    void write(const std::string& line) noexcept;

    std::string what_;
    std::size_t steps_; // 0: unknown
    ProgressLine line_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    std::atomic<std::size_t> done_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool ended_ = false;
    bool hidden_ = false;
    bool isDue_ = false; // where it is hidden: to be shown afterwards
    bool isShown_ = false;
    std::thread thread_;
};

} // namespace tavctl
