// Tells a person who waits what the program is doing: one line on standard error from a second on,
// gone when the work is done. Says nothing when standard error is no terminal.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

namespace tavctl {

// Where and when the line appears; tests put their own.
struct ProgressLine {
    std::FILE* stream = stderr;
    bool isTerminal = false;
    std::chrono::milliseconds delay{1000};
};
ProgressLine standardProgressLine();

// From its making to its destruction the work named `what` ("reading the bus") goes on. One object
// at a time.
class Progress {
public:
    explicit Progress(std::string what, const ProgressLine& line = standardProgressLine());
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

private:
    void run();

    std::string what_;
    ProgressLine line_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool done_ = false;
    std::thread thread_;
};

} // namespace tavctl
